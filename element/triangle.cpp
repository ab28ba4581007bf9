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

void TRIANGLESHEAR(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3, 3>& WE, Real<3, 3>& ACC, Real<3, 3>& TY,
                   Real<3, 3>& TZ) {
    const double G = MAT(2);
    const double A = TRIANGLEAREA(XYE);
    Real<3> dNdy, dNdz;
    triangle_gradients(XYE, dNdy, dNdz);
    double yc, zc;
    centroid(XYE, yc, zc);
    Real<2, 3> T;
    SKEWNESSOVERVELQUOR(yc, zc, T);

    for (int k = 1; k <= 3; ++k) {
        const double ty = G * (inner(dNdy, WE, k) + T(1, k)), tz = G * (inner(dNdz, WE, k) + T(2, k));
        ACC(k, 1) = A * (yc * tz - zc * ty);
        ACC(k, 2) = A * ty;
        ACC(k, 3) = A * tz;
        for (int c = 1; c <= 3; ++c) {
            TY(c, k) = ty;
            TZ(c, k) = tz;
        }
    }
}

double TRIANGLEWARPINGCONSTANT(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& WE) {
    const double m = (WE(1) + WE(2) + WE(3)) / 3.0;
    return TRIANGLEAREA(XYE) * MAT(1) * m * m;
}

void TRIANGLESHEARSECUNDARY(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& WE, Real<3>& TY, Real<3>& TZ) {
    const double G = MAT(2);
    Real<3> dNdy, dNdz;
    triangle_gradients(XYE, dNdy, dNdz);
    const double ty = G * inner(dNdy, WE), tz = G * inner(dNdz, WE);
    for (int c = 1; c <= 3; ++c) {
        TY(c) = ty;
        TZ(c) = tz;
    }
}

}  // namespace TRIANGLE_MOD
