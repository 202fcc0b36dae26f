# Tests of the example programs; paths are relative to tests/.
if(TARGET demo)
  qor_test(demo_test SOURCES demo/demo_test.cpp)
  target_compile_definitions(demo_test PRIVATE QOR_DEMO="$<TARGET_FILE:demo>")
  add_dependencies(demo_test demo)
  add_test(NAME example.quickstart COMMAND quickstart)
  set_tests_properties(example.quickstart PROPERTIES PASS_REGULAR_EXPRESSION "ln: 0 1 -inf, status 2\n$")
endif()

if(TARGET picture)
  qor_test(picture_test SOURCES demo/picture_test.cpp)
  target_compile_definitions(picture_test PRIVATE QOR_PICTURE="$<TARGET_FILE:picture>")
  add_dependencies(picture_test picture)
endif()
