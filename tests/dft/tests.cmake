# Tests of this folder; paths are relative to tests/.
qor_test(dft_transforms_test SOURCES dft/transforms_test.cpp)
