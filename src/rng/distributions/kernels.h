// The vector kernels that generators use in each precision: the low accuracy, but for the double sine and cosine that
// stand alone and for the power.
#pragma once

#include "tfn/kernels.h"

namespace qor::rng {

template <class T>
struct Kernels;
template <>
struct Kernels<double> {
  static constexpr auto ln = tfn::dLn_50, exp = tfn::dExp_50, sin = tfn::dSin_HA, cos = tfn::dCos_HA;
  static constexpr auto tan = tfn::dTan_50;
  static constexpr auto sin_cos = tfn::dSinCos_50;
  static constexpr auto powx = tfn::dPowx_HA;
  static constexpr auto high_ln = tfn::dLn_HA, high_exp = tfn::dExp_HA;
  static constexpr const char* sqrt_name = "_tfndSqrt_50";
  static constexpr double pi = 3.141592653589793;
};
template <>
struct Kernels<float> {
  static constexpr auto ln = tfn::sLn_21, exp = tfn::sExp_21, sin = tfn::sSin_21, cos = tfn::sCos_21;
  static constexpr auto tan = tfn::sTan_21;
  static constexpr auto sin_cos = tfn::sSinCos_21;
  static constexpr auto powx = tfn::sPowx_HA;
  static constexpr auto high_ln = tfn::sLn_HA, high_exp = tfn::sExp_HA;
  static constexpr const char* sqrt_name = "_tfnsSqrt_21";
  static constexpr float pi = 3.1415927f;
};

}  // namespace qor::rng
