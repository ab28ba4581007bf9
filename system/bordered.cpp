#include "system/bordered.h"

#include <algorithm>
#include <limits>
#include <new>

#include "linalg/ondrel64.h"

namespace VQ_SYSTEM_MOD {

void border(SYSTEM_VARIABLES_T& SYSVARS, int columns, std::int32_t further, const Table<std::int32_t, 1>& reserve,
            SPARSEMATRIX& bordered) {
    const SPARSEMATRIX& KG = SYSVARS.KG;
    const std::int32_t NNODES = KG.N;
    const std::int64_t N = std::int64_t{NNODES} + columns + further;
    constexpr std::int64_t MAXIMUM = std::numeric_limits<std::int32_t>::max() - 1;
    std::int64_t NNZ = std::int64_t{KG.IA(NNODES + 1) - 1} + std::int64_t{columns} * NNODES + (N - NNODES);
    for (std::int32_t i = 1; reserve.allocated() && i <= NNODES; ++i) NNZ += reserve(i);
    if (N > MAXIMUM || NNZ > MAXIMUM) throw std::bad_alloc();

    bordered.N = static_cast<std::int32_t>(N);
    bordered.memory = &SYSVARS.memory;
    bordered.IA.allocate_uncleared(N + 1);
    bordered.JA.allocate_uncleared(NNZ);
    bordered.A.allocate_uncleared(NNZ);
    std::int32_t q = 1;  // next free position
    for (std::int32_t i = 1; i <= NNODES; ++i) {
        bordered.IA(i) = q;
        for (std::int32_t k = KG.IA(i); k < KG.IA(i + 1); ++k, ++q) {
            bordered.JA(q) = KG.JA(k);
            bordered.A(q) = KG.A(k);
        }
        for (int k = 1; k <= columns; ++k, ++q) {
            bordered.JA(q) = NNODES + k;
            bordered.A(q) = SYSVARS.CONSTRAINT(i, k);
        }
        if (reserve.allocated()) q += reserve(i);
    }
    for (std::int32_t i = NNODES + 1; i <= bordered.N; ++i, ++q) {
        bordered.IA(i) = q;
        bordered.JA(q) = i;
        bordered.A(q) = 0.0;
    }
    bordered.IA(bordered.N + 1) = q;
}

bool solve_bordered(SPARSEMATRIX& bordered, const Table<double, 2>& L, std::int32_t NNODES, Table<double, 2>& FIELD) {
    Table<double, 2> X;
    X.allocate_uncleared(L.extent(1), L.extent(2));
    Integer<2> ERR;
    SPARSEMATRIX_FCN::SOLVESYSTEMEQUATIONSYM_NPD(ERR, bordered, L, X);
    if (ERR(1) == OD_OUT_OF_MEMORY) throw std::bad_alloc();
    if (ERR(1) != 0 || ERR(2) != 0) return false;
    RELEASESPARSEMATRIX(bordered);
    FIELD.allocate_uncleared(NNODES, L.extent(2));
    for (std::int32_t k = 1; k <= L.extent(2); ++k) std::copy_n(X.column(k), NNODES, FIELD.column(k));
    return true;
}

}  // namespace VQ_SYSTEM_MOD
