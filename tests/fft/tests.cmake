# Tests of this folder; paths are relative to tests/.
qor_test(fft_transforms_test SOURCES fft/transforms_test.cpp)
qor_test(fft_contracts_test SOURCES fft/contracts_test.cpp)
# Errors beside FFTW's: ./run accuracy fft.
add_executable(qor_fft_accuracy ${PROJECT_SOURCE_DIR}/tools/fft_accuracy.cpp)
target_compile_options(qor_fft_accuracy PRIVATE ${QOR_WARNINGS} -ffp-contract=off)
target_link_libraries(qor_fft_accuracy PRIVATE qor ${CMAKE_DL_LIBS})
