# Tests of this folder; paths are relative to tests/.
qor_test(conv_drivers_test SOURCES conv/drivers_test.cpp)
qor_test(conv_whole_test SOURCES conv/whole_test.cpp)
qor_test(conv_task_test SOURCES conv/task_test.cpp)
