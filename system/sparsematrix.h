// The symmetric sparse matrix of the warping systems and its solution.
#pragma once

#include <cstdint>

#include "data/table.h"

namespace SPARSEMATRIX_MOD {

// A symmetric matrix of which only the upper triangle is stored, in compressed rows counted from 1. Columns ascend
// strictly within a row, and every row begins with its diagonal, also where that is 0.
struct SPARSEMATRIX {
    std::int32_t N = 0;         // order
    Table<std::int32_t, 1> IA;  // (N + 1)      position in JA and A where each row begins; the last is the total plus 1
    Table<std::int32_t, 1> JA;  // (IA(N+1)-1)  column of each stored entry
    Table<double, 1> A;         // (IA(N+1)-1)  value of each stored entry
};

// Frees the three arrays, whichever exist, and sets N to 0.
void RELEASESPARSEMATRIX(SPARSEMATRIX& M);

}  // namespace SPARSEMATRIX_MOD
