# Tests of this folder; paths are relative to tests/.
qor_test(tfn_kernels_test SOURCES tfn/kernels_test.cpp LIBRARIES quadmath)
target_compile_options(tfn_kernels_test PRIVATE -Wno-pedantic)  # constants in quadruple precision

# The deep sweep is a program of its own: ./run accuracy.
add_executable(qor_accuracy ${PROJECT_SOURCE_DIR}/tools/accuracy.cpp)
target_include_directories(qor_accuracy PRIVATE ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_options(qor_accuracy PRIVATE ${QOR_WARNINGS} -Wno-pedantic -ffp-contract=off)
target_link_libraries(qor_accuracy PRIVATE qor quadmath)
qor_test(tfn_complex_test SOURCES tfn/complex_test.cpp LIBRARIES quadmath)
target_compile_options(tfn_complex_test PRIVATE -Wno-pedantic)
qor_test(tfn_control_test SOURCES tfn/control_test.cpp)
qor_test(tfn_pack_test SOURCES tfn/pack_test.cpp)
qor_test(tfn_trig_scalar_test SOURCES tfn/trig_scalar_test.cpp LIBRARIES quadmath)
target_compile_options(tfn_trig_scalar_test PRIVATE -Wno-pedantic)
