# -DQOR_SANITIZE=ON builds everything under the address and undefined-behaviour sanitizers.
option(QOR_SANITIZE "build with ASan and UBSan" OFF)
if(QOR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # The instrumentation hides initialisations from GCC, and following variables through it takes longer than all the rest.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fno-var-tracking> -O1)
  add_link_options(-fsanitize=address,undefined)
endif()

# The fuzzers of tests/fuzz/, with Clang: everything tells libFuzzer which of its branches were taken.
option(QOR_BUILD_FUZZERS "build the fuzzers" OFF)
if(QOR_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
