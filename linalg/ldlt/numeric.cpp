// Multifrontal elimination of the core.
#include <algorithm>
#include <cstring>

#include "linalg/ldlt/kernel.h"
#include "linalg/ldlt/ldlt.h"

namespace LDLT {
namespace {

Pivots eliminate(const Front& f, Instructions instructions) {
#ifdef VQ_KERNEL_AVX2
    if (instructions == Instructions::avx2) return avx2::eliminate(f);
#endif
    (void)instructions;
    return baseline::eliminate(f);
}

// Column j of the front, so that its row i, for i at or below j, is [i].
double* column(const Front& f, std::int32_t j) {
    return j < f.k ? f.panel + j * f.rows : f.update + static_cast<std::ptrdiff_t>(j - f.k) * padded(f.r) - f.k;
}

}  // namespace

Instructions best_instructions() {
#ifdef VQ_KERNEL_AVX2
    if (__builtin_cpu_supports("avx2")) return Instructions::avx2;
#endif
    return Instructions::baseline;
}

Factor factorise(const Classes& c, const Symbolic& S, Instructions instructions) {
    Factor F;
    F.panels = buffer<double>(S.panel[S.supernodes]);
    F.pivot.resize(S.pivots);
    F.inverse.resize(S.pivots);
    const Buffer<double> stack[2] = {buffer<double>(S.stack_size[0]), buffer<double>(S.stack_size[1])};
    std::vector<double> diagonal(S.pivots);
    for (std::int32_t p = 0; p < S.pivots; ++p) diagonal[p] = c.diagonal[S.node[p]];
    std::vector<std::int32_t> child(S.supernodes, -1), sibling(S.supernodes, -1);
    std::vector<std::int32_t> local(S.nodes), target;  // row of the front for each position; for each row of a child

    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        const std::int32_t first = S.first[s], k = S.first[s + 1] - first;
        const std::int32_t r = static_cast<std::int32_t>(S.rows_start[s + 1] - S.rows_start[s]);
        const std::int32_t* rows = S.rows.get() + S.rows_start[s];
        const Front f{F.panels.get() + S.panel[s],
                      panel_rows(k, r),
                      k,
                      r,
                      stack[S.stack[s]].get() + S.update[s],
                      diagonal.data() + first,
                      F.pivot.data() + first,
                      F.inverse.data() + first};
        for (std::int32_t i = 0; i < k; ++i) local[first + i] = i;
        for (std::int32_t i = 0; i < r; ++i) local[rows[i]] = k + i;

        // columns of the core's matrix
        std::memset(f.panel, 0, sizeof(double) * f.rows * k);
        std::memset(f.update, 0, sizeof(double) * padded(r) * r);
        for (std::int32_t j = 0; j < k; ++j) {
            const std::int32_t v = S.node[first + j];
            double* into = column(f, j);
            into[j] = c.diagonal[v];
            for (std::int32_t at = c.graph.start[v]; at < c.graph.start[v + 1]; ++at) {
                const std::int32_t q = S.position[c.graph.column[at]];
                if (q > first + j) into[local[q]] = c.graph.value[at];
            }
        }
        // update matrices of the children
        for (std::int32_t from = child[s]; from >= 0; from = sibling[from]) {
            const std::int32_t size = static_cast<std::int32_t>(S.rows_start[from + 1] - S.rows_start[from]);
            const std::int32_t* below = S.rows.get() + S.rows_start[from];
            const double* update = stack[S.stack[from]].get() + S.update[from];
            target.resize(size);
            for (std::int32_t i = 0; i < size; ++i) target[i] = local[below[i]];
            for (std::int32_t j = 0; j < size; ++j, update += padded(size)) {
                double* into = column(f, target[j]);
                for (std::int32_t i = j; i < size; ++i) into[target[i]] += update[i];
            }
        }

        const Pivots pivots = eliminate(f, instructions);
        if (pivots == Pivots::negative) {
            F.negative = true;
            return F;
        }
        if (pivots == Pivots::some_null)
            for (std::int32_t j = 0; j < k; ++j)
                if (F.inverse[first + j] == 0) F.null.push_back(S.node[first + j]);

        if (S.up[s] >= 0) {
            sibling[s] = child[S.up[s]];
            child[S.up[s]] = s;
            continue;
        }
        for (std::int32_t j = 0; j < r; ++j)
            for (std::int32_t i = j; i < r; ++i)
                F.remainder.push_back({rows[i] - S.pivots, rows[j] - S.pivots, f.update[j * padded(r) + i]});
    }
    return F;
}

void forward(const Symbolic& S, const Factor& F, double* X, Instructions instructions) {
    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        const std::int32_t k = S.first[s + 1] - S.first[s];
        const std::int32_t r = static_cast<std::int32_t>(S.rows_start[s + 1] - S.rows_start[s]);
        const double* panel = F.panels.get() + S.panel[s];
        const std::int32_t* below = S.rows.get() + S.rows_start[s];
        double* own = X + static_cast<std::ptrdiff_t>(LANES) * S.first[s];
#ifdef VQ_KERNEL_AVX2
        if (instructions == Instructions::avx2) {
            avx2::forward(panel, panel_rows(k, r), k, r, below, own, X);
            continue;
        }
#endif
        baseline::forward(panel, panel_rows(k, r), k, r, below, own, X);
    }
    (void)instructions;
}

void backward(const Symbolic& S, const Factor& F, double* X, Instructions instructions) {
    for (std::int32_t s = S.supernodes - 1; s >= 0; --s) {
        const std::int32_t k = S.first[s + 1] - S.first[s];
        const std::int32_t r = static_cast<std::int32_t>(S.rows_start[s + 1] - S.rows_start[s]);
        const double* panel = F.panels.get() + S.panel[s];
        const std::int32_t* below = S.rows.get() + S.rows_start[s];
        double* own = X + static_cast<std::ptrdiff_t>(LANES) * S.first[s];
#ifdef VQ_KERNEL_AVX2
        if (instructions == Instructions::avx2) {
            avx2::backward(panel, panel_rows(k, r), k, r, below, own, X);
            continue;
        }
#endif
        baseline::backward(panel, panel_rows(k, r), k, r, below, own, X);
    }
    (void)instructions;
}

}  // namespace LDLT
