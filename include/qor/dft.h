/* qor/dft.h: discrete Fourier transforms of arrays of one to seven dimensions and any lengths, real or complex, single
   or double precision, one or many at a time, on one or several processors, through descriptors.

     qor_dft_descriptor* d;
     int n[2] = {480, 640};
     double back = 1.0 / (480 * 640);
     int apart = QOR_DFT_OUT_OF_PLACE;
     if (qor_dft_zx9_create_descriptor_external(&d, QOR_DFT_DOUBLE, QOR_DFT_REAL, 2, n) == 0) {
       qor_dft_zx9_set_value_external(d, QOR_DFT_PLACEMENT, &apart);
       qor_dft_zx9_set_value_external(d, QOR_DFT_BACKWARD_SCALE, &back);
       if (qor_dft_zx9_commit_descriptor_external(d) == 0)
         qor_dft_zx9_compute_forward_external(d, picture, spectrum);
       qor_dft_zx9_free_descriptor_external(&d);
     }

   Definition. A descriptor tells of two arrays, the signal x and its spectrum X:

     forward   X[k] = s sum over j of x[j] exp(-2 pi i (j1 k1 / n1 + ... + jr kr / nr))      s the forward scale
     backward  x[j] = t sum over k of X[k] exp(+2 pi i (j1 k1 / n1 + ... + jr kr / nr))      t the backward scale

   Arrays. An element is a real, or a complex number of a real and an imaginary part. With the strides S[0] .. S[r] of an
   array and the distance D, element (j1, ..., jr) of transform m = 0, 1, ... is number

     S[0] + j1 S[1] + ... + jr S[r] + m D.

   Strides and distances count elements of the array that they belong to, may be negative, and must nest: sorted by
   magnitude, each is larger than all smaller ones together reach. Arrays may start at any address that is a multiple of
   4. Nothing but the elements is written, and an out-of-place transform leaves its input as it is. Without strides given
   an array is dense in the order of its dimensions, the last one varying fastest, except that in place the rows of a real
   signal are padded to the length of the spectrum's rows.

   Spectra of real signals. X[n - k] is the conjugate of X[k], so about half of the elements are kept:

     half-spectrum     complex elements, the last dimension of n/2 + 1 ones (n/2 rounded down)
     Perm, Pack, CCS   reals, for rank 1 and 2. With (k) for the pair of real and imaginary part at frequency k, a row is
                         Perm  even n: re(0) re(n/2) (1) ... (n/2 - 1)     odd n: re(0) (1) ... ((n - 1)/2)
                         Pack  even n: re(0) (1) ... (n/2 - 1) re(n/2)     odd n: re(0) (1) ... ((n - 1)/2)
                         CCS   even n: re(0) 0 (1) ... re(n/2) 0           odd n: re(0) 0 (1) ... ((n - 1)/2)
                       n reals, in CCS n + 2 and n + 1. Of rank 2, columns that hold pairs hold the n1 elements of one
                       frequency k2; the columns of re(0) and re(n/2) hold spectra of n1 reals, downwards in the same
                       form. So CCS has n1 + 2 or n1 + 1 rows; what no element claims is written as zero and not read.

   Backward transforms take a half-spectrum's elements for what they are in a conjugate-even spectrum: imaginary parts
   that vanish there don't count for rank 1; for higher ranks they must be those of such a spectrum.

   Results depend on the arguments alone: not on alignment, thread count, the caller's rounding mode. The root mean square
   error relative to that of the result is at most 0.6 eps sqrt(log2 N) for N points, with lengths that have prime factors
   above 13 twice that, eps = 2^-23 or 2^-52.

   Methods. By dimension: rows by self-sorting mixed-radix passes (T. G. Stockham, 1966; prime factors above 13: C. M.
   Rader, Proc. IEEE 56, 1968, L. I. Bluestein, IEEE Trans. Audio 18, 1970), further dimensions by decimation in time (J. W.
   Cooley and J. W. Tukey, Math. Comp. 19, 1965) on groups of columns. Every length takes O(N log N).

   Threads. A transform runs on as many threads as the thread limit, OpenMP's settings (OMP_NUM_THREADS) and
   qor_serv_in_serial (qor/service.h) allow, if it is large enough to gain. A committed descriptor may compute from any
   number of threads at once; setting, committing and freeing are for one thread at a time. A process that forks after a
   transform on several threads must set a thread limit of 1 in the child, as with any use of OpenMP. Threads that wait
   spin for some milliseconds, as OpenMP's do: where other programs want the processors too, start the program with
   OMP_WAIT_POLICY=passive. */
#ifndef QOR_DFT_H
#define QOR_DFT_H

#ifdef __cplusplus
extern "C" {
#endif

/* The contents are the library's. */
typedef struct qor_dft_descriptor qor_dft_descriptor;

/* ---- parameters and their values --------------------------------------------------------------------------------- */

/* What create fixes; read only. */
#define QOR_DFT_PRECISION 1 /* int: */
#define QOR_DFT_DOUBLE 36
#define QOR_DFT_SINGLE 37
#define QOR_DFT_DOMAIN 2 /* int, of the signal: */
#define QOR_DFT_COMPLEX 32
#define QOR_DFT_REAL 33
#define QOR_DFT_RANK 3    /* int, 1 .. 7 */
#define QOR_DFT_LENGTHS 4 /* int[rank], the slowest dimension first */

/* Set before the commit. Setting makes a descriptor uncommitted. */
#define QOR_DFT_BACKWARD_SCALE 5 /* double, whatever the precision; 1 */
#define QOR_DFT_FORWARD_SCALE 6  /* double; 1 */
#define QOR_DFT_SIGNAL_STRIDES 7 /* int[rank + 1]: the offset, then a stride for each dimension; dense */
#define QOR_DFT_SPECTRUM_STRIDES 8
#define QOR_DFT_TRANSFORMS 9  /* int, how many at a time; 1 */
#define QOR_DFT_CE_STORAGE 10 /* int, elements of conjugate-even spectra (real domain): */
#define QOR_DFT_CE_COMPLEX 39 /* complex, the default */
#define QOR_DFT_CE_REAL 40    /* real */
#define QOR_DFT_PLACEMENT 11  /* int: */
#define QOR_DFT_OUT_OF_PLACE 44
#define QOR_DFT_IN_PLACE 45        /* the default */
#define QOR_DFT_SIGNAL_DISTANCE 12 /* int; needed for more than one transform */
#define QOR_DFT_SPECTRUM_DISTANCE 13
#define QOR_DFT_THREAD_LIMIT 14  /* int, 0 for no limit of its own; 0 */
#define QOR_DFT_PACKED_FORMAT 21 /* int, of conjugate-even spectra (real domain): */
#define QOR_DFT_HALF_SPECTRUM 57 /* with complex elements, the default */
#define QOR_DFT_PERM 58          /* with real elements */
#define QOR_DFT_PACK 59
#define QOR_DFT_CCS 60

/* Read only. */
#define QOR_DFT_COMMIT_STATUS 22 /* int: */
#define QOR_DFT_UNCOMMITTED 46
#define QOR_DFT_COMMITTED 47
#define QOR_DFT_VERSION 23 /* const char*, a text that stays */

/* ---- what the functions return ----------------------------------------------------------------------------------- */

#define QOR_DFT_OK 0
#define QOR_DFT_NO_MEMORY (-3000)
/* an argument: */
#define QOR_DFT_NULL_POINTER (-3001)
#define QOR_DFT_NOT_A_DESCRIPTOR (-3002)
#define QOR_DFT_BAD_PRECISION (-3003)
#define QOR_DFT_BAD_DOMAIN (-3004)
#define QOR_DFT_BAD_RANK (-3005)
#define QOR_DFT_BAD_LENGTH (-3006)
#define QOR_DFT_UNKNOWN_PARAMETER (-3007)
#define QOR_DFT_READ_ONLY (-3008)
#define QOR_DFT_BAD_VALUE (-3009)
/* settings that don't go together, found by commit: */
#define QOR_DFT_FORMAT_MISMATCH (-3020)
#define QOR_DFT_FORMAT_RANK (-3021)
#define QOR_DFT_SIGNAL_LAYOUT (-3022)
#define QOR_DFT_SPECTRUM_LAYOUT (-3023)
#define QOR_DFT_NO_DISTANCE (-3024)
#define QOR_DFT_IN_PLACE_LAYOUT (-3025)
#define QOR_DFT_IN_PLACE_REAL_LAYOUT (-3026)
#define QOR_DFT_TOO_LARGE (-3027)
/* the order of calls: */
#define QOR_DFT_NOT_COMMITTED (-3040)
#define QOR_DFT_PLACEMENT_MISMATCH (-3041)

/* Classes of statuses. */
#define QOR_DFT_CLASS_OK 0
#define QOR_DFT_CLASS_MEMORY 1
#define QOR_DFT_CLASS_ARGUMENT 2
#define QOR_DFT_CLASS_SETTINGS 3
#define QOR_DFT_CLASS_STATE 4

/* 1 when the status is one of the class, else 0. */
int qor_dft_zx9_error_class_external(int status, int error_class);
/* What a status means and what to change, in a sentence that stays. Unknown statuses have one too. */
const char* qor_dft_zx9_error_message_external(int status);

/* ---- descriptors ------------------------------------------------------------------------------------------------- */

/* Makes a descriptor; on failure *handle is left as it is. Failures: NULL_POINTER (handle, lengths), BAD_PRECISION,
   BAD_DOMAIN, BAD_RANK, BAD_LENGTH (below 1), NO_MEMORY, in this order. */
int qor_dft_zx9_create_descriptor_external(qor_dft_descriptor** handle, int precision, int domain, int rank,
                                           const int* lengths);
/* A descriptor with the same settings, committed if the original is. NULL_POINTER, NOT_A_DESCRIPTOR, NO_MEMORY. */
int qor_dft_zx9_copy_descriptor_external(const qor_dft_descriptor* handle, qor_dft_descriptor** copy);
/* Takes the memory back and clears *handle; a null *handle is left alone. NULL_POINTER, NOT_A_DESCRIPTOR. */
int qor_dft_zx9_free_descriptor_external(qor_dft_descriptor** handle);

/* Sets a parameter, of which there is a list above, to *value; on failure it stays. NULL_POINTER, NOT_A_DESCRIPTOR,
   UNKNOWN_PARAMETER, READ_ONLY, BAD_VALUE, in this order. */
int qor_dft_zx9_set_value_external(qor_dft_descriptor* handle, int parameter, const void* value);
/* Reads a parameter to *value. Strides and distances that weren't given are those that a commit would take. */
int qor_dft_zx9_get_value_external(const qor_dft_descriptor* handle, int parameter, void* value);

/* Checks the settings and makes the tables. Failures: the statuses for settings that don't go together, NO_MEMORY; the
   descriptor is uncommitted then. Committing again does nothing. */
int qor_dft_zx9_commit_descriptor_external(qor_dft_descriptor* handle);

/* Transforms from the signal to the spectrum, and from the spectrum to the signal. In place, out is null or in. Failures:
   NULL_POINTER (handle, in), NOT_A_DESCRIPTOR, NOT_COMMITTED, PLACEMENT_MISMATCH (in place with another out, or out of
   place with none or the same), NO_MEMORY for work space; nothing is written then. */
int qor_dft_zx9_compute_forward_external(const qor_dft_descriptor* handle, void* in, void* out);
int qor_dft_zx9_compute_backward_external(const qor_dft_descriptor* handle, void* in, void* out);

#ifdef __cplusplus
}
#endif
#endif
