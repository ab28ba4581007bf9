// Orders the core: approximate minimum degree, or for large meshes on which that fares badly nested dissection with
// minimum degree in the parts.
#include <amd.h>

#include <algorithm>
#include <new>

#include "linalg/ldlt/ldlt.h"

namespace LDLT {
namespace {

using Integers = std::vector<std::int32_t>;

// Reorders the n nodes of `subset` so that their elimination fills in little, as if the rest of the graph were not
// there. number (nodes) is -1 throughout, and again afterwards.
void minimum_degree(const Lists& graph, std::int32_t* subset, std::int32_t n, Integers& number) {
    if (n == 0) return;
    std::int64_t entries = 0;
    for (std::int32_t k = 0; k < n; ++k) {
        number[subset[k]] = k;
        entries += graph.start[subset[k] + 1] - graph.start[subset[k]];
    }
    // The ordering works in place on lists with a fifth of their length, and n, to spare.
    const std::int64_t size = entries + entries / 5 + n + 1;
    if (size > INT32_MAX) throw std::bad_alloc();
    const Buffer<std::int32_t> lists = buffer<std::int32_t>(size);
    Integers begin(n), length(n), count(n), inverse(n), sequence(n), head(n), element(n), degree(n), work(n);
    std::int32_t end = 0;
    for (std::int32_t k = 0; k < n; ++k) {
        begin[k] = end;
        for (std::int32_t at = graph.start[subset[k]]; at < graph.start[subset[k] + 1]; ++at)
            if (number[graph.column[at]] >= 0) lists[end++] = number[graph.column[at]];
        length[k] = end - begin[k];
    }
    // The inner routine: it takes no memory, so there is no failure of it to clean up after.
    amd_2(n, begin.data(), lists.get(), length.data(), static_cast<std::int32_t>(size), end, count.data(),
          inverse.data(), sequence.data(), head.data(), element.data(), degree.data(), work.data(), nullptr, nullptr);
    for (std::int32_t k = 0; k < n; ++k) number[subset[k]] = -1;
    std::copy_n(subset, n, work.begin());
    for (std::int32_t k = 0; k < n; ++k) subset[k] = work[sequence[k]];
}

constexpr std::int32_t LEAF = 5000;  // nodes of a part that is not divided further
constexpr double BALANCE = 0.3;      // smallest share of a part on either side of its separator
constexpr int MAXSWEEPS = 2;         // searches for a node at the rim

// Parts of the graph, each a range of `sequence`; a separator follows the two parts that it separates.
struct Dissection {
    Integers sequence;
    Integers part;   // (nodes)  -1 in no part: grounded, or in a separator
    Integers level;  // (nodes)  distance from the root of the last search
    Integers queue;  // nodes that it reached, by distance
    std::int32_t parts = 0;
};

struct Range {
    std::int32_t begin, end;
};

void search(const Lists& graph, Dissection& d, Range range, std::int32_t root) {
    for (std::int32_t k = range.begin; k < range.end; ++k) d.level[d.sequence[k]] = -1;
    d.queue.assign(1, root);
    d.level[root] = 0;
    for (std::size_t head = 0; head < d.queue.size(); ++head) {
        const std::int32_t v = d.queue[head];
        for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at) {
            const std::int32_t w = graph.column[at];
            if (d.part[w] != d.part[v] || d.level[w] >= 0) continue;
            d.level[w] = d.level[v] + 1;
            d.queue.push_back(w);
        }
    }
}

// The level with the fewest nodes that leaves enough of them on both sides, 0 if there is none.
std::int32_t narrowest_level(const Dissection& d) {
    Integers size(d.level[d.queue.back()] + 1);
    for (const std::int32_t v : d.queue) ++size[d.level[v]];
    const double all = static_cast<double>(d.queue.size());
    std::int32_t best = 0, below = size[0];
    for (std::int32_t l = 1; l + 1 < static_cast<std::int32_t>(size.size()); below += size[l++]) {
        const bool balanced = below >= BALANCE * all && below + size[l] <= (1 - BALANCE) * all;
        if (balanced && (best == 0 || size[l] < size[best])) best = l;
    }
    return best;
}

// Cuts a range in two: nodes on side 0, on side 1, and last those on side 2, the separator, which is in no part.
template <class Side>
void cut(Dissection& d, Range range, Side side, std::vector<Range>& open) {
    Integers sides[3];
    for (std::int32_t k = range.begin; k < range.end; ++k) sides[side(d.sequence[k])].push_back(d.sequence[k]);
    std::int32_t to = range.begin;
    for (int s = 0; s < 3; ++s) {
        const std::int32_t begin = to;
        for (const std::int32_t v : sides[s]) {
            d.part[v] = s < 2 ? d.parts : -1;
            d.sequence[to++] = v;
        }
        if (s < 2) ++d.parts;
        if (s < 2 && to > begin) open.push_back({begin, to});
    }
}

// George's nested dissection with the levels of a breadth-first search from a rim as separators.
void dissect(const Lists& graph, Integers& sequence, Integers& number) {
    Dissection d;
    d.part.assign(number.size(), -1);
    d.level.assign(number.size(), -1);
    for (const std::int32_t v : sequence) d.part[v] = 0;
    d.parts = 1;
    d.sequence = std::move(sequence);
    std::vector<Range> open{{0, static_cast<std::int32_t>(d.sequence.size())}}, leaves;
    while (!open.empty()) {
        const Range range = open.back();
        open.pop_back();
        std::int32_t separator = 0;
        if (range.end - range.begin > LEAF) {
            search(graph, d, range, d.sequence[range.begin]);
            if (static_cast<std::int32_t>(d.queue.size()) < range.end - range.begin) {
                cut(
                    d, range, [&](std::int32_t v) { return d.level[v] >= 0 ? 0 : 1; }, open);
                continue;
            }
            for (int k = 0; k < MAXSWEEPS; ++k) search(graph, d, range, d.queue.back());
            separator = narrowest_level(d);
        }
        if (separator == 0) {
            leaves.push_back(range);
            continue;
        }
        // What does not touch the far side need not separate.
        const auto touches_far_side = [&](std::int32_t v) {
            for (std::int32_t at = graph.start[v]; at < graph.start[v + 1]; ++at)
                if (d.part[graph.column[at]] == d.part[v] && d.level[graph.column[at]] > separator) return true;
            return false;
        };
        for (const std::int32_t v : d.queue)
            if (d.level[v] == separator && !touches_far_side(v)) d.level[v] = separator - 1;
        cut(
            d, range, [&](std::int32_t v) { return d.level[v] < separator   ? 0
                                                   : d.level[v] > separator ? 1
                                                                            : 2; },
            open);
    }
    for (const Range& leaf : leaves)
        minimum_degree(graph, d.sequence.data() + leaf.begin, leaf.end - leaf.begin, number);
    sequence = std::move(d.sequence);
}

}  // namespace

Symbolic order(const Lists& graph, const std::vector<std::int8_t>& grounded, Ordering ordering) {
    Symbolic S;
    S.nodes = static_cast<std::int32_t>(grounded.size());
    for (std::int32_t v = 0; v < S.nodes; ++v)
        if (!grounded[v]) S.node.push_back(v);
    S.pivots = static_cast<std::int32_t>(S.node.size());
    Integers number(S.nodes, -1);
    if (ordering == Ordering::dissection)
        dissect(graph, S.node, number);
    else
        minimum_degree(graph, S.node.data(), S.pivots, number);
    for (std::int32_t v = 0; v < S.nodes; ++v)
        if (grounded[v]) S.node.push_back(v);
    S.position = std::move(number);
    for (std::int32_t p = 0; p < S.nodes; ++p) S.position[S.node[p]] = p;
    return S;
}

}  // namespace LDLT
