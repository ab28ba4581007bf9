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

}  // namespace reference
