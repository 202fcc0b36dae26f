// The four slots of a generator's record made from one class. An engine is the struct behind the stream's header:
//   static constexpr double unit;       a word times unit is the engine's number u
//   static constexpr int least;         elements that a request for none delivers
//   int seed(int n, const std::uint32_t* words), leapfrog(std::int32_t k, int nstreams), skip_ahead(int n);
//                                       as seed(Stream&, n, words) it may look at the identifier and add chunks
//   bool valid() const;                 whether seeding and drawing can produce this state; as valid(const Stream&) it
//                                       may look at the stream's identifier and chunks too, as may seed(stream, ...)
//   template <class Sink> void draw(int n, Sink sink);   the next n words, in order
#pragma once

#include <algorithm>
#include <cstring>

#include "numeric/mxcsr.h"
#include "rng/engines/sinks.h"
#include "rng/streams/status.h"
#include "rng/streams/stream.h"

namespace qor::rng {

// The engine of a stream. That of a family is told its member: Engine::Member(state, member) has the functions.
template <class Engine>
decltype(auto) engine_of(Stream* stream) {
  if constexpr (requires { typename Engine::Member; }) {
    return typename Engine::Member(stream->state<Engine>(), resolve(stream->brng).member);
  } else {
    return (stream->state<Engine>());
  }
}

template <class Engine>
struct InitSlot {
  static int init(int how, Stream* stream, int n, const std::uint32_t* params) {
    auto&& engine = engine_of<Engine>(stream);
    switch (how) {
      case method::seed:
        if constexpr (requires { engine.seed(*stream, n, params); }) {
          return engine.seed(*stream, n, params);
        } else {
          return engine.seed(n, params);
        }
      case method::leapfrog: {
        std::int32_t k;
        std::memcpy(&k, params, sizeof k);
        return engine.leapfrog(k, n);
      }
      case method::skip_ahead:
        return engine.skip_ahead(n);
      default:
        return status::bad_method;
    }
  }
};

template <class Engine>
class Slots : public InitSlot<Engine> {
 public:
  static bool valid(const Stream* stream) {
    const Engine& engine = stream->state<Engine>();
    if constexpr (requires { engine.valid(*stream); }) {
      return engine.valid(*stream);
    } else {
      return engine.valid();
    }
  }

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
