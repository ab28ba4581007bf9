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
// Border rows that are worth a dense column each. A column costs as much as a load, and its products with all others;
// far beyond what constraints on a section need, the fronts of the general path take them.
constexpr int MAXPRIMARIES = 100;

// symbolic ----------------------------------------------------------------------------------------------------------

// What a front costs in processor cycles, fitted to measured times: to set up, to gather an entry of its update matrix
// in the parent, an operation of its elimination, an entry of its panel in every solution.
constexpr double SETUP = 400, GATHER = 0.6, ELIMINATE = 0.17, PASS = 7;

// numeric -----------------------------------------------------------------------------------------------------------

// A pivot of the core this small beside its original diagonal is null. A part held by filler of f times its stiffness
// ends in a pivot of about f, with a rounding of a few 1e-16: at 1e-14 a digit or two are left of it, at 1e-15 none.
// Pivots of a mesh of one material stay above 1e-3.
constexpr double NULLPIVOT = 1e-14;
// A negative pivot, and what remains of a grounded diagonal, up to this share of the original diagonal is rounding:
// that of a whole component, 1e-14 on 3,000 nodes, 3e-13 on 10^6.
constexpr double ROUNDING = 1e-11;
// Attempts, each with the null pivots of the one before in the border: those at the limit may come out null in the
// next.
constexpr int MAXATTEMPTS = 3;

// border ------------------------------------------------------------------------------------------------------------

// A constraint of which no more than this share is left beside those before it depends on them, rounding being some
// 1e-15. Of a wall of 400 : 1 at 45 degrees 2e-5 is left, of one of 2000 : 1 8e-7.
constexpr double DEPENDENT = 1e-12;
// Size of a row of the equilibrated border at which it is null: well above its rounding, the 3e-13 above. A constraint
// that is held by less is dropped and, if it is then not met, left to the general path.
constexpr double NULLBORDER = 1e-10;
// Order of the dense rest, and null pivots that may join it. It costs n^3 / 3 operations: 500 take 9 ms.
constexpr int MAXBORDER = 500;

// general path ------------------------------------------------------------------------------------------------------

// Size of a pivot against its column: wanted first, as entries then grow five times at most, and still accepted.
constexpr double PIVOTSHARES[] = {0.25, 0.01};
// Size at which a column of the equilibrated matrix is null: a thousand roundings of entries near 1.
constexpr double NULLGENERAL = 1e-13;
// Passes in which rows are brought near 1: each halves the logarithm of what is left.
constexpr int SWEEPS = 6;

// refine ------------------------------------------------------------------------------------------------------------

// Corrections of a solution: the first leaves rounding on ordinary sections, and where three do not, the general path
// is tried.
constexpr int MAXSTEPS = 3;
constexpr double ACCURATE = 5e-15;   // backward error at which no further step is worth its time
constexpr double CONVERGED = 1e-12;  // up to which no other path is tried: far below what a mesh is worth
constexpr double ACCEPTED = 1e-6;    // above which there is no solution after all paths
// Share of its norm times max |x| below which a row holds nothing but rounding, and is measured by that norm instead.
constexpr double TINY = 1e-6;

}  // namespace LDLT
