/* qor/qor.h: the whole library. */
#ifndef QOR_QOR_H
#define QOR_QOR_H
#include "qor/blas1.h"
#include "qor/conv.h"
#include "qor/dft.h"
#include "qor/fft.h"
#include "qor/rng.h"
#include "qor/service.h"
#include "qor/tfn.h"
#endif
