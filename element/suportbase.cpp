#include "element/suportbase.h"

#include <cmath>
#include <vector>

#include "linalg/usedlapack.h"

namespace SUPORTBASE {

void GETBASEN(double r, double s, Real<4>& N) {
    N(1) = (1.0 - s) * (1.0 - r) * 0.25;
    N(2) = (1.0 - s) * (1.0 + r) * 0.25;
    N(3) = (1.0 + r) * (1.0 + s) * 0.25;
    N(4) = (1.0 - r) * (1.0 + s) * 0.25;
}

void BILINGEOM(const Real<4, 2>& XYE, double r, double s, Real<4>& dNdy, Real<4>& dNdz, double& detJ,
               Real<2, 2>& INVJ) {
    // C x for an antisymmetric C, so that detJ = y . C z; its entries are the cross products of shape derivatives
    // over 8.
    const auto times_C = [&](int k, Real<4>& Cx) {
        const double x1 = XYE(1, k), x2 = XYE(2, k), x3 = XYE(3, k), x4 = XYE(4, k);
        Cx(1) = ((1.0 + s) * x2 + (r - s) * x3 + (-1.0 - r) * x4) * 0.125;
        Cx(2) = ((-1.0 - s) * x1 + (1.0 - r) * x3 + (r + s) * x4) * 0.125;
        Cx(3) = ((s - r) * x1 + (r - 1.0) * x2 + (1.0 - s) * x4) * 0.125;
        Cx(4) = ((1.0 + r) * x1 + (-r - s) * x2 + (s - 1.0) * x3) * 0.125;
    };
    Real<4> Cy, Cz;
    times_C(1, Cy);
    times_C(2, Cz);
    detJ = XYE(1, 1) * Cz(1) + XYE(2, 1) * Cz(2) + XYE(3, 1) * Cz(3) + XYE(4, 1) * Cz(4);
    const double w = 1.0 / detJ;
    for (int i = 1; i <= 4; ++i) {
        dNdy(i) = Cz(i) * w;
        dNdz(i) = -Cy(i) * w;
    }

    const auto along_r = [&](int k) {
        return ((1.0 + s) * XYE(1, k) + (-1.0 - s) * XYE(2, k) + (s - 1.0) * XYE(3, k) + (1.0 - s) * XYE(4, k)) * 0.25;
    };
    const auto along_s = [&](int k) {
        return ((1.0 + r) * XYE(1, k) + (1.0 - r) * XYE(2, k) + (r - 1.0) * XYE(3, k) + (-1.0 - r) * XYE(4, k)) * 0.25;
    };
    INVJ(1, 1) = along_s(2) * w;
    INVJ(2, 1) = -along_s(1) * w;
    INVJ(1, 2) = -along_r(2) * w;
    INVJ(2, 2) = along_r(1) * w;
}

double TRIANGLEAREA(const Real<3, 2>& XYE) {
    const double y1 = XYE(1, 1), y2 = XYE(2, 1), y3 = XYE(3, 1);
    const double z1 = XYE(1, 2), z2 = XYE(2, 2), z3 = XYE(3, 2);
    return ((z2 - z3) * y1 + (z3 - z1) * y2 + (z1 - z2) * y3) * 0.5;
}

double NORM2(const Real<2>& v) { return std::sqrt(v(1) * v(1) + v(2) * v(2)); }

void SKEWNESSOVERVELQUOR(double y, double z, Real<2, 3>& T) { T = {{-z, y, 1.0, 0.0, 0.0, 1.0}}; }

void INVMAT(std::int32_t n, const double* A, std::ptrdiff_t row, std::ptrdiff_t column, double* INVERSE) {
    if (n <= 0) return;
    for (std::ptrdiff_t j = 0; j < n; ++j)
        for (std::ptrdiff_t i = 0; i < n; ++i) INVERSE[i + n * j] = A[i * row + j * column];
    std::vector<std::int32_t> pivots(static_cast<std::size_t>(n));
    std::vector<double> work(static_cast<std::size_t>(USEDLAPACK::workspace_of_inverse(n)));
    USEDLAPACK::invert(n, INVERSE, pivots.data(), work.data(), static_cast<std::int32_t>(work.size()));
}

void triangle_gradients(const Real<3, 2>& XYE, Real<3>& dNdy, Real<3>& dNdz) {
    Real<3, 3> M;
    for (int j = 1; j <= 3; ++j) {
        M(1, j) = 1.0;
        M(2, j) = XYE(j, 1);
        M(3, j) = XYE(j, 2);
    }
    USEDLAPACK::invert_3x3(M.data);
    for (int i = 1; i <= 3; ++i) {
        dNdy(i) = M(i, 2);
        dNdz(i) = M(i, 3);
    }
}

}  // namespace SUPORTBASE
