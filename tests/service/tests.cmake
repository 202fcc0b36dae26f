# Tests of this folder; paths are relative to tests/.
qor_test(service_test SOURCES service/service_test.cpp)
