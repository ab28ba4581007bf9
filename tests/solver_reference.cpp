#include "tests/solver_reference.h"

#include <algorithm>
#include <cmath>

namespace reference {

using meshes::System;

namespace {

// Every entry of the whole symmetric matrix.
template <class Use>
void for_entries(const System& s, Use use) {
    for (std::int32_t i = 1; i <= s.M.N; ++i)
        for (std::int32_t q = s.M.IA(i); q < s.M.IA(i + 1); ++q) {
            const std::int32_t j = s.M.JA(q);
            use(i, j, static_cast<long double>(s.M.A(q)));
            if (j != i) use(j, i, static_cast<long double>(s.M.A(q)));
        }
}

using Rows = std::vector<std::vector<long double>>;

// Rows [x | inverse], counted from 0, by Gauss-Jordan elimination with complete pivoting, x then refined by the
// inverse: it is accurate in its small unknowns as well.
Rows solution_and_inverse(const System& s) {
    const std::size_t n = s.M.N, columns = s.B.extent(2);
    Rows W(n, std::vector<long double>(n + columns + n, 0)), X(n, std::vector<long double>(columns + n, 0));
    for_entries(s, [&](std::int32_t i, std::int32_t j, long double a) { W[i - 1][j - 1] = a; });
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t k = 0; k < columns; ++k) W[i][n + k] = s.B(i + 1, k + 1);
        W[i][n + columns + i] = 1;
    }
    std::vector<std::size_t> row_of(n, n);
    std::vector<bool> used(n, false);
    for (std::size_t step = 0; step < n; ++step) {
        std::size_t p = 0, q = 0;
        long double pivot = 0;
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n && !used[i]; ++j)
                if (row_of[j] == n && std::fabs(W[i][j]) > std::fabs(pivot)) pivot = W[p = i][q = j];
        if (pivot == 0) break;
        used[p] = true;
        row_of[q] = p;
        for (long double& w : W[p]) w /= pivot;
        for (std::size_t i = 0; i < n; ++i) {
            const long double f = i == p ? 0 : W[i][q];
            for (std::size_t j = 0; f != 0 && j < W[i].size(); ++j) W[i][j] -= f * W[p][j];
        }
    }
    for (std::size_t j = 0; j < n; ++j)
        if (row_of[j] < n)
            std::copy_n(W[row_of[j]].begin() + static_cast<std::ptrdiff_t>(n), columns + n, X[j].begin());
    for (std::size_t k = 0; k < 3 * columns; ++k) {  // three steps for each column
        std::vector<long double> r(n);
        for (std::size_t i = 0; i < n; ++i) r[i] = s.B(i + 1, k % columns + 1);
        for_entries(s, [&](std::int32_t i, std::int32_t j, long double a) { r[i - 1] -= a * X[j - 1][k % columns]; });
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) X[i][k % columns] += X[i][columns + j] * r[j];
    }
    return X;
}

}  // namespace

System system_of(std::int32_t n, Entries entries, const std::vector<std::vector<double>>& columns) {
    for (std::int32_t i = 1; i <= n; ++i) entries.insert({{i, i}, 0.0});
    System s;
    s.M.N = n;
    s.M.IA.allocate(n + 1);
    s.M.JA.allocate(entries.size());
    s.M.A.allocate(entries.size());
    std::int32_t q = 0;
    for (const auto& [place, value] : entries) {
        s.M.JA(++q) = place.second;
        s.M.A(q) = value;
        if (place.first == place.second) s.M.IA(place.first) = q;
    }
    s.M.IA(n + 1) = q + 1;
    s.B.allocate(n, columns.size());
    for (std::size_t k = 0; k < columns.size(); ++k) std::copy_n(columns[k].begin(), n, s.B.column(k + 1));
    return s;
}

Entries entries_of(const System& s) {
    Entries entries;
    for (std::int32_t i = 1; i <= s.M.N; ++i)
        for (std::int32_t q = s.M.IA(i); q < s.M.IA(i + 1); ++q) entries[{i, s.M.JA(q)}] = s.M.A(q);
    return entries;
}

std::vector<long double> residuals(const System& s, const Columns& X) {
    const std::size_t n = static_cast<std::size_t>(s.M.N) + 1;
    std::vector<long double> largest(n, 0), scale(n, 0), worst(n, 0);
    for (int k = 1; k <= X.extent(2); ++k)
        for (std::int32_t i = 1; i <= s.M.N; ++i) {
            largest[i] = std::max<long double>(largest[i], std::fabs(X(i, k)));
            scale[i] = std::max<long double>(scale[i], std::fabs(s.B(i, k)));
        }
    const long double rounding = 1e-13L * *std::max_element(largest.begin(), largest.end());
    for_entries(s, [&](std::int32_t i, std::int32_t j, long double a) {
        scale[i] += std::fabs(a) * std::max(largest[j], rounding);
    });
    for (int k = 1; k <= X.extent(2); ++k) {
        std::vector<long double> r(n, 0);
        for (std::int32_t i = 1; i <= s.M.N; ++i) r[i] = s.B(i, k);
        for_entries(s, [&](std::int32_t i, std::int32_t j, long double a) { r[i] -= a * X(j, k); });
        for (std::int32_t i = 1; i <= s.M.N; ++i) {
            const long double relative = r[i] == 0 ? 0 : std::fabs(r[i]) / scale[i];
            worst[i] = std::isnan(relative) ? INFINITY : std::max(worst[i], relative);
        }
    }
    return worst;
}

long double error(const System& s, const Columns& X) {
    const Rows found = solution_and_inverse(s);
    const std::size_t n = s.M.N, columns = s.B.extent(2);
    long double worst = 0;
    for (std::size_t k = 0; k < columns; ++k) {
        std::vector<long double> size(n, 0);
        for (std::size_t i = 0; i < n; ++i) size[i] = std::fabs(s.B(i + 1, k + 1));
        for_entries(
            s, [&](std::int32_t i, std::int32_t j, long double a) { size[i - 1] += std::fabs(a * found[j - 1][k]); });
        for (std::size_t i = 0; i < n; ++i) {
            long double allowed = 0;
            for (std::size_t j = 0; j < n; ++j) allowed += std::fabs(found[i][columns + j]) * size[j] * 0x1p-52L;
            const long double off = std::fabs(X(i + 1, k + 1) - found[i][k]);
            worst = std::isnan(off) ? INFINITY : std::max(worst, off == 0 ? 0 : off / allowed);
        }
    }
    return worst;
}

}  // namespace reference
