// The four-node element: its arrays of the warping problem, its shear stresses and its share of the warping constant.
// All integrals by the 2 x 2 rule, each sample with its position from GETBASEN and its gradients from BILINGEOM.
//
// Arguments of all routines, n = 4:
//   XYE (n,2)  corners y, z, counter-clockwise
//   MAT (3)    E, G, not read
//   at         the element as `sample` gives it, for several routines that need no more of its geometry
// Nothing is reported: a determinant of 0 gives infinities.
#pragma once

#include "data/table.h"

namespace QUAD_MOD {

// Element arrays of the warping problem. Every entry of K, F, R, S is assigned.
//   in   Q (4)    nodal field q; zero where R is not wanted
//   out  K (4,4)  int G grad Ni . grad Nj            F (4,3)  - int G grad Ni . T(:,k)
//        R (4)    - int E q Ni                       S (4,3)    int E Ni (1, y, z)
// T(:,k) moves a point in the plane: k = 1 unit twist about the origin, 2 unit shift along y, 3 along z.
void QUADKANDRIGHTSIDE(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4, 4>& K, Real<4, 3>& F,
                       Real<4>& R, Real<4, 3>& S);

// R alone, for the pass that needs nothing else.
void field_load(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4>& R);

// Int E w^2 of the field with the node values WE (4).
double QUADWARPINGCONSTANT(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& WE);

// The element at its four quadrature points p. Position and gradients of a point come from two node orders of the
// square and lie diagonally opposite in the element.
struct Samples {
    Block<Real<4>, 4> N, dNdy, dNdz;  // (p)(i)  shape value and gradient of node i
    Real<4> detJ, y, z;               // (p)
};
Samples sample(const Real<4, 2>& XYE);

// Resultants of the three unit motions with the warping WE (4,3) at the nodes, a column for each motion k: ACC (k, 1)
// the torque about the origin, (k, 2) the force along y, (k, 3) the force along z of motion k.
void resultants(const Samples& at, const Real<3>& MAT, const Real<4, 3>& WE, Real<3, 3>& ACC);

// Shear stress G (grad W + T(:,k)) of the three motions along y and z, TY and TZ (4,3), at the corners, extrapolated
// from the samples.
void QUADSHEAR(const Samples& at, const Real<3>& MAT, const Real<4, 3>& WE, Real<4, 3>& TY, Real<4, 3>& TZ);

// Stress G grad w at the corners of the field with the node values WE (4): TY (4) along y, TZ (4) along z.
void QUADSHEARSECUNDARY(const Samples& at, const Real<3>& MAT, const Real<4>& WE, Real<4>& TY, Real<4>& TZ);

}  // namespace QUAD_MOD
