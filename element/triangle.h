// The three-node element of constant gradient: the same arrays as of the four-node element, all by one sample at the
// centroid. Values there are means of the node values; no node weighting takes place, also where an exact integral
// would have it.
//
// Arguments of all routines, n = 3:
//   XYE (n,2)  corners y, z, counter-clockwise
//   MAT (3)    E, G, not read
//   at         the element as `sample` gives it, for several routines that need no more of its geometry
// Nothing is reported: a triangle without area gives infinities and NaN.
#pragma once

#include "data/table.h"

namespace TRIANGLE_MOD {

// Element arrays of the warping problem. Every entry of K, F, R, S is assigned.
//   in   Q (3)    nodal field q; zero where R is not wanted
//   out  K (3,3)  int G grad Ni . grad Nj            F (3,3)  - int G grad Ni . T(:,k)
//        R (3)    - A E q / 3, q the mean of Q       S (3,3)  (A/3) E (1, yc, zc), the same for the three nodes
void TRIANGLEKANDRIGHTSIDE(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& Q, Real<3, 3>& K, Real<3, 3>& F,
                           Real<3>& R, Real<3, 3>& S);

// R alone, for the pass that needs nothing else.
void field_load(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& Q, Real<3>& R);

// A E w^2, w the mean of the node values WE (3).
double TRIANGLEWARPINGCONSTANT(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& WE);

// The element at its centroid.
struct Samples {
    double A, y, z;
    Real<3> dNdy, dNdz;
};
Samples sample(const Real<3, 2>& XYE);

// Resultants of the three unit motions with the warping WE (3,3) at the nodes, a column for each motion k: ACC (k, 1)
// the torque about the origin, (k, 2) the force along y, (k, 3) the force along z of motion k.
void resultants(const Samples& at, const Real<3>& MAT, const Real<3, 3>& WE, Real<3, 3>& ACC);

// Shear stress G (grad W + T(:,k)) of the three motions, TY (3) along y, TZ (3) along z, the same at all corners.
void TRIANGLESHEAR(const Samples& at, const Real<3>& MAT, const Real<3, 3>& WE, Real<3>& TY, Real<3>& TZ);

// Stress G grad w of the field with the node values WE (3), TY along y, TZ along z, the same at all corners.
void TRIANGLESHEARSECUNDARY(const Samples& at, const Real<3>& MAT, const Real<3>& WE, double& TY, double& TZ);

}  // namespace TRIANGLE_MOD
