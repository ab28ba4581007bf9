// Second moments of one element from closed integrals under its straight edges.
#include <algorithm>
#include <cmath>
#include <limits>

#include "section/basicchar.h"

namespace BASICCHAR_MOD {

namespace {

constexpr double MINWIDTH = 1e-6f;  // single precision on purpose: compared as 9.99999997475243e-07
constexpr double MAXSLOPE = 1000000.0;

// An edge almost at right angles to the axis of x has no width under it.
bool has_width(double X1, double Y1, double X2, double Y2) {
    const double D = X2 - X1;
    const double k = std::fabs(D) == 0.0 ? 0.0 : (Y2 - Y1) / D;
    return !(std::fabs(D) < MINWIDTH || std::fabs(k) > MAXSLOPE);
}

}  // namespace

// The closed forms usual for these integrals substitute y = k x + q and expand in powers of x. These depart from them
// on purpose: the integrals are the same, written in the end ordinates, whose terms for y at or above 0 all have one
// sign. Expanded, terms in k and q of alternating signs cancel on steep edges and lose every digit.
void II(double X1, double Y1, double X2, double Y2, double& R) {
    R = 0.0;
    if (!has_width(X1, Y1, X2, Y2)) return;
    R = std::fabs((X2 - X1) * (Y1 + Y2) * (Y1 * Y1 + Y2 * Y2)) / 12.0;
}

void DD(double X1, double Y1, double X2, double Y2, double& R) {
    R = 0.0;
    if (!has_width(X1, Y1, X2, Y2)) return;
    const double w1 = 3.0 * (Y1 * Y1) + 2.0 * (Y1 * Y2) + Y2 * Y2;
    const double w2 = Y1 * Y1 + 2.0 * (Y1 * Y2) + 3.0 * (Y2 * Y2);
    R = std::fabs((X2 - X1) * (X1 * w1 + X2 * w2)) / 24.0;
}

void IYIZDZY(double A, double YE, double ZE, const Real<4, 2>& C, double& IY, double& IZ, double& DZY) {
    double ymin = std::numeric_limits<double>::infinity(), zmin = ymin;
    for (int i = 1; i <= 4; ++i) {
        ymin = std::min(ymin, C(i, 1));
        zmin = std::min(zmin, C(i, 2));
    }
    Real<4> y, z;  // at or above 0
    for (int i = 1; i <= 4; ++i) {
        y(i) = C(i, 1) - ymin;
        z(i) = C(i, 2) - zmin;
    }

    double P1 = 0.0, P2 = 0.0, P3 = 0.0;
    for (int i = 1; i <= 4; ++i) {
        const int j = i % 4 + 1;
        double R;
        II(y(i), z(i), y(j), z(j), R);
        P1 += y(j) > y(i) ? R : -R;
        II(z(i), y(i), z(j), y(j), R);
        P2 += z(j) > z(i) ? R : -R;
        DD(y(i), z(i), y(j), z(j), R);
        P3 += y(j) > y(i) ? R : -R;
    }

    // transfer to the element's own centroid
    const double dy = YE - ymin, dz = ZE - zmin;
    IY = std::fabs(P1) - A * (dz * dz);
    IZ = std::fabs(P2) - A * (dy * dy);
    DZY = std::fabs(P3) - A * dy * dz;
}

}  // namespace BASICCHAR_MOD
