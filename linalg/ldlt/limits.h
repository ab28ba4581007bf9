// Sizes at which a pivot counts as 0, and limits of the method.
#pragma once

namespace LDLT {

// Shares of its original diagonal: at NULLPIVOT a pivot of the core is null; up to ROUNDING a negative pivot, and what
// remains of a grounded diagonal, is rounding.
constexpr double NULLPIVOT = 1e-14;
constexpr double ROUNDING = 1e-11;
constexpr double DEPENDENT = 1e-12;   // share of a constraint that is left where it depends on others: rounding
constexpr double NULLBORDER = 1e-10;  // size at which an equilibrated pivot of the border is null
constexpr double CONVERGED = 1e-12;   // backward error up to which no other path is tried
constexpr double ACCEPTED = 1e-6;     // backward error above which there is no solution after all of them
constexpr int MAXPRIMARIES = 100;     // border rows that are worth a dense column each
constexpr int MAXBORDER = 500;        // order of the dense rest; beyond these the fronts take all of the matrix

}  // namespace LDLT
