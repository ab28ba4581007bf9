// Dense symmetric indefinite factorisation with complete pivoting (Bunch and Parlett).
#include <algorithm>
#include <cmath>

#include "linalg/ldlt/ldlt.h"

namespace LDLT {
namespace {

constexpr double ALPHA = 0.6403882032022076;  // (1 + sqrt(17)) / 8 bounds the growth of both kinds of pivot alike
constexpr int SWEEPS = 6;

double power_of_two(double x) { return std::ldexp(1.0, -std::ilogb(x) / 2); }

// Brings the largest entry of every row but the scaled ones near 1. Powers of 2 leave the digits as they are.
void equilibrate(std::vector<double>& A, const std::vector<std::int8_t>& scaled, std::vector<double>& scale,
                 std::size_t n) {
    scale.assign(n, 1);
    for (int sweep = 0; sweep < SWEEPS; ++sweep) {
        std::vector<double> factor(n, 1);
        for (std::size_t j = 0; j < n; ++j) {
            double largest = 0;
            for (std::size_t i = 0; i < n && !scaled[j]; ++i) largest = std::max(largest, std::fabs(A[j * n + i]));
            if (largest > 0) factor[j] = power_of_two(largest);
        }
        for (std::size_t j = 0; j < n; ++j) {
            for (std::size_t i = 0; i < n; ++i) A[j * n + i] *= factor[i] * factor[j];
            scale[j] *= factor[j];
        }
    }
}

struct Largest {
    double diagonal = 0, other = 0;
    std::size_t d = 0, i = 0, j = 0;  // where
};

Largest find_largest(const Dense& D, std::size_t from, const std::vector<std::int8_t>& late, bool all) {
    const std::size_t n = D.n;
    Largest found;
    for (std::size_t j = from; j < n; ++j) {
        if (!all && late[D.row[j]]) continue;
        const double* column = &D.L[j * n];
        if (std::fabs(column[j]) > found.diagonal) {
            found.diagonal = std::fabs(column[j]);
            found.d = j;
        }
        for (std::size_t i = j + 1; i < n; ++i) {
            if (std::fabs(column[i]) <= found.other || (!all && late[D.row[i]])) continue;
            found.other = std::fabs(column[i]);
            found.i = i;
            found.j = j;
        }
    }
    return found;
}

// (u, v) becomes the solution of the 2 x 2 block that stands at row p.
void divide_pair(const double* F, std::size_t n, std::size_t p, double& u, double& v) {
    // Divided by the off-diagonal first: the determinant of a wide block could leave the range of numbers.
    const double s = F[p * n + p + 1], a = F[p * n + p] / s, b = F[(p + 1) * n + p + 1] / s;
    const double t = s * (a * b - 1), w = (b * u - v) / t;
    v = (a * v - u) / t;
    u = w;
}

}  // namespace

void exchange(double* F, std::size_t n, std::size_t p, std::size_t q) {
    if (p == q) return;
    for (std::size_t j = 0; j < n; ++j) std::swap(F[j * n + p], F[j * n + q]);
    std::swap_ranges(F + p * n, F + (p + 1) * n, F + q * n);
}

// Both triangles of what remains are kept, so that a column can be searched and exchanged as it lies.
void eliminate(double* F, std::size_t n, std::size_t p) {
    double* L = F + p * n;
    const double inverse = 1 / L[p];
    for (std::size_t j = p + 1; j < n; ++j) {
        const double w = F[j * n + p] * inverse;
        if (w == 0) continue;
        double* column = F + j * n;
        for (std::size_t i = p + 1; i < n; ++i) column[i] -= L[i] * w;
    }
    for (std::size_t i = p + 1; i < n; ++i) L[i] *= inverse;
}

void eliminate_pair(double* F, std::size_t n, std::size_t p) {
    double *L0 = F + p * n, *L1 = L0 + n;
    for (std::size_t j = p + 2; j < n; ++j) {
        double u = F[j * n + p], v = F[j * n + p + 1];
        if (u == 0 && v == 0) continue;
        divide_pair(F, n, p, u, v);
        double* column = F + j * n;
        for (std::size_t i = p + 2; i < n; ++i) column[i] -= L0[i] * u + L1[i] * v;
    }
    for (std::size_t i = p + 2; i < n; ++i) divide_pair(F, n, p, L0[i], L1[i]);
}

Dense factorise_dense(std::vector<double> A, const std::vector<std::int8_t>& late,
                      const std::vector<std::int8_t>& scaled) {
    Dense D;
    const std::size_t n = late.size();
    D.n = static_cast<std::int32_t>(n);
    D.L = std::move(A);
    equilibrate(D.L, scaled, D.scale, n);
    D.row.resize(n);
    D.block.assign(n, Pivot::null);
    for (std::size_t i = 0; i < n; ++i) D.row[i] = static_cast<std::int32_t>(i);

    const auto swap_rows = [&](std::size_t p, std::size_t q) {
        exchange(D.L.data(), n, p, q);
        std::swap(D.row[p], D.row[q]);
    };
    bool all = false;
    for (std::size_t p = 0; p < n;) {
        const Largest largest = find_largest(D, p, late, all);
        if (std::max(largest.diagonal, largest.other) < NULLBORDER) {
            if (all) break;
            all = true;
        } else if (largest.diagonal >= ALPHA * largest.other) {
            swap_rows(p, largest.d);
            D.block[p] = Pivot::single;
            eliminate(D.L.data(), n, p);
            p += 1;
        } else {
            swap_rows(p, largest.j);
            swap_rows(p + 1, largest.i);
            D.block[p] = Pivot::first;
            D.block[p + 1] = Pivot::second;
            eliminate_pair(D.L.data(), n, p);
            p += 2;
        }
    }
    return D;
}

void forward_pivots(const double* L, std::size_t n, const std::vector<Pivot>& block, double* X) {
    for (std::size_t p = 0; p < block.size(); ++p) {
        if (block[p] == Pivot::null) continue;
        for (std::size_t i = p + (block[p] == Pivot::first ? 2 : 1); i < n; ++i)
            for (std::size_t q = 0; q < LANES; ++q) X[i * LANES + q] -= L[p * n + i] * X[p * LANES + q];
    }
}

void divide_pivots(const double* L, std::size_t n, const std::vector<Pivot>& block, double* X) {
    for (std::size_t p = 0; p < block.size(); ++p)
        for (std::size_t q = 0; q < LANES; ++q) {
            double& x = X[p * LANES + q];
            if (block[p] == Pivot::null) x = 0;
            if (block[p] == Pivot::single) x /= L[p * n + p];
            if (block[p] == Pivot::first) divide_pair(L, n, p, x, X[(p + 1) * LANES + q]);
        }
}

void backward_pivots(const double* L, std::size_t n, const std::vector<Pivot>& block, double* X) {
    for (std::size_t p = block.size(); p-- > 0;) {
        if (block[p] == Pivot::null) continue;
        for (std::size_t i = p + (block[p] == Pivot::first ? 2 : 1); i < n; ++i)
            for (std::size_t q = 0; q < LANES; ++q) X[p * LANES + q] -= L[p * n + i] * X[i * LANES + q];
    }
}

void solve_dense(const Dense& D, double* X) {
    const std::size_t n = static_cast<std::size_t>(D.n);
    std::vector<double> x(n * LANES);
    for (std::size_t p = 0; p < n; ++p)
        for (std::size_t q = 0; q < LANES; ++q) x[p * LANES + q] = X[D.row[p] * LANES + q] * D.scale[D.row[p]];
    forward_pivots(D.L.data(), n, D.block, x.data());
    divide_pivots(D.L.data(), n, D.block, x.data());
    backward_pivots(D.L.data(), n, D.block, x.data());
    for (std::size_t p = 0; p < n; ++p)
        for (std::size_t q = 0; q < LANES; ++q) X[D.row[p] * LANES + q] = x[p * LANES + q] * D.scale[D.row[p]];
}

}  // namespace LDLT
