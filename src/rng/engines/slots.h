// The four slots of a generator's record made from one class. An engine is the struct behind the stream's header:
//   static constexpr double unit;       a word times unit is the engine's number u
//   static constexpr int least;         elements that a request for none delivers
//   int seed(int n, const std::uint32_t* words), leapfrog(std::int32_t k, int nstreams), skip_ahead(int n);
//   bool valid() const;                 whether seeding and drawing can produce this state
//   template <class Sink> void draw(int n, Sink sink);   the next n words, in order
// Any of the first four may take its stream as the first argument: a family finds its member by the identifier, and
// parameters that the stream is to keep become chunks.
#pragma once

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "numeric/mxcsr.h"
#include "rng/engines/sinks.h"
#include "rng/streams/status.h"
#include "rng/streams/stream.h"

namespace qor::rng {

// The row of a family's table that belongs to the stream. Null for one that was allocated under an identifier without a
// member.
template <class Row, std::size_t members>
const Row* row_of(const Row (&table)[members], const Stream& stream) {
  const std::size_t member = static_cast<std::size_t>(resolve(stream.brng).member);
  return member < members ? table + member : nullptr;
}

// Calls a function of the stream's engine, and tells it the stream if it wants to know.
template <class S, class Function, class Engine, class... Arguments>
auto call(S& stream, Function function, Engine& engine, Arguments... arguments) {
  if constexpr (std::is_invocable_v<Function, Engine&, S&, Arguments...>) {
    return (engine.*function)(stream, arguments...);
  } else {
    return (engine.*function)(arguments...);
  }
}

template <class Engine>
struct InitSlot {
  static bool valid(const Stream* stream) { return call(*stream, &Engine::valid, stream->state<Engine>()); }
  static int init(int how, Stream* stream, int n, const std::uint32_t* params) {
    Engine& engine = stream->state<Engine>();
    switch (how) {
      case method::seed:
        return call(*stream, &Engine::seed, engine, n, params);
      case method::leapfrog: {
        std::int32_t k;
        std::memcpy(&k, params, sizeof k);
        return call(*stream, &Engine::leapfrog, engine, k, n);
      }
      case method::skip_ahead:
        return call(*stream, &Engine::skip_ahead, engine, n);
      default:
        return status::bad_method;
    }
  }
};

template <class Engine>
class Slots : public InitSlot<Engine> {
 public:
  static int words(Stream* stream, int n, std::uint32_t* r) {
    const numeric::MxcsrGuard nearest;
    return draw(stream, n, r, AsWords{});
  }
  static int doubles(Stream* stream, int n, double* r, double a, double b) {
    return on_interval<AsDoubles>(stream, n, r, AsDoubles<Scaled<unit_log2>>{}, a, b);
  }
  static int singles(Stream* stream, int n, float* r, float a, float b) {
    if constexpr (power_of_two && sizeof(typename Engine::Word) == 4) {
      static_assert(unit_log2 == -32);
      return on_interval<AsSingles>(stream, n, r, AsUnitSingles{}, a, b);
    } else {
      return on_interval<AsSingles>(stream, n, r, AsSingles<Scaled<unit_log2>>{}, a, b);
    }
  }

 private:
  static constexpr std::uint64_t unit_bits = std::bit_cast<std::uint64_t>(Engine::unit);
  static constexpr bool power_of_two = unit_bits << 12 == 0;
  static constexpr int unit_log2 = static_cast<int>(unit_bits >> 52) - 1023;

  // The engines' arithmetic, not only the conversion, may rest on rounding to nearest: callers hold the guard.
  template <class Form>
  static int draw(Stream* stream, int n, typename Form::T* r, Form form) {
    stream->state<Engine>().draw(std::max(n, Engine::least), Sink<Form>(r, form));
    return status::ok;
  }
  // On [0, 1) scaling by a power of two and adding zero change nothing but the exponent: `plain` does both at once.
  template <template <class> class Form, class Plain, class T>
  static int on_interval(Stream* stream, int n, T* r, Plain plain, double a, double b) {
    const numeric::MxcsrGuard nearest;
    const double width = b - a;
    if constexpr (power_of_two) {
      if (a == 0 && width == 1) return draw(stream, n, r, plain);
    }
    return draw(stream, n, r, Form<Affine>{Affine(width * Engine::unit, a)});
  }
};

}  // namespace qor::rng
