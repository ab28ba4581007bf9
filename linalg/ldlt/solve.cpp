// One solution with the finished factors, and its correction.
#include <algorithm>
#include <cfloat>
#include <cmath>

#include "linalg/ldlt/ldlt.h"

namespace LDLT {
namespace {

std::int64_t lane(std::int64_t row) { return row * LANES; }

// y -= factor x, for all lanes.
void subtract(double* y, double factor, const double* x) {
    for (int q = 0; q < LANES; ++q) y[q] -= factor * x[q];
}

}  // namespace

void solve(const System& system, const double* B, double* X, double* work, const Kernel& kernel) {
    const Classes& c = system.classes;
    const Symbolic& S = system.symbolic;
    const Border& border = system.border;
    const std::int64_t primaries = static_cast<std::int64_t>(c.primary.size());
    const std::int64_t n = static_cast<std::int64_t>(c.kind.size());
    const std::int64_t unknowns = static_cast<std::int64_t>(border.place.size());
    const std::int64_t grounded = S.nodes - S.pivots;

    // loads, those of the ties condensed into the rest; X holds them until the end
    std::copy_n(B, lane(n), X);
    for (const Tie& t : c.ties) {
        double hung[LANES], tie[LANES];
        for (int q = 0; q < LANES; ++q) {
            tie[q] = B[lane(t.tie) + q] / t.s;
            hung[q] = (B[lane(t.hung) + q] - t.d * tie[q]) / t.s;
        }
        for (std::int32_t at = c.rows.start[c.slim[t.tie]]; at < c.rows.start[c.slim[t.tie] + 1]; ++at)
            if (c.rows.column[at] != t.hung) subtract(X + lane(c.rows.column[at]), c.rows.value[at], hung);
        for (std::int32_t at = c.rows.start[c.slim[t.hung]]; at < c.rows.start[c.slim[t.hung] + 1]; ++at)
            if (c.rows.column[at] != t.tie) subtract(X + lane(c.rows.column[at]), c.rows.value[at], tie);
    }

    for (std::int32_t p = 0; p < S.nodes; ++p) std::copy_n(X + lane(c.core[S.node[p]]), LANES, work + lane(p));
    forward(S, system.factor, work, kernel);

    // the border's unknowns
    std::vector<double> z(lane(primaries)), dense(lane(border.dense.n));
    for (std::int64_t k = 0; k < primaries; ++k) std::copy_n(X + lane(c.primary[k]), LANES, &z[lane(k)]);
    for (int q = 0; q < LANES && primaries > 0; ++q) solve_transposed(border, &z[q], LANES);
    for (std::int64_t k = 0; k < primaries; ++k) {
        const double* y = border.Y.get() + k / LANES * lane(S.nodes) + k % LANES;
        double* load = &z[lane(k)];
        for (std::int32_t p = 0; p < S.pivots; ++p)
            subtract(load, y[lane(p)] * system.factor.inverse[p], work + lane(p));
    }
    const auto load_of = [&](std::int64_t k) {
        return k < grounded               ? work + lane(S.pivots + k)
               : k < grounded + primaries ? &z[lane(k - grounded)]
                                          : X + lane(c.second[k - grounded - primaries]);
    };
    for (std::int64_t k = 0; k < unknowns; ++k)
        if (border.place[k] >= 0) std::copy_n(load_of(k), LANES, &dense[lane(border.place[k])]);
    if (border.dense.n > 0) solve_dense(border.dense, dense.data());
    for (std::int64_t k = 0; k < unknowns; ++k) {
        if (border.place[k] >= 0)
            std::copy_n(&dense[lane(border.place[k])], LANES, load_of(k));
        else
            std::fill_n(load_of(k), LANES, 0.0);
    }

    for (std::int32_t p = 0; p < S.pivots; ++p) {
        double* w = work + lane(p);
        for (std::int64_t k = 0; k < primaries; ++k)
            subtract(w, border.Y[k / LANES * lane(S.nodes) + lane(p) + k % LANES], &z[lane(k)]);
        for (int q = 0; q < LANES; ++q) w[q] *= system.factor.inverse[p];
    }
    backward(S, system.factor, work, kernel);

    for (int q = 0; q < LANES && primaries > 0; ++q) solve_upper(border, &z[q], LANES);
    for (std::int64_t k = 0; k < primaries; ++k) std::copy_n(&z[lane(k)], LANES, X + lane(c.primary[k]));
    for (std::int32_t p = 0; p < S.nodes; ++p) std::copy_n(work + lane(p), LANES, X + lane(c.core[S.node[p]]));
    for (std::int64_t i = 0; i < n; ++i)
        if (c.kind[i] == Kind::empty) std::fill_n(X + lane(i), LANES, 0.0);
    // x_hung from its tie's row, the tie from the hung node's row
    for (const Tie& t : c.ties) {
        double *hung = X + lane(t.hung), *tie = X + lane(t.tie);
        std::copy_n(B + lane(t.tie), LANES, hung);
        std::copy_n(B + lane(t.hung), LANES, tie);
        for (std::int32_t at = c.rows.start[c.slim[t.tie]]; at < c.rows.start[c.slim[t.tie] + 1]; ++at)
            if (c.rows.column[at] != t.hung) subtract(hung, c.rows.value[at], X + lane(c.rows.column[at]));
        for (int q = 0; q < LANES; ++q) hung[q] /= t.s;
        for (std::int32_t at = c.rows.start[c.slim[t.hung]]; at < c.rows.start[c.slim[t.hung] + 1]; ++at)
            if (c.rows.column[at] != t.tie) subtract(tie, c.rows.value[at], X + lane(c.rows.column[at]));
        subtract(tie, t.d, hung);
        for (int q = 0; q < LANES; ++q) tie[q] /= t.s;
    }
}

}  // namespace LDLT
