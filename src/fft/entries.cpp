#include "base/target.h"
#include "fft/record.h"

using namespace qor::fft;

// The entries of one kind of transform: Set is FFT or DFT, and of one precision.
#define FFT_COMMON(Set, Kind, suffix, Record, T, tag)                                                    \
  QOR_ENTRY int qfps##Set##InitAlloc_##Kind##_##suffix(Record<T>** spec, int size, int flag, int hint) { \
    return create<Record<T>, T>(spec, tag, size, flag, hint);                                            \
  }                                                                                                      \
  QOR_ENTRY int qfps##Set##GetBufSize_##Kind##_##suffix(const Record<T>* spec, int* size) {              \
    return buffer_size(spec, tag, size);                                                                 \
  }                                                                                                      \
  QOR_ENTRY int qfps##Set##Free_##Kind##_##suffix(Record<T>* spec) { return destroy(spec, tag); }

#define FFT_COMPLEX_TRANSFORM(Set, suffix, T, tag, Name, inverse)                                   \
  QOR_ENTRY int qfps##Set##Name##_CToC_##suffix(const T* src, T* dst, const ComplexRecord<T>* spec, \
                                                std::uint8_t* buffer) {                             \
    return complex_transform<T, inverse>(src, dst, spec, tag, buffer);                              \
  }
#define FFT_COMPLEX(Set, suffix, T, tag)                 \
  FFT_COMMON(Set, C, suffix, ComplexRecord, T, tag)      \
  FFT_COMPLEX_TRANSFORM(Set, suffix, T, tag, Fwd, false) \
  FFT_COMPLEX_TRANSFORM(Set, suffix, T, tag, Inv, true)

#define FFT_REAL_TRANSFORMS(Set, suffix, T, tag, Name, packing)                                      \
  QOR_ENTRY int qfps##Set##Fwd_RTo##Name##_##suffix(const T* src, T* dst, const RealRecord<T>* spec, \
                                                    std::uint8_t* buffer) {                          \
    return forward_real<T, Packing::packing>(src, dst, spec, tag, buffer);                           \
  }                                                                                                  \
  QOR_ENTRY int qfps##Set##Inv_##Name##ToR_##suffix(const T* src, T* dst, const RealRecord<T>* spec, \
                                                    std::uint8_t* buffer) {                          \
    return inverse_real<T, Packing::packing>(src, dst, spec, tag, buffer);                           \
  }
#define FFT_REAL(Set, suffix, T, tag)                  \
  FFT_COMMON(Set, R, suffix, RealRecord, T, tag)       \
  FFT_REAL_TRANSFORMS(Set, suffix, T, tag, Perm, perm) \
  FFT_REAL_TRANSFORMS(Set, suffix, T, tag, Pack, pack) \
  FFT_REAL_TRANSFORMS(Set, suffix, T, tag, CCS, ccs)

#define FFT_CONVERSION(suffix, T, Names, from, to)                    \
  QOR_ENTRY int qfps##Names##_##suffix(const T* src, T* dst, int n) { \
    return convert(Packing::from, src, Packing::to, dst, n);          \
  }

#define FFT_ARRAYS(suffix, T)                                                                                      \
  FFT_CONVERSION(suffix, T, PermToPack, perm, pack)                                                                \
  FFT_CONVERSION(suffix, T, PermToCCS, perm, ccs)                                                                  \
  FFT_CONVERSION(suffix, T, PackToPerm, pack, perm)                                                                \
  FFT_CONVERSION(suffix, T, PackToCCS, pack, ccs)                                                                  \
  FFT_CONVERSION(suffix, T, CCSToPerm, ccs, perm)                                                                  \
  FFT_CONVERSION(suffix, T, CCSToPack, ccs, pack)                                                                  \
  QOR_ENTRY int qfpsMulPerm_##suffix##_I(const T* src, T* srcdst, int n) { return multiply_perm(src, srcdst, n); } \
  QOR_ENTRY int qfpsZero_##suffix(T* dst, int n) { return zero(dst, n); }                                          \
  QOR_ENTRY int qfpsCopy_##suffix(const T* src, T* dst, int n) { return copy(src, dst, n); }                       \
  QOR_ENTRY T* qfpsMalloc_##suffix(int n) { return static_cast<T*>(allocate_elements(n, sizeof(T))); }

FFT_REAL(FFT, 32f, float, real_fft)
FFT_REAL(FFT, 64f, double, real_fft)
FFT_COMPLEX(FFT, 32fc, float, complex_fft)
FFT_COMPLEX(FFT, 64fc, double, complex_fft)
FFT_REAL(DFT, 32f, float, real_dft)
FFT_REAL(DFT, 64f, double, real_dft)
FFT_COMPLEX(DFT, 32fc, float, complex_dft)
FFT_COMPLEX(DFT, 64fc, double, complex_dft)
FFT_ARRAYS(32f, float)
FFT_ARRAYS(64f, double)

QOR_ENTRY std::uint8_t* qfpsMalloc_8u(int n) { return static_cast<std::uint8_t*>(allocate_elements(n, 1)); }
QOR_ENTRY void qfpsFree(void* block) { release(block); }
