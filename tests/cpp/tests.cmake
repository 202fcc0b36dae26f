# Tests of the header for C++; paths are relative to tests/.
qor_test(qor_hpp_test SOURCES cpp/qor_hpp_test.cpp)
