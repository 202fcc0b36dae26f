/* An engine of one's own: Philox4x32-10 (J. K. Salmon, M. A. Moraes, R. O. Dror and D. E. Shaw, "Parallel random numbers:
   as easy as 1, 2, 3", 2011), registered with the library and used like its own, distributions and all.
     gcc -m32 philox.c $(pkg-config --cflags --libs qor) -o philox */
#include <qor/qor.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

/* A stream of it: the library's header of 16 bytes, then the state. Block number `counter` holds four words, of which
   `used` have been delivered. */
struct philox {
  unsigned header[4];
  uint32_t key[2], counter[4], used;
};

static void encrypt(const uint32_t key[2], const uint32_t counter[4], uint32_t out[4]) {
  uint32_t k0 = key[0], k1 = key[1];
  int round;
  memcpy(out, counter, 16);
  for (round = 0; round < 10; ++round) {
    const uint64_t a = (uint64_t)0xD2511F53u * out[0], b = (uint64_t)0xCD9E8D57u * out[2];
    const uint32_t x1 = out[1], x3 = out[3];
    out[0] = (uint32_t)(b >> 32) ^ x1 ^ k0;
    out[1] = (uint32_t)b;
    out[2] = (uint32_t)(a >> 32) ^ x3 ^ k1;
    out[3] = (uint32_t)a;
    k0 += 0x9E3779B9u;
    k1 += 0xBB67AE85u;
  }
}

static void add_to_counter(struct philox* p, uint32_t blocks) {
  int i;
  for (i = 0; i < 4 && blocks != 0; ++i) {
    p->counter[i] += blocks;
    blocks = p->counter[i] < blocks; /* the carry */
  }
}

/* Seeds are the key and then the counter's words, missing ones zero. Skipping n elements is arithmetic on the counter. */
static int init(int method, qor_stream* stream, int n, const unsigned* params) {
  struct philox* const p = (struct philox*)stream;
  int i;
  if (method == 1) return QOR_RNG_NO_LEAPFROG;
  if (method == 2) {
    const uint32_t position = p->used + (uint32_t)(n > 0 ? n : 0);
    add_to_counter(p, position / 4);
    p->used = position % 4;
    return QOR_RNG_OK;
  }
  if (method != 0) return QOR_RNG_BAD_METHOD;
  for (i = 0; i < 2; ++i) p->key[i] = i < n ? params[i] : 0;
  for (i = 0; i < 4; ++i) p->counter[i] = i + 2 < n ? params[i + 2] : 0;
  p->used = 0;
  return QOR_RNG_OK;
}

/* n words to the callback-like macro's statement: `word` is the next one, i its place. */
#define FOR_EACH_WORD(statement)                         \
  struct philox* const p = (struct philox*)stream;       \
  uint32_t block[4];                                     \
  int i;                                                 \
  if (n > 0) encrypt(p->key, p->counter, block);         \
  for (i = 0; i < n; ++i) {                              \
    const uint32_t word = block[p->used];                \
    statement;                                           \
    if (++p->used == 4) {                                \
      p->used = 0;                                       \
      add_to_counter(p, 1);                              \
      if (i + 1 < n) encrypt(p->key, p->counter, block); \
    }                                                    \
  }                                                      \
  return QOR_RNG_OK

static int draw_words(qor_stream* stream, int n, unsigned* r) { FOR_EACH_WORD(r[i] = word); }
static int draw_doubles(qor_stream* stream, int n, double* r, double a, double b) {
  FOR_EACH_WORD(r[i] = a + (b - a) * (word * (1.0 / 4294967296.0)));
}
static int draw_singles(qor_stream* stream, int n, float* r, float a, float b) {
  FOR_EACH_WORD(r[i] = a + (b - a) * (float)((word >> 8) * (1.0 / 16777216.0)));
}

/* Published with the method: key, counter, output. */
static const unsigned known[3][10] = {{0, 0, 0, 0, 0, 0, 0x6627E8D5, 0xE169C58D, 0xBC57AC4C, 0x9B00DBD8},
                                      {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF,
                                       0x408F276D, 0x41C83B0E, 0xA20BC7C6, 0x6D5451FD},
                                      {0xA4093822, 0x299F31D0, 0x243F6A88, 0x85A308D3, 0x13198A2E, 0x03707344,
                                       0xD16CFE09, 0x94FDCCEB, 0x5001E420, 0x24126EA1}};

int main(void) {
  /* [register] */
  const BrngRecord record = {(int)sizeof(struct philox), 6, 1, 4, 32, init, draw_singles, draw_doubles, draw_words};
  int brng, i;
  if (!qor_cpu_supported()) {
    fprintf(stderr, "this processor lacks SSE2 or SSSE3\n");
    return 2;
  }
  brng = __wxrRegisterBrng(&record);
  /* [register] */
  if (brng < 0) return 1;

  for (i = 0; i < 3; ++i) {
    qor_stream* stream;
    unsigned words[4];
    if (__wxrNewStreamEx(&stream, brng, 6, known[i]) != QOR_RNG_OK) return 1;
    _wxriRngUniformBits(0, stream, 4, words);
    __wxrDeleteStream(&stream);
    if (memcmp(words, known[i] + 6, sizeof words) != 0) {
      printf("known answer %d is wrong\n", i);
      return 1;
    }
  }
  printf("three known answers: right\n");

  {
    const unsigned seed = 2011;
    qor_stream *stream, *ahead;
    unsigned words[1003], same[3];
    double variates[20000], sum = 0;
    if (__wxrNewStreamEx(&stream, brng, 1, &seed) != QOR_RNG_OK) return 1;
    if (__wxrCopyStream(&ahead, stream) != QOR_RNG_OK) return 1;
    _wxriRngUniformBits(0, stream, 1003, words);
    __wxrSkipAheadStream(ahead, 1000);
    _wxriRngUniformBits(0, ahead, 3, same);
    printf("skip-ahead: %s\n", memcmp(words + 1000, same, sizeof same) == 0 ? "right" : "wrong");
    _wxrdRngGaussian(QOR_RNG_GAUSSIAN_BOXMULLER2, stream, 20000, variates, 100.0, 15.0);
    for (i = 0; i < 20000; ++i) sum += variates[i];
    printf("mean of 20000 Gaussian variates: %.2f\n", sum / 20000);
    __wxrDeleteStream(&ahead);
    __wxrDeleteStream(&stream);
  }
  return 0;
}
