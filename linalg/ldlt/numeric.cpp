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

void forward(const Columns& c, double* X, Instructions instructions) {
#ifdef VQ_KERNEL_AVX2
    if (instructions == Instructions::avx2) return avx2::forward(c, X);
#endif
    (void)instructions;
    baseline::forward(c, X);
}

void backward(const Columns& c, double* X, Instructions instructions) {
#ifdef VQ_KERNEL_AVX2
    if (instructions == Instructions::avx2) return avx2::backward(c, X);
#endif
    (void)instructions;
    baseline::backward(c, X);
}

Columns columns(const Symbolic& S, const Factor& F, std::int32_t s) {
    const std::int32_t k = S.first[s + 1] - S.first[s];
    const std::int32_t r = static_cast<std::int32_t>(S.rows_start[s + 1] - S.rows_start[s]);
    return {F.panels.get() + S.panel[s], panel_rows(k, r), k, r};
}

// The rows of a supernode out of X by positions, and the first `count` of them back.
void gather(const Symbolic& S, std::int32_t s, const Columns& c, const double* X, double* own) {
    const std::int32_t* below = S.rows.get() + S.rows_start[s];
    std::memcpy(own, X + static_cast<std::ptrdiff_t>(S.first[s]) * LANES, sizeof(double) * LANES * c.k);
    for (std::int32_t i = 0; i < c.r; ++i)
        std::memcpy(own + (c.k + i) * LANES, X + static_cast<std::ptrdiff_t>(below[i]) * LANES, sizeof(double) * LANES);
}

void scatter(const Symbolic& S, std::int32_t s, const Columns& c, const double* own, std::int32_t count, double* X) {
    const std::int32_t* below = S.rows.get() + S.rows_start[s];
    std::memcpy(X + static_cast<std::ptrdiff_t>(S.first[s]) * LANES, own, sizeof(double) * LANES * c.k);
    for (std::int32_t i = c.k; i < count; ++i)
        std::memcpy(X + static_cast<std::ptrdiff_t>(below[i - c.k]) * LANES, own + i * LANES, sizeof(double) * LANES);
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

void subtract_product(const Matrix& A, const double* X, double* R, double* size, Instructions instructions) {
#ifdef VQ_KERNEL_AVX2
    if (instructions == Instructions::avx2) return avx2::subtract_product(A.n, A.a, A.ia, A.ja, X, R, size);
#endif
    (void)instructions;
    baseline::subtract_product(A.n, A.a, A.ia, A.ja, X, R, size);
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
    std::vector<double> gathered(static_cast<std::size_t>(S.most_rows) * LANES);
    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        const Columns c = columns(S, F, s);
        gather(S, s, c, X, gathered.data());
        forward(c, gathered.data(), instructions);
        scatter(S, s, c, gathered.data(), c.k + c.r, X);
    }
}

void backward(const Symbolic& S, const Factor& F, double* X, Instructions instructions) {
    std::vector<double> gathered(static_cast<std::size_t>(S.most_rows) * LANES);
    for (std::int32_t s = S.supernodes - 1; s >= 0; --s) {
        const Columns c = columns(S, F, s);
        gather(S, s, c, X, gathered.data());
        backward(c, gathered.data(), instructions);
        scatter(S, s, c, gathered.data(), c.k, X);
    }
}

}  // namespace LDLT
