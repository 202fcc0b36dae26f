/* The library's cache of memory blocks, and memory of the caller's own making.
     gcc -m32 memory.c $(pkg-config --cflags --libs qor) -o memory */
#include <qor/qor.h>
#include <stdio.h>
#include <stdlib.h>

/* [hooks] */
static int allocations;
static void* counting_malloc(size_t bytes) {
  ++allocations;
  return malloc(bytes);
}
/* [hooks] */

int main(void) {
  int i;
  if (!qor_cpu_supported()) return 2;
  /* [cache] */
  i_malloc = counting_malloc; /* before the first use, and with a free that fits: the C library's */
  for (i = 0; i < 1000; ++i) {
    void* const block = qor_serv_allocate(100000);
    if (block == NULL) return 1;
    qor_serv_deallocate(block); /* kept for the next one of this thread */
  }
  qor_serv_freebuffers();
  /* [cache] */
  printf("1000 blocks, %s\n", allocations < 10 ? "a few allocations" : "many allocations");
  return 0;
}
