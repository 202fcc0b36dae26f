/* qor/version.h: the version of these headers, and that of the library in use.

   Versions are MAJOR.MINOR.PATCH. A patch repairs, a minor version adds entries, and programs built against an older one
   of the same major version run on: the shared object's name, libqor_zx9.so.1, has the major version alone. What a
   version promises of results is told in docs/pages/reproducibility.md. */
#ifndef QOR_VERSION_H
#define QOR_VERSION_H

#ifdef __cplusplus
extern "C" {
#endif

#define QOR_VERSION_MAJOR 1
#define QOR_VERSION_MINOR 0
#define QOR_VERSION_PATCH 0
/* For comparisons in the preprocessor: 10203 is version 1.2.3. */
#define QOR_VERSION_NUMBER (QOR_VERSION_MAJOR * 10000 + QOR_VERSION_MINOR * 100 + QOR_VERSION_PATCH)
#define QOR_VERSION "1.0.0"

/* The library's own version as text, such as "1.0.0": that of the shared object in use, while QOR_VERSION is that of the
   headers a program was compiled with. The text lives as long as the library is loaded. */
const char* qor_version(void);

/* 1 when this processor has the instructions that this build of the library is made of (SSE2 and SSSE3), otherwise 0. To
   be asked before anything else: it runs itself on any processor that runs the caller, where other functions would end
   in an illegal instruction. From any thread. */
int qor_cpu_supported(void);

#ifdef __cplusplus
}
#endif
#endif
