# Tests of this folder; paths are relative to tests/.
qor_test(rng_engines_test SOURCES rng/engines_test.cpp)
qor_test(rng_quasi_test SOURCES rng/quasi_test.cpp)
qor_test(rng_mt2203_test SOURCES rng/mt2203_test.cpp)
qor_test(rng_streams_test SOURCES rng/streams_test.cpp)
qor_test(rng_files_test SOURCES rng/files_test.cpp)
qor_test(rng_uniform_test SOURCES rng/uniform_test.cpp)
qor_test(rng_gaussian_test SOURCES rng/gaussian_test.cpp)
qor_test(rng_distributions_test SOURCES rng/distributions_test.cpp)
qor_test(rng_fit_test SOURCES rng/fit_test.cpp)
qor_test(rng_abstract_test SOURCES rng/abstract_test.cpp)
qor_test(rng_wh_table_test SOURCES rng/wh_table_test.cpp)

# The words of an engine, for programs that test generators: ./run battery.
add_executable(qor_words ${PROJECT_SOURCE_DIR}/tools/words.cpp)
target_compile_options(qor_words PRIVATE ${QOR_WARNINGS})
target_link_libraries(qor_words PRIVATE qor)

# The pictures of docs/gallery/ and the table of goodness of fit.
add_executable(qor_gallery ${PROJECT_SOURCE_DIR}/tools/gallery.cpp)
target_include_directories(qor_gallery PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_options(qor_gallery PRIVATE ${QOR_WARNINGS} -ffp-contract=off)
target_link_libraries(qor_gallery PRIVATE qor)
