#include "dft/descriptor.h"

#include <cstring>

#include "dft/status.h"
#include "numeric/mxcsr.h"

namespace qor::dft {
namespace {

constexpr const char* version = "qor transform engine 1.0, zx9";

template <class X>
X read(const void* p) {
  X x;
  std::memcpy(&x, p, sizeof x);
  return x;
}
template <class X>
int put(void* p, const X& x) {
  std::memcpy(p, &x, sizeof x);
  return QOR_DFT_OK;
}

template <class... Values>
bool any_of(int value, Values... values) {
  return ((value == values) || ...);
}

// The new descriptor's engine, made whole or not at all.
template <class T>
int make_engine(const Settings& settings, Engine<T>*& slot) {
  auto* const engine = fft::create<Engine<T>>();
  if (engine == nullptr) return QOR_DFT_NO_MEMORY;
  const int status = engine->make(settings);
  if (status == QOR_DFT_OK) {
    slot = engine;
  } else {
    fft::destroy(engine);
  }
  return status;
}

}  // namespace

void Descriptor::drop_engines() {
  fft::destroy(engine_d_);
  fft::destroy(engine_s_);
  engine_d_ = nullptr;
  engine_s_ = nullptr;
}

int Descriptor::set(int parameter, const void* value) {
  const std::size_t strides = sizeof(int) * static_cast<std::size_t>(set_.rank + 1);
  Settings changed = set_;
  const auto number = [&] { return read<int>(value); };
  const auto choose = [&](int& slot, auto... values) {
    slot = number();
    return any_of(slot, values...);
  };
  const auto at_least = [&](int& slot, int least) { return (slot = number()) >= least; };
  bool good = true;
  switch (parameter) {
    case QOR_DFT_BACKWARD_SCALE:
      changed.backward_scale = read<double>(value);
      break;
    case QOR_DFT_FORWARD_SCALE:
      changed.forward_scale = read<double>(value);
      break;
    case QOR_DFT_SIGNAL_STRIDES:
    case QOR_DFT_SPECTRUM_STRIDES: {
      Layout& layout = parameter == QOR_DFT_SIGNAL_STRIDES ? changed.signal : changed.spectrum;
      std::memcpy(layout.stride, value, strides);
      layout.given = true;
      break;
    }
    case QOR_DFT_SIGNAL_DISTANCE:
      changed.signal.distance = number();
      break;
    case QOR_DFT_SPECTRUM_DISTANCE:
      changed.spectrum.distance = number();
      break;
    case QOR_DFT_TRANSFORMS:
      good = at_least(changed.transforms, 1);
      break;
    case QOR_DFT_THREAD_LIMIT:
      good = at_least(changed.thread_limit, 0);
      break;
    case QOR_DFT_CE_STORAGE:
      good = choose(changed.storage, QOR_DFT_CE_COMPLEX, QOR_DFT_CE_REAL);
      break;
    case QOR_DFT_PLACEMENT:
      good = choose(changed.placement, QOR_DFT_OUT_OF_PLACE, QOR_DFT_IN_PLACE);
      break;
    case QOR_DFT_PACKED_FORMAT:
      good = choose(changed.format, QOR_DFT_HALF_SPECTRUM, QOR_DFT_PERM, QOR_DFT_PACK, QOR_DFT_CCS);
      break;
    case QOR_DFT_PRECISION:
    case QOR_DFT_DOMAIN:
    case QOR_DFT_RANK:
    case QOR_DFT_LENGTHS:
    case QOR_DFT_COMMIT_STATUS:
    case QOR_DFT_VERSION:
      return QOR_DFT_READ_ONLY;
    default:
      return QOR_DFT_UNKNOWN_PARAMETER;
  }
  if (!good) return QOR_DFT_BAD_VALUE;
  set_ = changed;
  drop_engines();
  return QOR_DFT_OK;
}

int Descriptor::get(int parameter, void* value) const {
  const std::size_t dimensions = static_cast<std::size_t>(set_.rank);
  const auto put_strides = [&](const Layout& layout) {
    std::memcpy(value, layout.stride, sizeof(int) * (dimensions + 1));
    return QOR_DFT_OK;
  };
  switch (parameter) {
    case QOR_DFT_PRECISION:
      return put(value, set_.precision);
    case QOR_DFT_DOMAIN:
      return put(value, set_.domain);
    case QOR_DFT_RANK:
      return put(value, set_.rank);
    case QOR_DFT_LENGTHS:
      std::memcpy(value, set_.length, sizeof(int) * dimensions);
      return QOR_DFT_OK;
    case QOR_DFT_BACKWARD_SCALE:
      return put(value, set_.backward_scale);
    case QOR_DFT_FORWARD_SCALE:
      return put(value, set_.forward_scale);
    case QOR_DFT_SIGNAL_STRIDES:
      return put_strides(set_.signal_layout());
    case QOR_DFT_SPECTRUM_STRIDES:
      return put_strides(set_.spectrum_layout());
    case QOR_DFT_SIGNAL_DISTANCE:
      return put(value, set_.signal_layout().distance);
    case QOR_DFT_SPECTRUM_DISTANCE:
      return put(value, set_.spectrum_layout().distance);
    case QOR_DFT_TRANSFORMS:
      return put(value, set_.transforms);
    case QOR_DFT_THREAD_LIMIT:
      return put(value, set_.thread_limit);
    case QOR_DFT_CE_STORAGE:
      return put(value, set_.storage);
    case QOR_DFT_PLACEMENT:
      return put(value, set_.placement);
    case QOR_DFT_PACKED_FORMAT:
      return put(value, set_.format);
    case QOR_DFT_COMMIT_STATUS:
      return put(value, committed() ? QOR_DFT_COMMITTED : QOR_DFT_UNCOMMITTED);
    case QOR_DFT_VERSION:
      return put(value, version);
    default:
      return QOR_DFT_UNKNOWN_PARAMETER;
  }
}

int Descriptor::commit() {
  if (committed()) return QOR_DFT_OK;
  if (const int status = set_.check(); status != QOR_DFT_OK) return status;
  const numeric::ArithmeticGuard guard;
  return set_.precision == QOR_DFT_DOUBLE ? make_engine(set_, engine_d_) : make_engine(set_, engine_s_);
}

template <bool Inverse>
int Descriptor::compute(void* in, void* out) const {
  if (!committed()) return QOR_DFT_NOT_COMMITTED;
  if (set_.in_place() && out == nullptr) out = in;
  if (out == nullptr || (in == out) != set_.in_place()) return QOR_DFT_PLACEMENT_MISMATCH;
  return engine_d_ != nullptr ? engine_d_->compute<Inverse>(static_cast<const double*>(in), static_cast<double*>(out))
                              : engine_s_->compute<Inverse>(static_cast<const float*>(in), static_cast<float*>(out));
}
template int Descriptor::compute<false>(void*, void*) const;
template int Descriptor::compute<true>(void*, void*) const;

int create(Descriptor** made, int precision, int domain, int rank, const int* lengths) {
  if (made == nullptr || lengths == nullptr) return QOR_DFT_NULL_POINTER;
  if (!any_of(precision, QOR_DFT_DOUBLE, QOR_DFT_SINGLE)) return QOR_DFT_BAD_PRECISION;
  if (!any_of(domain, QOR_DFT_COMPLEX, QOR_DFT_REAL)) return QOR_DFT_BAD_DOMAIN;
  if (rank < 1 || rank > most_dimensions) return QOR_DFT_BAD_RANK;
  for (int d = 0; d < rank; ++d) {
    if (lengths[d] < 1) return QOR_DFT_BAD_LENGTH;
  }
  auto* const d = fft::create<Descriptor>();
  if (d == nullptr) return QOR_DFT_NO_MEMORY;
  d->set_.precision = precision;
  d->set_.domain = domain;
  d->set_.rank = rank;
  std::copy_n(lengths, rank, d->set_.length);
  *made = d;
  return QOR_DFT_OK;
}

int copy(const Descriptor& original, Descriptor** made) {
  auto* const d = fft::create<Descriptor>();
  if (d == nullptr) return QOR_DFT_NO_MEMORY;
  d->set_ = original.set_;
  const int status = original.committed() ? d->commit() : QOR_DFT_OK;
  if (status == QOR_DFT_OK) {
    *made = d;
  } else {
    destroy(d);
  }
  return status;
}

void destroy(Descriptor* d) {
  if (d != nullptr) d->mark_ = 0;
  fft::destroy(d);
}

}  // namespace qor::dft
