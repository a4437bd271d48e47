/// \file
/// Small numeric routines of the library's utility set.
#pragma once

#include <qxnum/global.h>

namespace qxnum {

/// The coefficients of the parabola y = A x² + B x + C through three points. Raises EMathError when
/// two x values coincide or the result is not finite.
QXNUM_CORE_EXPORT void parabola(double x1, double y1, double x2, double y2, double x3, double y3, double& A,
                                double& B, double& C);

} // namespace qxnum
