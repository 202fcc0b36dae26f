// Descriptors: settings and, once committed, the engine. The inside of the public functions, for other folders too.
#pragma once

#include "dft/engine.h"
#include "dft/settings.h"

namespace qor::dft {

class Descriptor {
 public:
  Descriptor() = default;
  ~Descriptor() { drop_engines(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool valid() const { return mark_ == mark; }
  int set(int parameter, const void* value);
  int get(int parameter, void* value) const;
  int commit();
  // out may be null in place.
  template <bool Inverse>
  int compute(void* in, void* out) const;

 private:
  friend int create(Descriptor** made, int precision, int domain, int rank, const int* lengths);
  friend int copy(const Descriptor& original, Descriptor** made);
  friend void destroy(Descriptor* d);

  static constexpr int mark = 0x44465471;
  bool committed() const { return engine_d_ != nullptr || engine_s_ != nullptr; }
  void drop_engines();

  int mark_ = mark;
  Settings set_;
  Engine<double>* engine_d_ = nullptr;  // one of them, by the precision
  Engine<float>* engine_s_ = nullptr;
};

// On failure *made is left as it is.
int create(Descriptor** made, int precision, int domain, int rank, const int* lengths);
int copy(const Descriptor& original, Descriptor** made);
void destroy(Descriptor* d);

// A descriptor that goes with its owner. False without memory, or with arguments that create() refuses.
class Owner {
 public:
  Owner(int precision, int domain, int rank, const int* lengths) { create(&d_, precision, domain, rank, lengths); }
  ~Owner() { destroy(d_); }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  Descriptor* operator->() const { return d_; }
  explicit operator bool() const { return d_ != nullptr; }

 private:
  Descriptor* d_ = nullptr;
};

}  // namespace qor::dft
