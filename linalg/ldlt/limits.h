// Sizes at which a pivot counts as 0, and limits of the method.
#pragma once

namespace LDLT {

constexpr double NULLPIVOT = 1e-14;  // share of its original diagonal at which a pivot of the core is null
constexpr double ROUNDING =
    1e-11;  // and at which what remains of a grounded diagonal, or a negative pivot, is rounding
constexpr double NULLBORDER = 1e-10;  // size at which an equilibrated pivot of the border is null
constexpr double CONVERGED = 1e-12;   // backward error up to which a solution is accepted
constexpr int MAXPRIMARIES = 500;     // border rows that are worth a dense column each
constexpr int MAXBORDER = 2000;       // order of the dense rest; beyond these the fronts take all of the matrix

}  // namespace LDLT
