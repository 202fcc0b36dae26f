/* qor/rng.h: random streams, basic generators (engines) and variates of distributions.

   A stream is an opaque block that holds the state of one engine and a list of chunks, small tagged data blocks that
   travel with it. Streams are created and deleted here; everything is drawn from them.

   Results. Every function returns a status: 0 is success, a negative value one of the codes below.
   Sequences. A stream's sequence depends on its seed alone: n elements followed by m elements are the n + m elements of
   one request, for every engine and every split. Engines give the same bits in every release, whatever the caller's
   rounding mode, flush-to-zero setting or exception masks.
   Arrays may start at any address that is a multiple of 4, doubles included. Nothing is written past n elements.
   Threads. A stream is used by one thread at a time; distinct streams are independent. Registration must be finished
   before other threads use the registry. */
#ifndef QOR_RNG_H
#define QOR_RNG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct qor_stream qor_stream;

/* ---- statuses ---------------------------------------------------------------------------------------------------- */

#define QOR_RNG_OK 0
#define QOR_RNG_BAD_METHOD (-2)   /* an engine's initialisation method is not 0, 1 or 2; no such method */
#define QOR_RNG_BAD_ARGUMENT (-3) /* bad argument of an abstract stream or a distribution, bad quasi-random table */
#define QOR_RNG_NO_MEMORY (-4)
#define QOR_RNG_NULL_SLOT (-5)          /* a function of a record to be registered is null */
#define QOR_RNG_BAD_BRNG (-1000)        /* unknown generator identifier */
#define QOR_RNG_NO_LEAPFROG (-1002)     /* the engine can't leapfrog */
#define QOR_RNG_NO_SKIP_AHEAD (-1003)   /* the engine can't skip ahead */
#define QOR_RNG_INCOMPATIBLE (-1005)    /* the two streams have different generators */
#define QOR_RNG_BAD_STATE_BYTES (-1008) /* record: stateBytes < 0 */
#define QOR_RNG_BAD_WORD_BYTES (-1009)  /* record: wordBytes not 4, 8 or 16 */
#define QOR_RNG_BAD_SEED_WORDS (-1010)  /* record: seedWords < 1 */
#define QOR_RNG_BAD_BITS (-1011)        /* record: bitsPerWord < 1 */
#define QOR_RNG_REGISTRY_FULL (-1012)   /* 512 generators are registered */
#define QOR_RNG_BAD_UPDATE (-1020)      /* an abstract stream's callback delivered too few elements, or too many */
#define QOR_RNG_CANNOT_CLOSE (-1100)    /* stream file: closing failed, as with a last write on a full disk */
#define QOR_RNG_CANNOT_OPEN (-1101)     /* stream file: opening failed */
#define QOR_RNG_CANNOT_WRITE (-1102)    /* stream file: a write failed */
#define QOR_RNG_CANNOT_READ (-1103)     /* stream file: a read failed, or the file ends early */
#define QOR_RNG_BAD_FILE (-1110)        /* stream file: it is none, or of an unknown generator, or damaged */
#define QOR_RNG_BAD_VERSION (-1111)     /* stream file: of another version of the format */

/* ---- generators -------------------------------------------------------------------------------------------------- */

/* Identifiers: (registry entry + 1) * 2^20 + member.
   Abstract streams have constructors of their own. */
#define QOR_BRNG_MCG31M1 0x100000
#define QOR_BRNG_R250 0x200000
#define QOR_BRNG_MRG32K3A 0x300000
#define QOR_BRNG_MCG59 0x400000
#define QOR_BRNG_WH 0x500000 /* + 0 .. 272 */
#define QOR_BRNG_SOBOL 0x600000
#define QOR_BRNG_NIEDERR 0x700000
#define QOR_BRNG_MT19937 0x800000
#define QOR_BRNG_MT2203 0x900000 /* + 0 .. 1023 */
#define QOR_BRNG_IABSTRACT 0xA00000
#define QOR_BRNG_DABSTRACT 0xB00000
#define QOR_BRNG_SABSTRACT 0xC00000

/* The functions of an engine, as a registered generator must provide them.
   - Initialisation: method 0 seeds from n 32-bit words at params (n may be 0); method 1 leapfrogs, n streams of which
     this one is number *(const int*)params; method 2 skips n elements, params null. Any other method: -2. One that
     can't leapfrog or skip returns -1002 or -1003 and leaves its state alone.
   - Output: n elements uniform on [a, b), or n raw words of wordBytes each. Returns a status, negative on failure.

   A stream's header is 16 bytes, with the identifier in its first four; an engine's own state follows it. */
typedef int (*qor_init_stream)(int method, qor_stream* stream, int n, const unsigned* params);
typedef int (*qor_s_out)(qor_stream* stream, int n, float* r, float a, float b);
typedef int (*qor_d_out)(qor_stream* stream, int n, double* r, double a, double b);
typedef int (*qor_i_out)(qor_stream* stream, int n, unsigned* r);

typedef struct BrngRecord {
  int stateBytes;   /* the whole stream block, header included */
  int seedWords;    /* state words that can be seeded, of wordBytes each */
  int zeroPossible; /* 1 when a raw word can be zero */
  int wordBytes;    /* 4, 8 or 16 */
  int bitsPerWord;  /* significant bits of a raw word */
  qor_init_stream initStream;
  qor_s_out sOut;
  qor_d_out dOut;
  qor_i_out iOut;
} BrngRecord;

/* The registry: 12 predefined generators, then registered ones, 512 at most. __RegBrngs is the same under the numbering
   of old (identifiers 0 .. 278, of which 4 .. 276 are the 273 Wichmann-Hill members). */
extern BrngRecord __RegBrngs[512];
extern BrngRecord __RegBrngsNew[512];
extern int NRegBrngsNew;    /* records in use in __RegBrngsNew */
extern int NumOffsets[512]; /* members of each family */

/* Adds a generator: returns its identifier (positive), 0xD00000 for the first. Checked in this order: stateBytes < 0
   (-1008), wordBytes (-1009), seedWords < 1 (-1010), bitsPerWord < 1 (-1011), dOut, sOut, iOut, initStream null (-5),
   registry full (-1012). A stream of the generator is a block of stateBytes bytes, 16 at least. A record stays for the
   life of the process. */
int __wxrRegisterBrng(const BrngRecord* record);
/* Generators of the current table: 12 and those registered since. */
int __wxrGetNumRegBrngs(void);
/* Copies a generator's record: 0 or -1000. */
int __wxrGetBrngProperties(int brng, BrngRecord* record);
/* The table, entry and member that an identifier means; never fails, and says nothing about whether it exists:
   from 0x100000 the current table, entry (brng >> 20) - 1; 4 .. 276 the legacy table, entry 4, member brng - 4; any
   other the legacy table, entry brng. */
BrngRecord* __wxrGetBrngBaseOffset(int brng, int* entry, int* member);
/* 0, or -1000 when there is no such generator: entry or member negative or beyond the table's. */
int __wxrIsBrngValid(const BrngRecord* table, int entry, int member);

/* ---- streams ----------------------------------------------------------------------------------------------------- */

/* Creates a stream of generator brng, seeded from n words; words beyond what the engine takes are ignored.
   -1000: no such generator, or an abstract one (slot untouched); -4: no memory (slot null); otherwise what the engine's
   initialisation returns. When that fails the stream exists all the same and must be deleted. */
int __wxrNewStreamEx(qor_stream** slot, int brng, int n, const unsigned* seeds);
/* Allocates a stream without initialising its engine: 0, -1000 (slot untouched), or -4 (slot null). */
int __wxrAllocateStream(qor_stream** slot, const BrngRecord* table, int brng, int entry, int member);
/* A copy that continues the sequence where the source stands, with chunks of its own in the same order. 0; -1000: the
   source's generator is unknown (slot untouched); -4: no memory, there is no copy and the slot is null. */
int __wxrCopyStream(qor_stream** slot, const qor_stream* source);
/* Copies the seedable state (wordBytes * seedWords bytes of the source's generator, never beyond either stream's own
   state). 0, or -1005 when the generators differ; the bytes are copied even then. Of the MCG engines it is the current
   value, not the multiplier that leapfrogging sets; of WH it is both, and fits the same member only. An abstract stream
   has no such state: nothing goes in or out. A stream and itself: 0, nothing happens. */
int __wxrCopyStreamState(qor_stream* destination, const qor_stream* source);
/* Makes the stream number k (from 0) of nstreams interleaved ones: it delivers elements k, k + nstreams, ... of its
   sequence. Call it once, on streams that stand at the same place. Of MCG59 and WH an odd nstreams is better than an
   even one (see there). -1002 when the engine can't. */
int __wxrLeapfrogStream(qor_stream* stream, int k, int nstreams);
/* Skips nskip elements of the sequence (of the leapfrogged one after a leapfrog) in a time that hardly depends on
   nskip; none when it is negative. -1003 when the engine can't. */
int __wxrSkipAheadStream(qor_stream* stream, int nskip);
/* Frees the stream and its chunks and sets the slot to null. Returns 0. */
int __wxrDeleteStream(qor_stream** slot);
/* The identifier that the stream was created with. */
int __wxrGetStreamStateBrng(const qor_stream* stream);

/* Chunks. AddChunk gives `data` (from malloc) to the stream: 0 or -4, after which data is still the caller's.
   SearchChunk returns the data of the chunk added last under a key, null when there is none; the stream keeps it.
   DeleteChunks frees all chunks with their data and returns 0. size is the byte count of data, which copies rely on. */
int __wxrAddChunk(qor_stream* stream, unsigned key, void* data, unsigned size);
void* __wxrSearchChunk(const qor_stream* stream, unsigned key);
int __wxrGetNumChunks(const qor_stream* stream);
int __wxrDeleteChunks(qor_stream* stream);

/* ---- stream files ------------------------------------------------------------------------------------------------ */

/* A stream in a file: little-endian, without padding.
     0   "RNG", then a byte 0, the version
     4   four 16-bit words: 16, the length of this header; bytes of state; number of chunks; 0
     12  the identifier that the stream was created with, 32 bits
     16  the engine's state, then for each chunk its key and size, 32 bits each, and its data, the newest chunk first.
   Pending halves of Gaussian pairs are chunks and are saved with the rest. Both functions leave errno alone. */

/* Saves a stream under a name of `length` bytes, or up to its terminating zero when length is negative. A file of that
   name is overwritten. -4: no memory for the name; -1110, nothing is opened: an abstract stream, whose state is
   addresses in this process, or the state of a registered generator that is longer than a file can tell (65535 bytes);
   -1101; -1102; -1100: closing failed, whatever went before. A failed save may leave part of a file behind. Of n chunks
   the newest n modulo 65536 are saved. A chunk without data is saved with size 0. */
int __wxrSaveStreamF(const qor_stream* stream, const char* name, int length);

/* Creates the stream of a file: it continues the sequence where the saved one stood, and holds the same chunks in
   reverse order. Name: terminated. In the order of the checks: -1101; shorter than the header (-1103); not a stream
   file (-1110), of another version (-1111), of a generator that isn't known here (-1110), of another state size or with
   a header shorter than 16 bytes (-1110); no memory (-4); shorter than it says (-1103); a state that the engine can't
   have by seeding and drawing (-1110). From -4 on the slot is null after a failure; earlier ones leave it alone. A
   longer header is accepted, though the state is read from byte 16; bytes after the last chunk are ignored.
   Files need not be trusted, except those of registered generators, whose states are not looked at: memory is allocated
   in proportion to what the file holds, whatever sizes it tells, and drawing from the stream is safe. */
int __wxrLoadStreamF(qor_stream** slot, const char* name);

/* ---- engines ----------------------------------------------------------------------------------------------------- */

/* The functions that the predefined records hold. Output returns 0 and checks nothing: for n < 1 the MCG engines and
   MRG32K3A still store one element and go on by one; the others do nothing. With w a raw word, a number is
   w * ((b - a) * unit) + a in double precision with these roundings, in the single function rounded once more.

   - MCG31M1: x' = 1132489760 x mod 2^31 - 1 (P. L'Ecuyer, Math. Comp. 68, 1999). Words x in 1 .. 2^31 - 2, the first is
     the seed modulo 2^31 - 1 (1 for 0 or none); unit 1/(2^31 - 1). Leapfrogs and skips ahead.
   - R250: x[k] = x[k-250] xor x[k-103] (S. Kirkpatrick and E. Stoll, J. Comput. Phys. 40, 1981). Seeded with
     x[0] .. x[249] when n >= 250, else filled from the first word (1 for 0 or none); the first element is x[250]. Words
     of 32 bits, unit 2^-32.
   - MRG32K3A: two recurrences of order three (P. L'Ecuyer, Operations Research 47, 1999). Seeded with up to six words,
     three a recurrence, missing ones 1. Words 0 .. 2^32 - 210, unit 1/(2^32 - 209). Skips ahead.
   - MCG59: x' = 13^13 x mod 2^59. Words x in 1 .. 2^59 - 1 of 64 bits, low half first; the first is the seed, of up to
     two words and 59 bits (1 for 0 or none); unit 2^-59. Leapfrogs and skips ahead. The lower a bit the shorter its
   period: bit k (from 0) repeats after 2^(k-1) elements, the lowest two never change. Each factor of two in a count of
     leapfrogged streams takes one more bit away: of 2^s streams the lowest s + 2 bits are constant, and the bits above
     them are as poor as the lowest used to be. Take an odd count, or give each stream a stretch by skip-ahead.
   - Sobol, Niederr: quasi-random vectors, told below.
   - MT19937: the Mersenne Twister (M. Matsumoto and T. Nishimura, ACM TOMACS 8, 1998), seeded by array with all n words
     (none: as by the one word 1). Words of 32 bits, unit 2^-32.
   - MT2203: 1024 Mersenne Twisters of period 2^2203 - 1 and 69 words, seeded like MT19937. Members differ in recurrence
     and tempering, so that no sequence is a part of another: one each for the threads or tasks of a job. Give each a
   seed of its own, such as (seed, member): seeded with the same words they start from the same block, and their first
   500 words are alike in many bits. A row of _wxr_mt2203_table is that member's twist constant and its two tempering
   masks.
   - WH, 273 members: four generators x' = a x mod m added modulo 1 (B. A. Wichmann and I. D. Hill, Applied Statistics
     31, 1982), m a prime below 2^24 with (m - 1)/2 prime, a a primitive root; no two members share a modulus, and each
     has a period above 2^92. Seeded with up to four words, missing ones 1, each modulo its m with 1 for 0; the first
     element comes after the seed. Words are the four x, of 32 bits each; the number is
     u = s - floor(s), s = ((x0 r0 + x1 r1) + x2 r2) + x3 r3, r = 1/m, in double precision, and on an interval
     u * (b - a) + a. Leapfrogs and skips ahead; an odd count of leapfrogged streams keeps the period, an even one
   halves each component's. */
#define QOR_ENGINE(tag)                                                                          \
  int __wxrBRng##tag##InitStream(int method, qor_stream* stream, int n, const unsigned* params); \
  int __wxrsBRng##tag(qor_stream* stream, int n, float* r, float a, float b);                    \
  int __wxrdBRng##tag(qor_stream* stream, int n, double* r, double a, double b);                 \
  int __wxriBRng##tag(qor_stream* stream, int n, unsigned* r);
QOR_ENGINE(MCG31M1)
QOR_ENGINE(R250)
QOR_ENGINE(MRG32K3A)
QOR_ENGINE(MCG59)
QOR_ENGINE(MT19937)
QOR_ENGINE(MT2203)
QOR_ENGINE(WH)
QOR_ENGINE(iAbstract)
QOR_ENGINE(dAbstract)
QOR_ENGINE(sAbstract)
QOR_ENGINE(Sobol)
QOR_ENGINE(Niederr)
#undef QOR_ENGINE
extern const unsigned _wxr_mt2203_table[1024][3];

/* Quasi-random vectors. Sobol (I. M. Sobol, 1967) has up to 40 dimensions, Niederr (H. Niederreiter, base 2, 1988) up
   to 318. The elements of a stream are the coordinates of one vector after another, whatever requests they are drawn
   by: element i belongs to vector i / d and coordinate i % d. Vectors come in the order of the Gray code from the
   origin on, 2^32 of them, and then again. Words of 32 bits, unit 2^-32. The origin's words are zero, although the
   records' zeroPossible is 0.
   Seeding. None or one word: the dimension d; anything out of range means 1. Sobol's table is our own, with Sobol's
   property A and the best two-dimensional projections of a search; Niederr's polynomials are the irreducible ones from
   x on by degree and value. More words are a table of the caller's: d, and then
     Sobol     for each coordinate a primitive polynomial, bit i being the coefficient of x^i, and as many initial
               direction numbers as its degree s, m[1] .. m[s], odd and m[k] < 2^k; the polynomial may also be 1,
               without numbers, which is the van der Corput sequence;
     Niederr   for each coordinate an irreducible polynomial.
   Degrees are 31 at most and all polynomials differ. The words must end with the table. A table that isn't so is
   refused with -3, and for want of memory with -4: the stream then has dimension 1. The stream keeps an accepted table
   as the chunk of the key below, for the caller to look up; drawing doesn't read it. Seeding anew deletes chunks of
   that key.
   Leapfrog splits by coordinates: nstreams must be d, and stream k then delivers coordinate k of the vectors, beginning
   with the first that has it still to be delivered; else -1002. Its further leapfrogs are those of dimension 1. */
#define QOR_RNG_CHUNK_SOBOL 5u
#define QOR_RNG_CHUNK_NIEDERR 6u

/* ---- abstract streams -------------------------------------------------------------------------------------------- */

/* Streams of the caller's own numbers: a hardware generator, a file, another program. Such a stream delivers out of a
   buffer of n elements that the caller owns, and calls the caller's function whenever it has used them up.

   What the buffer holds: unsigned ones words whose 32 bits are all random, doubles and singles numbers uniform on
   [a, b). It is empty at first: what it held before is never read. It must exist, and be left alone outside the
   callback, for as long as the stream is drawn from; deleting the stream doesn't touch it.

   The callback is to store elements at buffer[*idx], buffer[*idx + 1] ... and to return their count:
     *n     elements that the buffer has room for, all of it: a callback is made when none is left
     *nmin  at least so many are needed: what is left of the request, or the whole room when that is less
     *nmax  at most so many may be stored; any count from *nmin on will do, the surplus serves later requests
     *idx   where to start; *idx + *nmax never exceeds the buffer's length
   The four are copies: what is stored in them has no effect. A returned count outside *nmin .. *nmax, negative ones
   included, ends the request with -1020. Elements delivered before stay stored in the result. When the count was short
   but not negative, what the callback did store serves the next request, so that a device may catch up; nothing is kept
   of a count beyond *nmax. The next request calls again.
   The callback runs in the thread that draws, with its control words, and may call any function of the library but
   those that draw from this stream, change it, or delete it. Data of its own it may keep in a chunk of the stream
   (__wxrSearchChunk; keys below 16 are the library's). What it leaves in errno stays.

   What a stream delivers. Requests for none or less do nothing.
     unsigned: words as they are; numbers a + (b - a) w 2^-32 with the roundings of the engines above.
     double:   on its own [a, b) the numbers as they are; on another [a', b') (v - a) * ((b' - a') / (b - a)) + a' in
               double precision. Singles are that rounded once more. A number gives a word,
               floor((v - a) * (2^32 / (b - a))).
     single:   numbers likewise, in double precision; doubles made of them have the 24 bits of a single. Two numbers
               give a word, the first its high 16 bits, floor((v - a) * (2^16 / (b - a))), and the second the low ones.
   A number outside the stream's interval is mapped like any other, and to the nearest word (not a number: to 0).
   Distributions draw what they need by these rules, from any of the three.

   Abstract streams neither leapfrog (-1002) nor skip ahead (-1003). A copy (__wxrCopyStream) has the same buffer and
   callback: draw from one of the two only, since each refill overwrites what the other has not delivered yet. Its state
   is addresses: it is not saved (-1110), and a file that claims to be one is not loaded (-1110).

   The constructors return 0; -3 when stream, buffer or callback is null, n < 1, a or b is no finite number, not a < b,
   or b - a overflows (*stream untouched); -4: no memory (*stream null). They pass initialisation method 0 a block of 6
   words, or 10: n, buffer, callback, three of zero, and as doubles a and b; another count or bad values there: -3. */
typedef int (*qor_i_update)(qor_stream* stream, int* n, unsigned* buffer, int* nmin, int* nmax, int* idx);
typedef int (*qor_d_update)(qor_stream* stream, int* n, double* buffer, int* nmin, int* nmax, int* idx);
typedef int (*qor_s_update)(qor_stream* stream, int* n, float* buffer, int* nmin, int* nmax, int* idx);
int __wxriNewAbstractStream(qor_stream** stream, int n, unsigned* buffer, qor_i_update callback);
int __wxrdNewAbstractStream(qor_stream** stream, int n, double* buffer, double a, double b, qor_d_update callback);
int __wxrsNewAbstractStream(qor_stream** stream, int n, float* buffer, float a, float b, qor_s_update callback);

/* Modular powers, the arithmetic of leapfrog and skip-ahead. m > 0; exponents n below 1 give the identity; matrices are
   nine words by rows; a result may be one of the arguments. */
unsigned __wxriPowMod(unsigned a, int n, unsigned m);          /* a^n mod m */
unsigned __wxriPowMod2P31M1(unsigned a, int n);                /* a^n mod 2^31 - 1, a below that */
uint64_t __wxriPowMod2P59(unsigned low, unsigned high, int n); /* (low + 2^32 high)^n mod 2^59 */
/* v := A^n v mod m, A with the rows (0, 1, 0), (0, 0, 1), (row[2], row[1], row[0]). */
void __wxriVect3PowMod(unsigned* v, const unsigned* row, unsigned m, int n);
void __wxriMatr3x3PowMod(const unsigned* a, unsigned* result, unsigned m, int n);                 /* a^n */
void __wxriMatr3x3MulMod(const unsigned* a, const unsigned* b, unsigned* result, unsigned m);     /* a b */
void __wxriMatr3x3VectMulMod(const unsigned* a, const unsigned* v, unsigned* result, unsigned m); /* a v */

/* ---- distributions ----------------------------------------------------------------------------------------------- */

/* Bit of the method word: continuous uniform results are forced into [a, b]. */
#define QOR_RNG_METHOD_ACCURATE 0x40000000u

/* Uniform on [a, b): a + (b - a) u with u the engine's number, as the engines' output functions tell. Rounding can
   deliver b itself or a number beyond an end; with the accurate bit nothing outside [a, b]. Method 0, or that bit;
   other bits are ignored. Returns the engine's status and checks nothing itself. */
int _wxrdRngUniform(unsigned method, qor_stream* stream, int n, double* r, double a, double b);
int _wxrsRngUniform(unsigned method, qor_stream* stream, int n, float* r, float a, float b);
/* Integers uniform on a .. b - 1: floor of the double generator's numbers on [a, b), 1024 at a time. The method is
   ignored. n < 1 returns 0 and leaves the stream alone. A negative status of the engine ends the work; the integers of
   the blocks before stay stored. */
int _wxriRngUniform(unsigned method, qor_stream* stream, int n, int* r, int a, int b);
/* The engine's raw words and its status; r has room for n * wordBytes bytes. The method is ignored. */
int _wxriRngUniformBits(unsigned method, qor_stream* stream, int n, unsigned* r);

/* Gaussian of mean a and deviation sigma (G. E. P. Box and M. E. Muller, Ann. Math. Stat. 29, 1958).
   Method 0: sqrt(-2 ln u1) sin(2 pi u2), two uniform numbers a variate. Method 1: the sine and then the cosine of each
   pair; an odd request leaves its pair's other half on the stream (chunk 2 in double, 1 in single precision) for the
   next one. ln 0 counts as the logarithm of the smallest subnormal number, so that all results are finite. Method 1:
   splits give the same sequence but for the last bits of halves that were kept. n < 1 returns 0. */
#define QOR_RNG_GAUSSIAN_BOXMULLER 0
#define QOR_RNG_GAUSSIAN_BOXMULLER2 1
int _wxrdRngGaussian(int method, qor_stream* stream, int n, double* r, double a, double sigma);
int _wxrsRngGaussian(int method, qor_stream* stream, int n, float* r, float a, float sigma);
/* The two methods by themselves. */
int _vdRngGaussianBoxMuller(qor_stream* stream, int n, double* r, double a, double sigma);
int _vdRngGaussianBoxMuller2(qor_stream* stream, int n, double* r, double a, double sigma);
int _vsRngGaussianBoxMuller(qor_stream* stream, int n, float* r, float a, float sigma);
int _vsRngGaussianBoxMuller2(qor_stream* stream, int n, float* r, float a, float sigma);

/* Continuous distributions, whose numbers u are uniform on [0, 1) and drawn by the uniform generator.
   The method is ignored, where nothing else is said, and so are impossible parameters: beta, sigma and alpha should be
   positive. n < 1 returns 0 and touches nothing. A negative status of the engine is returned; of the generators that
   draw by blocks the blocks before stay stored. The thread's mode and callback are as before on return, and errors
   inside are reported to nobody. ln 0 counts as the logarithm of the smallest subnormal number, -744.44 in double and
   -103.28 in single precision, so that results are finite. Each variate needs a fixed count of uniform numbers, in
   order, so that splits give the same sequence (Lognormal: but for the last bits of Gaussian halves that were kept;
   Gamma: as told there). Errors are those of the kernels: a few units in the last place of the standard variate.

     Exponential  density exp(-y)/beta, y = (x - a)/beta >= 0: a - beta ln u. Never below a.
     Laplace      exp(-|y|)/(2 beta), y = (x - a)/beta: two numbers, u and s: a + beta ln u when s > 1/2, otherwise
                  a - beta ln u. In blocks of 1024 variates.
     Weibull      alpha/beta y^(alpha - 1) exp(-y^alpha), y = (x - a)/beta >= 0: a + beta (-ln u)^(1/alpha). Never
                  below a.
     Cauchy       1/(pi beta (1 + y^2)), y = (x - a)/beta: a + beta tan v, v uniform on [-pi/2, pi/2). Runs under the
                  caller's mode.
     Rayleigh     2 y/beta exp(-y^2), y = (x - a)/beta >= 0: a + beta sqrt(-ln u); there is no 2 under the root. Never
                  below a.
     Lognormal    exp(-(ln y - a)^2/(2 sigma^2))/(sigma sqrt(2 pi) (x - b)), y = (x - b)/beta > 0: b + beta exp(g), g
                  Gaussian of mean a and deviation sigma by its method 1, with which it shares pending halves. Never
                  below b. The exponential function runs under the caller's mode, so that an overflow is the caller's
                  to see. -4: no memory for the pending half.
     Gumbel       exp(y - exp(y))/beta, y = (x - a)/beta: a + beta ln(-ln u). */
int _wxrdRngExponential(int method, qor_stream* stream, int n, double* r, double a, double beta);
int _wxrsRngExponential(int method, qor_stream* stream, int n, float* r, float a, float beta);
int _wxrdRngLaplace(int method, qor_stream* stream, int n, double* r, double a, double beta);
int _wxrsRngLaplace(int method, qor_stream* stream, int n, float* r, float a, float beta);
int _wxrdRngWeibull(int method, qor_stream* stream, int n, double* r, double alpha, double a, double beta);
int _wxrsRngWeibull(int method, qor_stream* stream, int n, float* r, float alpha, float a, float beta);
int _wxrdRngCauchy(int method, qor_stream* stream, int n, double* r, double a, double beta);
int _wxrsRngCauchy(int method, qor_stream* stream, int n, float* r, float a, float beta);
int _wxrdRngRayleigh(int method, qor_stream* stream, int n, double* r, double a, double beta);
int _wxrsRngRayleigh(int method, qor_stream* stream, int n, float* r, float a, float beta);
int _wxrdRngLognormal(int method, qor_stream* stream, int n, double* r, double a, double sigma, double b, double beta);
int _wxrsRngLognormal(int method, qor_stream* stream, int n, float* r, float a, float sigma, float b, float beta);
int _wxrdRngGumbel(int method, qor_stream* stream, int n, double* r, double a, double beta);
int _wxrsRngGumbel(int method, qor_stream* stream, int n, float* r, float a, float beta);

/* Gamma of shape alpha: density y^(alpha - 1) exp(-y)/(beta Gamma(alpha)), y = (x - a)/beta >= 0; never below a. -3 when
   alpha is infinite or not positive; beta should be positive; the rest as for the continuous distributions above.
   Rejection, in blocks of 512 candidates:
     alpha > 1          G. Marsaglia and W. W. Tsang, ACM TOMS 26 (2000). A candidate that wasn't needed stays on the
                        stream (chunk 7 in double, 8 in single precision): n variates and n more are the 2n of one
                        request, and leave the stream at the same place. When the engine fails the candidate of before
                        stays. -4: no memory for the chunk.
     alpha = 1          the exponential generator
     0.6 <= alpha < 1   I. Vaduva (1977), from the Weibull distribution
     alpha < 0.6        the power of a variate of density exp(-y^(1/alpha)), after J. H. Ahrens and U. Dieter (1974)
   In the last two the splits of a request change the sequence, not the distribution. */
int _wxrdRngGamma(int method, qor_stream* stream, int n, double* r, double alpha, double a, double beta);
int _wxrsRngGamma(int method, qor_stream* stream, int n, float* r, float alpha, float a, float beta);

/* Beta: density y^(p - 1) (1 - y)^(q - 1)/(beta B(p, q)), y = (x - a)/beta from 0 to 1; never outside [a, a + beta].
   Method 0; -2 for another. p, q and beta positive and finite, a finite; otherwise -3. Rejection in blocks of 512
   candidates of two uniform numbers, in double precision: M. D. Joehnk (1964) for p, q <= 1, else R. C. H. Cheng,
   Communications of the ACM 21 (1978), BB when both exceed 1 and BC when one does. Splits of a request change the
   sequence, not the distribution. Fails like the continuous distributions above. */
int _wxrdRngBeta(int method, qor_stream* stream, int n, double* r, double p, double q, double a, double beta);
int _wxrsRngBeta(int method, qor_stream* stream, int n, float* r, float p, float q, float a, float beta);

/* Multivariate Gaussian: n vectors of d elements, a + T z, z standard normal numbers by the Gaussian generator's
   method; the variance is T times its transpose. Vector j is r[j d] .. r[j d + d - 1]. The lower triangular T is stored
     full       d d elements, (i, k) at T[i d + k]; those above the diagonal are not read
     packed     the lower triangle column by column, d (d + 1)/2 elements
     diagonal   d elements
   Another storage leaves the n d standard normal numbers as they are. d = 1 is the Gaussian generator with mean a[0]
   and deviation T[0]. d >= 1, and n d below 2^31. Method 1: n vectors and n more are the 2n of one request but for
   last bits, method 0 exactly. Returns the Gaussian generator's status, nothing transformed
   when it is negative (-4: no memory for method 1's pending half). Nothing else is allocated. */
#define QOR_RNG_STORAGE_FULL 0
#define QOR_RNG_STORAGE_PACKED 1
#define QOR_RNG_STORAGE_DIAGONAL 2
int _wxrdRngGaussianMV(int method, qor_stream* stream, int n, double* r, int d, int storage, const double* a,
                       const double* t);
int _wxrsRngGaussianMV(int method, qor_stream* stream, int n, float* r, int d, int storage, const float* a,
                       const float* t);

/* Discrete distributions. Method 0 (Poisson: 0 or 1); another one is refused with -2, bad parameters with -3, before
   anything is drawn or stored. n < 1 returns 0. A negative status of the engine is returned, the blocks before stay
   stored. The thread's mode and callback are as before on return. Nothing is allocated but where it is said. What a
   request needs is set up once, and depends on the parameters alone: up to 10 microseconds, so that long requests are
   much cheaper than many short ones.

   Tables: while the probabilities above 2^-60 of the largest are at most 1536, by inversion with a guide table (H.-C.
   Chen and Y. Asau, AIIE Transactions 6, 1974): the least k with u < P(X <= k). One uniform number a variate, so that
   splits give the same sequence, and quasi-random streams serve as well as others. When all but 2^-10 of the
   probability is at one k, two numbers a variate give u 21 bits more than the engine's: probabilities far below its
   resolution, 2^-32 mostly, keep their proportion.
   Beyond: rejection under a staircase of 256 steps (J. H. Ahrens, 1993), exact to the error of the probabilities,
   some 10^-12 (10^-7 at most). Splits change the sequence, not the distribution.

     Bernoulli        1 with probability p, else 0: u < p. 0 <= p <= 1. One number a variate, two when p or 1 - p is
                      below 2^-12.
     Geometric        p (1 - p)^k, k >= 0: failures before the first success. 0 < p <= 1. By table for p >= 1/32, below
                      that ln u / ln(1 - p), rounded down, from one number, or two when p < 2^-10; at most 2^31 - 1.
                      Splits give the same sequence.
     Binomial         C(ntrial, k) p^k (1 - p)^(ntrial - k). 0 <= p <= 1, ntrial >= 0. By table while
                      ntrial p (1 - p) <= 3000.
     Hypergeometric   C(m, k) C(l - m, s - k)/C(l, s): marked elements among s drawn from l, of which m are marked.
                      0 <= s, m <= l. By table while the variance s m (l - m) (l - s)/(l^2 (l - 1)) is at most 3000.
     Poisson          lambda^k exp(-lambda)/k!. 0 <= lambda <= 2^30. By table while lambda <= 3000. Method 1 rounds
                      lambda + sqrt(lambda) g + (g^2 - 1)/6, g normal by method 1 of the Gaussian generator, with which
                      it shares pending halves (E. A. Cornish and R. A. Fisher, 1938): P(X <= k) is off by at most
                      0.015/lambda. Below lambda = 10 it is method 0. -4: no memory for the pending half.
     PoissonV         the same with a parameter each, lambda[0] .. lambda[n - 1]. Below 10 by inversion, from there on
                      by transformed rejection (W. Hoermann, Insurance: Mathematics and Economics 12, 1993, PTRS).
                      Splits change the sequence.
     Negbinomial      Gamma(a + k)/(Gamma(a) k!) p^a (1 - p)^k. a > 0 and finite, 0 < p <= 1; at most 2^31 - 1. By table
                      while it fits; otherwise Poisson with Gamma variates of shape a and scale (1 - p)/p for its
                      parameter, whose candidates stay on the stream as Gamma's do: -4 without memory for them; splits
                      change the sequence.
   With p = 0 or 1, lambda = 0 and the like there is but one outcome, and nothing is drawn. */
int _wxriRngBernoulli(int method, qor_stream* stream, int n, int* r, double p);
int _wxriRngGeometric(int method, qor_stream* stream, int n, int* r, double p);
int _wxriRngBinomial(int method, qor_stream* stream, int n, int* r, int ntrial, double p);
int _wxriRngHypergeometric(int method, qor_stream* stream, int n, int* r, int l, int s, int m);
#define QOR_RNG_POISSON_NORMAL 1
int _wxriRngPoisson(int method, qor_stream* stream, int n, int* r, double lambda);
int _wxriRngPoissonV(int method, qor_stream* stream, int n, int* r, const double* lambda);
int _wxriRngNegbinomial(int method, qor_stream* stream, int n, int* r, double a, double p);

#ifdef __cplusplus
}
#endif
#endif
