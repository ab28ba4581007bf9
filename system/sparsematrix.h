// The symmetric sparse matrix of the warping systems and its solution.
#pragma once

#include <cstdint>

#include "data/table.h"
#include "linalg/memory.h"

namespace SPARSEMATRIX_MOD {

// A symmetric matrix of which only the upper triangle is stored, in compressed rows counted from 1. Columns ascend
// strictly within a row, and every row begins with its diagonal, also where that is 0.
struct SPARSEMATRIX {
    std::int32_t N = 0;         // order
    Table<std::int32_t, 1> IA;  // (N + 1)      position in JA and A where each row begins; the last is the total plus 1
    Table<std::int32_t, 1> JA;  // (IA(N+1)-1)  column of each stored entry
    Table<double, 1> A;         // (IA(N+1)-1)  value of each stored entry
    LINALG::Memory* memory =
        nullptr;  // from which its solution takes and to which it leaves what it needs; may be none
};

// Frees the three arrays, whichever exist, and sets N to 0.
void RELEASESPARSEMATRIX(SPARSEMATRIX& M);

}  // namespace SPARSEMATRIX_MOD

namespace SPARSEMATRIX_FCN {

// Turns row lengths into row starts. In: IA(i) holds the number of entries of row i, the last entry anything.
// Out: IA(1) = 1, IA(i+1) = IA(i) + length of row i; the last entry is the total plus 1.
void SUMIASPARS(Table<std::int32_t, 1>& IA);

// Solve M X = B for all columns of B with one factorisation, in double precision to solver accuracy.
//   in   M  the matrix, every diagonal stored           B  (N, nrhs)
//   out  X  (N, nrhs), undefined where ERR is not 0      ERR(1)  0, or the solver's error code      ERR(2)  always 0
// _NPD takes any symmetric matrix; zero diagonals and rows of zeros are usual, and an unknown that no equation
// determines is 0. The other form is for positive definite matrices and reports any other as an error.
// Extents of B or X that do not fit M and each other are a fault of the program: std::logic_error.
void SOLVESYSTEMEQUATIONSYM_NPD(Integer<2>& ERR, const SPARSEMATRIX_MOD::SPARSEMATRIX& M, const Table<double, 2>& B,
                                Table<double, 2>& X);
void SOLVESYSTEMEQUATIONSYM(Integer<2>& ERR, const SPARSEMATRIX_MOD::SPARSEMATRIX& M, const Table<double, 2>& B,
                            Table<double, 2>& X);

}  // namespace SPARSEMATRIX_FCN
