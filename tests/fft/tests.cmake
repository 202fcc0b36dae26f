# Tests of this folder; paths are relative to tests/.
qor_test(fft_transforms_test SOURCES fft/transforms_test.cpp)
qor_test(fft_contracts_test SOURCES fft/contracts_test.cpp)
