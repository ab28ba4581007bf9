#include "element/quad.h"

#include "element/suportbase.h"

namespace QUAD_MOD {

using namespace SUPORTBASE;

namespace {

// The element at its four quadrature points p. Position and gradients of a point come from two node orders of the
// square and lie diagonally opposite in the element.
struct Samples {
    Block<Real<4>, 4> N, dNdy, dNdz;  // (p)(i)  shape value and gradient of node i
    Real<4> detJ;
};

[[gnu::always_inline]] inline Samples sample(const Real<4, 2>& XYE) {
    Samples at;
    for (int p = 1; p <= 4; ++p) {
        Real<2, 2> INVJ;
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), at.dNdy(p), at.dNdz(p), at.detJ(p), INVJ);
        GETBASEN(GAUSSR(p), GAUSSS(p), at.N(p));
    }
    return at;
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
        y(p) = inner(at.N(p), XYE, 1);
        z(p) = inner(at.N(p), XYE, 2);
        wG(p) = G * at.detJ(p);
        wE(p) = E * at.detJ(p);
        wEy(p) = wE(p) * y(p);
        wEz(p) = wE(p) * z(p);
        wEq(p) = wE(p) * inner(at.N(p), Q);
    }
    for (int i = 1; i <= 4; ++i) {
        for (int j = i; j <= 4; ++j) {
            double sum = 0.0;
            for (int p = 1; p <= 4; ++p) sum += (at.dNdz(p)(i) * at.dNdz(p)(j) + at.dNdy(p)(i) * at.dNdy(p)(j)) * wG(p);
            K(i, j) = K(j, i) = sum;
        }
        double f1 = 0.0, f2 = 0.0, f3 = 0.0, r = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
        for (int p = 1; p <= 4; ++p) {
            // The motions of the point: (-z, y) in the unit twist, (1, 0) and (0, 1) in the unit shifts.
            f1 -= (y(p) * at.dNdz(p)(i) - z(p) * at.dNdy(p)(i)) * wG(p);
            f2 -= at.dNdy(p)(i) * wG(p);
            f3 -= at.dNdz(p)(i) * wG(p);
            r -= at.N(p)(i) * wEq(p);
            s1 += at.N(p)(i) * wE(p);
            s2 += at.N(p)(i) * wEy(p);
            s3 += at.N(p)(i) * wEz(p);
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
        const double wE = MAT(1) * at.detJ(p), qp = inner(at.N(p), Q);
        for (int i = 1; i <= 4; ++i) R(i) -= at.N(p)(i) * (wE * qp);
    }
}

void QUADSHEAR(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4, 3>& WE, Real<3, 3>& ACC, Real<4, 3>& TY,
               Real<4, 3>& TZ) {
    const double G = MAT(2);
    const Samples at = sample(XYE);
    Real<4> y, z;
    for (int p = 1; p <= 4; ++p) {
        y(p) = inner(at.N(p), XYE, 1);
        z(p) = inner(at.N(p), XYE, 2);
    }
    for (int k = 1; k <= 3; ++k) {
        Real<4> ty, tz;
        double torque = 0.0, along_y = 0.0, along_z = 0.0;
        for (int p = 1; p <= 4; ++p) {
            Real<2, 3> T;
            SKEWNESSOVERVELQUOR(y(p), z(p), T);
            ty(p) = G * (inner(at.dNdy(p), WE, k) + T(1, k));
            tz(p) = G * (inner(at.dNdz(p), WE, k) + T(2, k));
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
        const double w = inner(at.N(p), WE);
        sum += at.detJ(p) * MAT(1) * w * w;
    }
    return sum;
}

void QUADSHEARSECUNDARY(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& WE, Real<4>& TY, Real<4>& TZ) {
    const double G = MAT(2);
    const Samples at = sample(XYE);
    Real<4> ty, tz;
    for (int p = 1; p <= 4; ++p) {
        ty(p) = G * inner(at.dNdy(p), WE);
        tz(p) = G * inner(at.dNdz(p), WE);
    }
    for (int c = 1; c <= 4; ++c) {
        TY(c) = extrapolated(c, ty);
        TZ(c) = extrapolated(c, tz);
    }
}

}  // namespace QUAD_MOD
