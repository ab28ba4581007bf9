// Multifrontal elimination of the core.
#include <algorithm>
#include <cstring>

#include "linalg/ldlt/kernel.h"
#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

Columns columns(const Symbolic& S, const Factor& F, std::int32_t s) {
    const std::int32_t k = S.first[s + 1] - S.first[s];
    const std::int32_t r = static_cast<std::int32_t>(S.rows_start[s + 1] - S.rows_start[s]);
    return {F.panels.get() + S.panel[s], padded(k + r), k, r};
}

// The rows of a supernode out of X by positions, and the first `count` of them back.
void gather(const Symbolic& S, std::int32_t s, const Columns& c, const double* X, double* own) {
    const std::int32_t* below = S.rows.get() + S.rows_start[s];
    std::memcpy(own, X + static_cast<std::ptrdiff_t>(S.first[s]) * LANES, sizeof(double) * LANES * c.k);
    for (std::int32_t i = 0; i < c.r; ++i)
        std::memcpy(own + (c.k + i) * LANES, X + static_cast<std::ptrdiff_t>(below[i]) * LANES, sizeof(double) * LANES);
}

void scatter(const Symbolic& S, std::int32_t s, const Columns& c, const double* own, std::int32_t count, double* X) {
    const std::int32_t* below = S.rows.get() + S.rows_start[s];
    std::memcpy(X + static_cast<std::ptrdiff_t>(S.first[s]) * LANES, own, sizeof(double) * LANES * c.k);
    for (std::int32_t i = c.k; i < count; ++i)
        std::memcpy(X + static_cast<std::ptrdiff_t>(below[i - c.k]) * LANES, own + i * LANES, sizeof(double) * LANES);
}

void forward_supernode(const Symbolic& S, std::int32_t s, const Columns& c, double* X, double* own,
                       const Kernel& kernel) {
    gather(S, s, c, X, own);
    kernel.forward(c, own);
    scatter(S, s, c, own, c.k + c.r, X);
}

// What the elimination works with.
struct Elimination {
    Buffer<double> stack[2];                   // update matrices, see lay_out
    std::vector<std::int32_t> child, sibling;  // (supernodes) those finished, as chains; -1 ends one
    std::vector<double> diagonal;              // (pivots)     of the core's matrix
    std::vector<std::int32_t> local;           // (nodes)      row of the present front for each of its positions
    std::vector<std::int32_t> target;          //              row of the present front for each row of a child
    std::vector<double> gathered;              // (most_rows, LANES)
};

Front open_front(const Symbolic& S, Factor& F, Elimination& w, std::int32_t s) {
    const std::int32_t first = S.first[s], k = S.first[s + 1] - first;
    const std::int32_t r = static_cast<std::int32_t>(S.rows_start[s + 1] - S.rows_start[s]);
    const std::int32_t* below = S.rows.get() + S.rows_start[s];
    for (std::int32_t i = 0; i < k; ++i) w.local[first + i] = i;
    for (std::int32_t i = 0; i < r; ++i) w.local[below[i]] = k + i;
    Front f;
    f.panel = F.panels.get() + S.panel[s];
    f.rows = padded(k + r);
    f.k = k;
    f.r = r;
    f.update = w.stack[S.stack[s]].get() + S.update[s];
    f.diagonal = w.diagonal.data() + first;
    f.pivot = F.pivot.data() + first;
    f.inverse = F.inverse.data() + first;
    return f;
}

void load_columns(const Classes& c, const Symbolic& S, const Elimination& w, std::int32_t s, const Front& f) {
    std::memset(f.panel, 0, sizeof(double) * (f.rows * f.k + PADDING));
    for (std::int32_t j = 0; j < f.k; ++j) {
        const std::int32_t p = S.first[s] + j, v = S.node[p];
        double* column = f.panel + j * f.rows;
        column[j] = f.diagonal[j];
        for (std::int32_t at = c.graph.start[v]; at < c.graph.start[v + 1]; ++at) {
            const std::int32_t q = S.position[c.graph.column[at]];
            if (q > p) column[w.local[q]] = c.graph.value[at];
        }
    }
}

// Adds the update matrices of the children to the panel, or what is left of them to the update matrix.
void add_children(const Symbolic& S, Elimination& w, std::int32_t s, const Front& f, bool to_panel) {
    for (std::int32_t child = w.child[s]; child >= 0; child = w.sibling[child]) {
        const std::int32_t size = static_cast<std::int32_t>(S.rows_start[child + 1] - S.rows_start[child]);
        const std::int32_t* below = S.rows.get() + S.rows_start[child];
        const double* update = w.stack[S.stack[child]].get() + S.update[child];
        w.target.resize(size);
        std::int32_t* target = w.target.data();
        std::int32_t split = 0;  // columns that the panel takes
        for (std::int32_t i = 0; i < size; ++i) {
            target[i] = w.local[below[i]];
            split += target[i] < f.k;
        }
        const std::int32_t begin = to_panel ? 0 : split, end = to_panel ? split : size;
        for (std::int32_t j = begin; j < end; ++j) {
            const double* from = update + static_cast<std::ptrdiff_t>(j) * padded(size);
            double* into = to_panel ? f.panel + target[j] * f.rows
                                    : f.update + static_cast<std::ptrdiff_t>(target[j] - f.k) * padded(f.r) - f.k;
            for (std::int32_t i = j; i < size; ++i) into[target[i]] += from[i];
        }
    }
}

}  // namespace

Factor factorise(const Classes& c, const Symbolic& S, double* Y, std::int64_t blocks, const Kernel& kernel) {
    Factor F;
    F.panels = LINALG::buffer<double>(*c.graph.memory, S.panel[S.supernodes] + PADDING);
    F.pivot.resize(S.pivots);
    F.inverse.resize(S.pivots);
    Elimination w;
    for (int k = 0; k < 2; ++k) w.stack[k] = LINALG::buffer<double>(*c.graph.memory, S.stack_size[k]);
    w.child.assign(S.supernodes, -1);
    w.sibling.assign(S.supernodes, -1);
    w.local.resize(S.nodes);
    w.gathered.resize(static_cast<std::size_t>(S.most_rows) * LANES);
    w.diagonal.resize(S.pivots);
    for (std::int32_t p = 0; p < S.pivots; ++p) w.diagonal[p] = c.diagonal[S.node[p]];

    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        const Front f = open_front(S, F, w, s);
        load_columns(c, S, w, s, f);
        add_children(S, w, s, f, true);
        const Pivots pivots = kernel.eliminate(f);
        if (pivots == Pivots::negative) {
            F.negative = true;
            return F;
        }
        if (pivots == Pivots::some_null)
            for (std::int32_t p = S.first[s]; p < S.first[s + 1]; ++p)
                if (F.inverse[p] == 0) F.null.push_back(S.node[p]);
        add_children(S, w, s, f, false);
        for (std::int64_t b = 0; b < blocks; ++b)
            forward_supernode(S, s, columns(S, F, s), Y + b * S.nodes * LANES, w.gathered.data(), kernel);

        if (S.up[s] >= 0) {
            w.sibling[s] = w.child[S.up[s]];
            w.child[S.up[s]] = s;
            continue;
        }
        const std::int32_t* below = S.rows.get() + S.rows_start[s];
        for (std::int32_t j = 0; j < f.r; ++j)
            for (std::int32_t i = j; i < f.r; ++i) {
                const double value = f.update[static_cast<std::ptrdiff_t>(j) * padded(f.r) + i];
                F.remainder.push_back({below[i] - S.pivots, below[j] - S.pivots, value});
            }
    }
    return F;
}

void forward(const Symbolic& S, const Factor& F, double* X, const Kernel& kernel) {
    std::vector<double> gathered(static_cast<std::size_t>(S.most_rows) * LANES);
    for (std::int32_t s = 0; s < S.supernodes; ++s)
        forward_supernode(S, s, columns(S, F, s), X, gathered.data(), kernel);
}

void backward(const Symbolic& S, const Factor& F, double* X, const Kernel& kernel) {
    std::vector<double> gathered(static_cast<std::size_t>(S.most_rows) * LANES);
    for (std::int32_t s = S.supernodes - 1; s >= 0; --s) {
        const Columns c = columns(S, F, s);
        gather(S, s, c, X, gathered.data());
        kernel.backward(c, gathered.data());
        scatter(S, s, c, gathered.data(), c.k, X);
    }
}

}  // namespace LDLT
