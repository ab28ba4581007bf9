// The three-node element of constant gradient: the same arrays as of the four-node element, all by one sample at the
// centroid. Values there are means of the node values; no node weighting takes place, also where an exact integral
// would have it.
//
// Arguments of all routines, n = 3:
//   XYE (n,2)  corners y, z, counter-clockwise
//   MAT (3)    E, G, not read
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

// Stresses of the three unit motions, and the element's share of their resultants.
//   in   WE (3,3)    warping at the nodes, a column for each motion k
//   out  ACC (3,3)   (k, 1) torque about the origin, (k, 2) force along y, (k, 3) force along z of motion k
//        TY, TZ (3,3)  shear stress G (grad W + T(:,k)) along y and z, the same at all corners
void TRIANGLESHEAR(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3, 3>& WE, Real<3, 3>& ACC, Real<3, 3>& TY,
                   Real<3, 3>& TZ);

// A E w^2, w the mean of the node values WE (3).
double TRIANGLEWARPINGCONSTANT(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& WE);

// Stress G grad w of the field with the node values WE (3): TY (3) along y, TZ (3) along z, the same at all corners.
void TRIANGLESHEARSECUNDARY(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& WE, Real<3>& TY, Real<3>& TZ);

}  // namespace TRIANGLE_MOD
