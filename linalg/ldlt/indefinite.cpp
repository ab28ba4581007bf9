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

// Brings the largest entry of every row near 1: among the rows with a diagonal first, by what they have in common
// alone. A constraint, of which any multiple says the same, must not set the scale of weak material.
std::vector<double> equilibrate(const Matrix& A) {
    std::vector<double> scale(A.n, 1), largest(A.n);
    std::vector<std::int8_t> stiff(A.n);
    for (std::int32_t i = 0; i < A.n; ++i) stiff[i] = A.a[A.ia[i] - 1] != 0 ? 1 : 0;
    for (int sweep = 0; sweep < SWEEPS; ++sweep) {
        std::fill(largest.begin(), largest.end(), 0.0);
        for (std::int32_t i = 0; i < A.n; ++i)
            for (std::int32_t at = A.ia[i] - 1; at < A.ia[i + 1] - 1; ++at) {
                const std::int32_t j = A.ja[at] - 1;
                const double a = std::fabs(A.a[at] * scale[i] * scale[j]);
                if (stiff[j] || !stiff[i]) largest[i] = std::max(largest[i], a);
                if (stiff[i] || !stiff[j]) largest[j] = std::max(largest[j], a);
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

// The pivot at column j if what it takes from other rows is no larger than what stands there (Bunch and Kaufman),
// however long its column of L. A stiff part that hangs in weak material has such a pivot as its last one: small beside
// its neighbours, which the part's own stiffness has scaled, and no less exact.
bool try_small_pivot(Work& w, std::size_t j, double threshold) {
    const double d = at(w, j, j);
    std::size_t i = j;
    double beside = 0;
    for (std::size_t k = w.done; k < w.n; ++k)
        if (k != j && at(w, k, j) > beside) {
            beside = at(w, k, j);
            i = k;
        }
    if (std::max(d, beside) < NULLGENERAL) return false;
    const double there = std::max(at(w, i, i), largest_beside(w, i, j, nullptr));
    if (d * there < threshold * beside * beside) return false;
    take_pivot(w, j);
    return true;
}

// Takes pivots that pass the test with a threshold until none does.
template <class Test>
void take_pivots(Work& w, Test test, double threshold) {
    for (bool found = true; found;) {
        found = false;
        for (std::size_t j = w.done; j < w.candidates; ++j)
            if (test(w, j, threshold)) {
                found = true;
                j = std::max(j, w.done) - 1;
            }
    }
}

// What passes the stricter threshold goes first: entries grow less, and fewer columns are delayed in the end.
void pivot_front(Work& w, bool root) {
    for (const double threshold : THRESHOLDS) take_pivots(w, try_pivot, threshold);
    take_pivots(w, try_small_pivot, THRESHOLDS[0]);
    // Nothing that is still to come can make a pivot of a column that holds nothing but rounding.
    for (std::size_t j = w.done; j < w.candidates; ++j)
        if (std::max(at(w, j, j), largest_beside(w, j, j, nullptr)) < NULLGENERAL) {
            take(w, j);
            w.block.push_back(Pivot::null);
            w.done += 1;
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

void drop_dead(Contribution& c, const Symbolic& S, const std::vector<std::int8_t>& dead) {
    std::vector<std::size_t> kept;
    for (std::size_t i = 0; i < c.rows.size(); ++i)
        if (!dead[S.node[c.rows[i]]]) kept.push_back(i);
    if (kept.size() == c.rows.size()) return;
    Contribution left;
    for (const std::size_t j : kept) {
        if (j < c.delayed) ++left.delayed;
        left.rows.push_back(c.rows[j]);
        for (const std::size_t i : kept) left.F.push_back(c.F[j * c.rows.size() + i]);
    }
    c = std::move(left);
}

// Delayed rows that touch nothing but rows still to come, out of all children of a front: no more of them are
// independent than there are such rows, and the rest can not hold a pivot. They leave their contributions and are dead.
// Without this the nodes of a part that has no stiffness would all arrive at the root.
void thin_out(const std::vector<Contribution*>& children, const Symbolic& S, std::vector<std::int32_t>& column,
              std::vector<std::int8_t>& dead) {
    struct Row {
        Contribution* from;
        std::size_t i;
    };
    std::vector<Row> rows;
    std::vector<std::int32_t> touched;
    for (Contribution* c : children) {
        const std::size_t n = c->rows.size();
        for (std::size_t i = 0; i < c->delayed; ++i) {
            const double* F = c->F.data() + i * n;
            if (!std::all_of(F, F + c->delayed, [](double f) { return std::fabs(f) < NULLGENERAL; })) continue;
            rows.push_back({c, i});
            for (std::size_t j = c->delayed; j < n; ++j)
                if (F[j] != 0 && column[c->rows[j]] < 0) {
                    column[c->rows[j]] = static_cast<std::int32_t>(touched.size());
                    touched.push_back(c->rows[j]);
                }
        }
    }
    if (rows.size() > touched.size()) {
        std::vector<double> values(rows.size() * touched.size());
        for (std::size_t k = 0; k < rows.size(); ++k) {
            const Contribution& c = *rows[k].from;
            for (std::size_t j = c.delayed; j < c.rows.size(); ++j)
                if (column[c.rows[j]] >= 0)
                    values[k * touched.size() + column[c.rows[j]]] = c.F[rows[k].i * c.rows.size() + j];
        }
        const std::vector<std::int8_t> stays = independent(values, rows.size(), touched.size());
        for (std::size_t k = 0; k < rows.size(); ++k)
            if (!stays[k]) dead[S.node[rows[k].from->rows[rows[k].i]]] = 1;
        for (Contribution* c : children) drop_dead(*c, S, dead);
    }
    for (const std::int32_t row : touched) column[row] = -1;
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
    std::vector<std::int32_t> child(S.supernodes, -1), sibling(S.supernodes, -1), local(A.n), column(A.n, -1);
    std::vector<Contribution> left(S.supernodes);

    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        std::vector<Contribution*> children;
        for (std::int32_t from = child[s]; from >= 0; from = sibling[from]) children.push_back(&left[from]);
        thin_out(children, S, column, system.dead);
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
    for (std::size_t p = 0; p < n; ++p)
        if (system.dead[S.node[p]]) std::fill_n(work + p * LANES, LANES, 0.0);
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
