# cmake --install, and packages: the shared object with its links, headers, pkg-config and CMake packages, the command
# line program with its manual page and completion, examples. Everything can be moved as a whole.
set(CMAKE_INSTALL_LIBDIR lib CACHE PATH "folder of libraries")  # where 32-bit programs look first, on Debian too
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)  # tests and benchmarks need not be built for it
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS qor EXPORT qorTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/qor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(QOR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qor)
install(EXPORT qorTargets NAMESPACE qor:: DESTINATION ${QOR_CMAKE_DIR})
configure_package_config_file(cmake/qorConfig.cmake.in ${CMAKE_BINARY_DIR}/qorConfig.cmake
  INSTALL_DESTINATION ${QOR_CMAKE_DIR})
block()
  set(CMAKE_SIZEOF_VOID_P 4)  # -m32 comes after CMake has asked the compiler
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/qorConfigVersion.cmake COMPATIBILITY SameMajorVersion)
endblock()
# A project of 64 bits is told what to do where CMake lists the versions it considered.
file(APPEND ${CMAKE_BINARY_DIR}/qorConfigVersion.cmake "
if(PACKAGE_VERSION_UNSUITABLE)
  set(PACKAGE_VERSION \"\${PACKAGE_VERSION}, for programs of 32 bits: -DCMAKE_C_FLAGS=-m32 -DCMAKE_CXX_FLAGS=-m32\")
endif()
")
install(FILES ${CMAKE_BINARY_DIR}/qorConfig.cmake ${CMAKE_BINARY_DIR}/qorConfigVersion.cmake DESTINATION ${QOR_CMAKE_DIR})

file(RELATIVE_PATH QOR_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/qor.pc.in ${CMAKE_BINARY_DIR}/qor.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/qor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN output EXCLUDE)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN *.md PATTERN *.png PATTERN *.svg)

# ---- packages: cpack -G "DEB;TGZ" in the build folder -----------------------------------------------------------------
# The package needs a C library no older than the one linked here.
execute_process(COMMAND ${CMAKE_C_COMPILER} -m32 -dM -E -include features.h -x c /dev/null
  OUTPUT_VARIABLE QOR_MACROS ERROR_QUIET)
string(REGEX REPLACE ".*#define __GLIBC__ ([0-9]+).*" "\\1" QOR_GLIBC_MAJOR "${QOR_MACROS}")
string(REGEX REPLACE ".*#define __GLIBC_MINOR__ ([0-9]+).*" "\\1" QOR_GLIBC_MINOR "${QOR_MACROS}")
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME qor)
set(CPACK_PACKAGE_VENDOR "the qor authors")
set(CPACK_PACKAGE_CONTACT "the qor authors <qor@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "numerical kernels: random streams, vector mathematics, transforms")
set(CPACK_PACKAGE_DESCRIPTION "Random streams and variates, vector mathematics, Fourier transforms, convolution and
level-1 vector kernels for 32-bit x86 with SSE2 and SSSE3: shared object, headers, command line program.")
set(CPACK_PACKAGE_FILE_NAME qor_${PROJECT_VERSION}_i386)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= ${QOR_GLIBC_MAJOR}.${QOR_GLIBC_MINOR})")
get_target_property(QOR_LIBRARIES qor LINK_LIBRARIES)
if(gomp IN_LIST QOR_LIBRARIES)
  string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", libgomp1")
endif()
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)
