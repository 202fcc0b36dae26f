# -DQOR_SANITIZE=ON builds everything under the address and undefined-behaviour sanitizers.
option(QOR_SANITIZE "build with ASan and UBSan" OFF)
if(QOR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_compile_options(-Wno-maybe-uninitialized)  # the instrumentation hides initialisations from the compiler
  add_link_options(-fsanitize=address,undefined)
endif()
