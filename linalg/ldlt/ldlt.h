// Sparse L D L^T for stiffness matrices bordered by constraints: the factorisation behind OD_PARDISO2. How it works and
// what its steps share stands in steps.h, every threshold in limits.h.
#pragma once

#include <cstdint>

#include "linalg/memory.h"

namespace LDLT {

// Which build of the kernels runs. They give the same bits.
enum class Instructions { baseline, avx2, avx512 };
bool supported(Instructions instructions);  // by this processor
Instructions best_instructions();

// The caller's matrix: upper triangle in compressed rows counted from 1, each with its diagonal first.
struct Matrix {
    std::int32_t n = 0;
    const double* a = nullptr;
    const std::int32_t* ia = nullptr;
    const std::int32_t* ja = nullptr;
};

bool finite(const double* values, std::int64_t count);  // all of them

// Solves A X = B; b and x hold nrhs columns of length n, every entry of A is finite. A column of B that is not gives a
// column of X that is not a number. False, X undefined: no solution was found that meets the equations, or with
// `definite` a matrix that is not positive definite. Without, see linalg/ondrel64.h for singular ones. What memory
// holds is used and left there. Throws std::bad_alloc, also where an index would not fit 32 bits.
bool solve_symmetric(const Matrix& A, bool definite, std::int32_t nrhs, const double* b, double* x,
                     Instructions instructions, LINALG::Memory& memory);

}  // namespace LDLT
