#include "linalg/ondrel64.h"

#include <cmath>
#include <new>

#include "linalg/ldlt/ldlt.h"

namespace {

constexpr std::int32_t DONE = 0, INCONSISTENT = -1, NO_MEMORY = -2, NOT_SOLVED = -4;
constexpr std::int32_t RELEASE = -1, SOLVE = 13;
constexpr std::int32_t INDEFINITE = -2, DEFINITE = 2;

// Rows follow each other, each with its diagonal first and its columns ascending, all within the matrix. No entry of ja
// is read before all of ia is known to ascend: ja ends where the last row does.
bool well_formed(const LDLT::Matrix& A) {
    if (A.ia[0] != 1) return false;
    for (std::int32_t i = 0; i < A.n; ++i)
        if (A.ia[i + 1] <= A.ia[i]) return false;
    for (std::int32_t i = 0; i < A.n; ++i) {
        if (A.ja[A.ia[i] - 1] != i + 1) return false;
        for (std::int32_t at = A.ia[i]; at < A.ia[i + 1] - 1; ++at)
            if (A.ja[at] <= A.ja[at - 1] || A.ja[at] > A.n) return false;
    }
    return true;
}

std::int32_t run(const LDLT::Matrix& A, std::int32_t mtype, std::int32_t nrhs, const double* b, double* x,
                 LINALG::Memory& memory) {
    if (A.n < 0 || nrhs < 0) return INCONSISTENT;
    if (mtype != INDEFINITE && mtype != DEFINITE) return INCONSISTENT;
    if (A.n == 0 || nrhs == 0) return DONE;
    if (A.a == nullptr || A.ia == nullptr || A.ja == nullptr || b == nullptr || x == nullptr) return INCONSISTENT;
    if (!well_formed(A)) return INCONSISTENT;
    if (!LDLT::finite(A.a, A.ia[A.n] - 1)) return NOT_SOLVED;
    const bool solved = LDLT::solve_symmetric(A, mtype == DEFINITE, nrhs, b, x, LDLT::best_instructions(), memory);
    return solved ? DONE : NOT_SOLVED;
}

}  // namespace

void OD_PARDISO2(std::int64_t* handle, const std::int32_t*, const std::int32_t*, const std::int32_t* mtype,
                 const std::int32_t* phase, const std::int32_t* n, const double* a, const std::int32_t* ia,
                 const std::int32_t* ja, const std::int32_t*, const std::int32_t* nrhs, const std::int32_t*,
                 const std::int32_t*, double* b, double* x, std::int32_t* error) {
    if (error == nullptr) return;
    *error = INCONSISTENT;
    if (phase == nullptr) return;
    if (*phase == RELEASE) *error = DONE;
    if (*phase != SOLVE || mtype == nullptr || n == nullptr || nrhs == nullptr) return;
    try {
        LINALG::Memory own;
        const bool given = handle != nullptr && handle[0] != 0;
        *error = run({*n, a, ia, ja}, *mtype, *nrhs, b, x, given ? *reinterpret_cast<LINALG::Memory*>(handle[0]) : own);
    } catch (const std::bad_alloc&) {
        *error = NO_MEMORY;
    } catch (...) {
        *error = NO_MEMORY;  // std::length_error of a vector that cannot be so long
    }
}
