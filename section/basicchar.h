// Section values that need no equation system: stiffness sums, centroid, second moments, principal axes, plastic axes.
#pragma once

#include <cstdint>

#include "data/vq_data_mod.h"

namespace BASICCHAR_MOD {

using VQ_DATA_MOD::LOGICAL;
using VQ_DATA_MOD::POINTTABLE;
using VQ_DATA_MOD::VARIABLES_T;
using VQ_DATA_MOD::VELQUOR_CHAR;

// Areas, centroids and the modulus-weighted sums of the section, in the host's coordinates.
//   fills VARS  ELEMAREA, ELEMYC, ELEMZC, GROUPAREA, COUPLEDFLAG; coupled: GROUPYC, GROUPZC, GROUPDY, GROUPDZ
//         CHAR  EA, IYY, IZZ, DYZ, YC, ZC, ANET, WEIGHT, COUP1, COUP2; RY, RZ as undivided sums
// Uncoupled: second moments about the centroid. Coupled (a COUPLING below 1.0): each group about its own centre plus
// its distance from the common centre scaled by its coupling factor; YC and ZC are then 0, and bars act through EA,
// WEIGHT and the skew sums alone. Needs EREF above 0, every group in 1 to NGROUPS, a valid ELEMENT on every bar that
// takes part.
void SOLVEBASICCHAR(VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, POINTTABLE POINTS);

// Under the edge from (X1, Y1) to (X2, Y2), down to the axis Y = 0: R = |int y^3/3 dx|, the second moment of the
// trapezoid about that axis. 0 for an edge of no width or nearly at right angles to the axis.
void II(double X1, double Y1, double X2, double Y2, double& R);

// The same for the product moment, R = |int x y^2/2 dx|.
void DD(double X1, double Y1, double X2, double Y2, double& R);

// Second moments of one element of area A about its centroid (YE, ZE), from its corners C (4, 2), columns Y and Z;
// either sense of rotation, a triangle with its third corner twice. Named by the axis of the moment: IY = int (z-ZE)^2,
// IZ = int (y-YE)^2, DZY = int (y-YE)(z-ZE).
void IYIZDZY(double A, double YE, double ZE, const Real<4, 2>& C, double& IY, double& IZ, double& DZY);

// Principal values and axes of IYY, IZZ, DYZ: fills I1, I2, ALPHA and TRANS, with u = TRANS(1,1) y + TRANS(1,2) z and
// v = TRANS(2,1) y + TRANS(2,2) z; OK becomes true. Axes within 1e-4 (IYY + IZZ) of principal count as principal.
void SOLVEMAJORCOORDINATESYSTEM(LOGICAL& OK, const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, Real<2, 2>& TRANS);

// Moves XY, all rows, so that (YC, ZC) becomes the origin. ELEMYC and ELEMZC stay in the host's coordinates.
void MOVEGRIDTOMASSCENTER(VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR);

// The plastic neutral axis for one direction: the line p = L that balances the strength-weighted areas of both sides.
//   DIRECTION  1, -1: p along the first axis; 2, -2: along the second. Above 0: FPOS above the line, FNEG below it.
//   STAGE      0: the host's axes, needs SOLVEBASICCHAR alone; else: the principal axes, needs centred XY and ALPHA
// Fills one slot each of PLAXIS (L), PLMOD (sum of absolute first moments of area) and PLMOM (strength-weighted).
// Elements with MATFLAG below 0.5 or of low modulus, and bars, take no part. Ends for any input; NaN where the input
// gives no number.
void SOLVEPLASTNO(const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, std::int32_t DIRECTION, std::int32_t STAGE);

// Directions -1 and -2 without a search, from the slots of 1 and 2 of the same STAGE: where all elements that take part
// have FPOS = FNEG, the searches and their results are the same to the last bit. Else false, and nothing is filled.
bool mirror_plastic(const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, std::int32_t STAGE);

}  // namespace BASICCHAR_MOD
