# Tests of this folder; paths are relative to tests/.
qor_test(dft_transforms_test SOURCES dft/transforms_test.cpp)
qor_test(dft_contracts_test SOURCES dft/contracts_test.cpp)
qor_test(dft_threads_test SOURCES dft/threads_test.cpp LIBRARIES pthread)
# The same on threads that race detectors follow: ./run threads.
qor_test(dft_races_test SOURCES dft/threads_test.cpp dft/team_of_pthreads.cpp LIBRARIES pthread)
target_compile_definitions(dft_races_test PRIVATE THREADS_END_WITH_THEIR_WORK)
