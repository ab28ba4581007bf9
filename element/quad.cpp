#include "element/quad.h"

#include "element/suportbase.h"

namespace QUAD_MOD {

using namespace SUPORTBASE;

namespace {

// The element at its four quadrature points p. Position and gradients of a point come from two node orders of the
// square and lie diagonally opposite in the element.
struct Samples {
    Real<4, 4> N;           // (i, p)  shape values
    Real<4, 4> dNdy, dNdz;  // (i, p)  gradients
    Real<4> detJ;
};

[[gnu::always_inline]] inline Samples sample(const Real<4, 2>& XYE) {
    Samples at;
    for (int p = 1; p <= 4; ++p) {
        Real<4> dNdy, dNdz, N;
        Real<2, 2> INVJ;
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), dNdy, dNdz, at.detJ(p), INVJ);
        GETBASEN(GAUSSR(p), GAUSSS(p), N);
        for (int i = 1; i <= 4; ++i) {
            at.N(i, p) = N(i);
            at.dNdy(i, p) = dNdy(i);
            at.dNdz(i, p) = dNdz(i);
        }
    }
    return at;
}

// Value at point p of column k of X, a table over the nodes; A is N or a gradient.
template <int m>
double value_at(const Real<4, 4>& A, int p, const Real<4, m>& X, int k) {
    return A(1, p) * X(1, k) + A(2, p) * X(2, k) + A(3, p) * X(3, k) + A(4, p) * X(4, k);
}
double value_at(const Real<4, 4>& A, int p, const Real<4>& X) {
    return A(1, p) * X(1) + A(2, p) * X(2) + A(3, p) * X(3) + A(4, p) * X(4);
}

// From the points to the corners.
double extrapolated(int c, const Real<4>& t) {
    return GAUSSEXTRAP(c, 1) * t(1) + GAUSSEXTRAP(c, 2) * t(2) + GAUSSEXTRAP(c, 3) * t(3) + GAUSSEXTRAP(c, 4) * t(4);
}

}  // namespace

void QUADKANDRIGHTSIDE(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4, 4>& K, Real<4, 3>& F,
                       Real<4>& R, Real<4, 3>& S) {
    const double E = MAT(1), G = MAT(2);
    const Samples at = sample(XYE);
    Real<4> y, z, wG, wE, wEy, wEz, wEq;
    for (int p = 1; p <= 4; ++p) {
        y(p) = value_at(at.N, p, XYE, 1);
        z(p) = value_at(at.N, p, XYE, 2);
        wG(p) = G * at.detJ(p);
        wE(p) = E * at.detJ(p);
        wEy(p) = wE(p) * y(p);
        wEz(p) = wE(p) * z(p);
        wEq(p) = wE(p) * value_at(at.N, p, Q);
    }
    for (int i = 1; i <= 4; ++i) {
        for (int j = i; j <= 4; ++j) {
            double sum = 0.0;
            for (int p = 1; p <= 4; ++p) sum += (at.dNdz(i, p) * at.dNdz(j, p) + at.dNdy(i, p) * at.dNdy(j, p)) * wG(p);
            K(i, j) = K(j, i) = sum;
        }
        double f1 = 0.0, f2 = 0.0, f3 = 0.0, r = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
        for (int p = 1; p <= 4; ++p) {
            // The motions of the point: (-z, y) in the unit twist, (1, 0) and (0, 1) in the unit shifts.
            f1 -= (y(p) * at.dNdz(i, p) - z(p) * at.dNdy(i, p)) * wG(p);
            f2 -= at.dNdy(i, p) * wG(p);
            f3 -= at.dNdz(i, p) * wG(p);
            r -= at.N(i, p) * wEq(p);
            s1 += at.N(i, p) * wE(p);
            s2 += at.N(i, p) * wEy(p);
            s3 += at.N(i, p) * wEz(p);
        }
        F(i, 1) = f1;
        F(i, 2) = f2;
        F(i, 3) = f3;
        R(i) = r;
        S(i, 1) = s1;
        S(i, 2) = s2;
        S(i, 3) = s3;
    }
}

void field_load(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4>& R) {
    const Samples at = sample(XYE);
    R = {};
    for (int p = 1; p <= 4; ++p) {
        const double wE = MAT(1) * at.detJ(p), qp = value_at(at.N, p, Q);
        for (int i = 1; i <= 4; ++i) R(i) -= at.N(i, p) * (wE * qp);
    }
}

void QUADSHEAR(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4, 3>& WE, Real<3, 3>& ACC, Real<4, 3>& TY,
               Real<4, 3>& TZ) {
    const double G = MAT(2);
    const Samples at = sample(XYE);
    Real<4> y, z;
    for (int p = 1; p <= 4; ++p) {
        y(p) = value_at(at.N, p, XYE, 1);
        z(p) = value_at(at.N, p, XYE, 2);
    }
    for (int k = 1; k <= 3; ++k) {
        Real<4> ty, tz;
        double torque = 0.0, along_y = 0.0, along_z = 0.0;
        for (int p = 1; p <= 4; ++p) {
            Real<2, 3> T;
            SKEWNESSOVERVELQUOR(y(p), z(p), T);
            ty(p) = G * (value_at(at.dNdy, p, WE, k) + T(1, k));
            tz(p) = G * (value_at(at.dNdz, p, WE, k) + T(2, k));
            torque += at.detJ(p) * (y(p) * tz(p) - z(p) * ty(p));
            along_y += at.detJ(p) * ty(p);
            along_z += at.detJ(p) * tz(p);
        }
        ACC(k, 1) = torque;
        ACC(k, 2) = along_y;
        ACC(k, 3) = along_z;
        for (int c = 1; c <= 4; ++c) {
            TY(c, k) = extrapolated(c, ty);
            TZ(c, k) = extrapolated(c, tz);
        }
    }
}

double QUADWARPINGCONSTANT(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& WE) {
    const Samples at = sample(XYE);
    double sum = 0.0;
    for (int p = 1; p <= 4; ++p) {
        const double w = value_at(at.N, p, WE);
        sum += at.detJ(p) * MAT(1) * w * w;
    }
    return sum;
}

void QUADSHEARSECUNDARY(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& WE, Real<4>& TY, Real<4>& TZ) {
    const double G = MAT(2);
    const Samples at = sample(XYE);
    Real<4> ty, tz;
    for (int p = 1; p <= 4; ++p) {
        ty(p) = G * value_at(at.dNdy, p, WE);
        tz(p) = G * value_at(at.dNdz, p, WE);
    }
    for (int c = 1; c <= 4; ++c) {
        TY(c) = extrapolated(c, ty);
        TZ(c) = extrapolated(c, tz);
    }
}

}  // namespace QUAD_MOD
