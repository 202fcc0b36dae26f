# Tests of the example programs; paths are relative to tests/.
if(TARGET demo)
  qor_test(demo_test SOURCES demo/demo_test.cpp)
  target_compile_definitions(demo_test PRIVATE QOR_DEMO="$<TARGET_FILE:demo>")
  add_dependencies(demo_test demo)
endif()

if(QOR_BUILD_EXAMPLES)
  qor_test(examples_test SOURCES demo/examples_test.cpp)
  set(ranks "./integral --ranks")
  if(QOR_MPI_WORKS)
    # More ranks than processors, and those of root, are what some MPIs must be asked for.
    set(ranks "env OMPI_MCA_rmaps_base_oversubscribe=1 OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1")
    string(APPEND ranks " ${MPIEXEC_EXECUTABLE} ${MPIEXEC_NUMPROC_FLAG}")
    set(ranked " ./integral")
  endif()
  target_compile_definitions(examples_test PRIVATE QOR_EXAMPLE_PROGRAMS="$<TARGET_FILE_DIR:quickstart>"
    QOR_RUN_RANKS="${ranks}" QOR_RANKED="${ranked}")
  add_dependencies(examples_test quickstart streams functions convolve descriptor level1 memory philox variates spectrum integral)
endif()

if(TARGET picture)
  qor_test(picture_test SOURCES demo/picture_test.cpp)
  target_compile_definitions(picture_test PRIVATE QOR_PICTURE="$<TARGET_FILE:picture>")
  add_dependencies(picture_test picture)
endif()
