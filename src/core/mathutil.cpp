#include <qxnum/mathutil.h>

#include <QCoreApplication>

#include <cmath>

namespace qxnum {

void parabola(double x1, double y1, double x2, double y2, double x3, double y3, double& A, double& B,
              double& C) {
    // Newton's divided differences: exact for any three distinct abscissae, whatever their order.
    const double d12 = x2 - x1, d13 = x3 - x1, d23 = x3 - x2;
    if (d12 == 0.0 || d13 == 0.0 || d23 == 0.0 || std::isnan(d12) || std::isnan(d13) || std::isnan(d23))
        throw EMathError(
            QCoreApplication::translate("qxnum", "No parabola through points with equal x values"));
    const double s12 = (y2 - y1) / d12;
    const double s23 = (y3 - y2) / d23;
    const double a = (s23 - s12) / d13;
    const double b = s12 - a * (x1 + x2);
    const double c = y1 - (a * x1 + b) * x1;
    if (!std::isfinite(a) || !std::isfinite(b) || !std::isfinite(c))
        throw EMathError(QCoreApplication::translate("qxnum", "No finite parabola through the points"));
    A = a;
    B = b;
    C = c;
}

} // namespace qxnum
