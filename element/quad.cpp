#include "element/quad.h"

#include "element/suportbase.h"

namespace QUAD_MOD {

using namespace SUPORTBASE;

namespace {

// Stresses (p) of motion k at the points.
[[gnu::always_inline]] inline void stresses_of_motion(const Samples& at, double G, const Real<4, 3>& WE, int k,
                                                      Real<4>& ty, Real<4>& tz) {
    for (int p = 1; p <= 4; ++p) {
        Real<2, 3> T;
        SKEWNESSOVERVELQUOR(at.y(p), at.z(p), T);
        ty(p) = G * (inner(at.dNdy(p), WE, k) + T(1, k));
        tz(p) = G * (inner(at.dNdz(p), WE, k) + T(2, k));
    }
}

// From the points to the corners.
[[gnu::always_inline]] inline double extrapolated(int c, const Real<4>& t) {
    return GAUSSEXTRAP(c, 1) * t(1) + GAUSSEXTRAP(c, 2) * t(2) + GAUSSEXTRAP(c, 3) * t(3) + GAUSSEXTRAP(c, 4) * t(4);
}

// Compiled into each kernel, which leaves out what it does not read.
[[gnu::always_inline]] inline void sample_all(const Real<4, 2>& XYE, Samples& at) {
    for (int p = 1; p <= 4; ++p) {
        Real<2, 2> INVJ;
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), at.dNdy(p), at.dNdz(p), at.detJ(p), INVJ);
        GETBASEN(GAUSSR(p), GAUSSS(p), at.N(p));
        at.y(p) = inner(at.N(p), XYE, 1);
        at.z(p) = inner(at.N(p), XYE, 2);
    }
}

}  // namespace

Samples sample(const Real<4, 2>& XYE) {
    Samples at;
    sample_all(XYE, at);
    return at;
}

void QUADKANDRIGHTSIDE(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4, 4>& K, Real<4, 3>& F,
                       Real<4>& R, Real<4, 3>& S) {
    const double E = MAT(1), G = MAT(2);
    Samples at;
    sample_all(XYE, at);
    const Real<4>&y = at.y, &z = at.z;
    Real<4> wG, wE, wEy, wEz, wEq;
    for (int p = 1; p <= 4; ++p) {
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
    Samples at;
    sample_all(XYE, at);
    R = {};
    for (int p = 1; p <= 4; ++p) {
        const double wE = MAT(1) * at.detJ(p), qp = inner(at.N(p), Q);
        for (int i = 1; i <= 4; ++i) R(i) -= at.N(p)(i) * (wE * qp);
    }
}

void resultants(const Samples& at, const Real<3>& MAT, const Real<4, 3>& WE, Real<3, 3>& ACC) {
    for (int k = 1; k <= 3; ++k) {
        Real<4> ty, tz;
        stresses_of_motion(at, MAT(2), WE, k, ty, tz);
        double torque = 0.0, along_y = 0.0, along_z = 0.0;
        for (int p = 1; p <= 4; ++p) {
            torque += at.detJ(p) * (at.y(p) * tz(p) - at.z(p) * ty(p));
            along_y += at.detJ(p) * ty(p);
            along_z += at.detJ(p) * tz(p);
        }
        ACC(k, 1) = torque;
        ACC(k, 2) = along_y;
        ACC(k, 3) = along_z;
    }
}

void QUADSHEAR(const Samples& at, const Real<3>& MAT, const Real<4, 3>& WE, Real<4, 3>& TY, Real<4, 3>& TZ) {
    for (int k = 1; k <= 3; ++k) {
        Real<4> ty, tz;
        stresses_of_motion(at, MAT(2), WE, k, ty, tz);
        for (int c = 1; c <= 4; ++c) {
            TY(c, k) = extrapolated(c, ty);
            TZ(c, k) = extrapolated(c, tz);
        }
    }
}

double QUADWARPINGCONSTANT(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& WE) {
    Samples at;
    sample_all(XYE, at);
    double sum = 0.0;
    for (int p = 1; p <= 4; ++p) {
        const double w = inner(at.N(p), WE);
        sum += at.detJ(p) * MAT(1) * w * w;
    }
    return sum;
}

void QUADSHEARSECUNDARY(const Samples& at, const Real<3>& MAT, const Real<4>& WE, Real<4>& TY, Real<4>& TZ) {
    Real<4> ty, tz;
    for (int p = 1; p <= 4; ++p) {
        ty(p) = MAT(2) * inner(at.dNdy(p), WE);
        tz(p) = MAT(2) * inner(at.dNdz(p), WE);
    }
    for (int c = 1; c <= 4; ++c) {
        TY(c) = extrapolated(c, ty);
        TZ(c) = extrapolated(c, tz);
    }
}

}  // namespace QUAD_MOD
