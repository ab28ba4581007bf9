// The equation system of a run and its solution fields.
#pragma once

#include "data/table.h"
#include "system/sparsematrix.h"

namespace SYSTEM_VARIABLES {

// Fields over elements are (NELEMS, 4, 4): element e, corner c in the order of its nodes (a triangle's corner 4 repeats
// its corner 3), load case q.
struct SYSTEM_VARIABLES_T {
    SPARSEMATRIX_MOD::SPARSEMATRIX KG;  // (NNODES)     matrix of the warping problem     by CREATESTRUCTUTREOFSYSTEM
    Table<double, 2> RIGHTSIDE;         // (NNODES, 3)  loads: unit twist, shift along Y, along Z
    Table<double, 2> RIGHTSIDEQ;        // (NNODES, 1)  load of the secondary system
    Table<double, 2> CONSTRAINT;        // (NNODES, 3)  int E N (1, y, z), each column over its largest magnitude
    Table<double, 2> NODEFIELD;         // (NNODES, 3)  warping of unit twist, of two unit shears  by SOLVEBASEWARPING
    Table<double, 2> SECFIELD;          // (NNODES, 2)  secondary warping; warping of unit twist about the origin of XY
    LINALG::Memory memory;              //                in which the two solutions take turns
    Table<double, 3> TAUY, TAUZ;  // (NELEMS, 4, 4)  shear stress along Y and Z: unit torque about the shear centre,
                                  //                 unit force along u, along v, unit warping shear
    Table<double, 3> SIGMA;       // (NELEMS, 4, 4)  axial stress: unit normal force, moments about u, v, bimoment
};

// Frees the arrays of a record, whichever exist.
void REALEASE_SYSTEMDATA(SYSTEM_VARIABLES_T& SYSVARS);

}  // namespace SYSTEM_VARIABLES
