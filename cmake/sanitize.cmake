# -DQOR_SANITIZE=ON builds everything under the address and undefined-behaviour sanitizers.
option(QOR_SANITIZE "build with ASan and UBSan" OFF)
if(QOR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)  # the instrumentation hides initialisations from the compiler
  add_link_options(-fsanitize=address,undefined)
endif()

# The fuzzers of tests/fuzz/, with Clang: everything tells libFuzzer which of its branches were taken.
option(QOR_BUILD_FUZZERS "build the fuzzers" OFF)
if(QOR_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
