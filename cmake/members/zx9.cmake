# Member zx9: 32-bit x86 with SSE2 and SSSE3. Another member is another file like this one and a header in src/simd/.
set(QOR_MEMBER_TAG zx9)
set(QOR_MEMBER_FLAGS -m32 -march=i686 -msse2 -mssse3 -mfpmath=sse -mno-mmx -mtune=generic)
set(QOR_MEMBER_LINK_FLAGS -m32)
