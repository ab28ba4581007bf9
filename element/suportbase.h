// Shape functions, gradients, areas and the small dense inverse from which the element integrals are built. Pure
// functions; coordinates are those of the section plane, y first, z second.
//
// Two node orders stand side by side on the natural square: GETBASEN puts node 1 at (-1,-1), BILINGEOM at (+1,+1), both
// counter-clockwise. A position from the one and gradients from the other at the same (r, s) therefore lie diagonally
// opposite in the element; the integrals of this system are defined with exactly these pairs.
#pragma once

#include <cstdint>

#include "data/table.h"

namespace SUPORTBASE {

// The 2 x 2 rule of the quadrilateral, all weights 1.
constexpr double GAUSSPOINT = 0.5773502691896258;  // 1/sqrt(3)
constexpr Real<4> GAUSSR{{-GAUSSPOINT, GAUSSPOINT, GAUSSPOINT, -GAUSSPOINT}};
constexpr Real<4> GAUSSS{{-GAUSSPOINT, -GAUSSPOINT, GAUSSPOINT, GAUSSPOINT}};

// GAUSSEXTRAP(c, p): weight of point p in the value at corner c, in the node order of BILINGEOM: corner 1 is next to
// point 3.
constexpr double OPPOSITE = 0.1339745962155614;  // 1 - sqrt(3)/2
constexpr double BESIDE = -0.5;
constexpr double NEXT = 1.8660254037844386;  // 1 + sqrt(3)/2
constexpr Real<4, 4> GAUSSEXTRAP{{OPPOSITE, BESIDE, NEXT, BESIDE, BESIDE, OPPOSITE, BESIDE, NEXT, NEXT, BESIDE,
                                  OPPOSITE, BESIDE, BESIDE, NEXT, BESIDE, OPPOSITE}};

// Bilinear shape values N at (r, s); nodes 1 to 4 at (-1,-1), (+1,-1), (+1,+1), (-1,+1).
[[gnu::always_inline]] inline void GETBASEN(double r, double s, Real<4>& N);

// Gradients, Jacobian determinant and inverse Jacobian at (r, s) of the element with the corners XYE; nodes 1 to 4
// at (+1,+1), (-1,+1), (-1,-1), (+1,-1). A zero determinant gives infinities; a clockwise element has a negative one.
[[gnu::always_inline]] inline void BILINGEOM(const Real<4, 2>& XYE, double r, double s, Real<4>& dNdy, Real<4>& dNdz,
                                             double& detJ, Real<2, 2>& INVJ);

// Signed area, positive counter-clockwise.
double TRIANGLEAREA(const Real<3, 2>& XYE);

double NORM2(const Real<2>& v);

// Column k of T is the motion of the point (y, z) in the plane: k = 1 a unit twist about the origin, 2 a unit shift
// along y, 3 along z.
inline void SKEWNESSOVERVELQUOR(double y, double z, Real<2, 3>& T) { T = {{-z, y, 1.0, 0.0, 0.0, 1.0}}; }

// INVERSE (n, n), contiguous, of the matrix A (n, n) whose entry (i, j) stands at A[(i-1) row + (j-1) column]. A
// singular matrix gives positive infinity throughout and no report. Throws std::bad_alloc, for n > 3 alone.
void INVMAT(std::int32_t n, const double* A, std::ptrdiff_t row, std::ptrdiff_t column, double* INVERSE);

// Gradients of the area coordinates of a triangle, constant over it: rows of the inverse of the matrix with the columns
// (1, y(j), z(j)). Infinite where the triangle has no area.
void triangle_gradients(const Real<3, 2>& XYE, Real<3>& dNdy, Real<3>& dNdz);

// Sum of N(i) times entry i of X, or of its column k, from the first product on.
template <int n>
[[gnu::always_inline]] inline double inner(const Real<n>& N, const Real<n>& X) {
    double sum = N(1) * X(1);
    for (int i = 2; i <= n; ++i) sum += N(i) * X(i);
    return sum;
}
template <int n, int m>
[[gnu::always_inline]] inline double inner(const Real<n>& N, const Real<n, m>& X, int k) {
    double sum = N(1) * X(1, k);
    for (int i = 2; i <= n; ++i) sum += N(i) * X(i, k);
    return sum;
}

// The kernels of every sample, here so that they are compiled into the loops over the fixed points.

[[gnu::always_inline]] inline void GETBASEN(double r, double s, Real<4>& N) {
    N(1) = (1.0 - s) * (1.0 - r) * 0.25;
    N(2) = (1.0 - s) * (1.0 + r) * 0.25;
    N(3) = (1.0 + r) * (1.0 + s) * 0.25;
    N(4) = (1.0 - r) * (1.0 + s) * 0.25;
}

[[gnu::always_inline]] inline void BILINGEOM(const Real<4, 2>& XYE, double r, double s, Real<4>& dNdy, Real<4>& dNdz,
                                             double& detJ, Real<2, 2>& INVJ) {
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

}  // namespace SUPORTBASE
