#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "element/quad.h"
#include "element/suportbase.h"
#include "element/triangle.h"
#include "linalg/usedlapack.h"
#include "system/vq_system_mod.h"

using namespace SUPORTBASE;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

// Square, oblong about the origin, trapezoid, parallelogram far from the origin, quadrilateral with no equal sides.
const Real<4, 2> SQUARE{{0, 1, 1, 0, 0, 0, 1, 1}}, OBLONG{{-1, 1, 1, -1, -0.5, -0.5, 0.5, 0.5}},
    TRAPEZOID{{0, 2, 1, 0, 0, 0, 1, 1}}, PARALLELOGRAM{{40, 43, 44, 41, -7, -6.5, -4.5, -5}};
const std::vector<Real<4, 2>> QUADS{SQUARE, OBLONG, TRAPEZOID, PARALLELOGRAM, {{0, 3, 4, -1, 0, 0.5, 2, 3}}};
const std::vector<Real<3, 2>> TRIANGLES{{{0, 3, 1, 0.2, 0.5, 2.5}}, {{20, 20.5, 19, -4, -3, -3.5}}};

const Real<3> MAT{{3, 2, std::nan("")}};  // E, G, and a third value that nothing may read: it would spoil every result

// One name for the routines of both kinds of element.
template <int n>
struct Arrays {
    Real<n, n> K;
    Real<n, 3> F, S, TY, TZ;
    Real<n> R, load, ty, tz;
    Real<3, 3> ACC;
    double I;
};
Arrays<4> arrays(const Real<4, 2>& XYE, const Real<4>& W, const Real<4, 3>& WE = {}) {
    Arrays<4> a;
    QUAD_MOD::QUADKANDRIGHTSIDE(XYE, MAT, W, a.K, a.F, a.R, a.S);
    QUAD_MOD::field_load(XYE, MAT, W, a.load);
    const QUAD_MOD::Samples at = QUAD_MOD::sample(XYE);
    QUAD_MOD::resultants(at, MAT, WE, a.ACC);
    QUAD_MOD::QUADSHEAR(at, MAT, WE, a.TY, a.TZ);
    QUAD_MOD::QUADSHEARSECUNDARY(at, MAT, W, a.ty, a.tz);
    a.I = QUAD_MOD::QUADWARPINGCONSTANT(XYE, MAT, W);
    return a;
}
Arrays<3> arrays(const Real<3, 2>& XYE, const Real<3>& W, const Real<3, 3>& WE = {}) {
    Arrays<3> a;
    TRIANGLE_MOD::TRIANGLEKANDRIGHTSIDE(XYE, MAT, W, a.K, a.F, a.R, a.S);
    TRIANGLE_MOD::field_load(XYE, MAT, W, a.load);
    const TRIANGLE_MOD::Samples at = TRIANGLE_MOD::sample(XYE);
    Real<3> TY, TZ;
    double ty, tz;
    TRIANGLE_MOD::resultants(at, MAT, WE, a.ACC);
    TRIANGLE_MOD::TRIANGLESHEAR(at, MAT, WE, TY, TZ);
    TRIANGLE_MOD::TRIANGLESHEARSECUNDARY(at, MAT, W, ty, tz);
    for (int i = 1; i <= 3; ++i) {  // the same at all corners
        for (int k = 1; k <= 3; ++k) a.TY(i, k) = TY(k), a.TZ(i, k) = TZ(k);
        a.ty(i) = ty, a.tz(i) = tz;
    }
    a.I = TRIANGLE_MOD::TRIANGLEWARPINGCONSTANT(XYE, MAT, W);
    return a;
}

double area(const Real<3, 2>& XYE) { return TRIANGLEAREA(XYE); }
double area(const Real<4, 2>& C) {
    return TRIANGLEAREA({{C(1, 1), C(2, 1), C(4, 1), C(1, 2), C(2, 2), C(4, 2)}}) +
           TRIANGLEAREA({{C(2, 1), C(3, 1), C(4, 1), C(2, 2), C(3, 2), C(4, 2)}});
}

// The first entries against figures; 1e-14 leaves room for a few roundings of values of order 1.
template <class Numbers>
void expect_figures(const Numbers& block, const std::vector<double>& figures) {
    for (std::size_t k = 0; k < figures.size(); ++k) EXPECT_NEAR(block.data[k], figures[k], 1e-14) << k;
}

// What holds on every element of either kind. Coordinates reach 44, so that sums of their squares lose four digits.
template <int n>
void expect_consistent_arrays(const Real<n, 2>& XYE) {
    Real<n> one, y, z, W;
    Real<n, 3> WE;
    for (int i = 1; i <= n; ++i) {
        one(i) = 1, y(i) = XYE(i, 1), z(i) = XYE(i, 2), W(i) = std::sin(5.0 * i);
        for (int k = 1; k <= 3; ++k) WE(i, k) = k == 3 ? W(i) : std::cos(7.0 * i + k);
    }
    const Arrays<n> a = arrays(XYE, W, WE), rigid = arrays(XYE, {}), of_one = arrays(XYE, one), of_y = arrays(XYE, y);
    for (int i = 1; i <= n; ++i) {
        // A constant stores no energy, and -y (-z) answers a unit shift along y (z).
        EXPECT_NEAR(inner(one, a.K, i), 0, 1e-12);
        EXPECT_NEAR(inner(y, a.K, i), -a.F(i, 2), 1e-11);
        EXPECT_NEAR(inner(z, a.K, i), -a.F(i, 3), 1e-11);
        for (int j = 1; j < i; ++j) EXPECT_EQ(a.K(i, j), a.K(j, i));
        // The load of the field 1 or y is its constraint, of the other sign; without a field there is no load.
        EXPECT_NEAR(of_one.R(i), -a.S(i, 1), 1e-12);
        EXPECT_NEAR(of_y.R(i), -a.S(i, 2), 1e-11);
        EXPECT_EQ(rigid.R(i), 0);
        EXPECT_EQ(a.load(i), a.R(i));  // alone: the same bits
        // Stress of the plain gradient: what a field adds to the stress of a rigid motion.
        EXPECT_NEAR(a.ty(i), a.TY(i, 3) - rigid.TY(i, 3), 1e-11);
        EXPECT_NEAR(a.tz(i), a.TZ(i, 3) - rigid.TZ(i, 3), 1e-11);
        EXPECT_NEAR(of_one.ty(i), 0, 1e-12);
    }
    EXPECT_NEAR(inner(one, a.S, 1), 3 * area(XYE), 1e-12);  // E A
    EXPECT_NEAR(a.I, -inner(W, a.R), 1e-12);
    // Resultant j of motion k: int G T(:,j) . T(:,k) of the rigid motion, and the field's work on load j.
    for (int k = 1; k <= 3; ++k) {
        EXPECT_NEAR(inner(one, a.F, k), 0, 1e-11);
        for (int j = 1; j <= 3; ++j) {
            double work = 0;
            for (int i = 1; i <= n; ++i) work += WE(i, k) * a.F(i, j);
            EXPECT_NEAR(a.ACC(k, j), rigid.ACC(j, k) - work, 1e-9);
            const double GA = 2 * area(XYE), rigid_force = k == 1 || j == 1 ? rigid.ACC(j, k) : j == k ? GA : 0;
            EXPECT_NEAR(rigid.ACC(k, j), rigid_force, 1e-11);
        }
    }
}

}  // namespace

TEST(Element, ArraysStressesAndConstantsBelongTogether) {
    for (const auto& XYE : QUADS) expect_consistent_arrays(XYE);
    for (const auto& XYE : TRIANGLES) expect_consistent_arrays(XYE);
}

TEST(Usedlapack, InverseOfAnyStridesAndInfinityWhereSingular) {
    const Real<16> A{{4, 1, -2, 3, 0, 5, 2, 7, -1, 6, 8, 2, 9, -3, 1, 11}};
    Real<5> INVERSE{{0, 0, 0, 0, 77}};
    INVMAT(2, A.data, 8, 2, INVERSE.data);  // (4, -2; -1, 8)
    expect_figures(INVERSE, {8 / 30.0, 1 / 30.0, 2 / 30.0, 4 / 30.0, 77});
    INVMAT(2, Real<4>{{1, 2, 2, 4}}.data, 1, 2, INVERSE.data);
    for (int k = 1; k <= 4; ++k) EXPECT_EQ(INVERSE(k), inf);
    INVMAT(0, nullptr, 1, 1, &INVERSE(5));
    EXPECT_EQ(INVERSE(5), 77);
}

// Written out and by LAPACK: the same bits. Coordinates of few digits give equal pivots, zeros and singular matrices.
template <int n>
int singular_of(const double (&M)[9]) {
    double A[n * n], B[n * n], work[192];
    for (int k = 0; k < n * n; ++k) A[k] = B[k] = M[k];
    std::int32_t pivots[n];
    USEDLAPACK::invert_written_out<n>(A);
    USEDLAPACK::invert(n, B, pivots, work, 192);
    EXPECT_EQ(std::memcmp(A, B, sizeof A), 0) << M[0] << " " << M[1] << " " << M[2] << " " << M[3];
    return B[0] == inf && B[n * n - 1] == inf;
}
TEST(Usedlapack, WrittenOutInverseHasLapacksBits) {
#ifdef __aarch64__
    GTEST_SKIP() << "LAPACK's multiply-adds are fused";
#endif
    std::mt19937 random(1);
    std::uniform_int_distribution<int> few(-3, 3), any(-1000000, 1000000);
    int singular2 = 0, singular3 = 0;
    for (int trial = 0; trial < 40000 && !HasFailure(); ++trial) {
        const double scale = std::pow(10.0, trial % 13 - 6);
        double A[9];
        for (int k = 0; k < 9; ++k) A[k] = k % 3 == 0 ? 1 : trial % 2 ? few(random) : any(random) * scale;
        if (trial % 4 > 1) A[0] = A[1], A[3] = A[2], A[6] *= scale;  // no triangle: any first row
        if (trial % 997 == 0) A[0] = A[1] = A[2] = 3e-310;           // a pivot without a reciprocal
        singular2 += singular_of<2>(A);
        singular3 += singular_of<3>(A);
    }
    EXPECT_TRUE(singular2 > 1000 && singular3 > 1000) << singular2 << " " << singular3;
}
