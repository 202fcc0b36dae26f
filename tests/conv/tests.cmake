# Tests of this folder; paths are relative to tests/.
qor_test(conv_direct_test SOURCES conv/direct_test.cpp)
qor_test(conv_task_test SOURCES conv/task_test.cpp)
