// The digit generator behind the number texts (not installed).
#pragma once

#include <qxnum/global.h>

namespace qxnum::detail {
// The 18 significant digits of |Value| (finite), correctly rounded from the binary value with ties
// to even, as 18 ASCII digits in Digits; returns the decimal exponent E of d.ddd...*10^E. Zero gives
// 18 '0's and 0. This is what std::to_chars(|Value|, scientific, 17) prints, only faster.
int ExtendedDigits18(const Extended& Value, char* Digits);
} // namespace qxnum::detail
