# Tests of what is installed and packaged; paths are relative to tests/.
if(NOT QOR_SANITIZE AND QOR_BUILD_EXAMPLES)
  foreach(step prefix pkg-config cmake package processor)
    add_test(NAME install.${step} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/check ${step} ${CMAKE_BINARY_DIR}
      ${CMAKE_BINARY_DIR}/install-test)
    set_tests_properties(install.${step} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300
      ENVIRONMENT "CC=${CMAKE_C_COMPILER};CXX=${CMAKE_CXX_COMPILER}")
  endforeach()
  set_tests_properties(install.prefix PROPERTIES FIXTURES_SETUP qor_installed)
  set_tests_properties(install.pkg-config install.cmake install.processor PROPERTIES FIXTURES_REQUIRED qor_installed)
endif()

# The manual: every page and header without a warning.
add_test(NAME docs.manual COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/check manual ${PROJECT_SOURCE_DIR} ${CMAKE_BINARY_DIR}/manual)
set_tests_properties(docs.manual PROPERTIES SKIP_RETURN_CODE 77)
