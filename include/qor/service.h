/* qor/service.h: service layer. Replaceable memory hooks, a cache of memory blocks by thread, the environment's
   switches, the serial/parallel decision, two locks, the build's tag.

   All functions may be called from any number of threads at once, but for the two named below that need the lock. */
#ifndef QOR_SERVICE_H
#define QOR_SERVICE_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- memory ---------------------------------------------------------------------------------------------------- */

/* Every allocation of this layer goes through these; they start as the C library's. Replace all of them together and
   before the first use: a block must go back to the allocator it came from. i_malloc and i_free are called with the
   allocator's lock held and must not call into this layer. */
typedef void* (*QorMalloc)(size_t bytes);
typedef void* (*QorCalloc)(size_t count, size_t bytes);
typedef void* (*QorRealloc)(void* block, size_t bytes);
typedef void (*QorFree)(void* block);
extern QorMalloc i_malloc;
extern QorCalloc i_calloc;
extern QorRealloc i_realloc;
extern QorFree i_free;

/* A block of `size` bytes, or null when the hook has no memory. At most 512 blocks are kept, each a fifth larger than
   the request it was made for. A released block is handed out again to the thread that first had it, the first one
   large enough, one of exactly the size asked for before all. Negative sizes and those above 40 MiB (41943040 bytes) go
   straight to i_malloc. The contents are undefined, the alignment is the hook's. */
void* qor_serv_allocate(int size);
/* From any thread. What the cache doesn't know, null included, goes to i_free. */
void qor_serv_deallocate(void* block);
/* Frees every block, those handed out too: release them first. */
void qor_serv_freebuffers(void);

/* Steps of an allocation, to be called between qor_serv_lock and qor_serv_unlock only. The first frees unused blocks
   while there are more bytes of them than allowed, or 512 blocks in all, and then compacts the table; the second
   compacts alone. */
void qor_free_extra_mem(void);
void QOR_shrink_mem_slots(void);

/* ---- environment ----------------------------------------------------------------------------------------------- */

/* Reads the variables, once in a process; the first allocation does it by itself. Returns 0.
     QOR_DISABLE_FAST_MM, QOR_MM_DISABLE   not empty: no cache, blocks come from and go to the hooks
     QOR_MM_NUMA_MODE                      kept for a later use
     QOR_MM_MAX_THREADS                    n > 0: at most n times 39007027.2 bytes stay cached unused (156028108 when
                                           not set, which is a byte less than n = 4 gives) */
int QOR_read_env(void);

/* 1 when the library must run on the caller's thread alone. Decided at the first call:
     OMP_NUM_THREADS (or omp_num_threads when that isn't set) empty or not set: serial unless QOR_SERIAL is neither
     empty nor "YES" nor "yes"; otherwise: serial when QOR_SERIAL is "YES" or "yes". */
int qor_serv_in_serial(void);
/* Set QOR_SERIAL to "YES", "NO"; return what setenv returns. Without effect on a decision already taken. Not while
   another thread reads the environment. */
int qor_serv_set_serial(void);
int qor_serv_set_parallel(void);

/* ---- threads and build ----------------------------------------------------------------------------------------- */

/* The calling thread's identity, that of pthread_self. */
unsigned long QOR_ThreadID(void);

/* Two locks, of the memory cache and of the transform engine. They spin, and are not re-entrant: holding the first, a
   thread must not allocate or release here. */
void qor_serv_lock(void);
void qor_serv_unlock(void);
void qor_serv_dft_lock(void);
void qor_serv_dft_unlock(void);

/* 4: the build for SSE2 and SSSE3. */
int dll_cpu_version(void);

#ifdef __cplusplus
}
#endif
#endif
