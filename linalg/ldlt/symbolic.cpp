// The shape of the factor: elimination tree, column counts, supernodes, rows of each front.
#include <algorithm>

#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

using Integers = std::vector<std::int32_t>;

// Children of each node of a forest as chains: head of the parent's chain, then next; ascending.
struct Children {
    Integers head, next;
};

Children children_of(const Integers& parent) {
    Children c{Integers(parent.size(), -1), Integers(parent.size(), -1)};
    for (std::int32_t j = static_cast<std::int32_t>(parent.size()) - 1; j >= 0; --j) {
        if (parent[j] < 0) continue;
        c.next[j] = c.head[parent[j]];
        c.head[parent[j]] = j;
    }
    return c;
}

// Order in which every node follows its children at once.
Integers postorder(const Integers& parent) {
    Children c = children_of(parent);
    Integers sequence, path;
    sequence.reserve(parent.size());
    for (std::size_t root = 0; root < parent.size(); ++root) {
        if (parent[root] >= 0) continue;
        path.push_back(static_cast<std::int32_t>(root));
        while (!path.empty()) {
            const std::int32_t j = path.back(), child = c.head[j];
            if (child >= 0) {
                c.head[j] = c.next[child];
                path.push_back(child);
            } else {
                sequence.push_back(j);
                path.pop_back();
            }
        }
    }
    return sequence;
}

// Pivot p of the new order is pivot sequence[p] of the old one.
void reorder(Symbolic& S, const Integers& sequence) {
    const Integers node(S.node.begin(), S.node.begin() + S.pivots);
    for (std::int32_t p = 0; p < S.pivots; ++p) {
        S.node[p] = node[sequence[p]];
        S.position[S.node[p]] = p;
    }
}

// Liu: the parent of a column is the first row below its diagonal; chains of ancestors are shortened on the way.
Integers elimination_tree(const Lists& graph, const Symbolic& S) {
    Integers parent(S.pivots, -1), ancestor(S.pivots, -1);
    for (std::int32_t p = 0; p < S.pivots; ++p) {
        const std::int32_t v = S.node[p];
        for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at) {
            std::int32_t q = S.position[graph.column[at]];
            while (q >= 0 && q < p) {
                const std::int32_t next = ancestor[q];
                ancestor[q] = p;
                if (next < 0) parent[q] = p;
                q = next;
            }
        }
    }
    return parent;
}

// Gilbert, Ng and Peyton: entries of each column of L, diagonal included. The tree is numbered in postorder. Row i of L
// is the subtree of i whose leaves are its entries in A, so a column counts the leaves below it, less one wherever two
// branches of a row meet, and less one where a row ends.
Integers column_counts(const Lists& graph, const Symbolic& S, const Integers& parent) {
    const std::int32_t n = S.pivots;
    Integers count(n), first(n, -1), largest(n, -1), previous(n, -1), ancestor(n);
    for (std::int32_t k = 0; k < n; ++k) {
        ancestor[k] = k;
        count[k] = first[k] < 0 ? 1 : 0;  // a leaf of the tree
        for (std::int32_t j = k; j >= 0 && first[j] < 0; j = parent[j]) first[j] = k;
    }
    for (std::int32_t j = 0; j < n; ++j) {
        if (parent[j] >= 0) --count[parent[j]];
        const std::int32_t v = S.node[j];
        for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at) {
            const std::int32_t i = S.position[graph.column[at]];
            if (i <= j || i >= n || first[j] <= largest[i]) continue;  // j is no leaf of row i
            largest[i] = first[j];
            ++count[j];
            std::int32_t k = previous[i];
            previous[i] = j;
            if (k < 0) continue;
            std::int32_t meet = k;
            while (meet != ancestor[meet]) meet = ancestor[meet];
            while (k != meet) {
                const std::int32_t next = ancestor[k];
                ancestor[k] = meet;
                k = next;
            }
            --count[meet];
        }
        if (parent[j] >= 0) ancestor[j] = parent[j];
    }
    for (std::int32_t j = 0; j < n; ++j)
        if (parent[j] >= 0) count[parent[j]] += count[j];

    // A grounded node is a row of every column on the way from its neighbours to the root.
    Integers last(n, -1);
    for (std::int32_t g = n; g < S.nodes; ++g) {
        const std::int32_t v = S.node[g];
        for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at) {
            const std::int32_t q = S.position[graph.column[at]];
            for (std::int32_t j = q < n ? q : -1; j >= 0 && last[j] != g; j = parent[j]) {
                last[j] = g;
                ++count[j];
            }
        }
    }
    return count;
}

// A supernode while small ones are merged: its columns and the rows below.
struct Candidate {
    std::int32_t columns, rows;
};

double cost(double k, double r) {
    return SETUP + GATHER * r * r + ELIMINATE * k * (r * r + r * k + k * k / 3) + PASS * k * (k + r);
}

// Whether a child is better merged: a few padding zeros can cost less than a front of its own.
bool worth_merging(const Candidate& parent, const Candidate& child) {
    return cost(parent.columns + child.columns, parent.rows) <
           cost(parent.columns, parent.rows) + cost(child.columns, child.rows);
}

// Finds the supernodes, merges children into their parents, and reorders the pivots so that the columns of each
// supernode follow each other. Fills supernodes, first, up and the rows of each, whose number is returned.
Integers find_supernodes(Symbolic& S, const Integers& parent, const Integers& count) {
    const std::int32_t n = S.pivots;
    Integers super(n);  // of each pivot
    Integers last;      // pivot of each supernode
    std::vector<Candidate> candidate;
    for (std::int32_t j = 0; j < n; ++j) {
        if (j == 0 || parent[j - 1] != j || count[j - 1] != count[j] + 1) {
            candidate.push_back({0, 0});
            last.push_back(j);
        }
        super[j] = static_cast<std::int32_t>(last.size()) - 1;
        last.back() = j;
        candidate.back().columns += 1;
        candidate.back().rows = count[j] - 1;
    }
    const std::int32_t found = static_cast<std::int32_t>(last.size());
    Integers up(found, -1), into(found);
    for (std::int32_t s = 0; s < found; ++s) {
        into[s] = s;
        if (parent[last[s]] >= 0) up[s] = super[parent[last[s]]];
    }
    Children c = children_of(up);
    for (std::int32_t s = 0; s < found; ++s) {
        // Children of a merged child come to stand in its place and are tried in turn.
        std::int32_t* link = &c.head[s];
        while (*link >= 0) {
            const std::int32_t child = *link;
            if (!worth_merging(candidate[s], candidate[child])) {
                link = &c.next[child];
                continue;
            }
            candidate[s].columns += candidate[child].columns;
            into[child] = s;
            std::int32_t* tail = &c.head[child];
            while (*tail >= 0) tail = &c.next[*tail];
            *tail = c.next[child];
            *link = c.head[child];
        }
    }
    for (std::int32_t s = found - 1; s >= 0; --s) into[s] = into[s] == s ? s : into[into[s]];
    Integers kept, number(found, -1);
    for (std::int32_t s = 0; s < found; ++s)
        if (into[s] == s) kept.push_back(s);
    S.supernodes = static_cast<std::int32_t>(kept.size());
    Integers tree(S.supernodes, -1);
    for (std::int32_t s = 0; s < S.supernodes; ++s) number[kept[s]] = s;
    for (std::int32_t s = 0; s < S.supernodes; ++s)
        if (up[kept[s]] >= 0) tree[s] = number[into[up[kept[s]]]];

    const Integers sequence = postorder(tree);
    Integers place(S.supernodes), rows(S.supernodes);
    S.first.resize(S.supernodes + 1);
    S.up.assign(S.supernodes, -1);
    for (std::int32_t k = 0; k < S.supernodes; ++k) place[sequence[k]] = k;
    std::int32_t columns = 0;
    for (std::int32_t k = 0; k < S.supernodes; ++k) {
        const Candidate& merged = candidate[kept[sequence[k]]];
        S.first[k] = columns;
        columns += merged.columns;
        rows[k] = merged.rows;
        if (tree[sequence[k]] >= 0) S.up[k] = place[tree[sequence[k]]];
    }
    S.first[S.supernodes] = n;
    Integers end(S.first), old(n);
    for (std::int32_t j = 0; j < n; ++j) old[end[place[number[into[super[j]]]]]++] = j;
    reorder(S, old);
    return rows;
}

// Row i of L is the subtree of supernodes between the entries of row i of A and the supernode of i. Taking the rows in
// order makes every list ascending.
void list_rows(const Lists& graph, Symbolic& S, const Integers& rows) {
    Integers super(S.nodes, S.supernodes), mark(S.supernodes + 1, -1);
    S.rows_start.resize(S.supernodes + 1);
    S.rows_start[0] = 0;
    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        S.rows_start[s + 1] = S.rows_start[s] + rows[s];
        for (std::int32_t p = S.first[s]; p < S.first[s + 1]; ++p) super[p] = s;
    }
    S.rows = LINALG::buffer<std::int32_t>(*graph.memory, S.rows_start[S.supernodes]);
    std::vector<std::int64_t> end(S.rows_start);
    for (std::int32_t p = 0; p < S.nodes; ++p) {
        mark[super[p]] = p;
        const std::int32_t v = S.node[p];
        for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at) {
            const std::int32_t q = S.position[graph.column[at]];
            for (std::int32_t s = q < p && q < S.pivots ? super[q] : -1; s >= 0 && mark[s] != p; s = S.up[s]) {
                mark[s] = p;
                S.rows[end[s]++] = p;
            }
        }
    }
}

// Where panels and update matrices lie. A front gathers the update matrices of its children, which lie on the one
// stack, and leaves its own on the other: depth alternates, so both are stacks in postorder.
void lay_out(Symbolic& S) {
    std::vector<std::int8_t>& stack = S.stack;
    stack.resize(S.supernodes);
    S.panel.resize(S.supernodes + 1);
    S.update.resize(S.supernodes);
    for (std::int32_t s = S.supernodes - 1; s >= 0; --s)
        stack[s] = static_cast<std::int8_t>(S.up[s] < 0 ? 0 : 1 - stack[S.up[s]]);
    std::vector<std::int64_t> held(S.supernodes);  // by the children of each supernode
    std::int64_t top[2] = {0, 0};
    S.panel[0] = 0;
    for (std::int32_t s = 0; s < S.supernodes; ++s) {
        const std::int32_t k = S.first[s + 1] - S.first[s];
        const std::int32_t r = static_cast<std::int32_t>(S.rows_start[s + 1] - S.rows_start[s]);
        const std::int64_t size = static_cast<std::int64_t>(r) * padded(r);
        S.most_rows = std::max(S.most_rows, k + r);
        S.panel[s + 1] = S.panel[s] + static_cast<std::int64_t>(k) * padded(k + r);
        S.update[s] = top[stack[s]];
        top[stack[s]] += size;
        S.stack_size[stack[s]] = std::max(S.stack_size[stack[s]], top[stack[s]]);
        top[1 - stack[s]] -= held[s];
        if (S.up[s] >= 0)
            held[S.up[s]] += size;
        else
            top[stack[s]] -= size;
    }
}

}  // namespace

Symbolic analyse(const Lists& graph, const std::vector<std::int8_t>& grounded) {
    Symbolic S = order(graph, grounded);
    Integers parent = elimination_tree(graph, S);
    const Integers sequence = postorder(parent);
    Integers renamed(S.pivots), number(S.pivots);
    for (std::int32_t p = 0; p < S.pivots; ++p) number[sequence[p]] = p;
    for (std::int32_t p = 0; p < S.pivots; ++p) renamed[p] = parent[sequence[p]] < 0 ? -1 : number[parent[sequence[p]]];
    parent = std::move(renamed);
    reorder(S, sequence);

    const Integers rows = find_supernodes(S, parent, column_counts(graph, S, parent));
    list_rows(graph, S, rows);
    lay_out(S);
    return S;
}

}  // namespace LDLT
