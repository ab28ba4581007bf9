// A dense front of any symmetric matrix: threshold pivoting with blocks of 1 and 2 (Duff and Reid), and solutions with
// its pivots.
#include <utility>

#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

// (u, v) becomes the solution of the 2 x 2 block that stands at row p of columns of length n.
void divide_pair(const double* F, std::size_t n, std::size_t p, double& u, double& v) {
    // Divided by the off-diagonal first: the determinant of a wide block could leave the range of numbers.
    const double s = F[p * n + p + 1], a = F[p * n + p] / s, b = F[(p + 1) * n + p + 1] / s;
    const double t = s * (a * b - 1), w = (b * u - v) / t;
    v = (a * v - u) / t;
    u = w;
}

double magnitude(const OpenFront& f, std::size_t i, std::size_t j) { return std::fabs(f.F[j * f.n + i]); }

// Brings row and column j behind the finished ones.
void exchange(OpenFront& f, std::size_t done, std::size_t j) {
    if (done == j) return;
    double* F = f.F.data();
    for (std::size_t k = 0; k < f.n; ++k) std::swap(F[k * f.n + done], F[k * f.n + j]);
    std::swap_ranges(F + done * f.n, F + (done + 1) * f.n, F + j * f.n);
    std::swap(f.rows[done], f.rows[j]);
}

// Both triangles of what remains are kept, so that a column can be searched and exchanged as it lies.
void take_pivot(OpenFront& f, std::size_t j) {
    exchange(f, f.done, j);
    const std::size_t n = f.n, p = f.done;
    double *F = f.F.data(), *L = F + p * n;
    const double inverse = 1 / L[p];
    for (std::size_t k = p + 1; k < n; ++k) {
        const double w = F[k * n + p] * inverse;
        if (w == 0) continue;
        double* column = F + k * n;
        for (std::size_t i = p + 1; i < n; ++i) column[i] -= L[i] * w;
    }
    for (std::size_t i = p + 1; i < n; ++i) L[i] *= inverse;
    f.block.push_back(Pivot::single);
    f.done += 1;
}

void take_pair(OpenFront& f, std::size_t i, std::size_t j) {
    exchange(f, f.done, std::min(i, j));
    exchange(f, f.done + 1, std::max(i, j));
    const std::size_t n = f.n, p = f.done;
    double *F = f.F.data(), *L0 = F + p * n, *L1 = L0 + n;
    for (std::size_t k = p + 2; k < n; ++k) {
        double u = F[k * n + p], v = F[k * n + p + 1];
        if (u == 0 && v == 0) continue;
        divide_pair(F, n, p, u, v);
        double* column = F + k * n;
        for (std::size_t r = p + 2; r < n; ++r) column[r] -= L0[r] * u + L1[r] * v;
    }
    for (std::size_t r = p + 2; r < n; ++r) divide_pair(F, n, p, L0[r], L1[r]);
    f.block.insert(f.block.end(), {Pivot::first, Pivot::second});
    f.done += 2;
}

void take_null(OpenFront& f, std::size_t j) {
    exchange(f, f.done, j);
    f.block.push_back(Pivot::null);
    f.done += 1;
}

// The row, behind the finished ones and before `end`, of the largest entry of column j without its diagonal and row
// `but`; j where there is none but zeros.
std::size_t largest_beside(const OpenFront& f, std::size_t j, std::size_t but, std::size_t end) {
    std::size_t where = j;
    double largest = 0;
    for (std::size_t i = f.done; i < end; ++i)
        if (i != j && i != but && magnitude(f, i, j) > largest) {
            largest = magnitude(f, i, j);
            where = i;
        }
    return where;
}

// Its size, of the rows by which a pivot is judged.
double size_beside(const OpenFront& f, std::size_t j, std::size_t but) {
    const std::size_t i = largest_beside(f, j, but, f.judged);
    return i == j ? 0 : magnitude(f, i, j);
}

// One pivot at column j, or at j and the candidate that it is tied to most, if it is stable.
bool try_pivot(OpenFront& f, std::size_t j, double share) {
    const double beside = size_beside(f, j, j), d = magnitude(f, j, j);
    if (std::max(d, beside) < f.null) return false;
    if (d >= share * beside) {
        take_pivot(f, j);
        return true;
    }
    const std::size_t i = largest_beside(f, j, j, f.candidates);
    if (i == j) return false;
    const double s = magnitude(f, i, j), a = f.F[j * f.n + j] / s, b = f.F[i * f.n + i] / s;
    if (!(std::fabs(a * b - 1) >= share)) return false;  // its determinant is a difference that rounding could make
    const double u = size_beside(f, j, i), v = size_beside(f, i, j), t = s * std::fabs(a * b - 1);
    const bool stable = (std::fabs(b) * u + v) * share <= t && (std::fabs(a) * v + u) * share <= t;
    if (stable) take_pair(f, i, j);
    return stable;
}

// The pivot at column j if what it takes from other rows is bounded by the largest entry of the row that it is tied to
// most (Bunch and Kaufman), however long its column of L. A stiff part that hangs in weak material has such a pivot as
// its last one: small beside its neighbours, which the part's own stiffness has scaled, and no less exact.
bool try_small_pivot(OpenFront& f, std::size_t j, double share) {
    const std::size_t i = largest_beside(f, j, j, f.judged);
    const double beside = i == j ? 0 : magnitude(f, i, j), d = magnitude(f, j, j);
    if (std::max(d, beside) < f.null) return false;
    const double there = std::max(magnitude(f, i, i), size_beside(f, i, j));
    if (d * there < share * beside * beside) return false;
    take_pivot(f, j);
    return true;
}

// Takes pivots that pass the test until none does.
template <class Test>
void take_pivots(OpenFront& f, Test test, double share) {
    for (bool found = true; found;) {
        found = false;
        for (std::size_t j = f.done; j < f.candidates; ++j)
            if (test(f, j, share)) {
                found = true;
                j = std::max(j, f.done) - 1;
            }
    }
}

}  // namespace

// What passes the stricter test goes first: entries grow less, and fewer columns are delayed in the end.
void pivot_front(OpenFront& f, bool all) {
    for (const double share : PIVOTSHARES) take_pivots(f, try_pivot, share);
    take_pivots(f, try_small_pivot, PIVOTSHARES[0]);
    // Nothing that is still to come can make a pivot of a column that holds nothing but rounding; and where all columns
    // are here, none holds anything else once no pivot has passed.
    for (std::size_t j = f.done; j < f.candidates; ++j) {
        const std::size_t i = largest_beside(f, j, j, f.n);
        if (all || std::max(magnitude(f, j, j), magnitude(f, i, j)) < f.null) take_null(f, j);
    }
}

IndefiniteFront closed(OpenFront& f) {
    IndefiniteFront front;
    front.L.assign(f.F.begin(), f.F.begin() + static_cast<std::ptrdiff_t>(f.done * f.n));
    front.rows = std::move(f.rows);
    front.block = std::move(f.block);
    return front;
}

void forward(const IndefiniteFront& f, double* X) {
    const std::size_t n = f.rows.size();
    for (std::size_t p = 0; p < f.block.size(); ++p) {
        if (f.block[p] == Pivot::null) continue;
        for (std::size_t i = p + (f.block[p] == Pivot::first ? 2 : 1); i < n; ++i)
            for (std::size_t q = 0; q < LANES; ++q) X[i * LANES + q] -= f.L[p * n + i] * X[p * LANES + q];
    }
}

void backward(const IndefiniteFront& f, double* X) {
    const std::size_t n = f.rows.size();
    for (std::size_t p = 0; p < f.block.size(); ++p)
        for (std::size_t q = 0; q < LANES; ++q) {
            double& x = X[p * LANES + q];
            if (f.block[p] == Pivot::null) x = 0;
            if (f.block[p] == Pivot::single) x /= f.L[p * n + p];
            if (f.block[p] == Pivot::first) divide_pair(f.L.data(), n, p, x, X[(p + 1) * LANES + q]);
        }
    for (std::size_t p = f.block.size(); p-- > 0;) {
        if (f.block[p] == Pivot::null) continue;
        for (std::size_t i = p + (f.block[p] == Pivot::first ? 2 : 1); i < n; ++i)
            for (std::size_t q = 0; q < LANES; ++q) X[p * LANES + q] -= f.L[p * n + i] * X[i * LANES + q];
    }
}

}  // namespace LDLT
