#include "system/sparsematrix.h"

#include <stdexcept>

#include "linalg/ondrel64.h"

namespace SPARSEMATRIX_MOD {

void RELEASESPARSEMATRIX(SPARSEMATRIX& M) {
    M.IA.release();
    M.JA.release();
    M.A.release();
    M.N = 0;
}

}  // namespace SPARSEMATRIX_MOD

namespace SPARSEMATRIX_FCN {
namespace {

using SPARSEMATRIX_MOD::SPARSEMATRIX;

// What the two forms ask of the solver; iparm counts from 1, and entries that are not named are 0.
struct Request {
    std::int32_t mtype;                // -2 indefinite, 2 positive definite
    std::int32_t msglvl;               // 0 silent, 1 statistics
    std::int32_t perturbation;         // iparm(10): pivots below 10 to the minus this, relative, count as 0
    std::int32_t bunch_kaufman_pivot;  // iparm(21)
};

constexpr std::int32_t ANALYSE_FACTORISE_SOLVE = 13;
constexpr std::int32_t RELEASE_ALL = -1;

void solve(const Request& request, Integer<2>& ERR, const SPARSEMATRIX& M, const Table<double, 2>& B,
           Table<double, 2>& X) {
    ERR = {{0, 0}};
    if (B.extent(1) != M.N || X.extent(1) != M.N || X.extent(2) != B.extent(2))
        throw std::logic_error("err : nonconsistent matrix in slove sym system");

    Integer<64> iparm{};
    iparm(1) = 1;  // settings are supplied
    iparm(2) = 2;  // ordering that reduces fill
    iparm(3) = 1;  // one processor
    iparm(10) = request.perturbation;
    iparm(11) = 1;  // scaling
    iparm(18) = -1;
    iparm(21) = request.bunch_kaufman_pivot;

    std::int64_t handle[64] = {reinterpret_cast<std::int64_t>(M.memory)};
    const std::int32_t one = 1, nrhs = static_cast<std::int32_t>(B.extent(2));
    std::int32_t error = 0;
    // The interface takes the loads as writable but leaves them as they are.
    double* b = const_cast<double*>(B.memory());
    OD_PARDISO2(handle, &one, &one, &request.mtype, &ANALYSE_FACTORISE_SOLVE, &M.N, M.A.memory(), M.IA.memory(),
                M.JA.memory(), &one, &nrhs, iparm.data, &request.msglvl, b, X.memory(), &error);
    if (error != 0) {
        ERR(1) = error;
        return;
    }
    OD_PARDISO2(handle, &one, &one, &request.mtype, &RELEASE_ALL, &M.N, M.A.memory(), M.IA.memory(), M.JA.memory(),
                &one, &nrhs, iparm.data, &request.msglvl, b, X.memory(), &error);
}

}  // namespace

void SUMIASPARS(Table<std::int32_t, 1>& IA) {
    std::int32_t start = 1;
    for (std::int32_t i = 1; i <= IA.extent(1); ++i) {
        const std::int32_t length = IA(i);
        IA(i) = start;
        if (i < IA.extent(1)) start += length;
    }
}

void SOLVESYSTEMEQUATIONSYM_NPD(Integer<2>& ERR, const SPARSEMATRIX& M, const Table<double, 2>& B,
                                Table<double, 2>& X) {
    solve({-2, 0, 8, 1}, ERR, M, B, X);
}

void SOLVESYSTEMEQUATIONSYM(Integer<2>& ERR, const SPARSEMATRIX& M, const Table<double, 2>& B, Table<double, 2>& X) {
    solve({2, 1, 13, 0}, ERR, M, B, X);
}

}  // namespace SPARSEMATRIX_FCN
