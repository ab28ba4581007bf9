// The pattern of the global matrix from the element table.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>

#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

namespace {

// The pairs of different nodes of element e, the smaller number as the row; how many there are.
int pairs_of(const VARIABLES_T& VARS, std::int32_t e, Integer<6>& row, Integer<6>& column) {
    const int n = VQ_DATA_MOD::is_triangle(VARS, e) ? 3 : 4;
    Integer<4> node{};
    for (int i = 1; i <= n; ++i) node(i) = VARS.ELEMNODES(e, i);
    int pairs = 0;
    for (int i = 1; i <= n; ++i) {
        for (int j = i + 1; j <= n; ++j) {
            row(++pairs) = std::min(node(i), node(j));
            column(pairs) = std::max(node(i), node(j));
        }
    }
    return pairs;
}

}  // namespace

void CREATESTRUCTUTREOFSYSTEM(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS) {
    const std::int32_t N = VARS.NNODES;

    // Rows with all their duplicates: counts, starts, then a scatter.
    Table<std::int64_t, 1> IA0;
    IA0.allocate(std::int64_t{N} + 1);
    for (std::int32_t i = 1; i <= N; ++i) IA0(i) = 1;
    Integer<6> row, column;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const int pairs = pairs_of(VARS, e, row, column);
        for (int p = 1; p <= pairs; ++p) ++IA0(row(p));
    }
    std::int64_t M = 0;
    for (std::int64_t i = 1; i <= N + std::int64_t{1}; ++i) {
        const std::int64_t count = i <= N ? IA0(i) : 0;
        IA0(i) = M + 1;
        M += count;
    }
    Table<std::int32_t, 1> JA0, filled;
    JA0.allocate_uncleared(M);
    filled.allocate(N);
    for (std::int32_t i = 1; i <= N; ++i) JA0(IA0(i) + filled(i)++) = i;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const int pairs = pairs_of(VARS, e, row, column);
        for (int p = 1; p <= pairs; ++p) JA0(IA0(row(p)) + filled(row(p))++) = column(p);
    }

    // Each row sorted, its distinct columns moved to its front and counted.
    std::int64_t NNZ = 0;
    for (std::int32_t i = 1; i <= N; ++i) {
        std::int32_t* first = &JA0(IA0(i));
        std::int32_t* last = first + filled(i);
        std::sort(first, last);
        filled(i) = static_cast<std::int32_t>(std::unique(first, last) - first);
        NNZ += filled(i);
    }
    if (NNZ >= std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();

    SPARSEMATRIX& KG = SYSVARS.KG;
    KG.N = N;
    KG.IA.allocate_uncleared(std::int64_t{N} + 1);
    KG.JA.allocate_uncleared(NNZ);
    KG.A.allocate(NNZ);
    KG.IA(1) = 1;
    for (std::int32_t i = 1; i <= N; ++i) {
        for (std::int32_t k = 0; k < filled(i); ++k) KG.JA(KG.IA(i) + k) = JA0(IA0(i) + k);
        KG.IA(i + std::int64_t{1}) = KG.IA(i) + filled(i);
    }

    SYSVARS.RIGHTSIDE.allocate(N, 3);
    SYSVARS.CONSTRAINT.allocate(N, 3);
    SYSVARS.RIGHTSIDEQ.allocate(N, 1);
}

}  // namespace VQ_SYSTEM_MOD
