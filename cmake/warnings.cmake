# Warnings are errors, for the library, its tests, its examples and its tools alike.
set(QOR_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wcast-qual -Wundef -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wno-psabi -Wnon-virtual-dtor -Woverloaded-virtual>)
