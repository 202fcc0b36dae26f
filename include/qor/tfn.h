/* qor/tfn.h: vector mathematics. Elementwise functions over arrays, their per-thread mode, status and error callback.

   Arrays. n is the element count; n <= 0 returns at once. Arrays are contiguous and may start at any address that is a
   multiple of 4, doubles included. An output may be the same array as an input (in place); partial overlap is not
   allowed. Nothing outside the n elements is read or written.

   Results. An element's result depends on its argument alone: not on its index, on n, on alignment or on being in
   place, nor on the caller's rounding mode, flush-to-zero setting or exception masks, which are set aside during the
   work.

   Accuracy, in units in the last place of the exact result over the whole domain, subnormals included:
     _HA  at most 0.55 (double), 0.51 (single);  _50 (double) and _21 (single)  at most 2.0,
     but for _tfndLn_50 within 1/128 of 1: at most 3.5; _tfnsInvSqrt_21: at most 3.0; _tfndTanh_50: at most
     2.5; the cosines of _21, _tfnsTan_21, _tfnsAsin_21, _tfnsAcosh_21 and _tfnsAtanh_21: at most 2.1.
   docs/accuracy.md has the measured figures.

   Bad elements never stop a function. It stores the conventional special result, reports the element (below) and goes
   on. NaN arguments give NaN without a report.

   Threads. All functions may be called from any number of threads at once. Mode, status, callback and base pointer are
   per thread; a new thread starts with TFN_MODE_DEFAULT, status 0 and no callback. */
#ifndef QOR_TFN_H
#define QOR_TFN_H

#ifdef __cplusplus
extern "C" {
#endif

/* ---- mode ---------------------------------------------------------------------------------------------------- */

/* Accuracy, bits 0-3: 1 or 2. Functions don't read it; with TFN_FPU_MODE1 it selects the x87 precision. */
#define TFN_ACCURACY_MASK 0x0000000Fu
/* x87 control, bits 4-7. MODE1 asks for a 53-bit significand (with accuracy 1 or 2), MODE2 for 64 bits; both set
   rounding to nearest when they rewrite the control word. RESTORE loads the word saved before the first of them. */
#define TFN_FPU_MASK 0x000000F0u
#define TFN_FPU_MODE1 0x00000010u
#define TFN_FPU_MODE2 0x00000020u
#define TFN_FPU_RESTORE 0x00000030u
/* Error handling, bits 8-15. IGNORE counts only when it is the whole field. */
#define TFN_ERR_MASK 0x0000FF00u
#define TFN_ERR_IGNORE 0x00000100u
#define TFN_ERR_ERRNO 0x00000200u
#define TFN_ERR_STDERR 0x00000400u
#define TFN_ERR_EXCEPT 0x00000800u
#define TFN_ERR_CALLBACK 0x00001000u
/* Bits 16-17 are stored and returned, nothing more. */
#define TFN_EXTRA_MASK 0x00030000u
/* Accuracy 2, errno, exception and callback handling. */
#define TFN_MODE_DEFAULT 0x00001A02u

/* Sets the fields that are not zero in `mode` and keeps the others; so a field can't be set to zero. Returns the mode
   before the call. */
unsigned _tfnSetMode(unsigned mode);
unsigned _tfnGetMode(void);

/* ---- status and errors ----------------------------------------------------------------------------------------- */

#define TFN_STATUS_OK 0
#define TFN_STATUS_BADSIZE (-1) /* errno EINVAL */
#define TFN_STATUS_BADMEM (-2)  /* errno EACCES */
#define TFN_STATUS_ERRDOM 1     /* argument out of domain; errno EDOM, raises invalid operation */
#define TFN_STATUS_SING 2       /* pole; errno ERANGE, raises division by zero */
#define TFN_STATUS_OVERFLOW 3   /* errno ERANGE, raises nothing */
#define TFN_STATUS_UNDERFLOW 4  /* errno ERANGE, raises underflow */

/* The status is that of the last reported element; success never clears it. */
int _tfnGetErrStatus(void);
int _tfnSetErrStatus(int status); /* returns the previous status */
int _tfnClearErrStatus(void);     /* returns the previous status */

/* One failing element, as callbacks and handlers see it. Singles are widened to double. For BADSIZE and BADMEM the four
   values are not filled in. The record lives only during the call. */
typedef struct TfnErrorContext {
  int code;          /* TFN_STATUS_... */
  int index;         /* the element, counted from the base pointer when one is set; the length for BADSIZE */
  double arg1, arg2; /* arguments as the arrays hold them now: in place, that is the special result already */
  double res1, res2; /* results; one-result functions have both equal */
  char funcName[64]; /* the function's name; not terminated when it has 64 characters */
  int funcNameLen;
} TfnErrorContext;

/* Called for each failing element, in index order, when the mode has TFN_ERR_CALLBACK. Returning 0 lets the other
   handlers of the mode run and stores res1 and res2, changed or not, as the element's results; any other value ends the
   report there. A callback must return: it may not throw or jump out. */
typedef int (*TfnErrorCallBack)(TfnErrorContext* context);
TfnErrorCallBack _tfnSetErrorCallBack(TfnErrorCallBack callback); /* returns the previous one */
TfnErrorCallBack _tfnGetErrorCallBack(void);
TfnErrorCallBack _tfnClearErrorCallBack(void); /* returns the previous one */

/* While not null, reported indices count from `base`: for callers that pass a large array piece by piece. */
void _tfnSetInterfInputVectorPointer(const void* base);

/* ---- the error path, for functions outside the library that report the same way -------------------------------- */

/* Reports element `index` of the arrays a, b (arguments) and y, z (results) under `name`: stores the status, then calls
   the callback and handlers that the mode asks for, and stores res1 and res2 back into y and z. */
void _tfndError(int code, int index, const double* a, const double* b, double* y, double* z, const char* name);
void _tfnsError(int code, int index, const float* a, const float* b, float* y, float* z, const char* name);
/* The standard handlers: errno, one message on standard error, an IEEE exception; the first runs those the mode has. */
void _tfnStdErrorHandler(const TfnErrorContext* context);
void _tfnStdErrorHandlerErrno(const TfnErrorContext* context);
void _tfnStdErrorHandlerStderr(const TfnErrorContext* context);
void _tfnStdErrorHandlerExcept(const TfnErrorContext* context);
/* Joins at most 8, 64 and 8 characters and a terminator into `out` (81 bytes); returns the length. */
int _tfnCreateFuncNameStr(const char* prefix, const char* name, const char* suffix, char* out);

/* Addresses of the calling thread's mode, status, callback and base pointer; null when there is no memory for them
   (everything else then works with the initial values and forgets what it is set to). */
unsigned* _GetMode(void);
int* _GetErrStatus(void);
TfnErrorCallBack* _GetCallBack(void);
const void** _GetInputVectorPointer(void);

/* ---- functions ------------------------------------------------------------------------------------------------- */

/* r[i] = ln a[i]. Ln(1) = +0, Ln(+inf) = +inf. Reports: SING for a zero (-inf), ERRDOM for a negative argument or -inf
   (NaN). Table of ln(1 + j/256) with a short polynomial, after P. T. P. Tang, ACM TOMS 16 (1990). */
void _tfndLn_HA(int n, const double* a, double* r);
void _tfndLn_50(int n, const double* a, double* r);
void _tfnsLn_HA(int n, const float* a, float* r);
void _tfnsLn_21(int n, const float* a, float* r);

/* r[i] = decimal logarithm of a[i]. Log10(1) = +0, Log10(+inf) = +inf, powers of ten are exact. Reports: SING for a
   zero (-inf), ERRDOM for a negative argument or -inf (NaN). As Ln, with tables of its own. */
void _tfndLog10_HA(int n, const double* a, double* r);
void _tfndLog10_50(int n, const double* a, double* r);
void _tfnsLog10_HA(int n, const float* a, float* r);
void _tfnsLog10_21(int n, const float* a, float* r);

/* r[i] = e to the power a[i]. Exp(0) = 1, Exp(+inf) = +inf, Exp(-inf) = +0. Reports: OVERFLOW (+inf), UNDERFLOW for a
   finite argument whose result is zero or subnormal. Table of 2^(j/256) with a short polynomial, after P. T. P. Tang,
   ACM TOMS 15 (1989). */
void _tfndExp_HA(int n, const double* a, double* r);
void _tfndExp_50(int n, const double* a, double* r);
void _tfnsExp_HA(int n, const float* a, float* r);
void _tfnsExp_21(int n, const float* a, float* r);

/* r[i] = hyperbolic sine, cosine, tangent of a[i]; odd, even and odd in every bit. Sinh(+-0) = Tanh(+-0) = +-0,
   Cosh(0) = 1, Sinh(+-inf) = +-inf, Cosh(+-inf) = +inf, Tanh(+-inf) = +-1. Reports, of Sinh and Cosh: OVERFLOW (an
   infinity); of Sinh: UNDERFLOW for a subnormal argument, which is the result too. Sums of e^x and e^-x from the table
   of Exp, and odd polynomials for small arguments of Sinh and Tanh. */
void _tfndSinh_HA(int n, const double* a, double* r);
void _tfndSinh_50(int n, const double* a, double* r);
void _tfnsSinh_HA(int n, const float* a, float* r);
void _tfnsSinh_21(int n, const float* a, float* r);
void _tfndCosh_HA(int n, const double* a, double* r);
void _tfndCosh_50(int n, const double* a, double* r);
void _tfnsCosh_HA(int n, const float* a, float* r);
void _tfnsCosh_21(int n, const float* a, float* r);
void _tfndTanh_HA(int n, const double* a, double* r);
void _tfndTanh_50(int n, const double* a, double* r);
void _tfnsTanh_HA(int n, const float* a, float* r);
void _tfnsTanh_21(int n, const float* a, float* r);

/* Pow: r[i] = a[i] to the power b[i]; Powx: a[i] to the power b, the bits that Pow gives. Exact results are exact:
   Pow(x, 0) = 1 for every x and Pow(1, b) = 1 for every b, NaN included; Pow(x, 1) = x; whole powers that fit. A
   negative base has whole powers, with the sign of the base when the power is odd; so have -0 and -inf. Pow(-1, +-inf)
   = 1; else Pow(x, +-inf), Pow(+-0, b) and Pow(+-inf, b) are zero or infinite as the limits are. Reports: SING for a
   zero to a finite negative power (an infinity), ERRDOM for a finite negative base and a power that is not whole (NaN),
   OVERFLOW (an infinity), UNDERFLOW where finite arguments, a not zero, give zero or a subnormal. Logarithm in two
   parts from a table of exact reciprocals, product, and exponential, each in the manner of P. T. P. Tang (see Ln and
   Exp). */
void _tfndPow_HA(int n, const double* a, const double* b, double* r);
void _tfndPow_50(int n, const double* a, const double* b, double* r);
void _tfnsPow_HA(int n, const float* a, const float* b, float* r);
void _tfnsPow_21(int n, const float* a, const float* b, float* r);
void _tfndPowx_HA(int n, const double* a, double b, double* r);
void _tfndPowx_50(int n, const double* a, double b, double* r);
void _tfnsPowx_HA(int n, const float* a, float b, float* r);
void _tfnsPowx_21(int n, const float* a, float b, float* r);

/* r[i] = square root of a[i]. Sqrt(-0) = -0, Sqrt(+inf) = +inf. Reports: ERRDOM for a negative argument or -inf (NaN).
   _HA and _tfnsSqrt_21 round correctly. _tfndSqrt_50 refines the processor's reciprocal estimate, so its last bit may
   differ between makes of processor. */
void _tfndSqrt_HA(int n, const double* a, double* r);
void _tfndSqrt_50(int n, const double* a, double* r);
void _tfnsSqrt_HA(int n, const float* a, float* r);
void _tfnsSqrt_21(int n, const float* a, float* r);

/* r[i] = 1/sqrt(a[i]). InvSqrt(+inf) = +0. Reports: SING for a zero (an infinity of its sign), ERRDOM for a negative
   argument or -inf (NaN). All members refine the processor's estimate, so last bits may differ between makes of
   processor. _tfnsInvSqrt_21: at most 3.0 ulp, anywhere: one step of refinement. */
void _tfndInvSqrt_HA(int n, const double* a, double* r);
void _tfndInvSqrt_50(int n, const double* a, double* r);
void _tfnsInvSqrt_HA(int n, const float* a, float* r);
void _tfnsInvSqrt_21(int n, const float* a, float* r);

/* r[i] = cube root of a[i]; of a cube exact, odd in every bit. Cbrt(+-0) = +-0, Cbrt(+-inf) = +-inf. Reports nothing.
   Table of cube roots and reciprocals, with a short polynomial. */
void _tfndCbrt_HA(int n, const double* a, double* r);
void _tfndCbrt_50(int n, const double* a, double* r);
void _tfnsCbrt_HA(int n, const float* a, float* r);
void _tfnsCbrt_21(int n, const float* a, float* r);

/* r[i] = 1/cbrt(a[i]), as above. InvCbrt(+-inf) = +-0. Reports: SING for a zero (an infinity of its sign). */
void _tfndInvCbrt_HA(int n, const double* a, double* r);
void _tfndInvCbrt_50(int n, const double* a, double* r);
void _tfnsInvCbrt_HA(int n, const float* a, float* r);
void _tfnsInvCbrt_21(int n, const float* a, float* r);

/* r[i] = 1/a[i], correctly rounded. Reports: SING for a zero (an infinity of its sign), OVERFLOW where the reciprocal
   of a subnormal number is infinite, UNDERFLOW where a result is subnormal. */
void _tfndInv_HA(int n, const double* a, double* r);
void _tfndInv_50(int n, const double* a, double* r);
void _tfnsInv_HA(int n, const float* a, float* r);
void _tfnsInv_21(int n, const float* a, float* r);

/* r[i] = a[i]/b[i], correctly rounded. Reports: ERRDOM for 0/0 and inf/inf (NaN), SING for a finite number other than 0
   over 0 (an infinity), OVERFLOW where a finite quotient is infinite, UNDERFLOW where one that is not zero is stored as
   zero or subnormal. r may be a or b. */
void _tfndDiv_HA(int n, const double* a, const double* b, double* r);
void _tfndDiv_50(int n, const double* a, const double* b, double* r);
void _tfnsDiv_HA(int n, const float* a, const float* b, float* r);
void _tfnsDiv_21(int n, const float* a, const float* b, float* r);

/* r[i] = sqrt(a[i]^2 + b[i]^2) without undue overflow or underflow. Hypot(x, 0) = |x| and Pythagorean triples are
   exact; an infinity gives +inf, beside a NaN too. Reports: OVERFLOW for an infinite result of finite arguments,
   UNDERFLOW for a subnormal result. r may be a or b. */
void _tfndHypot_HA(int n, const double* a, const double* b, double* r);
void _tfndHypot_50(int n, const double* a, const double* b, double* r);
void _tfnsHypot_HA(int n, const float* a, const float* b, float* r);
void _tfnsHypot_21(int n, const float* a, const float* b, float* r);

/* r[i] = sine, cosine of a[i] in radians, for every finite argument with exact reduction (M. Payne and R. Hanek, ACM
   SIGNUM 18, 1983, beyond the range of a two-part reduction). Sin(-x) = -Sin(x) and Cos(-x) = Cos(x) in every bit.
   Reports: ERRDOM for an infinity (NaN). */
void _tfndSin_HA(int n, const double* a, double* r);
void _tfndSin_50(int n, const double* a, double* r);
void _tfnsSin_HA(int n, const float* a, float* r);
void _tfnsSin_21(int n, const float* a, float* r);
void _tfndCos_HA(int n, const double* a, double* r);
void _tfndCos_50(int n, const double* a, double* r);
void _tfnsCos_HA(int n, const float* a, float* r);
void _tfnsCos_21(int n, const float* a, float* r);

/* r[i] = tangent of a[i] in radians, for every finite argument with exact reduction, as above. Tan(-x) = -Tan(x) in
   every bit. Reports: ERRDOM for an infinity (NaN). */
void _tfndTan_HA(int n, const double* a, double* r);
void _tfndTan_50(int n, const double* a, double* r);
void _tfnsTan_HA(int n, const float* a, float* r);
void _tfnsTan_21(int n, const float* a, float* r);
/* r[i] = erf a[i], the error function. Erf(-x) = -Erf(x) in every bit, Erf(+-inf) = +-1. Reports nothing.
   Table of polynomials around the multiples of 1/32 (1/64 for singles), after P. T. P. Tang's table-driven methods. */
void _tfndErf_HA(int n, const double* a, double* r);
void _tfndErf_50(int n, const double* a, double* r);
void _tfnsErf_HA(int n, const float* a, float* r);
void _tfnsErf_21(int n, const float* a, float* r);

/* r[i] = 1 - erf a[i]. Erfc(-inf) = 2, Erfc(+inf) = +0. Reports: UNDERFLOW for a finite argument whose result is zero
   or subnormal: from 26.54 on (double), from 9.2 on (single). Tables as for Erf; doubles from 4.5 on as e^(-x^2) times
   a table of e^(x^2) Erfc(x). */
void _tfndErfc_HA(int n, const double* a, double* r);
void _tfndErfc_50(int n, const double* a, double* r);
void _tfnsErfc_HA(int n, const float* a, float* r);
void _tfnsErfc_21(int n, const float* a, float* r);

/* r[i] = x with erf x = a[i]. ErfInv(-x) = -ErfInv(x) in every bit. Reports: SING for 1 and -1 (+inf, -inf), ERRDOM
   beyond (NaN). Table of polynomials in 1 - |x| by its exponent and leading fraction bits. */
void _tfndErfInv_HA(int n, const double* a, double* r);
void _tfndErfInv_50(int n, const double* a, double* r);
void _tfnsErfInv_HA(int n, const float* a, float* r);
void _tfnsErfInv_21(int n, const float* a, float* r);
/* Element i alone: r[i] has the bits that _HA gives. unused may be null. */
void _tfndErfInv_HA_SC_zx8(int i, const double* a, double* r, double* unused);
void _tfnsErfInv_HA_SC_zx8(int i, const float* a, float* r, float* unused);

/* r1[i] = sine, r2[i] = cosine of a[i]; the bits of Sin and Cos of the same suffix. a may be r1 or r2. */
void _tfndSinCos_HA(int n, const double* a, double* r1, double* r2);
void _tfndSinCos_50(int n, const double* a, double* r1, double* r2);
void _tfnsSinCos_HA(int n, const float* a, float* r1, float* r2);
void _tfnsSinCos_21(int n, const float* a, float* r1, float* r2);

/* r[i] = arc sine, arc cosine of a[i]. Asin(-x) = -Asin(x) in every bit, Asin(+-0) = +-0, Acos(1) = +0, Acos(-1) = pi
   rounded. Reports: ERRDOM for |a[i]| > 1 (NaN). _HA: by the difference from one of 450 angles of a table; its sine is
   a quotient without cancellation. _50 and _21: one polynomial, above 1/2 of sqrt((1 - x)/2); _tfnsAsin_21 has errors
   up to 2.1 ulp, around 0.84. */
void _tfndAsin_HA(int n, const double* a, double* r);
void _tfndAsin_50(int n, const double* a, double* r);
void _tfnsAsin_HA(int n, const float* a, float* r);
void _tfnsAsin_21(int n, const float* a, float* r);
void _tfndAcos_HA(int n, const double* a, double* r);
void _tfndAcos_50(int n, const double* a, double* r);
void _tfnsAcos_HA(int n, const float* a, float* r);
void _tfnsAcos_21(int n, const float* a, float* r);

/* r[i] = arc tangent of a[i]. Atan(-x) = -Atan(x) in every bit, Atan(+-0) = +-0, Atan(+-inf) = +-pi/2. Reports
   nothing. By the difference from one of 770 angles of a table and the addition theorem; _21: one polynomial of the
   quotient of the smaller and the larger of |x| and 1. */
void _tfndAtan_HA(int n, const double* a, double* r);
void _tfndAtan_50(int n, const double* a, double* r);
void _tfnsAtan_HA(int n, const float* a, float* r);
void _tfnsAtan_21(int n, const float* a, float* r);

/* r[i] = the angle, from -pi to pi, of the point of ordinate a[i] and abscissa b[i]: the arc tangent of a[i]/b[i] in
   the right half-plane. On the axes, signs of zero included, and at infinity as annex F of C99 has it:
   Atan2(+-0, b) = +-0 for b positive or +0 and +-pi for b negative or -0; Atan2(a, +-0) = +-pi/2 with the sign of a;
   odd multiples of pi/4 for two infinities. Reports: UNDERFLOW where a[i] isn't zero, b[i] is finite and positive and
   the result is zero or subnormal. By the table of Atan; _21 as there. */
void _tfndAtan2_HA(int n, const double* a, const double* b, double* r);
void _tfndAtan2_50(int n, const double* a, const double* b, double* r);
void _tfnsAtan2_HA(int n, const float* a, const float* b, float* r);
void _tfnsAtan2_21(int n, const float* a, const float* b, float* r);

/* r[i] = inverse hyperbolic sine, cosine, tangent of a[i], the cosine's not negative. Asinh and Atanh are odd in every
   bit and keep the sign of zero; Acosh(1) = +0; Asinh(+-inf) = +-inf, Acosh(+inf) = +inf. Reports: Acosh ERRDOM for
   a[i] < 1 (NaN); Atanh SING for +-1 (+-inf), ERRDOM beyond (NaN). _tfnsAcosh_21 and _tfnsAtanh_21 have errors up to
   2.1 ulp, around 1.03 and 0.11. Logarithms of an argument in two parts, by the table of Ln. */
void _tfndAsinh_HA(int n, const double* a, double* r);
void _tfndAsinh_50(int n, const double* a, double* r);
void _tfnsAsinh_HA(int n, const float* a, float* r);
void _tfnsAsinh_21(int n, const float* a, float* r);
void _tfndAcosh_HA(int n, const double* a, double* r);
void _tfndAcosh_50(int n, const double* a, double* r);
void _tfnsAcosh_HA(int n, const float* a, float* r);
void _tfnsAcosh_21(int n, const float* a, float* r);
void _tfndAtanh_HA(int n, const double* a, double* r);
void _tfndAtanh_50(int n, const double* a, double* r);
void _tfnsAtanh_HA(int n, const float* a, float* r);
void _tfnsAtanh_21(int n, const float* a, float* r);
/* Sine, cosine, tangent of the one element a[i] on the x87 unit, into r[i]; of SinCos the sine into r[i], the cosine
   into r2[i]. r2 isn't used by the others. r or r2 may be a. The three members of a function compute the same, exactly
   reduced for every finite argument and rounded once from 53 bits (singles, at most 0.501 ulp) or 64 bits (doubles, at
   most 0.51 ulp), and differ in the name they report: "sCos_HA" for _tfnsCos_SC_HA, and so on; the workers, without a
   suffix, report the name they are given. Reports: ERRDOM for an infinity (NaN). The control words come back. */
void _tfnsSin_SC(int i, const float* a, float* r, float* r2, const char* name);
void _tfnsSin_SC_HA(int i, const float* a, float* r, float* r2);
void _tfnsSin_SC_LA(int i, const float* a, float* r, float* r2);
void _tfnsSin_SC_A11(int i, const float* a, float* r, float* r2);
void _tfndSin_SC(int i, const double* a, double* r, double* r2, const char* name);
void _tfndSin_SC_HA(int i, const double* a, double* r, double* r2);
void _tfndSin_SC_LA(int i, const double* a, double* r, double* r2);
void _tfndSin_SC_A11(int i, const double* a, double* r, double* r2);
void _tfnsCos_SC(int i, const float* a, float* r, float* r2, const char* name);
void _tfnsCos_SC_HA(int i, const float* a, float* r, float* r2);
void _tfnsCos_SC_LA(int i, const float* a, float* r, float* r2);
void _tfnsCos_SC_A11(int i, const float* a, float* r, float* r2);
void _tfndCos_SC(int i, const double* a, double* r, double* r2, const char* name);
void _tfndCos_SC_HA(int i, const double* a, double* r, double* r2);
void _tfndCos_SC_LA(int i, const double* a, double* r, double* r2);
void _tfndCos_SC_A11(int i, const double* a, double* r, double* r2);
void _tfnsTan_SC(int i, const float* a, float* r, float* r2, const char* name);
void _tfnsTan_SC_HA(int i, const float* a, float* r, float* r2);
void _tfnsTan_SC_LA(int i, const float* a, float* r, float* r2);
void _tfnsTan_SC_A11(int i, const float* a, float* r, float* r2);
void _tfndTan_SC(int i, const double* a, double* r, double* r2, const char* name);
void _tfndTan_SC_HA(int i, const double* a, double* r, double* r2);
void _tfndTan_SC_LA(int i, const double* a, double* r, double* r2);
void _tfndTan_SC_A11(int i, const double* a, double* r, double* r2);
void _tfnsSinCos_SC(int i, const float* a, float* r, float* r2, const char* name);
void _tfnsSinCos_SC_HA(int i, const float* a, float* r, float* r2);
void _tfnsSinCos_SC_LA(int i, const float* a, float* r, float* r2);
void _tfnsSinCos_SC_A11(int i, const float* a, float* r, float* r2);
void _tfndSinCos_SC(int i, const double* a, double* r, double* r2, const char* name);
void _tfndSinCos_SC_HA(int i, const double* a, double* r, double* r2);
void _tfndSinCos_SC_LA(int i, const double* a, double* r, double* r2);
void _tfndSinCos_SC_A11(int i, const double* a, double* r, double* r2);

/* ---- functions of complex numbers --------------------------------------------------------------------------------

   _tfnz: arrays of n double complex numbers, each a real and an imaginary part; _tfnc: of singles. (C99's double complex
   and float complex, and C++'s std::complex, lie in memory like that.) All that is said at the top holds.

   Accuracy. The distance of result and exact result is at most 1 unit in the last place of the exact result's size
   (_HA), or 4 (_50, _21); of _HA each part is besides within 4 units in its own last place. Neither holds where this
   text says otherwise. Results don't overflow or vanish, and don't lose bits, where the exact one can be represented.

   Special values, branch cuts and signs of zeros are those of annex G of C99: a zero's sign tells the side of a cut, and
   f of the conjugate is the conjugate of f.

   Reports. The index counts complex elements, from the base pointer too. arg1 and arg2 are the real and the imaginary
   part of the argument, of Pow and Powx of the base; res1 and res2 those of the result, and what a callback writes
   there is stored in both. OVERFLOW where finite arguments have a part that is infinite in the result; ERRDOM where an
   argument without NaN has no result (annex G: "raises invalid"); SING where told below. Underflow isn't reported. */
typedef struct TfnDoubleComplex {
  double re, im;
} TfnDoubleComplex;
typedef struct TfnSingleComplex {
  float re, im;
} TfnSingleComplex;

/* r[i] = e to the power a[i]. Exp(+-0 + 0 i) = 1 + 0 i. e^x (cos y + i sin y), the factors by the tables of Exp and
   Sin; near the ends of the range e^x without its power of two (T. E. Hull, T. F. Fairgrieve, P. T. P. Tang, ACM TOMS
   20, 1994). */
void _tfnzExp_HA(int n, const double* a, double* r);
void _tfnzExp_50(int n, const double* a, double* r);
void _tfncExp_HA(int n, const float* a, float* r);
void _tfncExp_21(int n, const float* a, float* r);

/* r[i] = natural, decimal logarithm of a[i], the imaginary part of Ln from -pi to pi; the cut is the negative real axis.
   Ln(+0 + 0 i) = -inf + 0 i, Ln(-0 + 0 i) = -inf + pi i. ln |z| from x^2 + y^2 in two parts, and so exact next to
   |z| = 1 too; the angle by the table of Atan2. Reports: SING for a zero. */
void _tfnzLn_HA(int n, const double* a, double* r);
void _tfnzLn_50(int n, const double* a, double* r);
void _tfncLn_HA(int n, const float* a, float* r);
void _tfncLn_21(int n, const float* a, float* r);
void _tfnzLog10_HA(int n, const double* a, double* r);
void _tfnzLog10_50(int n, const double* a, double* r);
void _tfncLog10_HA(int n, const float* a, float* r);
void _tfncLog10_21(int n, const float* a, float* r);

/* Pow: r[i] = a[i] to the power b[i]; Powx: a[i] to the power b, the bits that Pow gives; e^(b Ln(a)), the cut that of
   Ln. The accuracy is that above (_HA of doubles 1.2) while |b Ln(a)| is below 2^10, beyond it the error grows in
   proportion; parts are right in relation to the result's size alone. Pow(z, 0) = 1 for every z, NaN included. Pow(0, b) = 0
   for Re b > 0. Otherwise for a zero or infinite base, or an infinite power: 0 or an infinite real part where the limit
   has that size, the imaginary part NaN where the limit has no direction. Logarithm and angle in two parts with the tables
   of Ln and Atan, the exponential as in Exp. Reports: SING for Pow(0, b) with Re b < 0 (+inf, and 0 or NaN); ERRDOM where
   no limit exists: Pow(0, b) with Re b = 0, say. */
void _tfnzPow_HA(int n, const double* a, const double* b, double* r);
void _tfnzPow_50(int n, const double* a, const double* b, double* r);
void _tfncPow_HA(int n, const float* a, const float* b, float* r);
void _tfncPow_21(int n, const float* a, const float* b, float* r);
void _tfnzPowx_HA(int n, const double* a, TfnDoubleComplex b, double* r);
void _tfnzPowx_50(int n, const double* a, TfnDoubleComplex b, double* r);
void _tfncPowx_HA(int n, const float* a, TfnSingleComplex b, float* r);
void _tfncPowx_21(int n, const float* a, TfnSingleComplex b, float* r);

/* r[i] = square root of a[i] with a real part that isn't negative; the cut is the negative real axis, where the
   imaginary part has the sign of the argument's. Exact where the result has few bits: Sqrt(-4 +- 0 i) = 0 +- 2 i,
   Sqrt(3 + 4 i) = 2 + i. t = sqrt((|z| + |x|)/2) and |y|/(2 t) (W. Kahan, Branch cuts for complex elementary functions,
   in The State of the Art in Numerical Analysis, 1987), with scaled numbers near the ends of the range (T. E. Hull, T. F.
   Fairgrieve, P. T. P. Tang, ACM TOMS 20, 1994). Reports nothing. */
void _tfnzSqrt_HA(int n, const double* a, double* r);
void _tfnzSqrt_50(int n, const double* a, double* r);
void _tfncSqrt_HA(int n, const float* a, float* r);
void _tfncSqrt_21(int n, const float* a, float* r);

/* r[i] = hyperbolic sine, cosine, tangent of a[i]; odd, even and odd in every bit. Sinh = sinh x cos y + i cosh x sin y,
   Cosh = cosh x cos y + i sinh x sin y, near the ends of the range as for Exp; Tanh = (sinh x cosh x + i sin y cos y) /
   (sinh^2 x + cos^2 y), where nothing cancels, poles i pi/2 + i k pi included (after W. Kahan, Branch cuts for complex
   elementary functions, in The State of the Art in Numerical Analysis, 1987). */
void _tfnzSinh_HA(int n, const double* a, double* r);
void _tfnzSinh_50(int n, const double* a, double* r);
void _tfncSinh_HA(int n, const float* a, float* r);
void _tfncSinh_21(int n, const float* a, float* r);
void _tfnzCosh_HA(int n, const double* a, double* r);
void _tfnzCosh_50(int n, const double* a, double* r);
void _tfncCosh_HA(int n, const float* a, float* r);
void _tfncCosh_21(int n, const float* a, float* r);
void _tfnzTanh_HA(int n, const double* a, double* r);
void _tfnzTanh_50(int n, const double* a, double* r);
void _tfncTanh_HA(int n, const float* a, float* r);
void _tfncTanh_21(int n, const float* a, float* r);

/* r[i] = sine, cosine, tangent of a[i], with exact reduction of every real part; odd, even and odd in every bit. They
   are -i Sinh(iz), Cosh(iz), -i Tanh(iz). */
void _tfnzSin_HA(int n, const double* a, double* r);
void _tfnzSin_50(int n, const double* a, double* r);
void _tfncSin_HA(int n, const float* a, float* r);
void _tfncSin_21(int n, const float* a, float* r);
void _tfnzCos_HA(int n, const double* a, double* r);
void _tfnzCos_50(int n, const double* a, double* r);
void _tfncCos_HA(int n, const float* a, float* r);
void _tfncCos_21(int n, const float* a, float* r);
void _tfnzTan_HA(int n, const double* a, double* r);
void _tfnzTan_50(int n, const double* a, double* r);
void _tfncTan_HA(int n, const float* a, float* r);
void _tfncTan_21(int n, const float* a, float* r);
/* r[i] = arc sine, arc cosine, arc tangent, inverse hyperbolic sine, cosine, tangent of a[i]: the principal values. Cuts:
   Asin, Acos, Atanh beyond +-1 on the real axis, Asinh and Atan beyond +-i on the imaginary one, Acosh from 1 to the left
   on the real one. The real part of Acos is from 0 to pi, that of Acosh from 0 up. SING for Atanh(+-1 + 0 i) = +-infinity
   + 0 i and Atan(0 +- i) = 0 +- infinity i (zeros with the sign of the argument's); nothing else is reported.
   Each part keeps its relative accuracy on and next to the cuts, next to +-1, +-i and zeros, with _50 and _21 too. What
   takes part are |z^2 - 1|, the roots of its half plus and minus (|z|^2 - 1)/2, an arc tangent and a logarithm (W. Kahan,
   Branch cuts for complex elementary functions, 1987; T. E. Hull, T. F. Fairgrieve, P. T. P. Tang, ACM TOMS 23, 1997). */
void _tfnzAsin_HA(int n, const double* a, double* r);
void _tfnzAsin_50(int n, const double* a, double* r);
void _tfncAsin_HA(int n, const float* a, float* r);
void _tfncAsin_21(int n, const float* a, float* r);
void _tfnzAcos_HA(int n, const double* a, double* r);
void _tfnzAcos_50(int n, const double* a, double* r);
void _tfncAcos_HA(int n, const float* a, float* r);
void _tfncAcos_21(int n, const float* a, float* r);
void _tfnzAtan_HA(int n, const double* a, double* r);
void _tfnzAtan_50(int n, const double* a, double* r);
void _tfncAtan_HA(int n, const float* a, float* r);
void _tfncAtan_21(int n, const float* a, float* r);
void _tfnzAsinh_HA(int n, const double* a, double* r);
void _tfnzAsinh_50(int n, const double* a, double* r);
void _tfncAsinh_HA(int n, const float* a, float* r);
void _tfncAsinh_21(int n, const float* a, float* r);
void _tfnzAcosh_HA(int n, const double* a, double* r);
void _tfnzAcosh_50(int n, const double* a, double* r);
void _tfncAcosh_HA(int n, const float* a, float* r);
void _tfncAcosh_21(int n, const float* a, float* r);
void _tfnzAtanh_HA(int n, const double* a, double* r);
void _tfnzAtanh_50(int n, const double* a, double* r);
void _tfncAtanh_HA(int n, const float* a, float* r);
void _tfncAtanh_21(int n, const float* a, float* r);

/* ---- packing and rounding -------------------------------------------------------------------------------------- */

/* Between a dense array and a strided, masked or indexed one, for i from 0 to n - 1, in this order. Increments may be
   negative or zero: element 0 is at a (or y) itself, and i times the increment is taken modulo 2^32. A mask selects
   where it is not zero; j counts what is selected, from 0. Elements that the loop doesn't name are not touched. Source
   and destination may not overlap, but packing may be in place where no element is read after its place was written:
   PackM always, PackI with an increment from 1 on. Values move as bit patterns, except that signalling NaNs pass
   through the masked forms of doubles as quiet ones. Nothing is reported.
   PackI   y[i] = a[i * inca]                 UnpackI   y[i * incy] = a[i]
   PackM   where mask[i]: y[j] = a[i]         UnpackM   where mask[i]: y[i] = a[j]
   PackV   y[i] = a[ia[i]]                    UnpackV   y[iy[i]] = a[i] */
void _tfnsPackI(int n, const float* a, int inca, float* y);
void _tfndPackI(int n, const double* a, int inca, double* y);
void _tfnsPackM(int n, const float* a, const int* mask, float* y);
void _tfndPackM(int n, const double* a, const int* mask, double* y);
void _tfnsPackV(int n, const float* a, const int* ia, float* y);
void _tfndPackV(int n, const double* a, const int* ia, double* y);
void _tfnsUnpackI(int n, const float* a, float* y, int incy);
void _tfndUnpackI(int n, const double* a, double* y, int incy);
void _tfnsUnpackM(int n, const float* a, float* y, const int* mask);
void _tfndUnpackM(int n, const double* a, double* y, const int* mask);
void _tfnsUnpackV(int n, const float* a, float* y, const int* iy);
void _tfndUnpackV(int n, const double* a, double* y, const int* iy);

/* y[i] = a[i] rounded to an integral value: Floor down, Ceil up, Trunc towards zero, Round to nearest with halves away
   from zero, Rint and NearbyInt in the caller's rounding mode (MXCSR). Exact for every argument; a zero result has the
   argument's sign, infinities stay, NaNs become quiet. The caller's MXCSR comes back with its flags as they were, and
   no exception traps, but for Rint, which works under the caller's register as it stands: it raises inexact where a
   result differs from its argument, and invalid for a signalling NaN. y may be a. Nothing is reported. */
void _tfnsFloor(int n, const float* a, float* y);
void _tfndFloor(int n, const double* a, double* y);
void _tfnsCeil(int n, const float* a, float* y);
void _tfndCeil(int n, const double* a, double* y);
void _tfnsTrunc(int n, const float* a, float* y);
void _tfndTrunc(int n, const double* a, double* y);
void _tfnsRound(int n, const float* a, float* y);
void _tfndRound(int n, const double* a, double* y);
void _tfnsRint(int n, const float* a, float* y);
void _tfndRint(int n, const double* a, double* y);
void _tfnsNearbyInt(int n, const float* a, float* y);
void _tfndNearbyInt(int n, const double* a, double* y);

/* y[i] = Trunc of a[i], z[i] = a[i] - y[i], exact, a zero with the sign of a[i]; of an infinity a NaN. a may be y
   or z. */
void _tfnsModf(int n, const float* a, float* y, float* z);
void _tfndModf(int n, const double* a, double* y, double* z);

#ifdef __cplusplus
}
#endif
#endif
