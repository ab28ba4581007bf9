#include "element/quad.h"

#include "element/suportbase.h"

namespace QUAD_MOD {

using namespace SUPORTBASE;

void QUADKANDRIGHTSIDE(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4, 4>& K, Real<4, 3>& F,
                       Real<4>& R, Real<4, 3>& S) {
    const double E = MAT(1), G = MAT(2);
    K = {};
    F = {};
    R = {};
    S = {};
    Real<4> dNdy, dNdz, N;
    Real<2, 2> INVJ;
    Real<2, 3> T;
    double detJ;
    for (int p = 1; p <= 4; ++p) {
        // Position and gradients come from two node orders of the square and lie diagonally opposite in the element.
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), dNdy, dNdz, detJ, INVJ);
        GETBASEN(GAUSSR(p), GAUSSS(p), N);
        const double yp = inner(N, XYE, 1), zp = inner(N, XYE, 2), qp = inner(N, Q);
        SKEWNESSOVERVELQUOR(yp, zp, T);

        const double wG = G * detJ, wE = E * detJ;
        for (int j = 1; j <= 4; ++j)
            for (int i = 1; i <= 4; ++i) K(i, j) += (dNdz(i) * dNdz(j) + dNdy(i) * dNdy(j)) * wG;
        for (int k = 1; k <= 3; ++k)
            for (int i = 1; i <= 4; ++i) F(i, k) -= (T(2, k) * dNdz(i) + T(1, k) * dNdy(i)) * wG;
        for (int i = 1; i <= 4; ++i) {
            R(i) -= N(i) * (wE * qp);
            S(i, 1) += N(i) * wE;
            S(i, 2) += N(i) * (wE * yp);
            S(i, 3) += N(i) * (wE * zp);
        }
    }
}

void field_load(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4>& R) {
    const double E = MAT(1);
    R = {};
    Real<4> dNdy, dNdz, N;
    Real<2, 2> INVJ;
    double detJ;
    for (int p = 1; p <= 4; ++p) {
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), dNdy, dNdz, detJ, INVJ);
        GETBASEN(GAUSSR(p), GAUSSS(p), N);
        const double wE = E * detJ, qp = inner(N, Q);
        for (int i = 1; i <= 4; ++i) R(i) -= N(i) * (wE * qp);
    }
}

void QUADSHEAR(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4, 3>& WE, Real<3, 3>& ACC, Real<4, 3>& TY,
               Real<4, 3>& TZ) {
    const double G = MAT(2);
    ACC = {};
    Real<4> dNdy, dNdz, N;
    Real<2, 2> INVJ;
    Real<2, 3> T;
    Real<4, 3> ty, tz;  // sample p, motion k
    double detJ;
    for (int p = 1; p <= 4; ++p) {
        // The same pair of node orders as in the element arrays.
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), dNdy, dNdz, detJ, INVJ);
        GETBASEN(GAUSSR(p), GAUSSS(p), N);
        const double y = inner(N, XYE, 1), z = inner(N, XYE, 2);
        SKEWNESSOVERVELQUOR(y, z, T);
        for (int k = 1; k <= 3; ++k) {
            ty(p, k) = G * (inner(dNdy, WE, k) + T(1, k));
            tz(p, k) = G * (inner(dNdz, WE, k) + T(2, k));
            ACC(k, 1) += detJ * (y * tz(p, k) - z * ty(p, k));
            ACC(k, 2) += detJ * ty(p, k);
            ACC(k, 3) += detJ * tz(p, k);
        }
    }
    TY = {};
    TZ = {};
    for (int c = 1; c <= 4; ++c) {
        for (int k = 1; k <= 3; ++k) {
            for (int p = 1; p <= 4; ++p) {
                TY(c, k) += GAUSSEXTRAP(c, p) * ty(p, k);
                TZ(c, k) += GAUSSEXTRAP(c, p) * tz(p, k);
            }
        }
    }
}

double QUADWARPINGCONSTANT(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& WE) {
    const double E = MAT(1);
    Real<4> dNdy, dNdz, N;
    Real<2, 2> INVJ;
    double detJ, sum = 0.0;
    for (int p = 1; p <= 4; ++p) {
        // Value and determinant are the same pair of node orders again.
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), dNdy, dNdz, detJ, INVJ);
        GETBASEN(GAUSSR(p), GAUSSS(p), N);
        const double w = inner(N, WE);
        sum += detJ * E * w * w;
    }
    return sum;
}

void QUADSHEARSECUNDARY(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& WE, Real<4>& TY, Real<4>& TZ) {
    const double G = MAT(2);
    Real<4> dNdy, dNdz;
    Real<2, 2> INVJ;
    Real<4> ty, tz;  // sample p
    double detJ;
    for (int p = 1; p <= 4; ++p) {
        BILINGEOM(XYE, GAUSSR(p), GAUSSS(p), dNdy, dNdz, detJ, INVJ);
        ty(p) = G * inner(dNdy, WE);
        tz(p) = G * inner(dNdz, WE);
    }
    TY = {};
    TZ = {};
    for (int c = 1; c <= 4; ++c) {
        for (int p = 1; p <= 4; ++p) {
            TY(c) += GAUSSEXTRAP(c, p) * ty(p);
            TZ(c) += GAUSSEXTRAP(c, p) * tz(p);
        }
    }
}

}  // namespace QUAD_MOD
