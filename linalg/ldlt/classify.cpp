// Sorts the unknowns into core and border and builds the core's own matrix.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>

#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

struct Entry {
    std::int32_t i, j;
    double value;
};

// Adds to an entry of row i that exists.
void add(Lists& lists, std::int32_t i, std::int32_t column, double value) {
    std::int32_t at = lists.start[i];
    while (lists.column[at] != column) ++at;
    lists.value[at] += value;
}

bool stored(const Matrix& A, std::int32_t i, std::int32_t j) {
    if (i > j) std::swap(i, j);
    const std::int32_t* last = A.ja + A.ia[i + 1] - 1;
    const std::int32_t* found = std::lower_bound(A.ja + A.ia[i] - 1, last, j + 1);
    return found != last && *found == j + 1 && A.a[found - A.ja] != 0;
}

// Looks for a node b that hangs on row m alone: all neighbours of b lie in the border, none of them is a tie, and all
// other neighbours of m lie in the core. Where b has no diagonal of its own another border row must reach the nodes
// that b follows; else m could be the one row that holds the core, which no condensation may take away.
std::int32_t find_hung(const Classes& c, const Matrix& A, const std::vector<std::int32_t>& entries,
                       const std::vector<std::int32_t>& core_entries, const std::vector<std::int8_t>& host,
                       std::int32_t m) {
    const Lists& rows = c.rows;
    const std::int32_t begin = rows.start[c.row[m]], end = rows.start[c.row[m] + 1];
    double largest = 0;
    for (std::int32_t at = begin; at < end; ++at) largest = std::max(largest, std::fabs(rows.value[at]));
    for (std::int32_t at = begin; at < end; ++at) {
        const std::int32_t b = rows.column[at];
        const bool free = (c.kind[b] == Kind::core || c.kind[b] == Kind::second) && core_entries[b] == 0 && !host[b];
        if (!free || std::fabs(rows.value[at]) < MINTIE * largest) continue;
        bool fits = true, reached = A.a[A.ia[b] - 1] > 0;
        for (std::int32_t k = begin; k < end; ++k) {
            const std::int32_t i = rows.column[k];
            if (i == b) continue;
            fits = fits && c.kind[i] == Kind::core;
            reached = reached || entries[i] - core_entries[i] > 1;
        }
        if (!fits || !reached) continue;  // before the row of b, which can be as long as the matrix
        for (std::int32_t k = rows.start[c.row[b]]; fits && k < rows.start[c.row[b] + 1]; ++k)
            fits = c.kind[rows.column[k]] != Kind::tie;
        if (fits) return b;
    }
    return -1;
}

void find_ties(Classes& c, const Matrix& A, const std::vector<std::int32_t>& entries,
               std::vector<std::int32_t>& core_entries) {
    std::vector<std::int8_t> host(A.n), held(A.n);  // core nodes of a tie; border rows that a hung node touches besides
    // From the last row back: where short constraints and ties could both serve, the ties come after the constraints.
    for (std::int32_t m = A.n - 1; m >= 0; --m) {
        if (c.kind[m] != Kind::second || entries[m] > MAXTIE || held[m]) continue;
        const std::int32_t b = find_hung(c, A, entries, core_entries, host, m);
        if (b < 0) continue;
        Tie tie{b, m, 0, A.a[A.ia[b] - 1]};
        for (std::int32_t at = c.rows.start[c.row[m]]; at < c.rows.start[c.row[m] + 1]; ++at) {
            const std::int32_t i = c.rows.column[at];
            if (i == b)
                tie.s = c.rows.value[at];
            else
                host[i] = 1;
        }
        // A border row that touches b touches the core through it, also where b itself has no diagonal.
        for (std::int32_t at = c.rows.start[c.row[b]]; at < c.rows.start[c.row[b] + 1]; ++at) {
            held[c.rows.column[at]] = 1;
            if (c.kind[b] != Kind::core) ++core_entries[c.rows.column[at]];
        }
        c.kind[b] = Kind::hung;
        c.kind[m] = Kind::tie;
        c.place[b] = c.place[m] = static_cast<std::int32_t>(c.ties.size());
        c.ties.push_back(tie);
    }
}

// The core's own matrix. A tie adds (d / s^2) h h^T among its core nodes, also where the mesh has no entry.
void build_graph(Classes& c, const Matrix& A, const std::vector<std::int32_t>& core_entries) {
    std::vector<Entry> fill;
    for (const Tie& t : c.ties) {
        if (t.d == 0) continue;
        const std::int32_t begin = c.rows.start[c.row[t.tie]], end = c.rows.start[c.row[t.tie] + 1];
        for (std::int32_t k = begin; k < end; ++k)
            for (std::int32_t l = begin; l < end; ++l) {
                const std::int32_t i = c.rows.column[k], j = c.rows.column[l];
                if (i != t.hung && j != t.hung)
                    fill.push_back({i, j, c.rows.value[k] / t.s * (c.rows.value[l] / t.s) * t.d});
            }
    }
    std::vector<Entry> added;
    for (const Entry& e : fill)
        if (e.i != e.j && !stored(A, e.i, e.j)) added.push_back(e);
    const auto before = [](const Entry& p, const Entry& q) { return p.i != q.i ? p.i < q.i : p.j < q.j; };
    const auto same = [](const Entry& p, const Entry& q) { return p.i == q.i && p.j == q.j; };
    std::sort(added.begin(), added.end(), before);
    added.erase(std::unique(added.begin(), added.end(), same), added.end());

    const std::size_t nodes = c.core.size();
    c.graph.start.assign(nodes + 1, 0);
    for (std::size_t v = 0; v < nodes; ++v) c.graph.start[v] = core_entries[c.core[v]];
    for (const Entry& e : added) ++c.graph.start[c.place[e.i]];
    allocate(c.graph);
    std::vector<std::int32_t> end(c.graph.start);
    c.diagonal.resize(nodes);
    for (std::size_t v = 0; v < nodes; ++v) c.diagonal[v] = A.a[A.ia[c.core[v]] - 1];
    for_each_entry(A, [&](std::int32_t i, std::int32_t j, double value) {
        if (c.kind[i] != Kind::core || c.kind[j] != Kind::core) return;
        append(c.graph, end, c.place[i], c.place[j], value);
        append(c.graph, end, c.place[j], c.place[i], value);
    });
    for (const Entry& e : added) append(c.graph, end, c.place[e.i], c.place[e.j], 0);
    for (const Entry& e : fill) {
        if (e.i == e.j)
            c.diagonal[c.place[e.i]] += e.value;
        else
            add(c.graph, c.place[e.i], c.place[e.j], e.value);
    }
}

// The nodes of each component one after the other; `begin` receives where each begins, and the end.
std::vector<std::int32_t> breadth_first(const Lists& graph, std::vector<std::int32_t>& begin) {
    const std::int32_t nodes = static_cast<std::int32_t>(graph.start.size()) - 1;
    std::vector<std::int32_t> queue;
    queue.reserve(nodes);
    std::vector<std::int8_t> seen(nodes);
    for (std::int32_t root = 0; root < nodes; ++root) {
        if (seen[root]) continue;
        begin.push_back(static_cast<std::int32_t>(queue.size()));
        seen[root] = 1;
        queue.push_back(root);
        for (std::size_t head = begin.back(); head < queue.size(); ++head) {
            const std::int32_t v = queue[head];
            for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at) {
                const std::int32_t w = graph.column[at];
                if (seen[w]) continue;
                seen[w] = 1;
                queue.push_back(w);
            }
        }
    }
    begin.push_back(nodes);
    return queue;
}

// Neighbours that lie far apart in memory slow the ordering down threefold: number the core as it was searched.
void renumber(Classes& c, const std::vector<std::int32_t>& sorted) {
    const std::size_t nodes = sorted.size();
    std::vector<std::int32_t> number(nodes), core(nodes);
    for (std::size_t v = 0; v < nodes; ++v) number[sorted[v]] = static_cast<std::int32_t>(v);
    Lists graph;
    graph.memory = c.graph.memory;
    graph.start.assign(nodes + 1, 0);
    std::vector<double> diagonal(nodes);
    std::vector<std::int8_t> grounded(nodes);
    for (std::size_t v = 0; v < nodes; ++v) {
        graph.start[v] = c.graph.start[sorted[v] + 1] - c.graph.start[sorted[v]];
        diagonal[v] = c.diagonal[sorted[v]];
        grounded[v] = c.grounded[sorted[v]];
        core[v] = c.core[sorted[v]];
        c.place[core[v]] = static_cast<std::int32_t>(v);
    }
    allocate(graph);
    for (std::size_t v = 0; v < nodes; ++v) {
        const std::int32_t from = c.graph.start[sorted[v]], to = graph.start[v];
        for (std::int32_t k = 0; k < graph.start[v + 1] - to; ++k) {
            graph.column[to + k] = number[c.graph.column[from + k]];
            graph.value[to + k] = c.graph.value[from + k];
        }
    }
    c.graph = std::move(graph);
    c.diagonal = std::move(diagonal);
    c.grounded = std::move(grounded);
    c.core = std::move(core);
}

}  // namespace

void allocate(Lists& lists) {
    std::int64_t total = 0;
    for (std::int32_t& start : lists.start) {
        const std::int32_t length = start;
        if (total > INT32_MAX) throw std::bad_alloc();
        start = static_cast<std::int32_t>(total);
        total += length;
    }
    lists.column = LINALG::buffer<std::int32_t>(*lists.memory, total);
    lists.value = LINALG::buffer<double>(*lists.memory, total);
}

Classes classify(const Matrix& A, Memory& memory) {
    Classes c;
    c.rows.memory = c.graph.memory = &memory;
    c.kind.assign(A.n, Kind::empty);
    for (std::int32_t i = 0; i < A.n; ++i) {
        const double diagonal = A.a[A.ia[i] - 1];
        c.negative = c.negative || diagonal < 0;
        c.kind[i] = diagonal > 0 ? Kind::core : Kind::second;
    }
    if (c.negative) return c;

    std::vector<std::int32_t> entries(A.n), core_entries(A.n);
    for_each_entry(A, [&](std::int32_t i, std::int32_t j, double) {
        ++entries[i];
        ++entries[j];
        core_entries[i] += c.kind[j] == Kind::core;
        core_entries[j] += c.kind[i] == Kind::core;
    });

    c.row.assign(A.n, -1);
    for (std::int32_t i = 0; i < A.n; ++i) {
        if (entries[i] == 0 && c.kind[i] != Kind::core) c.kind[i] = Kind::empty;
        if (c.kind[i] == Kind::empty || (c.kind[i] == Kind::core && core_entries[i] > 0)) continue;
        c.row[i] = static_cast<std::int32_t>(c.rows.start.size());
        c.rows.start.push_back(entries[i]);
    }
    c.rows.start.push_back(0);
    allocate(c.rows);
    std::vector<std::int32_t> end(c.rows.start);
    for_each_entry(A, [&](std::int32_t i, std::int32_t j, double value) {
        if (c.row[i] >= 0) append(c.rows, end, c.row[i], j, value);
        if (c.row[j] >= 0) append(c.rows, end, c.row[j], i, value);
    });

    c.place.assign(A.n, -1);
    find_ties(c, A, entries, core_entries);
    for (std::int32_t i = 0; i < A.n; ++i) {
        if (c.kind[i] == Kind::second && (core_entries[i] > 0 || entries[i] > MAXTIE)) c.kind[i] = Kind::primary;
        if (c.kind[i] != Kind::core && c.kind[i] != Kind::primary && c.kind[i] != Kind::second) continue;
        std::vector<std::int32_t>& list = c.kind[i] == Kind::core      ? c.core
                                          : c.kind[i] == Kind::primary ? c.primary
                                                                       : c.second;
        c.place[i] = static_cast<std::int32_t>(list.size());
        list.push_back(i);
    }
    build_graph(c, A, core_entries);
    return c;
}

void ground(Classes& c, bool definite) {
    const std::int32_t nodes = static_cast<std::int32_t>(c.core.size());
    std::vector<std::int32_t> begin;
    const std::vector<std::int32_t> sorted = breadth_first(c.graph, begin);

    c.grounded.assign(nodes, 0);
    for (std::size_t k = 0; !definite && k + 1 < begin.size(); ++k) {
        if (begin[k + 1] - begin[k] < 2) continue;
        std::int32_t stiffest = sorted[begin[k]];
        for (std::int32_t at = begin[k]; at < begin[k + 1]; ++at)
            if (c.diagonal[sorted[at]] > c.diagonal[stiffest]) stiffest = sorted[at];
        c.grounded[stiffest] = 1;
    }

    double distance = 0;
    for (std::int32_t v = 0; v < nodes; ++v)
        for (std::int32_t at = c.graph.start[v]; at < c.graph.start[v + 1]; ++at)
            distance += std::abs(c.graph.column[at] - v);
    if (nodes >= MINSORT && distance > nodes / 16.0 * c.graph.start[nodes]) renumber(c, sorted);
}

}  // namespace LDLT
