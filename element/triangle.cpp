#include "element/triangle.h"

#include "element/suportbase.h"

namespace TRIANGLE_MOD {

using namespace SUPORTBASE;

namespace {

void centroid(const Real<3, 2>& XYE, double& yc, double& zc) {
    yc = (XYE(1, 1) + XYE(2, 1) + XYE(3, 1)) / 3.0;
    zc = (XYE(1, 2) + XYE(2, 2) + XYE(3, 2)) / 3.0;
}

}  // namespace

void TRIANGLEKANDRIGHTSIDE(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& Q, Real<3, 3>& K, Real<3, 3>& F,
                           Real<3>& R, Real<3, 3>& S) {
    const double E = MAT(1), G = MAT(2);
    const double A = TRIANGLEAREA(XYE);
    Real<3> b, c;  // gradients in y and z
    triangle_gradients(XYE, b, c);
    double yc, zc;
    centroid(XYE, yc, zc);
    Real<2, 3> T;
    SKEWNESSOVERVELQUOR(yc, zc, T);

    const double wG = G * A, h = (A / 3.0) * E;
    for (int i = 1; i <= 3; ++i) {
        for (int j = 1; j <= 3; ++j) K(i, j) = (b(i) * b(j) + c(i) * c(j)) * wG;
        for (int k = 1; k <= 3; ++k) F(i, k) = (c(i) * T(2, k) + b(i) * T(1, k)) * -wG;
        S(i, 1) = h;
        S(i, 2) = h * yc;
        S(i, 3) = h * zc;
    }
    field_load(XYE, MAT, Q, R);
}

void field_load(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& Q, Real<3>& R) {
    const double r = (TRIANGLEAREA(XYE) * MAT(1) * (Q(1) + Q(2) + Q(3))) / -9.0;
    R = {{r, r, r}};
}

double TRIANGLEWARPINGCONSTANT(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& WE) {
    const double m = (WE(1) + WE(2) + WE(3)) / 3.0;
    return TRIANGLEAREA(XYE) * MAT(1) * m * m;
}

Samples sample(const Real<3, 2>& XYE) {
    Samples at;
    at.A = TRIANGLEAREA(XYE);
    triangle_gradients(XYE, at.dNdy, at.dNdz);
    centroid(XYE, at.y, at.z);
    return at;
}

void resultants(const Samples& at, const Real<3>& MAT, const Real<3, 3>& WE, Real<3, 3>& ACC) {
    Real<3> TY, TZ;
    TRIANGLESHEAR(at, MAT, WE, TY, TZ);
    for (int k = 1; k <= 3; ++k) {
        ACC(k, 1) = at.A * (at.y * TZ(k) - at.z * TY(k));
        ACC(k, 2) = at.A * TY(k);
        ACC(k, 3) = at.A * TZ(k);
    }
}

void TRIANGLESHEAR(const Samples& at, const Real<3>& MAT, const Real<3, 3>& WE, Real<3>& TY, Real<3>& TZ) {
    Real<2, 3> T;
    SKEWNESSOVERVELQUOR(at.y, at.z, T);
    for (int k = 1; k <= 3; ++k) {
        TY(k) = MAT(2) * (inner(at.dNdy, WE, k) + T(1, k));
        TZ(k) = MAT(2) * (inner(at.dNdz, WE, k) + T(2, k));
    }
}

void TRIANGLESHEARSECUNDARY(const Samples& at, const Real<3>& MAT, const Real<3>& WE, double& TY, double& TZ) {
    TY = MAT(2) * inner(at.dNdy, WE);
    TZ = MAT(2) * inner(at.dNdz, WE);
}

}  // namespace TRIANGLE_MOD
