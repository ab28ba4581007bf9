// Orders the core: approximate minimum degree.
#include <amd.h>

#include <new>
#include <utility>

#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

using Integers = std::vector<std::int32_t>;

// Orders the nodes of the graph that `nodes` lists so that their elimination fills in little.
void minimum_degree(const Lists& graph, Integers& nodes) {
    const std::int32_t n = static_cast<std::int32_t>(nodes.size());
    if (n == 0) return;
    Integers number(graph.start.size() - 1, -1);
    std::int64_t entries = 0;
    for (std::int32_t k = 0; k < n; ++k) {
        number[nodes[k]] = k;
        entries += graph.start[nodes[k] + 1] - graph.start[nodes[k]];
    }
    // The ordering works in place on lists with a fifth of their length, and n, to spare.
    const std::int64_t size = entries + entries / 5 + n + 1;
    if (size > INT32_MAX) throw std::bad_alloc();
    const Buffer<std::int32_t> lists = LINALG::buffer<std::int32_t>(*graph.memory, size);
    Integers begin(n), length(n), count(n), inverse(n), sequence(n), head(n), element(n), degree(n), work(n);
    std::int32_t end = 0;
    for (std::int32_t k = 0; k < n; ++k) {
        begin[k] = end;
        for (std::int32_t at = graph.start[nodes[k]]; at < graph.start[nodes[k] + 1]; ++at)
            if (number[graph.column[at]] >= 0) lists[end++] = number[graph.column[at]];
        length[k] = end - begin[k];
    }
    // The inner routine: it takes no memory, so there is no failure of it to clean up after.
    amd_2(n, begin.data(), lists.get(), length.data(), static_cast<std::int32_t>(size), end, count.data(),
          inverse.data(), sequence.data(), head.data(), element.data(), degree.data(), work.data(), nullptr, nullptr);
    for (std::int32_t k = 0; k < n; ++k) work[k] = nodes[sequence[k]];
    nodes = std::move(work);
}

}  // namespace

Symbolic order(const Lists& graph, const std::vector<std::int8_t>& grounded) {
    Symbolic S;
    S.nodes = static_cast<std::int32_t>(grounded.size());
    for (std::int32_t v = 0; v < S.nodes; ++v)
        if (!grounded[v]) S.node.push_back(v);
    S.pivots = static_cast<std::int32_t>(S.node.size());
    minimum_degree(graph, S.node);
    for (std::int32_t v = 0; v < S.nodes; ++v)
        if (grounded[v]) S.node.push_back(v);
    S.position.resize(S.nodes);
    for (std::int32_t p = 0; p < S.nodes; ++p) S.position[S.node[p]] = p;
    return S;
}

}  // namespace LDLT
