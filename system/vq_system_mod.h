// The warping analysis: from the sparse structure over the base warping fields to the stresses. Routines stand in the
// order of a run. XY is centred throughout; ELEMYC and ELEMZC are not. Principal coordinates are formed on demand, u =
// TRANS(1,1) y + TRANS(1,2) z and v = TRANS(2,1) y + TRANS(2,2) z.
#pragma once

#include <cstdint>

#include "data/table.h"
#include "data/vq_data_mod.h"
#include "system/system_variables.h"

namespace VQ_SYSTEM_MOD {

using SPARSEMATRIX_MOD::SPARSEMATRIX;
using SYSTEM_VARIABLES::SYSTEM_VARIABLES_T;
using VQ_DATA_MOD::LOGICAL;
using VQ_DATA_MOD::POINTTABLE;
using VQ_DATA_MOD::VARIABLES_T;
using VQ_DATA_MOD::VELQUOR_CHAR;

// Pattern of KG, one unknown for each node: every diagonal, and every pair of nodes of an element once, in the row of
// the smaller number. Allocates KG with zero values, and RIGHTSIDE, CONSTRAINT, RIGHTSIDEQ, zeroed. Throws
// std::bad_alloc, also where the entries outnumber 32-bit positions.
void CREATESTRUCTUTREOFSYSTEM(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS);

// Adds the element arrays into the system, and finds the bars in their host elements.
//   FIELDPASS false  KG.A, RIGHTSIDE, CONSTRAINT from zero; needs the structure alone
//   FIELDPASS true   RIGHTSIDEQ, the load of the field NODEFIELD(:,1); everything else of the elements is dropped
// Both: the bars' NELNODES, ELNODES, RS, SHAPE, their rows of CONSTRAINT (assigned, not normalised), then each column
// of CONSTRAINT over its largest magnitude. In the second pass the bars' rows thus meet element rows that are
// normalised already: with bars the columns of the two passes differ.
void FILLMATRIXANDRIGHTSIDE(LOGICAL FIELDPASS, const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE POINTS);

// Adds the symmetric KE (n, n) of an element with the global node numbers NODES (n), n = 3 or 4, to the upper triangle
// of M: of KE(i,j) and KE(j,i) the one whose row is the smaller number. A missing entry is a fault of the program:
// std::logic_error.
template <int n>
void ADDSTIFF2KG(const Real<n, n>& KE, const Integer<n>& NODES, SPARSEMATRIX& M);

// Natural coordinates of a point in an element.
//   dimension  2: closed form in the plane; Z and the tolerance are not read. Else: bisection of the corners, in space
//   count      nodes of the element, 3 or 4, counter-clockwise; any other gives zeros
//   X, Y, Z    coordinates of the nodes, `count` of them are read
//   rst        four nodes: r, s with node 1 at (-1,-1); three: area coordinates of nodes 2 and 3. t is 0 in the plane.
//   steps      steps of the bisection; 0 in the plane
// In the plane the quadrilateral is split along its diagonal from node 2 to node 4 and each half mapped affinely: exact
// on a parallelogram, a piecewise approximation elsewhere. A point outside comes back on the boundary.
void RST_ITER(std::int32_t dimension, std::int32_t count, const Real<3>& point, const Real<4>& X, const Real<4>& Y,
              const Real<4>& Z, double tolerance, Real<3>& rst, std::int32_t& steps);

// Signed areas, positive counter-clockwise.
void PLOCHA3(const Real<3>& y, const Real<3>& z, double& area);
void PLOCHA4(const Real<4>& y, const Real<4>& z, double& area);

// Solves KG bordered with the three constraints and a multiplier for each bar, for the three load columns. OK true:
// NODEFIELD is allocated and filled. OK false: the solver failed, NODEFIELD stays unallocated and RIGHTSIDE is
// released.
void SOLVEBASEWARPING(LOGICAL& OK, const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE POINTS);

// Shear centre, stiffnesses, and NODEFIELD and the group arrays in their final form.
//   fills CHAR     SCY, SCZ, SCU, SCV, GJ, GAY, GAZ, GAU, GAV, GAUV; turns COUP1, COUP2; divides the skew sums
//         SYSVARS  NODEFIELD: twist about the shear centre, shear along u, along v; base_field, motions, axes
//         VARS     GROUPYC, GROUPZC and GROUPDY, GROUPDZ turned to u and v
// A singular matrix gives infinities and no report.
void SHEARCENTERANDELEMENT(VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, SYSTEM_VARIABLES_T& SYSVARS, const Real<2, 2>& TRANS,
                           POINTTABLE POINTS);

// Int E w^2 over the section and the bars. FLAG false: w = NODEFIELD(:,1), into IW. True: w = SECFIELD(:,2), into IWS.
void SOLVEWARPINGCONSTANT(LOGICAL FLAG, const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, const SYSTEM_VARIABLES_T& SYSVARS,
                          POINTTABLE POINTS);

// Fills near_bar: for each node the bar whose modulus the corners there take in the axial stresses, 0 for none; of the
// bars that are nearer than their RADIUS the last in the table, also where it takes no part otherwise.
void find_bars_near_nodes(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE POINTS);

// The second system: secondary warping, then TAUY, TAUZ and WT, and IWS. Nothing can fail once it is solved. OK false:
// the solver failed, and NODEFIELD(:,1) stays divided by IW; true: that column is back at its value, up to rounding.
void SOLVESECUNDRYSHEARANDIWT(LOGICAL& OK, const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, SYSTEM_VARIABLES_T& SYSVARS,
                              POINTTABLE POINTS);

// Solves KG bordered with CONSTRAINT(:,1), as the second pass of the assembly leaves it, for RIGHTSIDEQ and
// RIGHTSIDE(:,1). OK true: SECFIELD is allocated and filled. OK false: the solver failed. KG, RIGHTSIDE, RIGHTSIDEQ
// and CONSTRAINT, of no further use, are released before the solution.
void SOLVEWARPINGFROMSECUNDARYANDTOCENTER(LOGICAL& OK, const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS);

// TAUY and TAUZ at all corners: cases 1 to 3 from base_field, motions and axes, case 4, G times the gradient of
// SECFIELD(:,1); and largest_torsional_shear. POINTS is not read. Cannot fail.
void SECUNDARYSHEAROVERELEMENT(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE POINTS);

// SIGMA at all corners, those near a bar with its modulus, and STRESS of the bars that take part.
void SOLVEAXIALSTRESS(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, SYSTEM_VARIABLES_T& SYSVARS,
                      const Real<2, 2>& TRANS, POINTTABLE POINTS);

// What the stages share: of element e, with n = 3 or 4 nodes, its node numbers, coordinates, values of a nodal column,
// and the first three properties.
template <int n>
Integer<n> nodes_of(const VARIABLES_T& VARS, std::int32_t e) {
    Integer<n> node;
    for (int i = 1; i <= n; ++i) node(i) = VARS.ELEMNODES(e, i);
    return node;
}
template <int n>
Real<n, 2> coordinates_of(const VARIABLES_T& VARS, const Integer<n>& node) {
    Real<n, 2> XYE;
    for (int i = 1; i <= n; ++i)
        for (int k = 1; k <= 2; ++k) XYE(i, k) = VARS.XY(node(i), k);
    return XYE;
}
template <int n>
Real<n> values_at(const Table<double, 2>& field, int column, const Integer<n>& node) {
    Real<n> w;
    for (int i = 1; i <= n; ++i) w(i) = field(node(i), column);
    return w;
}
template <int n>
Real<n, 3> motions_at(const Table<double, 2>& field, const Integer<n>& node) {
    Real<n, 3> WE;
    for (int i = 1; i <= n; ++i)
        for (int k = 1; k <= 3; ++k) WE(i, k) = field(node(i), k);
    return WE;
}
inline Real<3> material_of(const VARIABLES_T& VARS, std::int32_t e) {
    return {{VARS.ELEMPROP(e, 1), VARS.ELEMPROP(e, 2), VARS.ELEMPROP(e, 3)}};
}

}  // namespace VQ_SYSTEM_MOD
