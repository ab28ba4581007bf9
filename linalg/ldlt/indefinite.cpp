// The general path: multifrontal elimination of any symmetric matrix with threshold pivoting (Duff and Reid). A column
// that has no stable pivot in its front is delayed to the parent; at a root nothing is.
#include <algorithm>
#include <cmath>
#include <utility>

#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

// Rows of the mesh, which have a diagonal and touch others that have one, are brought near 1 by these entries alone: a
// constraint, of which any multiple says the same, must not set the scale of weak material. A bar's spring is no
// measure of its node, which the tie holds.
std::vector<double> scales_of(const Matrix& A) {
    const auto has_diagonal = [&](std::int32_t i) { return A.a[A.ia[i] - 1] != 0; };
    std::vector<std::int8_t> mesh(A.n);
    for_each_entry(A, [&](std::int32_t i, std::int32_t j, double) {
        if (has_diagonal(i) && has_diagonal(j)) mesh[i] = mesh[j] = 1;
    });
    const auto entries = [&](const auto& visit) {
        for (std::int32_t i = 0; i < A.n; ++i)
            for (std::int32_t at = A.ia[i] - 1; at < A.ia[i + 1] - 1; ++at) visit(i, A.ja[at] - 1, A.a[at]);
    };
    std::vector<double> scale(A.n, 1);
    equilibrate(scale, entries,
                [&](std::size_t i, std::size_t j) { return !mesh[i] || has_diagonal(static_cast<std::int32_t>(j)); });
    return scale;
}

// The scaled matrix without its diagonal, both triangles.
Lists full_graph(const Matrix& A, const std::vector<double>& scale, Memory& memory) {
    Lists graph;
    graph.memory = &memory;
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

Contribution contribution(const OpenFront& f) {
    Contribution c;
    c.delayed = f.candidates - f.done;
    c.rows.assign(f.rows.begin() + static_cast<std::ptrdiff_t>(f.done), f.rows.end());
    c.F.reserve(c.rows.size() * c.rows.size());
    for (std::size_t j = f.done; j < f.n; ++j)
        c.F.insert(c.F.end(), f.F.begin() + static_cast<std::ptrdiff_t>(j * f.n + f.done),
                   f.F.begin() + static_cast<std::ptrdiff_t>((j + 1) * f.n));
    return c;
}

void drop_dead(Contribution& c, const Symbolic& S, const std::vector<std::int8_t>& dead) {
    std::vector<std::size_t> kept;
    for (std::size_t i = 0; i < c.rows.size(); ++i)
        if (!dead[S.node[c.rows[i]]]) kept.push_back(i);
    if (kept.size() == c.rows.size()) return;
    Contribution alive;
    for (const std::size_t j : kept) {
        if (j < c.delayed) ++alive.delayed;
        alive.rows.push_back(c.rows[j]);
        for (const std::size_t i : kept) alive.F.push_back(c.F[j * c.rows.size() + i]);
    }
    c = std::move(alive);
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

// The front of supernode s: its own columns, the delayed rows of its children, the rows below; the matrix and all
// contributions, which end with it, added up. local (n) is filled for its rows.
OpenFront assemble(const Matrix& A, const System& system, const Lists& graph, std::int32_t s,
                   const std::vector<Contribution*>& children, std::vector<std::int32_t>& local) {
    const Symbolic& S = system.symbolic;
    OpenFront f;
    for (std::int32_t p = S.first[s]; p < S.first[s + 1]; ++p) f.rows.push_back(p);
    for (const Contribution* c : children)
        f.rows.insert(f.rows.end(), c->rows.begin(), c->rows.begin() + static_cast<std::ptrdiff_t>(c->delayed));
    f.candidates = f.rows.size();
    f.rows.insert(f.rows.end(), S.rows.get() + S.rows_start[s], S.rows.get() + S.rows_start[s + 1]);
    f.n = f.judged = f.rows.size();
    f.F.assign(f.n * f.n, 0);
    for (std::size_t i = 0; i < f.n; ++i) local[f.rows[i]] = static_cast<std::int32_t>(i);

    for (std::int32_t p = S.first[s]; p < S.first[s + 1]; ++p) {
        const std::int32_t v = S.node[p];
        const std::size_t j = local[p];
        f.F[j * f.n + j] = A.a[A.ia[v] - 1] * system.scale[v] * system.scale[v];
        for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at) {
            const std::int32_t q = S.position[graph.column[at]];
            if (q < p) continue;
            const std::size_t i = local[q];
            f.F[j * f.n + i] = f.F[i * f.n + j] = graph.value[at];
        }
    }
    for (Contribution* from : children) {
        const Contribution c = std::move(*from);
        const std::size_t n = c.rows.size();
        for (std::size_t j = 0; j < n; ++j) {
            double* column = f.F.data() + static_cast<std::size_t>(local[c.rows[j]]) * f.n;
            for (std::size_t i = 0; i < n; ++i) column[local[c.rows[i]]] += c.F[j * n + i];
        }
    }
    return f;
}

}  // namespace

void factorise_indefinite(const Matrix& A, System& system) {
    system.general = true;
    system.scale = scales_of(A);
    const Lists graph = full_graph(A, system.scale, *system.memory);
    system.symbolic = analyse(graph, std::vector<std::int8_t>(A.n, 0));
    const Symbolic& S = system.symbolic;
    system.fronts.resize(S.supernodes);
    system.dead.assign(A.n, 0);
    std::vector<std::int32_t> local(A.n), column(A.n, -1);
    std::vector<Contribution> contributions(S.supernodes);
    std::vector<std::vector<Contribution*>> children(S.supernodes);
    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        thin_out(children[s], S, column, system.dead);
        OpenFront f = assemble(A, system, graph, s, children[s], local);
        pivot_front(f, S.up[s] < 0);
        for (std::size_t k = 0; k < f.done; ++k)
            if (f.block[k] == Pivot::null) system.dead[S.node[f.rows[k]]] = 1;
        if (S.up[s] >= 0) {
            contributions[s] = contribution(f);
            children[S.up[s]].push_back(&contributions[s]);
        }
        system.fronts[s] = closed(f);
    }
}

void solve_indefinite(const System& system, const double* B, double* X, double* work) {
    const Symbolic& S = system.symbolic;
    const std::int64_t n = static_cast<std::int64_t>(system.scale.size());
    for (std::int64_t p = 0; p < n; ++p)
        for (int q = 0; q < LANES; ++q) work[lanes_of(p) + q] = B[lanes_of(S.node[p]) + q] * system.scale[S.node[p]];
    // Each front works on its own rows, gathered one after the other.
    std::vector<double> x;
    const auto on_rows = [&](const IndefiniteFront& f, void (*solve)(const IndefiniteFront&, double*)) {
        x.resize(f.rows.size() * LANES);
        for (std::size_t i = 0; i < f.rows.size(); ++i) std::copy_n(work + lanes_of(f.rows[i]), LANES, &x[i * LANES]);
        solve(f, x.data());
        for (std::size_t i = 0; i < f.rows.size(); ++i) std::copy_n(&x[i * LANES], LANES, work + lanes_of(f.rows[i]));
    };
    for (const IndefiniteFront& f : system.fronts) on_rows(f, forward);
    for (std::int64_t p = 0; p < n; ++p)
        if (system.dead[S.node[p]]) std::fill_n(work + lanes_of(p), LANES, 0.0);
    for (std::size_t s = system.fronts.size(); s-- > 0;) on_rows(system.fronts[s], backward);
    for (std::int64_t p = 0; p < n; ++p)
        for (int q = 0; q < LANES; ++q) X[lanes_of(S.node[p]) + q] = work[lanes_of(p) + q] * system.scale[S.node[p]];
}

}  // namespace LDLT
