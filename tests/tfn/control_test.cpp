// Mode, status, callback, base pointer and the error path, as callers and callbacks see them.
#include <fenv.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "qor/tfn.h"

namespace {

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

unsigned x87_control() {
  std::uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}
void set_x87_control(unsigned value) {
  const auto word = static_cast<std::uint16_t>(value);
  asm volatile("fldcw %0" : : "m"(word));
}

// Every test starts from a thread's initial state: the slots of a new thread.
void in_new_thread(const std::function<void()>& work) { std::thread(work).join(); }

std::string captured_stderr(const std::function<void()>& work) {
  std::fflush(stderr);
  std::FILE* const file = std::tmpfile();
  const int kept = dup(STDERR_FILENO);
  dup2(fileno(file), STDERR_FILENO);
  work();
  std::fflush(stderr);
  dup2(kept, STDERR_FILENO);
  close(kept);
  std::string text(4096, 0);
  std::rewind(file);
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  return text;
}

// What the callback saw, and what it is to do.
struct Seen {
  int calls = 0;
  TfnErrorContext last{};
  int answer = 0;
  bool replace = false;
  double res1 = 0, res2 = 0;
  unsigned new_mode = 0;
};
thread_local Seen seen;
int record_error(TfnErrorContext* context) {
  ++seen.calls;
  seen.last = *context;
  if (seen.replace) {
    context->res1 = seen.res1;
    context->res2 = seen.res2;
  }
  if (seen.new_mode != 0) _tfnSetMode(seen.new_mode);
  return seen.answer;
}

TEST(Control, ANewThreadStartsWithTheInitialValuesAndInheritsNothing) {
  in_new_thread([] {
    EXPECT_EQ(_tfnSetMode(0x31404), 0x1A02u);
    EXPECT_EQ(_tfnSetErrStatus(7), 0);
    EXPECT_EQ(_tfnSetErrorCallBack(record_error), nullptr);
    _tfnSetInterfInputVectorPointer(&seen);
    in_new_thread([] {
      EXPECT_EQ(_tfnGetMode(), 0x1A02u);
      EXPECT_EQ(_tfnGetErrStatus(), 0);
      EXPECT_EQ(_tfnGetErrorCallBack(), nullptr);
      EXPECT_EQ(*_GetInputVectorPointer(), nullptr);
      _tfnSetErrStatus(8);
      _tfnSetMode(0x100);
    });
    EXPECT_EQ(_tfnGetMode(), 0x31404u);
    EXPECT_EQ(_tfnGetErrStatus(), 7);
    EXPECT_EQ(*_GetInputVectorPointer(), &seen);
    EXPECT_EQ(_tfnClearErrorCallBack(), record_error);
    EXPECT_EQ(_tfnGetErrorCallBack(), nullptr);
    EXPECT_EQ(_tfnClearErrStatus(), 7);
    EXPECT_EQ(_tfnGetErrStatus(), 0);
  });
}

TEST(Control, TheCellsAreWhatTheOperationsReadAndWrite) {
  in_new_thread([] {
    *_GetMode() = 0x1234;
    *_GetErrStatus() = -9;
    *_GetCallBack() = record_error;
    EXPECT_EQ(_tfnGetMode(), 0x1234u);
    EXPECT_EQ(_tfnGetErrStatus(), -9);
    EXPECT_EQ(_tfnGetErrorCallBack(), record_error);
    _tfnSetErrStatus(5);
    EXPECT_EQ(*_GetErrStatus(), 5);
  });
}

TEST(Control, SetModeReplacesTheFieldsThatAreNotZero) {
  struct Row {
    unsigned before, argument, after;
  };
  constexpr Row rows[] = {
      {0x1A02, 0, 0x1A02},           // nothing
      {0x1A02, 1, 0x1A01},           // accuracy alone
      {0x1A02, 0x100, 0x0102},       // error field alone, as a whole
      {0x1A02, 0x1000, 0x1002},      // what the generators ask for
      {0x1A02, 0x20000, 0x21A02},    // the extra field
      {0x31A02, 0x10000, 0x11A02},   // replaced, not combined
      {0x1A02, 0xFFFC0000, 0x1A02},  // no bits above 17
      {0x1A02, 0x2F30F, 0x2F30F},    // several at once
      {0x1002, 0x30, 0x1002},        // restore without a request before
      {0x1002, 0x10131, 0x10101},    // the other fields of such a call count
  };
  for (const Row& row : rows) {
    in_new_thread([&row] {
      *_GetMode() = row.before;
      EXPECT_EQ(_tfnSetMode(row.argument), row.before);
      EXPECT_EQ(_tfnGetMode(), row.after) << std::hex << row.before << " with " << row.argument;
    });
  }
}

TEST(Control, ModeRequestsSetAndRestoreTheX87ControlWord) {
  struct Row {
    unsigned control;
    std::vector<unsigned> requests;
    unsigned control_after, mode_after;
  };
  const Row rows[] = {
      {0x37F, {0x10}, 0x27F, 0x1A12},  // 53 bits with accuracy 2
      {0x37F, {0x11}, 0x27F, 0x1A11},  // and with 1, set by the same call
      {0x27F, {0x13}, 0x37F, 0x1A13},  // 64 with any other
      {0x27F, {0x20}, 0x37F, 0x1A22},
      {0x27F, {0x40}, 0x37F, 0x1A42},  // a value without a name
      {0xE7F, {0x10}, 0x27F, 0x1A12},  // rounding goes to nearest
      {0xF7F, {0x20}, 0x37F, 0x1A22},
      {0x37E, {0x10}, 0x27E, 0x1A12},  // masks are kept
      {0x37F, {0}, 0x37F, 0x1A02},
      {0xE7F, {0x30}, 0xE7F, 0x1A02},              // nothing to restore
      {0xE7F, {0x10, 0x30}, 0xE7F, 0x1A12},        // the field shows the last request
      {0xE7F, {0x10, 0x10, 0x30}, 0xE7F, 0x1A12},  // saved once
      {0xE7F, {0x10, 0x20, 0x30}, 0xE7F, 0x1A22},
      {0xE7F, {0x10, 0x30, 0x20, 0x30}, 0xE7F, 0x1A22},
  };
  for (const Row& row : rows) {
    in_new_thread([&row] {
      const unsigned own = x87_control();
      set_x87_control(row.control);
      for (const unsigned request : row.requests) _tfnSetMode(request);
      const unsigned after = x87_control();
      set_x87_control(own);
      EXPECT_EQ(after, row.control_after) << std::hex << row.control << ", last " << row.requests.back();
      EXPECT_EQ(_tfnGetMode(), row.mode_after) << std::hex << row.control << ", last " << row.requests.back();
    });
  }
}

TEST(Control, TheSavedControlWordIsSharedByAllThreads) {
  in_new_thread([] {
    const unsigned own = x87_control();
    set_x87_control(0xE7F);
    _tfnSetMode(0x10);
    in_new_thread([] {
      set_x87_control(0x77F);
      _tfnSetMode(0x20);
    });
    _tfnSetMode(0x30);
    const unsigned after = x87_control();
    set_x87_control(own);
    EXPECT_EQ(after, 0x77Fu);
  });
}

TEST(ErrorPath, TheCallbackSeesTheElementAndItsIndexFromTheBasePointer) {
  in_new_thread([] {
    double whole[20] = {}, second[20] = {}, y[20] = {}, z[20] = {};
    float single[20] = {}, single_second[20] = {}, single_y[20] = {}, single_z[20] = {};
    double* const a = whole + 10;
    a[3] = -1.5, second[3] = 2.25, y[3] = nan_value, z[3] = 8;
    single[3] = -1.5f, single_second[3] = 0.1f, single_y[3] = 7, single_z[3] = 8;
    _tfnSetErrorCallBack(record_error);
    _tfnSetMode(0x1000);

    struct Row {
      const void* base;
      int index;
    };
    for (const Row& row : {Row{nullptr, 3}, Row{whole, 13}, Row{a + 4, -1}, Row{reinterpret_cast<char*>(a) + 1, 2}}) {
      _tfnSetInterfInputVectorPointer(row.base);
      _tfndError(TFN_STATUS_ERRDOM, 3, a, second, y, z, "_tfndSomething_HA");
      EXPECT_EQ(seen.last.index, row.index);
    }
    EXPECT_EQ(seen.calls, 4);
    EXPECT_EQ(seen.last.code, TFN_STATUS_ERRDOM);
    EXPECT_EQ(seen.last.arg1, -1.5);
    EXPECT_EQ(seen.last.arg2, 2.25);
    EXPECT_TRUE(std::isnan(seen.last.res1));
    EXPECT_EQ(seen.last.res2, 8);
    EXPECT_STREQ(seen.last.funcName, "_tfndSomething_HA");
    EXPECT_EQ(seen.last.funcNameLen, 17);

    _tfnSetInterfInputVectorPointer(single + 5);
    _tfnsError(TFN_STATUS_SING, 3, single, single_second, single_y, single_z, "s");
    EXPECT_EQ(seen.last.index, -2);
    EXPECT_EQ(seen.last.arg2, double{0.1f});
    EXPECT_EQ(seen.last.res1, 7);
    EXPECT_EQ(_tfnGetErrStatus(), TFN_STATUS_SING);
  });
}

// One report of an element with result 5, under a mode, with a callback or without.
TEST(ErrorPath, ModeAndCallbackDecideWhatRunsAndWhatIsStored) {
  struct Row {
    const char* what;
    unsigned mode;  // error field
    bool callback;
    int answer;
    unsigned new_mode;
    int calls;
    bool errno_set;
    double result;
  };
  constexpr Row rows[] = {
      {"ignored as a whole", 0x100, true, 0, 0, 0, false, 5},
      {"ignore beside errno does nothing", 0x300, true, 0, 0, 0, true, 5},
      {"ignore beside callback does nothing", 0x1100, true, 0, 0, 1, false, 9},
      {"the callback's values are stored", 0x1000, true, 0, 0, 1, false, 9},
      {"and handlers run after it", 0x1200, true, 0, 0, 1, true, 9},
      {"a refusal ends the report", 0x1200, true, 1, 0, 1, false, 5},
      {"any refusal", 0x1200, true, -1, 0, 1, false, 5},
      {"every high bit asks for the callback", 0x8000, true, 0, 0, 1, false, 9},
      {"no callback wanted", 0x200, true, 0, 0, 0, true, 5},
      {"none there", 0x1200, false, 0, 0, 0, true, 5},
      {"a mode that the callback sets counts", 0x1000, true, 0, 0x200, 1, true, 9},
      {"both ways", 0x1200, true, 0, 0x1000, 1, false, 9},
  };
  for (const Row& row : rows) {
    in_new_thread([&row] {
      const double a = -1;
      double y = 5, z = 6;
      float single_a = -1, single_y = 5, single_z = 6;
      const auto prepare = [&row] {
        seen = Seen{.answer = row.answer, .replace = true, .res1 = 9, .res2 = 10, .new_mode = row.new_mode};
        _tfnSetMode(row.mode);
        _tfnClearErrStatus();
        errno = 0;
      };
      if (row.callback) _tfnSetErrorCallBack(record_error);
      prepare();
      _tfndError(TFN_STATUS_SING, 0, &a, &a, &y, &z, "f");
      EXPECT_EQ(errno, row.errno_set ? ERANGE : 0) << row.what;
      EXPECT_EQ(seen.calls, row.calls) << row.what;
      EXPECT_EQ(y, row.result) << row.what;
      EXPECT_EQ(z, row.result + 1) << row.what;
      EXPECT_EQ(_tfnGetErrStatus(), TFN_STATUS_SING) << row.what;
      prepare();
      _tfnsError(TFN_STATUS_SING, 0, &single_a, &single_a, &single_y, &single_z, "f");
      EXPECT_EQ(errno, row.errno_set ? ERANGE : 0) << row.what;
      EXPECT_EQ(seen.calls, row.calls) << row.what;
      EXPECT_EQ(single_y, row.result) << row.what;
      EXPECT_EQ(single_z, row.result + 1) << row.what;
    });
  }
}

TEST(ErrorPath, OfOneArrayPassedTwiceTheFirstResultWinsAndNarrowsToSingle) {
  in_new_thread([] {
    _tfnSetMode(0x1000);
    _tfnSetErrorCallBack(record_error);
    seen = Seen{.replace = true, .res1 = -103.27893, .res2 = 1};
    const float a = 0;
    float y = -1;
    _tfnsError(TFN_STATUS_SING, 0, &a, &a, &y, &y, "f");
    EXPECT_EQ(y, -103.27893f);
  });
}

TEST(ErrorPath, SizeAndPointerErrorsTouchNoArray) {
  for (const int code : {TFN_STATUS_BADSIZE, TFN_STATUS_BADMEM}) {
    in_new_thread([code] {
      _tfnSetErrorCallBack(record_error);
      seen = Seen{.replace = true};
      _tfndError(code, -4, nullptr, nullptr, nullptr, nullptr, "f");
      EXPECT_EQ(seen.last.index, -4);
      EXPECT_EQ(seen.last.code, code);
      EXPECT_EQ(_tfnGetErrStatus(), code);
      EXPECT_EQ(errno, code == TFN_STATUS_BADSIZE ? EINVAL : EACCES);
    });
  }
}

TEST(ErrorPath, RemovingTheCallbackLeavesTheErrorField) {
  in_new_thread([] {
    _tfnSetMode(0x1000);
    _tfnSetErrorCallBack(record_error);
    _tfnSetErrorCallBack(nullptr);
    EXPECT_EQ(_tfnGetMode() & TFN_ERR_MASK, 0x1000u);
  });
}

TEST(Names, AreCutToTheirLengths) {
  const std::string long_text(100, 'x');
  in_new_thread([&long_text] {
    const double a = -1;
    double y = 0;
    _tfnSetMode(0x1000);
    _tfnSetErrorCallBack(record_error);
    for (const int length : {0, 1, 63, 64, 65, 100}) {
      std::memset(&seen.last, '?', sizeof seen.last);
      const std::string name = long_text.substr(0, static_cast<std::size_t>(length));
      _tfndError(TFN_STATUS_SING, 0, &a, &a, &y, &y, name.c_str());
      const int kept = length < 64 ? length : 64;
      EXPECT_EQ(seen.last.funcNameLen, kept);
      EXPECT_EQ(std::string(seen.last.funcName, static_cast<std::size_t>(kept)), name.substr(0, 64));
      if (kept < 64) {
        EXPECT_EQ(seen.last.funcName[kept], 0);
      }
    }
  });
  struct Row {
    std::string prefix, name, suffix, joined;
  };
  const Row rows[] = {
      {"", "", "", ""},
      {"_tfnd", "Ln", "_HA", "_tfndLn_HA"},
      {long_text, "|", long_text, std::string(8, 'x') + "|" + std::string(8, 'x')},
      {long_text, long_text, long_text, std::string(80, 'x')},
  };
  for (const Row& row : rows) {
    char out[82];
    std::memset(out, '?', sizeof out);
    EXPECT_EQ(_tfnCreateFuncNameStr(row.prefix.c_str(), row.name.c_str(), row.suffix.c_str(), out),
              static_cast<int>(row.joined.size()));
    EXPECT_STREQ(out, row.joined.c_str());
    EXPECT_EQ(out[row.joined.size() + 1], '?');
  }
}

TfnErrorContext context_of(int code, int index, double arg1, double arg2, double res1, double res2,
                           const std::string& name) {
  TfnErrorContext c{};
  c.code = code;
  c.index = index;
  c.arg1 = arg1, c.arg2 = arg2, c.res1 = res1, c.res2 = res2;
  c.funcNameLen = static_cast<int>(name.size());
  std::memcpy(c.funcName, name.data(), name.size());
  return c;
}

TEST(Handlers, StandardErrorTextIsExact) {
  const std::string name_of_64(64, 'n');
  struct Row {
    TfnErrorContext context;
    std::string text;
  };
  const Row rows[] = {
      {context_of(0, 1, 1, 1, 1, 1, "f"), ""},
      {context_of(-1, -7, 1, 2, 3, 4, "_tfndLn_HA"),
       "Error (TFN_STATUS_BADSIZE) in _tfndLn_HA: array size -7 is not positive\n"},
      {context_of(-2, 0, 1, 2, 3, 4, "_tfnsLn_21"),
       "Error (TFN_STATUS_BADMEM) in _tfnsLn_21: NULL pointer is passed\n"},
      {context_of(1, 3, -1, -1, nan_value, nan_value, "f"),
       "Error (TFN_STATUS_ERRDOM) in f: argument is out of domain\na(3)=-1\nr(3)=nan\n"},
      {context_of(2, 0, 0, 0, -inf, -inf, "f"),
       "Error (TFN_STATUS_SING) in f: argument caused singularity\na(0)=0\nr(0)=-inf\n"},
      {context_of(3, 12, 2, 1024, inf, inf, "f"),
       "Error (TFN_STATUS_OVERFLOW) in f: argument caused overflow\na(12)=2\nb(12)=1024\ny(12)=inf\n"},
      {context_of(4, 5, 1e-300, 3, 0.5, 1e-310, "f"),
       "Error (TFN_STATUS_UNDERFLOW) in f: argument caused underflow\na(5)=1e-300\nb(5)=3\ny(5)=0.5\nz(5)=1e-310\n"},
      {context_of(1, 2, 0.1, 0.1, 7, 1.0 / 3, "f"),
       "Error (TFN_STATUS_ERRDOM) in f: argument is out of domain\na(2)=0.1\ny(2)=7\nz(2)=0.333333\n"},
      // A second value that is zero or beside a NaN counts as none.
      {context_of(1, 2, 4, 0, 7, 0, "f"),
       "Error (TFN_STATUS_ERRDOM) in f: argument is out of domain\na(2)=4\nr(2)=7\n"},
      {context_of(1, 2, 4, nan_value, nan_value, 7, "f"),
       "Error (TFN_STATUS_ERRDOM) in f: argument is out of domain\na(2)=4\nr(2)=nan\n"},
      {context_of(1, 2, nan_value, 4, 7, nan_value, "f"),
       "Error (TFN_STATUS_ERRDOM) in f: argument is out of domain\na(2)=nan\nr(2)=7\n"},
      // No line end after the name of an unknown one.
      {context_of(9, 2, 4, 4, 7, 7, "f"), "Unknown error in fa(2)=4\nr(2)=7\n"},
      {context_of(1, 2, 4, 4, 7, 7, name_of_64),
       "Error (TFN_STATUS_ERRDOM) in " + name_of_64 + ": argument is out of domain\na(2)=4\nr(2)=7\n"},
  };
  for (const Row& row : rows) {
    errno = 4711;
    EXPECT_EQ(captured_stderr([&row] { _tfnStdErrorHandlerStderr(&row.context); }), row.text);
    EXPECT_EQ(errno, 4711);
  }
}

TEST(Handlers, EachRunsForItsModeBitAndDoesWhatTheCodeSays) {
  struct Row {
    int code, error_number, flags;
  };
  constexpr Row rows[] = {
      {0, 0, 0},
      {-1, EINVAL, 0},
      {-2, EACCES, 0},
      {1, EDOM, FE_INVALID},
      {2, ERANGE, FE_DIVBYZERO},
      {3, ERANGE, 0},  // the handler's operand is a quiet NaN
      {4, ERANGE, FE_UNDERFLOW | FE_INEXACT},
      {5, EFAULT, 0},
      {-3, EFAULT, 0},
  };
  for (const unsigned mode : {0x200u, 0x400u, 0x800u, 0xE00u, 0x1000u}) {
    for (const Row& row : rows) {
      in_new_thread([mode, &row] {
        const TfnErrorContext context = context_of(row.code, 0, 1, 1, 1, 1, "f");
        _tfnSetMode(mode);
        int flags = 0, error_number = 0;
        const std::string text = captured_stderr([&] {
          errno = 4711;
          feclearexcept(FE_ALL_EXCEPT);
          _tfnStdErrorHandler(&context);
          flags = fetestexcept(FE_ALL_EXCEPT);
          error_number = errno;
        });
        feclearexcept(FE_ALL_EXCEPT);
        EXPECT_EQ(error_number, (mode & TFN_ERR_ERRNO) != 0 ? row.error_number : 4711) << row.code;
        EXPECT_EQ(flags, (mode & TFN_ERR_EXCEPT) != 0 ? row.flags : 0) << row.code;
        EXPECT_EQ(!text.empty(), (mode & TFN_ERR_STDERR) != 0 && row.code != 0) << row.code;
      });
    }
  }
  for (const Row& row : rows) {  // the parts by themselves, whatever the mode
    const TfnErrorContext context = context_of(row.code, 0, 1, 1, 1, 1, "f");
    feclearexcept(FE_ALL_EXCEPT);
    errno = 4711;
    _tfnStdErrorHandlerErrno(&context);
    EXPECT_EQ(errno, row.error_number);
    _tfnStdErrorHandlerExcept(&context);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), row.flags) << row.code;
  }
  feclearexcept(FE_ALL_EXCEPT);
}

}  // namespace
