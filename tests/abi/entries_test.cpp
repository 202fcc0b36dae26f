// Every exported function, called as old and careless callers do: with the stack aligned to 4 bytes only, arrays of
// doubles at odd multiples of 4, callbacks and engines of the caller's own. Whatever comes back must be what an aligned
// call gives, with the caller's registers, control words and errno as they were. An export without a row fails by name.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "abi/shared_object.h"
#include "qor/qor.h"
#include "support/allocations.h"
#include "support/scratch_file.h"
#include "tfn/functions.def"

// What the call left behind.
struct Machine {
  std::uint32_t eax, edx, ebx, esi, edi, mxcsr;
  std::uint32_t x87[7];  // as fnstenv stores it: control, status, tags ...
};

// Copies `count` argument words to the stack so that at the call its address is `offset` mod 16.
extern "C" void call_at(const void* function, const std::uint32_t* words, int count, int offset, Machine* after);
asm(R"(
  .text
  .type call_at, @function
call_at:
  pushl %ebp
  movl %esp, %ebp
  pushl %ebx
  pushl %esi
  pushl %edi
  movl 12(%ebp), %esi
  movl 16(%ebp), %ecx
  movl 20(%ebp), %edx
  leal (%edx,%ecx,4), %edx
  negl %edx
  andl $15, %edx
  leal (%edx,%ecx,4), %edx
  andl $-16, %esp
  subl %edx, %esp
  movl %esp, %edi
  cld
  rep movsl
  movl $0x0B0B0B0B, %ebx
  movl $0x51515151, %esi
  movl $0xD1D1D1D1, %edi
  call *8(%ebp)
  movl 24(%ebp), %ecx
  movl %eax, (%ecx)
  movl %edx, 4(%ecx)
  movl %ebx, 8(%ecx)
  movl %esi, 12(%ecx)
  movl %edi, 16(%ecx)
  stmxcsr 20(%ecx)
  fnstenv 24(%ecx)
  fninit
  fldenv 24(%ecx)
  leal -12(%ebp), %esp
  popl %edi
  popl %esi
  popl %ebx
  popl %ebp
  ret
  .size call_at, .-call_at
)");

namespace {

constexpr int callers_errno = 4711;
constexpr unsigned standard_mxcsr = 0x1F80, standard_control = 0x37F;

void set_mxcsr(unsigned value) { asm volatile("ldmxcsr %0" : : "m"(value)); }
void set_control(unsigned value) {
  const auto word = static_cast<std::uint16_t>(value);
  asm volatile("fldcw %0" : : "m"(word));
}

// Set by callbacks and engine slots that find their stack misaligned: the library's own calls must keep to the ABI.
int callback_calls, misaligned_callbacks;
void note_frame(const void* frame) {
  ++callback_calls;
  if ((reinterpret_cast<std::uintptr_t>(frame) + 8) % 16 != 0) ++misaligned_callbacks;
}

int on_error(TfnErrorContext* context) {
  note_frame(__builtin_frame_address(0));
  context->res1 = context->index + 0.5;
  return 0;
}

// An engine of the caller's own: a ramp, exact whatever the rounding.
int probe_init(int method, qor_stream*, int n, const unsigned*) {
  note_frame(__builtin_frame_address(0));
  return method == 0 ? 0 : n;
}
template <class T>
int probe_ramp(qor_stream*, int n, T* r, T a, T b) {
  note_frame(__builtin_frame_address(0));
  for (int i = 0; i < n; ++i) {
    const T v = a + (b - a) * static_cast<T>(i % 127 + 1) / 128;
    std::memcpy(reinterpret_cast<char*>(r) + sizeof v * static_cast<unsigned>(i), &v, sizeof v);
  }
  return 0;
}
int probe_i(qor_stream*, int n, unsigned* r) {
  note_frame(__builtin_frame_address(0));
  for (int i = 0; i < n; ++i) r[i] = static_cast<unsigned>(i);
  return 0;
}
constexpr BrngRecord probe_record = {64, 1, 1, 4, 32, probe_init, probe_ramp<float>, probe_ramp<double>, probe_i};
int probe_brng() {
  static const int brng = __wxrRegisterBrng(&probe_record);
  return brng;
}

// 100 elements of T at an address that is an odd multiple of 4. Touched through memcpy only.
constexpr int elements = 100;
template <class T, int Size = elements>
class Array {
 public:
  Array() { std::memset(bytes_, 0xA5, sizeof bytes_); }
  explicit Array(const std::vector<T>& values) : Array() {
    std::memcpy(bytes_ + 4, values.data(), sizeof(T) * values.size());
  }
  T* get() { return reinterpret_cast<T*>(bytes_ + 4); }
  std::string bytes() const { return {reinterpret_cast<const char*>(bytes_), sizeof bytes_}; }

 private:
  alignas(16) unsigned char bytes_[4 + sizeof(T) * Size + 12];
};

// Callbacks of abstract streams: a ramp of words, or of numbers in [0, 1).
template <class T>
int probe_update(qor_stream*, int*, T* r, int* nmin, int*, int* idx) {
  note_frame(__builtin_frame_address(0));
  for (int i = 0; i < *nmin; ++i) r[*idx + i] = std::is_integral_v<T> ? T(i) : T(i % 128) / 128;
  return *nmin;
}
unsigned word_buffer[7];
double double_buffer[7];
float single_buffer[7];
int new_abstract(qor_stream** slot, int brng) {
  if (brng == QOR_BRNG_IABSTRACT) return __wxriNewAbstractStream(slot, 7, word_buffer, probe_update);
  if (brng == QOR_BRNG_DABSTRACT) return __wxrdNewAbstractStream(slot, 7, double_buffer, 0, 1, probe_update);
  return __wxrsNewAbstractStream(slot, 7, single_buffer, 0, 1, probe_update);
}

// A stream made and deleted by plain calls.
class Stream {
 public:
  explicit Stream(int brng) {
    if (brng >= QOR_BRNG_IABSTRACT && brng <= QOR_BRNG_SABSTRACT) {
      EXPECT_EQ(new_abstract(&stream_, brng), 0);
      return;
    }
    const int n = brng == QOR_BRNG_SOBOL || brng == QOR_BRNG_NIEDERR ? 1 : 2;  // those take a dimension
    EXPECT_EQ(__wxrNewStreamEx(&stream_, brng, n, seeds), 0) << std::hex << brng;
  }
  ~Stream() {
    if (stream_ != nullptr) __wxrDeleteStream(&stream_);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  qor_stream* get() const { return stream_; }
  qor_stream** slot() { return &stream_; }
  // The next words it delivers show its state.
  std::string words() const {
    Array<std::uint64_t> out;
    std::memset(out.get(), 0, 8 * elements);
    EXPECT_EQ(_wxriRngUniformBits(0, stream_, 20, reinterpret_cast<unsigned*>(out.get())), 0);
    return out.bytes();
  }
  static constexpr unsigned seeds[2] = {0x123, 0x234};

 private:
  qor_stream* stream_ = nullptr;
};
constexpr unsigned Stream::seeds[2];

template <class T>
const void* address(T* p) {
  return reinterpret_cast<const void*>(p);
}

// A call in which an allocation failed ends its row.
struct AllocationFailed {};

// Calls one function at one offset under given control registers, checks what it leaves and records what it delivers.
class Caller {
 public:
  Caller(const std::string& name, int offset, unsigned mxcsr, unsigned control)
      : function_(dlsym(RTLD_DEFAULT, name.c_str())), offset_(offset), mxcsr_(mxcsr), control_(control) {
    EXPECT_NE(function_, nullptr) << name;
  }

  template <class... Arguments>
  unsigned operator()(Arguments... arguments) {
    std::uint32_t words[16] = {}, count = 0;
    (push(words, count, arguments), ...);
    Machine after{};
    errno = callers_errno;
    set_control(control_);
    set_mxcsr(mxcsr_);
    allow_allocations();
    call_at(function_, words, static_cast<int>(count), offset_, &after);
    set_mxcsr(standard_mxcsr);
    set_control(standard_control);
    check_allocations(static_cast<int>(after.eax));
    EXPECT_EQ(errno, expected_errno);
    EXPECT_EQ(after.ebx, 0x0B0B0B0Bu);
    EXPECT_EQ(after.esi, 0x51515151u);
    EXPECT_EQ(after.edi, 0xD1D1D1D1u);
    EXPECT_EQ(after.mxcsr & 0xFFC0, mxcsr_ & 0xFFC0) << "MXCSR";
    EXPECT_EQ(after.x87[0] & 0xFFFF, control_) << "x87 control word";
    EXPECT_EQ(after.x87[2] & 0xFFFF, 0xFFFFu) << "x87 registers in use";
    edx = after.edx;
    return after.eax;
  }
  // The same with the returned word as part of the result.
  template <class... Arguments>
  void result(Arguments... arguments) {
    note((*this)(arguments...));
  }
  void note(unsigned value) { record.append(reinterpret_cast<const char*>(&value), sizeof value); }
  void note(const std::string& bytes) { record += bytes; }

  unsigned edx = 0;
  int expected_errno = callers_errno;
  std::string record;
  // The allocation that fails, of all that the row's calls make, and what such a call may return.
  int failing = -1;
  std::set<int> promised;

 private:
#ifdef COUNTS_ALLOCATIONS
  void allow_allocations() {
    blocks_ = live_blocks;
    refused = 0;
    until_failure = failing;
  }
  void check_allocations(int returned) {
    failing = until_failure;
    until_failure = -1;
    if (refused == 0) return;
    const int blocks = live_blocks;
    EXPECT_TRUE(returned == 0 || blocks == blocks_) << blocks - blocks_ << " blocks left over";
    EXPECT_TRUE(promised.contains(returned)) << returned;
    throw AllocationFailed();
  }
  int blocks_ = 0;
#else
  void allow_allocations() {}
  void check_allocations(int) {}
#endif
  template <class T>
  static void push(std::uint32_t* words, std::uint32_t& count, T value) {
    std::memcpy(words + count, &value, sizeof value);
    count += (sizeof value + 3) / 4;
  }

  const void* function_;
  int offset_;
  unsigned mxcsr_, control_;
};

struct Row {
  std::string name;
  std::function<void(Caller&)> call;
};
std::vector<Row> rows;
const char* current = "";  // what is being called
void add(const std::string& name, std::function<void(Caller&)> call) { rows.push_back({name, std::move(call)}); }
// A call whose returned word is all there is to see.
template <class... Arguments>
void add_call(const std::string& name, Arguments... arguments) {
  add(name, [=](Caller& call) { call.result(arguments...); });
}

// ---- the rows -------------------------------------------------------------------------------------------------------

template <class T>
std::vector<T> kernel_arguments() {
  std::vector<T> values;
  for (int i = 0; i < elements; ++i) values.push_back(static_cast<T>(0.01 + 1.37 * i));
  constexpr T inf = std::numeric_limits<T>::infinity();
  // Special values among ordinary ones and in the tail, most of them reported by one kernel or another.
  const T special[] = {0, -1, inf, -inf, std::numeric_limits<T>::denorm_min(), std::numeric_limits<T>::max(), -T(0)};
  int at = 1;
  for (const T value : special) {
    values[static_cast<std::size_t>(at)] = value;
    at += 13;
  }
  values[elements - 1] = -inf;
  return values;
}

void with_callback(const std::function<void()>& work) {
  _tfnSetErrorCallBack(on_error);
  _tfnSetMode(0x1000);
  _tfnSetErrStatus(0);
  work();
  _tfnSetMode(TFN_MODE_DEFAULT);
  _tfnClearErrorCallBack();
}

// The shapes of functions.def.
enum class Shape { one_result, two_results, two_arguments, scalar_argument };

template <class T>
void add_kernel(const std::string& function, const char* suffix, Shape shape) {
  add((sizeof(T) == 8 ? "_tfnd" : "_tfns") + function + suffix, [function, shape](Caller& call) {
    Array<T> a(kernel_arguments<T>()), first, second;
    const int calls_before = callback_calls;
    with_callback([&] {
      if (shape == Shape::one_result) call(elements, a.get(), first.get());
      if (shape == Shape::two_results) call(elements, a.get(), first.get(), second.get());
      if (shape == Shape::two_arguments) call(elements - 1, a.get(), a.get() + 1, first.get());
      if (shape == Shape::scalar_argument) call(elements, a.get(), T(-1.5), first.get());
      call.note(static_cast<unsigned>(_tfnGetErrStatus()));
    });
    // Hypot fails, but with none of these pairs.
    const bool never_fails = std::set<std::string>{"Atan", "Tanh", "Asinh", "Cbrt", "Erf", "Hypot"}.contains(function);
    EXPECT_EQ(callback_calls > calls_before, !never_fails);
    call.note(first.bytes());
    call.note(second.bytes());
  });
}

// Arrays hold half as many complex numbers; the scalar of Powx comes by value.
template <class T>
void add_complex_kernel(const std::string& function, const char* suffix, Shape shape) {
  add((sizeof(T) == 8 ? "_tfnz" : "_tfnc") + function + suffix, [function, shape](Caller& call) {
    std::vector<T> parts = kernel_arguments<T>();
    parts[20] = parts[23] = -1;  // poles
    parts[21] = parts[22] = parts[24] = parts[25] = 0;
    Array<T> a(parts), r;
    const int calls_before = callback_calls;
    const std::conditional_t<sizeof(T) == 8, TfnDoubleComplex, TfnSingleComplex> power = {T(-1.5), T(0.5)};
    with_callback([&] {
      if (shape == Shape::one_result) call(elements / 2, a.get(), r.get());
      if (shape == Shape::two_arguments) call(elements / 2 - 1, a.get(), a.get() + 2, r.get());
      if (shape == Shape::scalar_argument) call(elements / 2, a.get(), power, r.get());
      call.note(static_cast<unsigned>(_tfnGetErrStatus()));
    });
    const bool never_fails = std::set<std::string>{"Asin", "Acos", "Asinh", "Acosh", "Sqrt"}.contains(function);
    if (shape == Shape::one_result) {
      EXPECT_EQ(callback_calls > calls_before, !never_fails);
    }
    call.note(r.bytes());
  });
}

template <class T>
void add_error_path(const std::string& name) {
  add(name, [](Caller& call) {
    Array<T> a(kernel_arguments<T>()), y(kernel_arguments<T>());
    with_callback([&] { call(TFN_STATUS_SING, 7, a.get(), a.get(), y.get(), y.get(), "a name"); });
    call.note(y.bytes());
  });
}

void add_control() {
  for (const char* name : {"_GetMode", "_GetErrStatus", "_GetCallBack", "_GetInputVectorPointer", "_tfnGetMode",
                           "_tfnGetErrStatus", "_tfnGetErrorCallBack", "_tfnClearErrorCallBack"}) {
    add_call(name);
  }
  add("_tfnClearErrStatus", [](Caller& call) {
    _tfnSetErrStatus(3);
    call.result();
    call.result();
  });
  add("_tfnSetMode", [](Caller& call) {
    call.result(TFN_ERR_STDERR | 1u);
    call.result(TFN_MODE_DEFAULT);
  });
  add("_tfnSetErrStatus", [](Caller& call) {
    call.result(-1);
    call.result(0);
  });
  add("_tfnSetErrorCallBack", [](Caller& call) {
    call.result(on_error);
    call.result(nullptr);
  });
  add("_tfnSetInterfInputVectorPointer", [](Caller& call) {
    call(address(&rows));
    EXPECT_EQ(*_GetInputVectorPointer(), &rows);
    call(nullptr);
  });
  add("_tfnCreateFuncNameStr", [](Caller& call) {
    char out[81] = {};
    call.result("_tfnd", "Something", "_HA", out);
    call.note(out);
  });
  add_error_path<double>("_tfndError");
  add_error_path<float>("_tfnsError");
  static TfnErrorContext domain{};
  domain.code = TFN_STATUS_ERRDOM;
  add("_tfnStdErrorHandler", [](Caller& call) { call.expected_errno = EDOM, call(&domain); });
  add("_tfnStdErrorHandlerErrno", [](Caller& call) { call.expected_errno = EDOM, call(&domain); });
  add("_tfnStdErrorHandlerExcept", [](Caller& call) { call(&domain); });
  add("_tfnStdErrorHandlerStderr", [](Caller& call) {
    const int kept = dup(STDERR_FILENO), nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    call(&domain);
    dup2(kept, STDERR_FILENO);
    close(kept);
    close(nowhere);
  });
}

// One element a call, the second result unused.
template <class T>
void add_scalar_kernel(const std::string& name) {
  add(name, [](Caller& call) {
    Array<T> a(kernel_arguments<T>()), r;
    const int calls_before = callback_calls;
    with_callback([&] {
      for (int i = 0; i < elements; i += 3) call(i, a.get(), r.get(), nullptr);
    });
    EXPECT_GT(callback_calls, calls_before);
    call.note(r.bytes());
  });
}

void add_kernels() {
#define TFN_ADD(Name, shape)                      \
  add_kernel<double>(#Name, "_HA", Shape::shape); \
  add_kernel<double>(#Name, "_50", Shape::shape); \
  add_kernel<float>(#Name, "_HA", Shape::shape);  \
  add_kernel<float>(#Name, "_21", Shape::shape);
#define TFN_ADD_ONE(Name) TFN_ADD(Name, one_result)
#define TFN_ADD_TWO(Name) TFN_ADD(Name, two_results)
#define TFN_ADD_BINARY(Name) TFN_ADD(Name, two_arguments)
#define TFN_ADD_SCALAR(Name) TFN_ADD(Name, scalar_argument)
  TFN_ONE_RESULT(TFN_ADD_ONE)
  TFN_TWO_RESULTS(TFN_ADD_TWO)
  TFN_TWO_ARGUMENTS(TFN_ADD_BINARY)
  TFN_SCALAR_ARGUMENT(TFN_ADD_SCALAR)
#define TFN_ADD_COMPLEX(Name, shape)                      \
  add_complex_kernel<double>(#Name, "_HA", Shape::shape); \
  add_complex_kernel<double>(#Name, "_50", Shape::shape); \
  add_complex_kernel<float>(#Name, "_HA", Shape::shape);  \
  add_complex_kernel<float>(#Name, "_21", Shape::shape);
#define TFN_ADD_COMPLEX_ONE(Name) TFN_ADD_COMPLEX(Name, one_result)
#define TFN_ADD_COMPLEX_TWO(Name) TFN_ADD_COMPLEX(Name, two_arguments)
#define TFN_ADD_COMPLEX_SCALAR(Name) TFN_ADD_COMPLEX(Name, scalar_argument)
  TFN_COMPLEX_ONE_ARGUMENT(TFN_ADD_COMPLEX_ONE)
  TFN_COMPLEX_TWO_ARGUMENTS(TFN_ADD_COMPLEX_TWO)
  TFN_COMPLEX_SCALAR_ARGUMENT(TFN_ADD_COMPLEX_SCALAR)
  add_scalar_kernel<double>("_tfndErfInv_HA_SC_zx8");
  add_scalar_kernel<float>("_tfnsErfInv_HA_SC_zx8");
}

// One kernel of blas1; the complex ones take their scalars by address.
template <class T>
void add_level1(const std::string& letter, bool complex) {
  const auto row = [&](const std::string& operation, auto call_it) {
    add("qor_blas_zx9_" + operation, [call_it](Caller& call) {
      std::vector<T> whole(elements);  // sums and products are exact: rounding is the caller's
      for (int i = 0; i < elements; ++i) whole[static_cast<std::size_t>(i)] = T(i - 20);
      Array<T> x(whole), y(whole);
      call_it(call, x, y);
      call.note(x.bytes());
      call.note(y.bytes());
    });
  };
  static const T alpha[] = {T(1.5), T(-0.5)};
  for (const char* operation : {"copy", "swap"}) {
    row(letter + operation, [](Caller& call, auto& x, auto& y) { call(30, x.get(), 1, y.get(), 1); });
  }
  row(letter + "scal", [complex](Caller& call, auto& x, auto&) {
    if (complex) call(30, alpha, x.get(), 1);
    if (!complex) call(30, alpha[0], x.get(), 1);
  });
  row(letter + "axpy", [complex](Caller& call, auto& x, auto& y) {
    if (complex) call(30, alpha, x.get(), 1, y.get(), 1);
    if (!complex) call(30, alpha[0], x.get(), 1, y.get(), 1);
  });
  if (!complex) return;
  row(letter + (sizeof(T) == 4 ? "sscal" : "dscal"),
      [](Caller& call, auto& x, auto&) { call(30, alpha[0], x.get(), 1); });
}

void add_service() {
  add("qor_serv_allocate", [](Caller& call) {
    void* const block = reinterpret_cast<void*>(static_cast<std::uintptr_t>(call(1000)));
    std::memset(block, 7, 1200);
    qor_serv_deallocate(block);
  });
  add("qor_serv_deallocate", [](Caller& call) {
    void* const block = qor_serv_allocate(1000);
    call(block);
    EXPECT_EQ(qor_serv_allocate(1000), block);
    qor_serv_deallocate(block);
  });
  for (const char* name : {"qor_serv_freebuffers", "qor_free_extra_mem", "QOR_shrink_mem_slots"}) {
    add(name, [](Caller& call) { call(); });
  }
  for (const char* name : {"QOR_read_env", "QOR_ThreadID", "qor_serv_in_serial", "qor_serv_set_serial",
                           "qor_serv_set_parallel", "dll_cpu_version", "qor_version", "qor_cpu_supported"}) {
    add(name, [](Caller& call) { call.result(); });
  }
  add("qor_serv_lock", [](Caller& call) { call(), qor_serv_unlock(); });
  add("qor_serv_unlock", [](Caller& call) { qor_serv_lock(), call(); });
  add("qor_serv_dft_lock", [](Caller& call) { call(), qor_serv_dft_unlock(); });
  add("qor_serv_dft_unlock", [](Caller& call) { qor_serv_dft_lock(), call(); });
}

template <class T>
void add_pack_and_round(const std::string& precision) {
  const auto rounding_arguments = [] {
    auto values = kernel_arguments<T>();
    for (T& v : values) v = v > 2 ? std::floor(v) : v < 0 ? T(-3) : v == T(0) ? v : T(2);  // same in every direction
    return values;
  };
  for (const char* name : {"Floor", "Ceil", "Trunc", "Round", "Rint", "NearbyInt", "Modf"}) {
    add(precision + name, [=](Caller& call) {
      Array<T> a(rounding_arguments()), y, z;
      if (std::strcmp(name, "Modf") == 0) {
        call(elements, a.get(), y.get(), z.get());
      } else {
        call(elements, a.get(), y.get());
      }
      call.note(y.bytes() + z.bytes());
    });
  }
  static const std::vector<int> list = [] {
    std::vector<int> v;
    for (int i = 0; i < elements; ++i) v.push_back((i * 7 + 1) % elements);
    return v;
  }();
  // The third argument of packing is the fourth of unpacking.
  const auto add_one = [&](const char* kind, auto third, int n) {
    add(precision + "Pack" + kind, [=](Caller& call) {
      Array<T> a(kernel_arguments<T>()), y;
      call(n, a.get(), third, y.get());
      call.note(y.bytes());
    });
    add(precision + "Unpack" + kind, [=](Caller& call) {
      Array<T> a(kernel_arguments<T>()), y;
      call(n, a.get(), y.get(), third);
      call.note(y.bytes());
    });
  };
  add_one("I", 3, elements / 3);
  add_one("M", list.data(), elements);
  add_one("V", list.data(), elements);
}

template <class T>
void add_one_element(const std::string& precision) {
  for (const char* function : {"Sin", "Cos", "Tan", "SinCos"}) {
    for (const char* suffix : {"", "_HA", "_LA", "_A11"}) {
      add(precision + function + "_SC" + suffix, [=](Caller& call) {
        Array<T> a(kernel_arguments<T>()), y, z;
        const int calls_before = callback_calls;
        with_callback([&] {
          for (int i = 0; i < elements; ++i) {
            if (*suffix == 0) {
              call(i, a.get(), y.get(), z.get(), "a name");
            } else {
              call(i, a.get(), y.get(), z.get());
            }
          }
        });
        EXPECT_GT(callback_calls, calls_before);
        call.note(y.bytes() + z.bytes());
      });
    }
  }
}

template <class D>
void add_drivers(const std::string& name) {
  static constexpr int two[] = {5, 4}, full[] = {9, 7}, dense[] = {1, 5}, apart[] = {2, 10}, none[] = {0, 0},
                       one[] = {1, 1};
  static const auto ramp = [] {
    std::vector<D> values;
    for (int i = 0; i < elements; ++i) values.push_back(D(i % 17) / 8);
    return values;
  }();
  for (const std::string way : {"Direct", "Fft"})
    for (const bool dec : {true, false}) {
      add(name + way + (dec ? "1D_dec" : "1D_nodec"), [dec](Caller& call) {
        Array<D> x(ramp), y(ramp), z;
        if (dec) call.result(x.get(), 2, y.get(), 1, z.get(), -2, 9, 40, 0, 20, 2);
        if (!dec) call.result(x.get(), 2, y.get(), 1, z.get(), -2, 9, 40, 0, 39);
        call.note(z.bytes());
      });
      add(name + way + (dec ? "All_dec" : "All_nodec"), [dec](Caller& call) {
        Array<D> x(ramp), y(ramp), z;
        if (dec) call.result(2, x.get(), two, dense, y.get(), two, apart, z.get(), two, dense, none, one);
        if (!dec) call.result(2, x.get(), two, dense, y.get(), two, apart, z.get(), full, dense, none);
        call.note(z.bytes());
      });
    }
}
template <class T>
void add_whole_convolution(const std::string& suffix) {
  for (const std::string name : {"qfpsConv", "ownConv"}) {
    add(name + suffix, [direct = name == "ownConv"](Caller& call) {
      std::vector<T> ramp(300), zeros(599);
      for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = T(i % 17) / 8;
      for (const int n : {20, 300}) {
        Array<T, 600> x(ramp), y(ramp), z(zeros);
        if (direct) call(x.get(), n, y.get(), 300, z.get());
        if (!direct) call.result(x.get(), n, y.get(), 300, z.get());
        call.note(z.bytes());
      }
    });
  }
}
void add_convolution() {
  add_whole_convolution<float>("_32f");
  add_whole_convolution<double>("_64f");
  for (const std::string kind : {"_wxrConv", "_wxrCorr"}) {
    add_drivers<double>(kind + "DD");
    add_drivers<float>(kind + "SD");
    add_drivers<float>(kind + "SS");
  }
}

// A task of rank 2 on an x of its own, made by plain calls, with private data whose functions look at their stack.
int probe_release(qor_conv_task*, void*) {
  note_frame(__builtin_frame_address(0));
  return 0;
}
int probe_copy(qor_conv_task*, void** slot, void*) {
  note_frame(__builtin_frame_address(0));
  *slot = nullptr;  // the copy has none
  return 0;
}
class ConvTask {
 public:
  ConvTask() {
    EXPECT_EQ(__wxrNewTaskX(&task_, 1, 2, 0, 4, 2, 2, shape, shape, full, x_.get(), nullptr), 0);
    task_->private_data = std::malloc(1);
    task_->release_private_data = probe_release;
    task_->copy_private_data = probe_copy;
  }
  ~ConvTask() {
    if (task_ != nullptr) __wxrDeleteTask(&task_);
  }
  ConvTask(const ConvTask&) = delete;
  ConvTask& operator=(const ConvTask&) = delete;
  qor_conv_task* get() const { return task_; }
  qor_conv_task** slot() { return &task_; }
  double* x() { return x_.get(); }
  static constexpr int shape[2] = {5, 4}, full[2] = {9, 7};

 private:
  Array<double> x_{std::vector<double>(elements, 0.5)};
  qor_conv_task* task_ = nullptr;
};
constexpr int ConvTask::shape[2], ConvTask::full[2];

void add_tasks() {
  const auto add_task = [](const char* name, const std::function<void(Caller&, ConvTask&)>& work) {
    add(name, [work](Caller& call) {
      ConvTask task;
      work(call, task);
      if (task.get() != nullptr) call.note(static_cast<unsigned>(__wxrccGetStatus(task.get())));
    });
  };
  // Words 4 to 7 and 11 to 13 of a new task say what it is.
  const auto note_task = [](Caller& call, qor_conv_task* task) {
    ASSERT_NE(task, nullptr);
    call.note(std::string(reinterpret_cast<const char*>(&task->kind), 16));
    call.note(std::string(reinterpret_cast<const char*>(&task->data_precision), 12));
    __wxrDeleteTask(&task);
  };
  add("__wxrNewTask", [note_task](Caller& call) {
    qor_conv_task* task = nullptr;
    call.result(&task, 1, 2, 3, 4, 5, 2, ConvTask::shape, ConvTask::shape, ConvTask::full);
    note_task(call, task);
  });
  add("__wxrNewTaskX", [note_task](Caller& call) {
    qor_conv_task* task = nullptr;
    call.result(&task, 1, 2, 3, 4, 5, 2, ConvTask::shape, ConvTask::shape, ConvTask::full, &task, ConvTask::shape);
    note_task(call, task);
  });
  add_task("__wxrCommitTask", [](Caller& call, ConvTask& task) { call.result(task.get()); });
  add_task("__wxrEditTask", [](Caller& call, ConvTask& task) {
    call.result(task.get(), QOR_CONV_EDIT_START, ConvTask::shape);
    call.note(static_cast<unsigned>(task.get()->start_entries[1]));
    call.result(task.get(), 1, ConvTask::shape);
  });
  for (const bool fixed : {false, true}) {
    add_task(fixed ? "__wxrExecX" : "__wxrExec", [fixed](Caller& call, ConvTask& task) {
      Array<double> y(std::vector<double>(elements, 0.75)), z;
      for (const int mode : {QOR_CONV_MODE_FFT, QOR_CONV_MODE_DIRECT}) {
        __wxrEditTask(task.get(), QOR_CONV_EDIT_MODE, &mode);
        if (fixed) call.result(task.get(), y.get(), nullptr, z.get(), nullptr);
        if (!fixed) call.result(task.get(), task.x(), nullptr, y.get(), nullptr, z.get(), nullptr);
        call.note(z.bytes());
      }
    });
  }
  add_task("__wxrCopyTask", [note_task](Caller& call, ConvTask& task) {
    qor_conv_task* copy = nullptr;
    const int calls_before = callback_calls;
    call.result(&copy, task.get());
    EXPECT_EQ(callback_calls, calls_before + 1);
    note_task(call, copy);
  });
  add_task("__wxrDeleteTask", [](Caller& call, ConvTask& task) {
    const int calls_before = callback_calls;
    call.result(task.slot());
    EXPECT_EQ(callback_calls, calls_before + 1);
  });
  add_task("__wxrccSetStatus", [](Caller& call, ConvTask& task) { call.result(task.get(), -7); });
  add_task("__wxrccGetStatus", [](Caller& call, ConvTask& task) { call.result(task.get()); });
}

void add_registry() {
  add("__wxrRegisterBrng", [](Caller& call) {
    const int before = __wxrGetNumRegBrngs();
    BrngRecord record = probe_record;
    call.note(call(&record) - (static_cast<unsigned>(before) << 20));
    record.iOut = nullptr;
    call.result(&record);
  });
  add("__wxrGetNumRegBrngs", [](Caller& call) { EXPECT_EQ(call(), static_cast<unsigned>(NRegBrngsNew)); });
  add("__wxrGetBrngProperties", [](Caller& call) {
    BrngRecord record{};
    call.result(QOR_BRNG_MT19937, &record);
    call.note(static_cast<unsigned>(record.stateBytes));
    call.result(-1, &record);
  });
  add("__wxrGetBrngBaseOffset", [](Caller& call) {
    int entry = -1, member = -1;
    EXPECT_EQ(call(QOR_BRNG_WH + 5, &entry, &member), reinterpret_cast<std::uintptr_t>(__RegBrngsNew));
    EXPECT_EQ(entry, 4);
    EXPECT_EQ(member, 5);
  });
  add_call("__wxrIsBrngValid", __RegBrngsNew, 8, 1023);
}

// A row on a stream of this generator with a chunk of 16 bytes under key 9.
void add_on(const std::string& name, int brng, const std::function<void(Caller&, Stream&)>& work) {
  add(name, [brng, work](Caller& call) {
    Stream stream(brng);
    __wxrAddChunk(stream.get(), 9, std::calloc(1, 16), 16);
    work(call, stream);
  });
}

void add_streams() {
  add("__wxrNewStreamEx", [](Caller& call) {
    for (const int brng : {QOR_BRNG_MT19937, QOR_BRNG_MRG32K3A, QOR_BRNG_MCG59, probe_brng(), QOR_BRNG_DABSTRACT}) {
      qor_stream* stream = nullptr;
      call.result(&stream, brng, 2, Stream::seeds);
      if (stream != nullptr) __wxrDeleteStream(&stream);
    }
  });
  add("__wxrAllocateStream", [](Caller& call) {
    qor_stream* stream = nullptr;
    call.result(&stream, __RegBrngsNew, QOR_BRNG_MT19937, 7, 0);
    ASSERT_NE(stream, nullptr);
    __wxrDeleteStream(&stream);
  });
  add_on("__wxrCopyStream", QOR_BRNG_MT19937, [](Caller& call, Stream& source) {
    qor_stream* copy = nullptr;
    call.result(&copy, source.get());
    call.note(static_cast<unsigned>(__wxrGetNumChunks(copy)));
    __wxrDeleteStream(&copy);
  });
  add_on("__wxrCopyStreamState", QOR_BRNG_MT19937, [](Caller& call, Stream& source) {
    const Stream destination(QOR_BRNG_MT19937);
    source.words();
    call.result(destination.get(), source.get());
    call.note(destination.words());
  });
  add_on("__wxrDeleteStream", QOR_BRNG_MCG31M1, [](Caller& call, Stream& stream) {
    call.result(stream.slot());
    EXPECT_EQ(stream.get(), nullptr);
  });
  add_on("__wxrLeapfrogStream", QOR_BRNG_MCG59, [](Caller& call, Stream& stream) {
    const Stream probe(probe_brng());
    for (const Stream* each : {&probe, static_cast<const Stream*>(&stream)}) call.result(each->get(), 2, 5);
    call.note(stream.words());
  });
  add_on("__wxrSkipAheadStream", QOR_BRNG_MRG32K3A, [](Caller& call, Stream& stream) {
    const Stream probe(probe_brng());
    for (const Stream* each : {&probe, static_cast<const Stream*>(&stream)}) call.result(each->get(), 123456);
    call.note(stream.words());
  });
  add_on("__wxrAddChunk", QOR_BRNG_MCG31M1, [](Caller& call, Stream& stream) {
    call.result(stream.get(), 8u, std::malloc(16), 16u);
    EXPECT_EQ(__wxrGetNumChunks(stream.get()), 2);
  });
  add_on("__wxrSearchChunk", QOR_BRNG_MCG31M1, [](Caller& call, Stream& stream) {
    EXPECT_EQ(call(stream.get(), 9u), reinterpret_cast<std::uintptr_t>(__wxrSearchChunk(stream.get(), 9)));
    EXPECT_EQ(call(stream.get(), 8u), 0u);
  });
  for (const char* name : {"__wxrGetNumChunks", "__wxrDeleteChunks", "__wxrGetStreamStateBrng"}) {
    add_on(name, QOR_BRNG_MCG59, [](Caller& call, Stream& stream) { call.result(stream.get()); });
  }
  add_on("__wxrSaveStreamF", QOR_BRNG_MRG32K3A, [](Caller& call, Stream& stream) {
    const qor::test::ScratchFile file;
    const std::string name = file.name();
    call.result(stream.get(), name.c_str(), name.size());
    call.note(file.bytes());
    call.result(stream.get(), "/proc/nowhere/file", -1);
  });
  add_on("__wxrLoadStreamF", QOR_BRNG_MRG32K3A, [](Caller& call, Stream& stream) {
    const qor::test::ScratchFile file;
    const std::string name = file.name();
    __wxrSaveStreamF(stream.get(), name.c_str(), -1);
    __wxrDeleteStream(stream.slot());
    call.result(stream.slot(), name.c_str());
    call.note(stream.words());
    qor_stream* none = nullptr;
    call.result(&none, "/proc/nowhere/file");
  });
}

void add_engines() {
  struct Engine {
    std::string tag;
    int brng;
  };
  static const Engine engines[] = {{"MCG31M1", QOR_BRNG_MCG31M1},
                                   {"R250", QOR_BRNG_R250},
                                   {"MRG32K3A", QOR_BRNG_MRG32K3A},
                                   {"MCG59", QOR_BRNG_MCG59},
                                   {"MT19937", QOR_BRNG_MT19937},
                                   {"MT2203", QOR_BRNG_MT2203 + 1},
                                   {"WH", QOR_BRNG_WH},
                                   {"iAbstract", QOR_BRNG_IABSTRACT},
                                   {"dAbstract", QOR_BRNG_DABSTRACT},
                                   {"sAbstract", QOR_BRNG_SABSTRACT},
                                   {"Sobol", QOR_BRNG_SOBOL},
                                   {"Niederr", QOR_BRNG_NIEDERR}};
  for (const Engine& engine : engines) {
    add("__wxrBRng" + engine.tag + "InitStream", [&engine](Caller& call) {
      const Stream stream(engine.brng);
      const unsigned k = 1;
      call.result(2, stream.get(), 12345, nullptr);
      call.result(1, stream.get(), 3, &k);
      call.note(stream.words());
      for (const int method : {0, 7}) call.result(method, stream.get(), 2, Stream::seeds);
      call.note(stream.words());
    });
    const auto add_draw = [&engine](char type, auto element, int n, auto... interval) {
      add(std::string("__wxr") + type + "BRng" + engine.tag, [=](Caller& call) {
        const Stream stream(engine.brng);
        Array<decltype(element)> out;
        call.result(stream.get(), n, out.get(), interval...);
        call.note(out.bytes());
      });
    };
    add_draw('s', float{}, elements - 1, -1.5f, 2.5f);
    add_draw('d', double{}, elements - 1, -1.5, 2.5);
    add_draw('i', std::uint64_t{}, elements / 2 - 1);  // words of 128 bits at most
  }

  const auto add_constructor = [](char type, auto* buffer, auto a, auto... b) {
    add(std::string("__wxr") + type + "NewAbstractStream", [=](Caller& call) {
      qor_stream* stream = nullptr;
      call.result(&stream, 7, buffer, a, b...);
      ASSERT_NE(stream, nullptr);
      double r[9];
      call.note(static_cast<unsigned>(_wxrdRngUniform(0, stream, 9, r, 1, 2)));
      call.note(std::string(reinterpret_cast<const char*>(r), sizeof r));
      __wxrDeleteStream(&stream);
    });
  };
  add_constructor('i', word_buffer, probe_update<unsigned>);
  add_constructor('d', double_buffer, 0.25, 1.5, probe_update<double>);
  add_constructor('s', single_buffer, 0.25f, 1.5f, probe_update<float>);

  static const unsigned matrix[9] = {0, 1, 0, 0, 0, 1, 4294156359u, 1403580u, 0}, vector[3] = {7, 8, 9};
  constexpr unsigned modulus = 4294967087u;
  add_call("__wxriPowMod", 1132489760u, 1000, modulus);
  add_call("__wxriPowMod2P31M1", 1132489760u, 1000);
  add("__wxriPowMod2P59", [](Caller& call) {
    call.result(12345u, 6789u, 1000);
    call.note(call.edx);
  });
  static unsigned out[9];
  const auto add_matrix = [](const std::string& name, auto... arguments) {
    add(name, [=](Caller& call) {
      std::fill_n(out, 9, 3u);
      call(arguments...);
      call.note(std::string(reinterpret_cast<const char*>(out), sizeof out));
    });
  };
  add_matrix("__wxriVect3PowMod", out, matrix + 6, modulus, 100);
  add_matrix("__wxriMatr3x3PowMod", matrix, out, modulus, 100);
  add_matrix("__wxriMatr3x3MulMod", matrix, matrix, out, modulus);
  add_matrix("__wxriMatr3x3VectMulMod", matrix, vector, out, modulus);
}

// Generators of variates, on a stream of the library's and on one of the caller's engine. `method` is left out where
// the function has none.
template <class T, class... A>
void add_generator(const std::string& name, std::vector<int> methods, A... a) {
  // An interval on which the ramp isn't exact; rejections that a ramp beginning anew never ends.
  bool library_only = false;
  for (const char* part : {"Cauchy", "Gamma", "Beta", "inomial"}) library_only |= name.find(part) != std::string::npos;
  add(name, [methods, library_only, a...](Caller& call) {
    for (const int brng : {QOR_BRNG_MT19937, probe_brng()}) {
      if (library_only && brng == probe_brng()) break;
      const Stream stream(brng);
      for (const int n : {elements - 1, 4}) {
        Array<T> out;
        for (const int method : methods) call.result(method, stream.get(), n, out.get(), a...);
        if (methods.empty()) call.result(stream.get(), n, out.get(), a...);
        call.note(out.bytes());
      }
    }
  });
}

void add_distributions() {
  const int accurate = static_cast<int>(QOR_RNG_METHOD_ACCURATE);
  add_generator<double>("_wxrdRngUniform", {0, accurate}, -1.25, 3.5);
  add_generator<float>("_wxrsRngUniform", {0, accurate}, -1.25f, 3.5f);
  add_generator<int>("_wxriRngUniform", {0}, -3, 1000);
  add("_wxriRngUniformBits", [](Caller& call) {
    for (const int brng : {QOR_BRNG_MT19937, QOR_BRNG_MCG59, probe_brng()}) {
      const Stream stream(brng);
      Array<std::uint64_t> out;
      call.result(0, stream.get(), elements - 1, out.get());
      call.note(out.bytes());
    }
  });
  add_generator<double>("_wxrdRngGaussian", {0, 1}, 10.0, 2.0);
  add_generator<float>("_wxrsRngGaussian", {0, 1}, 10.0f, 2.0f);
  for (const std::string name : {"RngGaussianBoxMuller", "RngGaussianBoxMuller2"}) {
    add_generator<double>("_vd" + name, {}, 10.0, 2.0);
    add_generator<float>("_vs" + name, {}, 10.0f, 2.0f);
  }
  for (const std::string name : {"Exponential", "Laplace", "Cauchy", "Rayleigh", "Gumbel"}) {
    add_generator<double>("_wxrdRng" + name, {0}, -1.25, 3.5);
    add_generator<float>("_wxrsRng" + name, {0}, -1.25f, 3.5f);
  }
  for (const std::string name : {"Weibull", "Gamma"}) {
    add_generator<double>("_wxrdRng" + name, {0}, 0.7, -1.25, 3.5);
    add_generator<float>("_wxrsRng" + name, {0}, 0.7f, -1.25f, 3.5f);
  }
  for (const std::string name : {"Lognormal", "Beta"}) {
    add_generator<double>("_wxrdRng" + name, {0, 1}, 0.7, 0.5, -1.25, 3.5);
    add_generator<float>("_wxrsRng" + name, {0, 1}, 0.7f, 0.5f, -1.25f, 3.5f);
  }
  add_generator<int>("_wxriRngBernoulli", {0, 1}, 0.3);
  add_generator<int>("_wxriRngGeometric", {0}, 0.01);
  add_generator<int>("_wxriRngBinomial", {0}, 1000000, 0.3);
  add_generator<int>("_wxriRngHypergeometric", {0}, 1000, 100, 300);
  add_generator<int>("_wxriRngPoisson", {0}, 2.5);
  add_generator<int>("_wxriRngNegbinomial", {0}, 2.5, 0.001);
  add("_wxriRngPoissonV", [](Caller& call) {
    const Stream stream(QOR_BRNG_MT19937);
    Array<double> lambda(std::vector<double>{0.5, 5, 9, 12, 15, 40, 1000, 1e6, 1, 2, 3, 4, 20, 30, 40, 50, 60});
    Array<int> out;
    call.result(0, stream.get(), 17, out.get(), lambda.get());
    call.note(out.bytes());
  });
  const auto add_vectors = [](const std::string& name, auto zero) {
    using T = decltype(zero);
    add(name, [](Caller& call) {
      const Stream stream(QOR_BRNG_MT19937);
      for (const int storage : {0, 1, 2}) {
        Array<T> out, mean(std::vector<T>(9, T(3))), factor(std::vector<T>(81, T(0.7)));
        call.result(1, stream.get(), 10, out.get(), 9, storage, mean.get(), factor.get());
        call.note(out.bytes());
      }
    });
  };
  add_vectors("_wxrdRngGaussianMV", 0.0);
  add_vectors("_wxrsRngGaussianMV", 0.0f);
}

// Transforms: `Spec` stands for any record. Sets of entries differ in their names' middle and end.
using Spec = void;
template <class F>
F* plain(const std::string& name) {
  return reinterpret_cast<F*>(dlsym(RTLD_DEFAULT, name.c_str()));
}
class Record {
 public:
  Record(const std::string& set, const std::string& type, int size) : free_("qfps" + set + "Free_" + type) {
    const auto create = plain<int(Spec**, int, int, int)>("qfps" + set + "InitAlloc_" + type);
    EXPECT_EQ(create(&spec_, size, 4, 0), 0) << set << type;
  }
  ~Record() { plain<int(Spec*)>(free_)(spec_); }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
  Spec* get() const { return spec_; }

 private:
  std::string free_;
  Spec* spec_ = nullptr;
};

// `sizes` are orders or lengths of at most elements - 2 numbers.
template <class T>
void add_transform_set(const std::string& set, const std::string& type, const std::vector<int>& sizes,
                       const std::vector<std::string>& transforms) {
  add("qfps" + set + "InitAlloc_" + type, [=](Caller& call) {
    for (const int size : sizes) {
      Spec* spec = nullptr;
      call.result(&spec, size, 3, 0);
      EXPECT_EQ(spec, nullptr);
      call.result(&spec, size, 4, 0);
      ASSERT_NE(spec, nullptr);
      plain<int(Spec*)>("qfps" + set + "Free_" + type)(spec);
    }
  });
  add("qfps" + set + "Free_" + type, [=](Caller& call) {
    Spec* spec = nullptr;
    plain<int(Spec**, int, int, int)>("qfps" + set + "InitAlloc_" + type)(&spec, sizes[0], 4, 0);
    call.result(spec);
    call.result(nullptr);
  });
  add("qfps" + set + "GetBufSize_" + type, [=](Caller& call) {
    const Record record(set, type, sizes[0]);
    int bytes = -1;
    call.result(record.get(), &bytes);
    call.note(static_cast<unsigned>(bytes));
  });
  for (const std::string& transform : transforms) {
    // Fwd_RToPerm_64f: the type without its domain.
    add("qfps" + set + transform + type.substr(1), [=](Caller& call) {
      std::vector<T> values;
      for (int i = 0; i < elements; ++i) values.push_back(static_cast<T>(0.01 + 1.37 * (i * i % 31)));
      for (const int size : sizes) {
        const Record record(set, type, size);
        Array<T> in(values), out, in_place(values);
        call.result(in.get(), out.get(), record.get(), nullptr);
        call.result(in_place.get(), in_place.get(), record.get(), nullptr);
        call.note(out.bytes());
        call.note(in_place.bytes());
      }
    });
  }
}

template <class T>
void add_spectra(const std::string& type) {
  for (const char* name :
       {"PermToPack", "PermToCCS", "PackToPerm", "PackToCCS", "CCSToPerm", "CCSToPack", "Copy", "MulPerm"}) {
    const bool product = std::string(name) == "MulPerm";
    add("qfps" + std::string(name) + "_" + type + (product ? "_I" : ""), [](Caller& call) {
      std::vector<T> values;
      for (int i = 0; i < elements; ++i) values.push_back(static_cast<T>(1 + i % 7));
      Array<T> a(values), b(values);
      call.result(a.get(), b.get(), elements - 3);
      call.result(nullptr, b.get(), 1);
      call.note(b.bytes());
    });
  }
  add("qfpsZero_" + type, [](Caller& call) {
    Array<T> a;
    call.result(a.get(), elements - 3);
    call.note(a.bytes());
  });
}

void add_fft() {
  const std::vector<std::string> real = {"Fwd_RToPerm", "Fwd_RToPack", "Fwd_RToCCS",
                                         "Inv_PermToR", "Inv_PackToR", "Inv_CCSToR"};
  const std::vector<std::string> complex = {"Fwd_CToC", "Inv_CToC"};
  add_transform_set<float>("FFT", "R_32f", {6, 2, 0}, real);
  add_transform_set<double>("FFT", "R_64f", {6, 2, 0}, real);
  add_transform_set<float>("FFT", "C_32fc", {5, 2, 0}, complex);
  add_transform_set<double>("FFT", "C_64fc", {5, 2, 0}, complex);
  add_transform_set<float>("DFT", "R_32f", {98, 45, 68}, real);
  add_transform_set<double>("DFT", "R_64f", {98, 45, 68}, real);
  add_transform_set<float>("DFT", "C_32fc", {49, 48, 34, 47}, complex);
  add_transform_set<double>("DFT", "C_64fc", {49, 48, 34, 47}, complex);
  add_spectra<float>("32f");
  add_spectra<double>("64f");
  for (const char* name : {"qfpsMalloc_8u", "qfpsMalloc_32f", "qfpsMalloc_64f"}) {
    add(name, [](Caller& call) {
      const unsigned address = call(100);
      EXPECT_EQ(address % 32, 0u);
      qfpsFree(reinterpret_cast<void*>(address));
      call.result(0);
    });
  }
  add("qfpsFree", [](Caller& call) {
    call(qfpsMalloc_64f(10));
    call(nullptr);
  });
}

// A descriptor that goes by plain calls.
class Descriptor {
 public:
  Descriptor() = default;
  Descriptor(int precision, int domain) {
    const int lengths[] = {3, 10};
    EXPECT_EQ(qor_dft_zx9_create_descriptor_external(&d, precision, domain, 2, lengths), 0);
    EXPECT_EQ(qor_dft_zx9_commit_descriptor_external(d), 0);
  }
  ~Descriptor() { qor_dft_zx9_free_descriptor_external(&d); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  qor_dft_descriptor* d = nullptr;
};

template <class T>
void compute_in_place(Caller& call, int precision) {
  for (const int domain : {QOR_DFT_COMPLEX, QOR_DFT_REAL}) {
    const Descriptor made(precision, domain);
    Array<T> values;
    for (int i = 0; i < elements; ++i) {
      const T v = static_cast<T>(0.01 + 1.37 * (i * i % 31));
      std::memcpy(reinterpret_cast<char*>(values.get()) + sizeof v * static_cast<unsigned>(i), &v, sizeof v);
    }
    call.result(made.d, values.get(), nullptr);
    call.note(values.bytes());
  }
}

void add_dft() {
  const std::string prefix = "qor_dft_zx9_";
  const int lengths[] = {3, 35, 4};
  add(prefix + "create_descriptor_external", [=](Caller& call) {
    Descriptor made;
    call.result(&made.d, 35, QOR_DFT_REAL, 3, lengths);
    call.result(&made.d, QOR_DFT_DOUBLE, QOR_DFT_REAL, 3, lengths);
  });
  add(prefix + "commit_descriptor_external", [=](Caller& call) {
    for (const int precision : {QOR_DFT_DOUBLE, QOR_DFT_SINGLE}) {
      for (const int domain : {QOR_DFT_COMPLEX, QOR_DFT_REAL}) {
        Descriptor made;
        EXPECT_EQ(qor_dft_zx9_create_descriptor_external(&made.d, precision, domain, 3, lengths), 0);
        call.result(made.d);
      }
    }
  });
  add(prefix + "copy_descriptor_external", [](Caller& call) {
    const Descriptor made(QOR_DFT_SINGLE, QOR_DFT_COMPLEX);
    Descriptor copy;
    call.result(made.d, &copy.d);
  });
  add(prefix + "free_descriptor_external", [](Caller& call) {
    Descriptor made(QOR_DFT_DOUBLE, QOR_DFT_REAL);
    call.result(&made.d);
    EXPECT_EQ(made.d, nullptr);
  });
  add(prefix + "set_value_external", [](Caller& call) {
    const Descriptor made(QOR_DFT_DOUBLE, QOR_DFT_REAL);
    const double scale = 0.5;
    call.result(made.d, QOR_DFT_BACKWARD_SCALE, &scale);
  });
  add(prefix + "get_value_external", [](Caller& call) {
    const Descriptor made(QOR_DFT_DOUBLE, QOR_DFT_REAL);
    int strides[3] = {};
    call.result(made.d, QOR_DFT_SPECTRUM_STRIDES, strides);
    for (const int stride : strides) call.note(static_cast<unsigned>(stride));
  });
  for (const char* direction : {"forward", "backward"}) {
    add(prefix + "compute_" + direction + "_external", [](Caller& call) {
      compute_in_place<double>(call, QOR_DFT_DOUBLE);
      compute_in_place<float>(call, QOR_DFT_SINGLE);
    });
  }
  add_call(prefix + "error_class_external", QOR_DFT_BAD_RANK, QOR_DFT_CLASS_ARGUMENT);
  add(prefix + "error_message_external",
      [](Caller& call) { call.note(reinterpret_cast<const char*>(call(QOR_DFT_BAD_RANK))); });
}

class Entries : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    // What an aligned access to a misaligned stack ends in, and what an unmasked exception does.
    for (const int signal : {SIGSEGV, SIGFPE}) {
      std::signal(signal, [](int number) {
        std::fprintf(stderr, "signal %d in %s\n", number, current);
        std::_Exit(1);
      });
    }
    if (!rows.empty()) return;
    add_control();
    add_kernels();
    add_level1<float>("s", false);
    add_level1<double>("d", false);
    add_level1<float>("c", true);
    add_level1<double>("z", true);
    add_service();
    add_pack_and_round<double>("_tfnd");
    add_pack_and_round<float>("_tfns");
    add_one_element<double>("_tfnd");
    add_one_element<float>("_tfns");
    add_convolution();
    add_tasks();
    add_registry();
    add_streams();
    add_engines();
    add_distributions();
    add_fft();
    add_dft();
  }
  static std::string recorded(const Row& row, int offset, unsigned mxcsr, unsigned control) {
    const std::string trace_text = row.name + " at " + std::to_string(offset) + " mod 16";
    const testing::ScopedTrace trace(__FILE__, __LINE__, trace_text);
    Caller caller(row.name, offset, mxcsr, control);
    misaligned_callbacks = 0;
    current = trace_text.c_str();
    row.call(caller);
    EXPECT_EQ(misaligned_callbacks, 0) << "the library called back with a misaligned stack";
    return caller.record;
  }
};

TEST_F(Entries, AllHaveARowHere) {
  std::set<std::string> called;
  for (const Row& row : rows) EXPECT_TRUE(called.insert(row.name).second) << row.name << " twice";
  for (const std::string& name : binary::exports_of(QOR_LIBRARY).functions) {
    EXPECT_TRUE(called.contains(name)) << name << " has no row in this test";
  }
}

TEST_F(Entries, WorkAtEveryStackOffsetAndUnderAnyControlWords) {
  for (const Row& row : rows) {
    const std::string aligned = recorded(row, 0, standard_mxcsr, standard_control);
    for (const int offset : {4, 8, 12}) {
      EXPECT_TRUE(recorded(row, offset, standard_mxcsr, standard_control) == aligned)
          << row.name << " at " << offset << " mod 16 gives another result";
    }
    // Rounding up with subnormals flushed and taken as zero; x87 rounding to zero in double precision.
    EXPECT_TRUE(recorded(row, 4, standard_mxcsr | 0xC040, 0xE7F) == aligned)
        << row.name << " depends on the caller's control words";
  }
}

#ifdef COUNTS_ALLOCATIONS
// What an entry returns when there is no memory, by the start of its name.
std::set<int> without_memory(const std::string& name) {
  const auto starts = [&](const char* with) { return name.starts_with(with); };
  if (starts("qfpsMalloc") || starts("qor_serv_allocate") || starts("_Get")) return {0};
  if (starts("qfps")) return {-9};
  if (starts("qor_dft")) return {QOR_DFT_NO_MEMORY};
  if (starts("__wxrCopyTask")) return {-4, 0};  // without the original's tables
  if (starts("_wxrConv") || starts("_wxrCorr") || starts("__wxrExec"))
    return {-2001, -2800};  // the driver's, the engine's
  if (starts("__wxrLoadStream")) return {QOR_RNG_NO_MEMORY, QOR_RNG_CANNOT_OPEN};
  if (starts("__wxrSaveStream")) return {QOR_RNG_NO_MEMORY, QOR_RNG_CANNOT_OPEN, 0};  // files need no buffer
  return {QOR_RNG_NO_MEMORY};
}

TEST_F(Entries, AnswerEveryFailedAllocationAndKeepNothing) {
  int failures = 0;
  for (const Row& row : rows) {
    if (row.name.starts_with("qor_serv_set_")) continue;  // the environment's memory is the C library's
    for (int failing = 0;; ++failing) {
      const testing::ScopedTrace trace(__FILE__, __LINE__, row.name + ", allocation " + std::to_string(failing));
      current = row.name.c_str();
      Caller caller(row.name, 0, standard_mxcsr, standard_control);
      caller.failing = failing;
      caller.promised = without_memory(row.name);
      try {
        row.call(caller);
        break;
      } catch (const AllocationFailed&) {
        ++failures;
        _tfnSetMode(TFN_MODE_DEFAULT);
        _tfnClearErrorCallBack();
      }
    }
  }
  EXPECT_GT(failures, 100);
}
#endif

}  // namespace
