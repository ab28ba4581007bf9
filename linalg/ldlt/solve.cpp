// One solution with the finished factors, and its correction.
#include <algorithm>
#include <cfloat>
#include <cmath>

#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

// y -= factor x, for all lanes.
void subtract(double* y, double factor, const double* x) {
    for (int q = 0; q < LANES; ++q) y[q] -= factor * x[q];
}

// The border's front on the loads of its unknowns, which become the solution; 0 where one is dead.
template <class Load>
void solve_border(const Border& border, Load load_of) {
    const std::int64_t unknowns = static_cast<std::int64_t>(border.place.size());
    const std::vector<std::int32_t>& rows = border.front.rows;
    std::vector<double> places(lanes_of(static_cast<std::int64_t>(rows.size()))), x(places.size());
    for (std::int64_t k = 0; k < unknowns; ++k)
        if (border.place[k] >= 0) std::copy_n(load_of(k), LANES, &places[lanes_of(border.place[k])]);
    for (std::size_t p = 0; p < rows.size(); ++p)
        for (int q = 0; q < LANES; ++q) x[p * LANES + q] = places[lanes_of(rows[p]) + q] * border.scale[rows[p]];
    forward(border.front, x.data());
    backward(border.front, x.data());
    for (std::size_t p = 0; p < rows.size(); ++p)
        for (int q = 0; q < LANES; ++q) places[lanes_of(rows[p]) + q] = x[p * LANES + q] * border.scale[rows[p]];
    for (std::int64_t k = 0; k < unknowns; ++k) {
        if (border.place[k] >= 0)
            std::copy_n(&places[lanes_of(border.place[k])], LANES, load_of(k));
        else
            std::fill_n(load_of(k), LANES, 0.0);
    }
}

}  // namespace

void solve(const System& system, const double* B, double* X, double* work, const Kernel& kernel) {
    const Classes& c = system.classes;
    const Symbolic& S = system.symbolic;
    const Border& border = system.border;
    const std::int64_t primaries = static_cast<std::int64_t>(c.primary.size());
    const std::int64_t n = static_cast<std::int64_t>(c.kind.size());
    const std::int64_t grounded = S.nodes - S.pivots;

    // loads, those of the ties condensed into the rest; X holds them until the end
    std::copy_n(B, lanes_of(n), X);
    for (const Tie& t : c.ties) {
        double hung[LANES], tie[LANES];
        for (int q = 0; q < LANES; ++q) {
            tie[q] = B[lanes_of(t.tie) + q] / t.s;
            hung[q] = (B[lanes_of(t.hung) + q] - t.d * tie[q]) / t.s;
        }
        for (std::int32_t at = c.rows.start[c.row[t.tie]]; at < c.rows.start[c.row[t.tie] + 1]; ++at)
            if (c.rows.column[at] != t.hung) subtract(X + lanes_of(c.rows.column[at]), c.rows.value[at], hung);
        for (std::int32_t at = c.rows.start[c.row[t.hung]]; at < c.rows.start[c.row[t.hung] + 1]; ++at)
            if (c.rows.column[at] != t.tie) subtract(X + lanes_of(c.rows.column[at]), c.rows.value[at], tie);
    }

    for (std::int32_t p = 0; p < S.nodes; ++p) std::copy_n(X + lanes_of(c.core[S.node[p]]), LANES, work + lanes_of(p));
    forward(S, system.factor, work, kernel);

    // the border's unknowns
    std::vector<double> z(lanes_of(primaries));
    for (std::int64_t k = 0; k < primaries; ++k) std::copy_n(X + lanes_of(c.primary[k]), LANES, &z[lanes_of(k)]);
    for (int q = 0; q < LANES && primaries > 0; ++q) solve_transposed(border, &z[q], LANES);
    for (std::int64_t k = 0; k < primaries; ++k) {
        const double* y = border.Y.get() + k / LANES * lanes_of(S.nodes) + k % LANES;
        double* load = &z[lanes_of(k)];
        for (std::int32_t p = 0; p < S.pivots; ++p)
            subtract(load, y[lanes_of(p)] * system.factor.inverse[p], work + lanes_of(p));
    }
    const auto load_of = [&](std::int64_t k) {
        return k < grounded               ? work + lanes_of(S.pivots + k)
               : k < grounded + primaries ? &z[lanes_of(k - grounded)]
                                          : X + lanes_of(c.second[k - grounded - primaries]);
    };
    solve_border(border, load_of);

    for (std::int32_t p = 0; p < S.pivots; ++p) {
        double* w = work + lanes_of(p);
        for (std::int64_t k = 0; k < primaries; ++k)
            subtract(w, border.Y[k / LANES * lanes_of(S.nodes) + lanes_of(p) + k % LANES], &z[lanes_of(k)]);
        for (int q = 0; q < LANES; ++q) w[q] *= system.factor.inverse[p];
    }
    backward(S, system.factor, work, kernel);

    for (int q = 0; q < LANES && primaries > 0; ++q) solve_upper(border, &z[q], LANES);
    for (std::int64_t k = 0; k < primaries; ++k) std::copy_n(&z[lanes_of(k)], LANES, X + lanes_of(c.primary[k]));
    for (std::int32_t p = 0; p < S.nodes; ++p) std::copy_n(work + lanes_of(p), LANES, X + lanes_of(c.core[S.node[p]]));
    for (std::int64_t i = 0; i < n; ++i)
        if (c.kind[i] == Kind::empty) std::fill_n(X + lanes_of(i), LANES, 0.0);
    // x_hung from its tie's row, the tie from the hung node's row
    for (const Tie& t : c.ties) {
        double *hung = X + lanes_of(t.hung), *tie = X + lanes_of(t.tie);
        std::copy_n(B + lanes_of(t.tie), LANES, hung);
        std::copy_n(B + lanes_of(t.hung), LANES, tie);
        for (std::int32_t at = c.rows.start[c.row[t.tie]]; at < c.rows.start[c.row[t.tie] + 1]; ++at)
            if (c.rows.column[at] != t.hung) subtract(hung, c.rows.value[at], X + lanes_of(c.rows.column[at]));
        for (int q = 0; q < LANES; ++q) hung[q] /= t.s;
        for (std::int32_t at = c.rows.start[c.row[t.hung]]; at < c.rows.start[c.row[t.hung] + 1]; ++at)
            if (c.rows.column[at] != t.tie) subtract(tie, c.rows.value[at], X + lanes_of(c.rows.column[at]));
        subtract(tie, t.d, hung);
        for (int q = 0; q < LANES; ++q) tie[q] /= t.s;
    }
}

}  // namespace LDLT
