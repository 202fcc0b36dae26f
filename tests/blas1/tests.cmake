# Tests of this folder; paths are relative to tests/.
qor_test(blas1_test SOURCES blas1/level1_test.cpp)
