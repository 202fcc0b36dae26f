# Tests of this folder; paths are relative to tests/.
set(qor_abi_definitions
  QOR_LIBRARY="$<TARGET_FILE:qor>"
  QOR_INCLUDE="${PROJECT_SOURCE_DIR}/include"
  QOR_EXPORTS_MAP="${PROJECT_SOURCE_DIR}/src/exports.map"
  QOR_COMPILER="${CMAKE_C_COMPILER} -m32"
  $<$<BOOL:${QOR_SANITIZE}>:QOR_SANITIZE>)
qor_test(abi_shared_object_test SOURCES abi/shared_object_test.cpp)
qor_test(abi_entries_test SOURCES abi/entries_test.cpp LIBRARIES ${CMAKE_DL_LIBS})
foreach(test abi_shared_object_test abi_entries_test)
  target_compile_definitions(${test} PRIVATE ${qor_abi_definitions})
endforeach()

# Each public header by itself, in every language version that callers use.
set(strict -m32 -pedantic -Wall -Wextra -Werror -fsyntax-only -I${PROJECT_SOURCE_DIR}/include)
foreach(header qor blas1 conv dft fft rng service tfn version)
  foreach(version c99 c11 c17 c++98 c++11 c++14 c++17 c++20)
    if(version MATCHES "\\+")
      set(compile ${CMAKE_CXX_COMPILER} -x c++)
    else()
      set(compile ${CMAKE_C_COMPILER} -x c)
    endif()
    add_test(NAME header.${header}.${version}
      COMMAND ${compile} -std=${version} ${strict} ${PROJECT_SOURCE_DIR}/include/qor/${header}.h)
  endforeach()
endforeach()

# The build fails when the interface differs from its record; 77: the tools are missing.
if(NOT QOR_SANITIZE)
  set(abi ${CMAKE_CURRENT_SOURCE_DIR}/abi)
  add_custom_command(OUTPUT abi.checked
    COMMAND sh -c "\"$0\" check \"$1\" \"$2\" || test $? = 77" ${abi}/record $<TARGET_FILE:qor> ${abi}/qor.abi
    COMMAND ${CMAKE_COMMAND} -E touch abi.checked
    DEPENDS qor ${abi}/record ${abi}/qor.abi
    COMMENT "the interface beside its record"
    VERBATIM)
  add_custom_target(abi_record ALL DEPENDS abi.checked)
endif()

# The header for C++, by every compiler that is here.
foreach(compiler g++ clang++)
  find_program(QOR_FOUND_${compiler} ${compiler})
  if(QOR_FOUND_${compiler})
    add_test(NAME header.qor_hpp.${compiler} COMMAND ${QOR_FOUND_${compiler}} -x c++ -std=c++20 ${strict} -Wshadow -Wconversion
      -Wno-sign-conversion ${PROJECT_SOURCE_DIR}/include/qor/qor.hpp)
  endif()
endforeach()
