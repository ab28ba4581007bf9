// The dense inverse by LAPACK.
#pragma once

#include <cstdint>

namespace USEDLAPACK {

// Inverts the contiguous matrix A (n, n) in place: LU with partial pivoting by dgetrf, then dgetri, through `pivots`
// (n) and a workspace of `lwork` reals (n at least). An exactly singular factor fills A with positive infinity. Nothing
// is reported. For n = 0 nothing is done.
void invert(std::int32_t n, double* A, std::int32_t* pivots, double* work, std::int32_t lwork);

// The size of workspace that dgetri asks for.
std::int32_t workspace_of_inverse(std::int32_t n);

// The same elimination and back substitution written out for n = 2 and 3, in the order of operations of dgetrf and
// dgetri, so that every bit is theirs where their multiply-adds are not fused, as they are in Debian's for arm64. A
// triangle is inverted several times in a run, and a call costs more than the arithmetic.
template <int n>
void invert_written_out(double* A);

}  // namespace USEDLAPACK
