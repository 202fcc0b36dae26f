# Tests of the command line program; paths are relative to tests/.
if(TARGET qor_program)
  qor_test(cli_test SOURCES cli/cli_test.cpp)
  target_compile_definitions(cli_test PRIVATE QOR_PROGRAM="$<TARGET_FILE:qor_program>"
    QOR_CLI="${PROJECT_SOURCE_DIR}/cli")
  add_dependencies(cli_test qor_program)
endif()
