#include "tfn/report.h"

#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base/errno_guard.h"
#include "numeric/mxcsr.h"
#include "tfn/mode.h"

namespace qor::tfn {
namespace {

constexpr std::uint32_t ignore_field = TFN_ERR_IGNORE;  // counts only as the whole field
constexpr std::uint32_t callback_field = 0xF000, handler_field = 0x0F00;

struct StatusText {
  int code;
  const char* name;
  const char* text;
  int error_number;
};
constexpr StatusText status_texts[] = {
    {TFN_STATUS_OK, "OK", "", 0},
    {TFN_STATUS_BADSIZE, "BADSIZE", "array size %d is not positive\n", EINVAL},
    {TFN_STATUS_BADMEM, "BADMEM", "NULL pointer is passed\n", EACCES},
    {TFN_STATUS_ERRDOM, "ERRDOM", "argument is out of domain\n", EDOM},
    {TFN_STATUS_SING, "SING", "argument caused singularity\n", ERANGE},
    {TFN_STATUS_OVERFLOW, "OVERFLOW", "argument caused overflow\n", ERANGE},
    {TFN_STATUS_UNDERFLOW, "UNDERFLOW", "argument caused underflow\n", ERANGE},
};
constexpr int unknown_error_number = EFAULT;
const char* const _tfnStrErrStatusHeading = "Error (TFN_STATUS_%s) in %s: ";

const StatusText* find(int code) {
  for (const StatusText& s : status_texts) {
    if (s.code == code) return &s;
  }
  return nullptr;
}

bool has_values(int code) { return code != TFN_STATUS_BADSIZE && code != TFN_STATUS_BADMEM; }

int copy_text(char* out, const char* text, int most) {
  int n = 0;
  for (; n < most && text[n] != 0; ++n) out[n] = text[n];
  return n;
}

// A second value worth printing: different from the first and from zero, a NaN counting as equal to anything.
bool second(double first, double other) { return (other < first || other > first) && (other < 0 || other > 0); }

// Stored to memory so that the division or product really happens.
void raise(double a, double b, bool divide) {
  volatile double x = a, y = b, result;
  if (divide) {
    result = x / y;
  } else {
    result = x * y;
  }
  static_cast<void>(result);
}

// Element `index` of an array that starts at `array`, of elements of 2^log2_size bytes. The values are looked at only
// where the code has any.
template <class T>
void report_element(int code, int index, const T* array, int log2_size, const char* name, const T* a, const T* b, T* y,
                    T* z) {
  set_status(code);
  if ((mode() & TFN_ERR_MASK) == ignore_field) return;

  // The caller's control register is for the callback and the handlers; copying values must not trap.
  numeric::MxcsrGuard guard;
  TfnErrorContext context;
  context.code = code;
  context.index = index;
  if (const void* base = base_pointer(); base != nullptr) {
    const auto distance = reinterpret_cast<std::intptr_t>(array) - reinterpret_cast<std::intptr_t>(base);
    context.index += static_cast<int>(distance >> log2_size);
  }
  char text[8 + 64 + 8 + 1];
  context.funcNameLen = create_func_name("", name, "", text);
  std::memcpy(context.funcName, text, sizeof context.funcName);
  if (has_values(code)) {
    context.arg1 = *a;
    context.arg2 = *b;
    context.res1 = *y;
    context.res2 = *z;
  }

  // The mode is read anew each time: a callback may change it.
  if ((mode() & callback_field) != 0) {
    if (const TfnErrorCallBack call = callback(); call != nullptr) {
      int answer;
      guard.outside([&] { answer = call(&context); });
      if (answer != 0) return;
    }
  }
  if ((mode() & handler_field) != 0) guard.outside([&] { standard_handler(&context); });
  if (has_values(code)) {
    *z = static_cast<T>(context.res2);
    *y = static_cast<T>(context.res1);
  }
}

}  // namespace

int create_func_name(const char* prefix, const char* name, const char* suffix, char* out) {
  int n = copy_text(out, prefix, 8);
  n += copy_text(out + n, name, 64);
  n += copy_text(out + n, suffix, 8);
  out[n] = 0;
  return n;
}

template <class T>
void report(int code, int index, const T* a, const T* b, T* y, T* z, const char* name) {
  const int at = has_values(code) ? index : 0;
  report_element(code, index, a, sizeof(T) == 8 ? 3 : 2, name, a + at, b + at, y + at, z + at);
}
template <class T>
void report_complex(int code, int index, const T* a, T* y, const char* name) {
  const int at = has_values(code) ? 2 * index : 0;
  report_element(code, index, a, sizeof(T) == 8 ? 4 : 3, name, a + at, a + at + 1, y + at, y + at + 1);
}
template void report<double>(int, int, const double*, const double*, double*, double*, const char*);
template void report<float>(int, int, const float*, const float*, float*, float*, const char*);
template void report_complex<double>(int, int, const double*, double*, const char*);
template void report_complex<float>(int, int, const float*, float*, const char*);

void standard_handler(const TfnErrorContext* context) {
  const std::uint32_t m = mode();
  if ((m & TFN_ERR_ERRNO) != 0) errno_handler(context);
  if ((m & TFN_ERR_STDERR) != 0) stderr_handler(context);
  if ((m & TFN_ERR_EXCEPT) != 0) exception_handler(context);
}

void errno_handler(const TfnErrorContext* context) {
  const StatusText* s = find(context->code);
  errno = s != nullptr ? s->error_number : unknown_error_number;
}

void stderr_handler(const TfnErrorContext* c) {
  if (c->code == TFN_STATUS_OK) return;
  ErrnoGuard keep;
  char name[sizeof c->funcName + 1];
  std::memcpy(name, c->funcName, sizeof c->funcName);
  name[c->funcNameLen < 0 ? 0 : c->funcNameLen < 64 ? c->funcNameLen : 64] = 0;

  const StatusText* s = find(c->code);
  if (s == nullptr) {
    std::fprintf(stderr, "Unknown error in %s", name);  // no line end: the values follow, as they always have
  } else {
    std::fprintf(stderr, _tfnStrErrStatusHeading, s->name, name);
    if (c->code == TFN_STATUS_BADSIZE) {
      std::fprintf(stderr, s->text, c->index);
    } else {
      std::fputs(s->text, stderr);
    }
  }
  if (!has_values(c->code)) return;

  const int i = c->index;
  const bool two_results = second(c->res1, c->res2);
  if (second(c->arg1, c->arg2)) {
    if (two_results) {
      std::fprintf(stderr, "a(%d)=%g\nb(%d)=%g\ny(%d)=%g\nz(%d)=%g\n", i, c->arg1, i, c->arg2, i, c->res1, i, c->res2);
    } else {
      std::fprintf(stderr, "a(%d)=%g\nb(%d)=%g\ny(%d)=%g\n", i, c->arg1, i, c->arg2, i, c->res1);
    }
  } else if (two_results) {
    std::fprintf(stderr, "a(%d)=%g\ny(%d)=%g\nz(%d)=%g\n", i, c->arg1, i, c->res1, i, c->res2);
  } else {
    std::fprintf(stderr, "a(%d)=%g\nr(%d)=%g\n", i, c->arg1, i, c->res1);
  }
}

void exception_handler(const TfnErrorContext* context) {
  switch (context->code) {
    case TFN_STATUS_ERRDOM:
      raise(0.0, 0.0, true);
      break;
    case TFN_STATUS_SING:
      raise(std::bit_cast<double>(std::uint64_t{0x000000003FF00000}), 0.0, true);
      break;
    case TFN_STATUS_OVERFLOW: {
      // Kept on purpose: the pattern is a quiet NaN, so an overflow raises nothing.
      const double big = std::bit_cast<double>(std::uint64_t{0xFFFFFFFF7FEFFFFF});
      raise(big, big, false);
      break;
    }
    case TFN_STATUS_UNDERFLOW: {
      const double small = std::bit_cast<double>(std::uint64_t{0x0000000100100000});
      raise(small, small, false);
      break;
    }
    default:
      break;
  }
}

}  // namespace qor::tfn
