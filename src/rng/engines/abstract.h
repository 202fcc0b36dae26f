// Abstract streams: elements of type T out of a buffer of the caller's, which a function of the caller's fills again
// when none is left.
#pragma once

#include <limits>
#include <type_traits>

#include "rng/engines/slots.h"

namespace qor::rng {

// The argument block of initialisation method 0: the first six words for words, all ten for numbers on [a, b).
template <class T>
struct AbstractArguments {
  using Update = int (*)(Stream* stream, int* n, T* buffer, int* nmin, int* nmax, int* idx);
  std::int32_t n;
  T* buffer;
  Update update;
  std::uint32_t unused[3];
  double a, b;

  static constexpr int words = std::is_integral_v<T> ? 6 : 10;

  bool valid() const {
    if (n < 1 || buffer == nullptr || update == nullptr) return false;
    if constexpr (std::is_integral_v<T>) return true;
    // Infinities and NaNs make the difference one, too. As T, since singles may be asked for on their own interval.
    const T width = static_cast<T>(b) - static_cast<T>(a);
    return a < b && width <= std::numeric_limits<T>::max();
  }
};

// The interval of a buffer of numbers.
template <class T>
struct AbstractInterval {
  T a, b;
};
template <>
struct AbstractInterval<std::uint32_t> {};

template <class T>
struct Abstract : AbstractInterval<T> {
  using Arguments = AbstractArguments<T>;

  T* buffer;
  std::int32_t capacity;
  std::int32_t next, end;  // the elements not delivered yet are buffer[next .. end)
  typename Arguments::Update update;

  static int create(Stream** slot, int brng, const Arguments& arguments) {
    if (slot == nullptr || !arguments.valid()) return status::bad_argument;
    const Generator g = resolve(brng);
    if (const int s = allocate(slot, g.table, brng, g.entry, g.member); s != status::ok) return s;
    std::uint32_t block[Arguments::words];
    std::memcpy(block, &arguments, sizeof block);
    return g.record().initStream(method::seed, *slot, Arguments::words, block);
  }

  int seed(int n, const std::uint32_t* words) {
    if (n != Arguments::words || words == nullptr) return status::bad_argument;
    Arguments given{};
    std::memcpy(static_cast<void*>(&given), words, sizeof(std::uint32_t) * Arguments::words);
    if (!given.valid()) return status::bad_argument;
    buffer = given.buffer;
    capacity = given.n;
    next = end = 0;
    update = given.update;
    if constexpr (!std::is_integral_v<T>) {
      this->a = static_cast<T>(given.a);
      this->b = static_cast<T>(given.b);
    }
    return status::ok;
  }
  int leapfrog(std::int32_t, int) { return status::no_leapfrog; }
  int skip_ahead(int) { return status::no_skip_ahead; }

  // The next n elements, in runs of the buffer: use(i, elements, count) is given elements i .. i + count - 1. The
  // callback runs under the control register of the guard's caller.
  template <class Use>
  int take(Stream* stream, int n, numeric::MxcsrGuard& guard, Use use) {
    for (int i = 0; i < n;) {
      int s = status::ok;
      if (next == end) guard.outside([&] { s = refill(stream, n - i); });
      if (s != status::ok) return s;
      const int count = std::min(n - i, end - next);
      use(i, buffer + next, count);
      next += count;
      i += count;
    }
    return status::ok;
  }

 private:
  // Gives the callback copies: nothing that it stores in them matters.
  int refill(Stream* stream, int wanted) {
    next = end = 0;
    int n = capacity, nmin = std::min(wanted, capacity), nmax = capacity, idx = 0;
    const int least = nmin, count = update(stream, &n, buffer, &nmin, &nmax, &idx);
    if (count > capacity) return status::bad_update;
    end = std::max(count, 0);
    return count < least ? status::bad_update : status::ok;
  }
};

using IAbstract = Abstract<std::uint32_t>;
using DAbstract = Abstract<double>;
using SAbstract = Abstract<float>;

// The slots of a buffer of words: the engines' conversions.
template <>
class Slots<IAbstract> : public InitSlot<IAbstract> {
 public:
  static int words(Stream* stream, int n, std::uint32_t* r) { return draw(stream, n, r, AsWords{}); }
  static int doubles(Stream* stream, int n, double* r, double a, double b) {
    return on_interval<AsDoubles<Affine>>(stream, n, r, a, b);
  }
  static int singles(Stream* stream, int n, float* r, float a, float b) {
    return on_interval<AsSingles<Affine>>(stream, n, r, a, b);
  }

 private:
  template <class Form>
  static int on_interval(Stream* stream, int n, typename Form::T* r, double a, double b) {
    numeric::MxcsrGuard nearest;
    return draw(stream, n, r, Form{Affine((b - a) * 0x1p-32, a)}, nearest);
  }
  static int draw(Stream* stream, int n, std::uint32_t* r, AsWords form) {
    numeric::MxcsrGuard nearest;
    return draw(stream, n, r, form, nearest);
  }
  template <class Form>
  static int draw(Stream* stream, int n, typename Form::T* r, Form form, numeric::MxcsrGuard& nearest) {
    constexpr int lanes = simd::lanes<VecU32>;
    const Sink<Form> sink(r, form);
    const auto store = [&](int i, const std::uint32_t* from, int count) {
      int k = 0;
      for (; k <= count - lanes; k += lanes) sink.put(i + k, simd::load<VecU32>(from + k));
      for (; k < count; ++k) sink.put(i + k, splat<VecU32>(from[k]), 1);
    };
    return stream->state<IAbstract>().take(stream, n, nearest, store);
  }
};

// The slots of a buffer of numbers. All is computed in double precision.
template <class T>
class Slots<Abstract<T>> : public InitSlot<Abstract<T>> {
 public:
  static int words(Stream* stream, int n, std::uint32_t* r) {
    numeric::MxcsrGuard nearest;
    Abstract<T>& own = stream->state<Abstract<T>>();
    const double a = own.a, scale = units / (own.b - a);
    // A part of a word at a time, the high one first; a bounded count, so that the count of parts is an int too.
    int s = status::ok;
    for (int count; n > 0 && s == status::ok; n -= count, r += count) {
      count = std::min(n, 1 << 28);
      s = own.take(stream, parts * count, nearest, [=](int i, const T* from, int run) {
        for (int k = 0; k < run; ++k) {
          std::uint32_t& word = r[(i + k) / parts];
          const std::uint32_t part = word_of((from[k] - a) * scale);
          word = parts == 1 ? part : (i + k) % parts == 0 ? part << 16 : word | part;
        }
      });
    }
    return s;
  }
  static int doubles(Stream* stream, int n, double* r, double a, double b) { return numbers(stream, n, r, a, b); }
  static int singles(Stream* stream, int n, float* r, float a, float b) { return numbers(stream, n, r, a, b); }

 private:
  // A single has 24 bits: too few for a word.
  static constexpr int parts = std::is_same_v<T, float> ? 2 : 1;
  static constexpr double units = parts == 2 ? 0x1p16 : 0x1p32;

  // floor(u), by way of signed integers of half the bits; the nearest word when that is none, 0 for a NaN.
  QOR_INLINE static std::uint32_t word_of(double u) {
    if (!(u > 0)) return 0;
    if (u >= units) u = units - 1;
    const std::int32_t high = static_cast<std::int32_t>(u * 0x1p-16);
    const std::int32_t low = static_cast<std::int32_t>(u - high * 0x1p16);
    return static_cast<std::uint32_t>(high) << 16 | static_cast<std::uint32_t>(low);
  }

  template <class R>
  static int numbers(Stream* stream, int n, R* r, double a, double b) {
    numeric::MxcsrGuard nearest;
    Abstract<T>& own = stream->state<Abstract<T>>();
    const double from_a = own.a, scale = (b - a) / (own.b - from_a);
    const bool as_they_are = a == from_a && b == own.b;
    return own.take(stream, n, nearest, [=](int i, const T* from, int count) {
      if (as_they_are) {
        for (int k = 0; k < count; ++k) r[i + k] = static_cast<R>(from[k]);
      } else {
        for (int k = 0; k < count; ++k) r[i + k] = static_cast<R>((from[k] - from_a) * scale + a);
      }
    });
  }
};

}  // namespace qor::rng
