// Every threshold of the solver, in the order of its steps, with the reason for its size. The rounding of one operation
// is 1.1e-16; where a size is measured against something, that stands with it. Kernels include this file: nothing but
// constants.
#pragma once

namespace LDLT {

// classify ----------------------------------------------------------------------------------------------------------

// Entries of a row that can be a tie. A bar's row has five; a constraint on the section touches every node.
constexpr int MAXTIE = 16;
// Entry of the hung node as a share of the largest of its tie: its row is divided by it, and loses a digit at most.
constexpr double MINTIE = 0.1;
// Core nodes from which numbering them anew pays: smaller graphs lie in the cache whatever their order.
constexpr int MINSORT = 2000;
// Border rows that are worth a dense column each. A column costs as much as a load: beyond 100 the fronts of the
// general path are cheaper.
constexpr int MAXPRIMARIES = 100;

// symbolic ----------------------------------------------------------------------------------------------------------

// What a front costs in processor cycles, fitted to measured times: to set up, to gather an entry of its update matrix
// in the parent, an operation of its elimination, an entry of its panel in every solution.
constexpr double SETUP = 400, GATHER = 0.6, ELIMINATE = 0.17, PASS = 7;

// numeric -----------------------------------------------------------------------------------------------------------

// A pivot of the core this small beside its original diagonal is null. A part held by filler of f times its stiffness
// ends in a pivot of about f, with a rounding of a few 1e-16: at 1e-14 two digits are left of it, at 1e-15 none.
constexpr double NULLPIVOT = 1e-14;
// A negative pivot, and what remains of a grounded diagonal, up to this share of the original diagonal is rounding: the
// sum of the roundings of a whole component, which on 10^6 nodes were seen to reach 1e-12.
constexpr double ROUNDING = 1e-11;
// Attempts with the null pivots of the last one in the border. A second one suffices but for pivots at the limit.
constexpr int MAXATTEMPTS = 3;

// border ------------------------------------------------------------------------------------------------------------

// A constraint of which no more than this share is left beside those before it depends on them: two passes of
// orthogonalisation leave rounding, 1e-15 times a growth of 100 at the most. The thinnest wall that a section may have,
// 2000 : 1 at 45 degrees, leaves 1e-7.
constexpr double DEPENDENT = 1e-12;
// A column that keeps less than this share of its length beside those before it is taken out of them once more:
// rounding leaves 1e-16 over the share.
constexpr double WEAKENED = 0.01;
// Size of a row of the equilibrated border at which it is null. Its entries are accurate to about 1e-13; a constraint
// that is held by less than 1e-10 of its size is better dropped and, if it is then not met, left to the general path.
constexpr double NULLBORDER = 1e-10;
// Order of the dense rest, and null pivots that may join it. It costs n^3 / 3 operations: 500 take 10 ms.
constexpr int MAXBORDER = 500;

// general path ------------------------------------------------------------------------------------------------------

// Size of a pivot against its column: wanted first, as entries grow by less than 1 / 0.25 + 1, and still accepted.
constexpr double PIVOTSHARES[] = {0.25, 0.01};
// Size at which a column of the equilibrated matrix is null: a hundred roundings of entries near 1.
constexpr double NULLGENERAL = 1e-13;
// Passes in which rows are brought near 1; powers of 2 meet the size that they can within as many.
constexpr int SWEEPS = 6;

// refine ------------------------------------------------------------------------------------------------------------

// Corrections of a solution. The first leaves rounding on all but the worst sections; a third never helped less than
// the general path would.
constexpr int MAXSTEPS = 3;
constexpr double ACCURATE = 5e-15;   // backward error at which no further step is worth its time
constexpr double CONVERGED = 1e-12;  // up to which no other path is tried: below what a mesh is worth by six digits
constexpr double ACCEPTED = 1e-6;    // above which there is no solution after all paths
// Share of its norm times max |x| below which a row holds nothing but rounding, and is measured by that norm instead.
constexpr double TINY = 1e-6;

}  // namespace LDLT
