# Tests of this folder; paths are relative to tests/.
qor_test(threads_test SOURCES threads/threads_test.cpp)
