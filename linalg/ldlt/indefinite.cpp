// The general path: multifrontal elimination of any symmetric matrix with threshold pivoting (Duff and Reid). A column
// that has no stable pivot in its front is delayed to the parent; what is left at a root is pivoted completely.
#include <algorithm>
#include <cmath>

#include "linalg/ldlt/ldlt.h"

namespace LDLT {
namespace {

constexpr double THRESHOLDS[] = {0.25, 0.01};  // size of a pivot against its column: wanted, and still accepted
constexpr double NULLGENERAL = 1e-13;          // size at which a column of the scaled matrix counts as null
constexpr int SWEEPS = 5;

std::vector<double> equilibrate(const Matrix& A) {
    std::vector<double> scale(A.n, 1), largest(A.n);
    for (int sweep = 0; sweep < SWEEPS; ++sweep) {
        std::fill(largest.begin(), largest.end(), 0.0);
        for (std::int32_t i = 0; i < A.n; ++i)
            for (std::int32_t at = A.ia[i] - 1; at < A.ia[i + 1] - 1; ++at) {
                const std::int32_t j = A.ja[at] - 1;
                const double a = std::fabs(A.a[at] * scale[i] * scale[j]);
                largest[i] = std::max(largest[i], a);
                largest[j] = std::max(largest[j], a);
            }
        for (std::int32_t i = 0; i < A.n; ++i)
            if (largest[i] > 0) scale[i] *= std::ldexp(1.0, -std::ilogb(largest[i]) / 2);
    }
    return scale;
}

// A front while it is pivoted: full and symmetric. Rows below `candidates` can become pivots, those below `done` are.
struct Work {
    std::size_t n = 0, candidates = 0, done = 0;
    std::vector<double> F;           // (n, n)
    std::vector<std::int32_t> rows;  // (n)  positions
    std::vector<Pivot> block;        // (done)
};

double at(const Work& w, std::size_t i, std::size_t j) { return std::fabs(w.F[j * w.n + i]); }

// Largest of column j behind the finished rows, without its diagonal and row `but`; `where` among the candidates.
double largest_beside(const Work& w, std::size_t j, std::size_t but, std::size_t* where) {
    double largest = 0, candidate = -1;
    for (std::size_t i = w.done; i < w.n; ++i) {
        if (i == j || i == but) continue;
        largest = std::max(largest, at(w, i, j));
        if (where != nullptr && i < w.candidates && at(w, i, j) > candidate) {
            candidate = at(w, i, j);
            *where = i;
        }
    }
    return largest;
}

void take(Work& w, std::size_t j) {
    exchange(w.F.data(), w.n, w.done, j);
    std::swap(w.rows[w.done], w.rows[j]);
}

void take_pivot(Work& w, std::size_t j) {
    take(w, j);
    eliminate(w.F.data(), w.n, w.done);
    w.block.push_back(Pivot::single);
    w.done += 1;
}

void take_pair(Work& w, std::size_t i, std::size_t j) {
    take(w, std::min(i, j));
    w.done += 1;
    take(w, std::max(i, j));
    w.done -= 1;
    eliminate_pair(w.F.data(), w.n, w.done);
    w.block.push_back(Pivot::first);
    w.block.push_back(Pivot::second);
    w.done += 2;
}

// One pivot at column j, or at j and the candidate that it is tied to most, if it is stable.
bool try_pivot(Work& w, std::size_t j, double threshold) {
    std::size_t i = j;
    const double beside = largest_beside(w, j, j, &i), d = at(w, j, j);
    if (std::max(d, beside) < NULLGENERAL) return false;
    if (d >= threshold * beside) {
        take_pivot(w, j);
        return true;
    }
    if (i == j || at(w, i, j) == 0) return false;
    const double s = at(w, i, j), a = w.F[j * w.n + j] / s, b = w.F[i * w.n + i] / s, t = s * std::fabs(a * b - 1);
    const double u = largest_beside(w, j, i, nullptr), v = largest_beside(w, i, j, nullptr);
    const bool stable = (std::fabs(b) * u + v) * threshold <= t && (std::fabs(a) * v + u) * threshold <= t;
    if (stable && t > 0) take_pair(w, i, j);
    return stable && t > 0;
}

// What passes the stricter threshold goes first: entries grow less, and fewer columns are delayed in the end.
void pivot_front(Work& w, bool root) {
    for (const double threshold : THRESHOLDS)
        for (bool found = true; found;) {
            found = false;
            for (std::size_t j = w.done; j < w.candidates; ++j)
                if (try_pivot(w, j, threshold)) {
                    found = true;
                    j = std::max(j, w.done) - 1;
                }
        }
    if (!root) return;
    // Nothing passed the threshold, so no entry is left but rounding.
    w.block.resize(w.candidates, Pivot::null);
    w.done = w.candidates;
}

// The scaled matrix without its diagonal, both triangles.
Lists full_graph(const Matrix& A, const std::vector<double>& scale) {
    Lists graph;
    graph.start.assign(A.n + 1, 0);
    for_each_entry(A, [&](std::int32_t i, std::int32_t j, double) {
        ++graph.start[i];
        ++graph.start[j];
    });
    allocate(graph);
    std::vector<std::int32_t> end(graph.start);
    for_each_entry(A, [&](std::int32_t i, std::int32_t j, double value) {
        append(graph, end, i, j, value * scale[i] * scale[j]);
        append(graph, end, j, i, value * scale[i] * scale[j]);
    });
    return graph;
}

// What a front leaves to its parent: rows that are delayed, then the rows below.
struct Contribution {
    std::size_t delayed = 0;
    std::vector<std::int32_t> rows;
    std::vector<double> F;
};

Contribution contribution(const Work& w) {
    Contribution c;
    c.delayed = w.candidates - w.done;
    c.rows.assign(w.rows.begin() + static_cast<std::ptrdiff_t>(w.done), w.rows.end());
    for (std::size_t j = w.done; j < w.n; ++j)
        c.F.insert(c.F.end(), w.F.begin() + static_cast<std::ptrdiff_t>(j * w.n + w.done),
                   w.F.begin() + static_cast<std::ptrdiff_t>((j + 1) * w.n));
    return c;
}

}  // namespace

void factorise_indefinite(const Matrix& A, System& system) {
    system.general = true;
    system.scale = equilibrate(A);
    const Lists graph = full_graph(A, system.scale);
    system.symbolic = analyse(graph, std::vector<std::int8_t>(A.n, 0));
    const Symbolic& S = system.symbolic;
    system.fronts.resize(S.supernodes);
    system.dead.assign(A.n, 0);
    std::vector<std::int32_t> child(S.supernodes, -1), sibling(S.supernodes, -1), local(A.n);
    std::vector<Contribution> left(S.supernodes);

    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        Work w;
        for (std::int32_t p = S.first[s]; p < S.first[s + 1]; ++p) w.rows.push_back(p);
        for (std::int32_t from = child[s]; from >= 0; from = sibling[from])
            w.rows.insert(w.rows.end(), left[from].rows.begin(),
                          left[from].rows.begin() + static_cast<std::ptrdiff_t>(left[from].delayed));
        w.candidates = w.rows.size();
        w.rows.insert(w.rows.end(), S.rows.get() + S.rows_start[s], S.rows.get() + S.rows_start[s + 1]);
        w.n = w.rows.size();
        w.F.assign(w.n * w.n, 0);
        for (std::size_t i = 0; i < w.n; ++i) local[w.rows[i]] = static_cast<std::int32_t>(i);

        for (std::int32_t p = S.first[s]; p < S.first[s + 1]; ++p) {
            const std::int32_t v = S.node[p];
            const std::size_t j = local[p];
            w.F[j * w.n + j] = A.a[A.ia[v] - 1] * system.scale[v] * system.scale[v];
            for (std::int32_t k = graph.start[v]; k < graph.start[v + 1]; ++k) {
                const std::int32_t q = S.position[graph.column[k]];
                if (q < p) continue;
                const std::size_t i = local[q];
                w.F[j * w.n + i] = w.F[i * w.n + j] = graph.value[k];
            }
        }
        for (std::int32_t from = child[s]; from >= 0; from = sibling[from]) {
            Contribution c = std::move(left[from]);
            const std::size_t n = c.rows.size();
            for (std::size_t j = 0; j < n; ++j)
                for (std::size_t i = 0; i < n; ++i)
                    w.F[static_cast<std::size_t>(local[c.rows[j]]) * w.n + local[c.rows[i]]] += c.F[j * n + i];
        }

        pivot_front(w, S.up[s] < 0);
        if (S.up[s] >= 0) {
            left[s] = contribution(w);
            sibling[s] = child[S.up[s]];
            child[S.up[s]] = s;
        }
        for (std::size_t k = 0; k < w.done; ++k)
            if (w.block[k] == Pivot::null) system.dead[S.node[w.rows[k]]] = 1;
        IndefiniteFront& f = system.fronts[s];
        f.L.assign(w.F.begin(), w.F.begin() + static_cast<std::ptrdiff_t>(w.done * w.n));
        f.rows = std::move(w.rows);
        f.block = std::move(w.block);
    }
}

void solve_indefinite(const System& system, const double* B, double* X, double* work) {
    const Symbolic& S = system.symbolic;
    const std::size_t n = system.scale.size();
    for (std::size_t p = 0; p < n; ++p)
        for (std::size_t q = 0; q < LANES; ++q)
            work[p * LANES + q] = B[static_cast<std::size_t>(S.node[p]) * LANES + q] * system.scale[S.node[p]];
    // Each front works on its own rows, gathered one after the other.
    std::vector<double> x;
    const auto gather = [&](const IndefiniteFront& f) {
        x.resize(f.rows.size() * LANES);
        for (std::size_t i = 0; i < f.rows.size(); ++i)
            std::copy_n(work + static_cast<std::size_t>(f.rows[i]) * LANES, LANES, &x[i * LANES]);
    };
    const auto scatter = [&](const IndefiniteFront& f) {
        for (std::size_t i = 0; i < f.rows.size(); ++i)
            std::copy_n(&x[i * LANES], LANES, work + static_cast<std::size_t>(f.rows[i]) * LANES);
    };
    for (const IndefiniteFront& f : system.fronts) {
        gather(f);
        forward_pivots(f.L.data(), f.rows.size(), f.block, x.data());
        scatter(f);
    }
    for (std::size_t s = system.fronts.size(); s-- > 0;) {
        const IndefiniteFront& f = system.fronts[s];
        gather(f);
        divide_pivots(f.L.data(), f.rows.size(), f.block, x.data());
        backward_pivots(f.L.data(), f.rows.size(), f.block, x.data());
        scatter(f);
    }
    for (std::size_t p = 0; p < n; ++p)
        for (std::size_t q = 0; q < LANES; ++q)
            X[static_cast<std::size_t>(S.node[p]) * LANES + q] = work[p * LANES + q] * system.scale[S.node[p]];
}

}  // namespace LDLT
