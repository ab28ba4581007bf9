// The equation system of a run and its solution fields.
#pragma once

#include <cstdint>

#include "data/table.h"
#include "system/sparsematrix.h"

namespace SYSTEM_VARIABLES {

// Fields over elements are (NELEMS, 4, 4): element e, corner c in the order of its nodes (a triangle's corner 4 repeats
// its corner 3), load case q. They stand in the host's ELEMOUT: every entry is assigned once, and none while the run
// can still fail.
struct SYSTEM_VARIABLES_T {
    SPARSEMATRIX_MOD::SPARSEMATRIX KG;  // (NNODES)     matrix of the warping problem     by CREATESTRUCTUTREOFSYSTEM
    Table<double, 2> RIGHTSIDE;         // (NNODES, 3)  loads: unit twist, shift along Y, along Z
    Table<double, 2> RIGHTSIDEQ;        // (NNODES, 1)  load of the secondary system
    Table<double, 2> CONSTRAINT;        // (NNODES, 3)  int E N (1, y, z), each column over its largest magnitude
    Table<double, 2> NODEFIELD;         // (NNODES, 3)  warping of unit twist, of two unit shears  by SOLVEBASEWARPING
    Table<double, 2> SECFIELD;          // (NNODES, 2)  secondary warping; warping of unit twist about the origin of XY
    LINALG::Memory memory;              //              in which the two solutions take turns

    // Stresses where the host receives them: place_stresses
    Spread<double, 48, 12, 2> TAUY, TAUZ;  // (NELEMS, 4, 4)  shear stress along Y and Z: unit torque about the shear
                                           //                 centre, unit force along u, along v, unit warping shear
    Spread<double, 48, 12, 1> SIGMA;  // (NELEMS, 4, 4)  axial stress: unit normal force, moments about u, v, bimoment

    // What the stresses take from earlier stages, and WT from the stresses
    Table<double, 2> base_field;      // (NNODES, 3)  NODEFIELD of the three unit motions  by SHEARCENTERANDELEMENT
    Real<3, 3> motions{};             // (k, q)       amplitude of motion k in unit load q: torque, force along Y, Z
    Real<2, 2> axes{};                //              TRANS
    Table<std::int32_t, 1> near_bar;  // (NNODES)     bar whose modulus corners here take; unallocated where none does
    double largest_torsional_shear = 0;  // at any corner, in case 1                       by SECUNDARYSHEAROVERELEMENT
};

// TAUY, TAUZ and SIGMA where a host of NELEMS elements receives them: twelve reals for each corner, the shear stresses
// as pairs along Y, Z in four load cases, then the axial stresses in four.
void place_stresses(double* ELEMOUT, std::int32_t NELEMS, SYSTEM_VARIABLES_T& SYSVARS);

// Frees the arrays of a record, whichever exist.
void REALEASE_SYSTEMDATA(SYSTEM_VARIABLES_T& SYSVARS);

}  // namespace SYSTEM_VARIABLES
