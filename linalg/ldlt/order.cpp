// Approximate minimum degree ordering of the core.
#include <amd.h>

#include <new>

#include "linalg/ldlt/ldlt.h"

namespace LDLT {

Symbolic order(const Lists& graph, const std::vector<std::int8_t>& grounded) {
    Symbolic S;
    S.nodes = static_cast<std::int32_t>(grounded.size());
    S.node.resize(S.nodes);
    S.position.resize(S.nodes);

    // Until the order is known a position is the place among the nodes that are not grounded.
    std::vector<std::int32_t> free;
    free.reserve(S.nodes);
    for (std::int32_t v = 0; v < S.nodes; ++v) {
        if (grounded[v]) continue;
        S.position[v] = static_cast<std::int32_t>(free.size());
        free.push_back(v);
    }
    const std::int32_t n = S.pivots = static_cast<std::int32_t>(free.size());

    // The ordering works in place on lists with a fifth of their length, and n, to spare.
    const std::int64_t entries = graph.start[S.nodes];
    const std::int64_t size = entries + entries / 5 + n + 1;
    if (size > INT32_MAX) throw std::bad_alloc();
    const Buffer<std::int32_t> lists = buffer<std::int32_t>(size);
    std::vector<std::int32_t> begin(n), length(n), count(n), inverse(n), sequence(n), head(n), element(n), degree(n),
        work(n);
    std::int32_t end = 0;
    for (std::int32_t k = 0; k < n; ++k) {
        begin[k] = end;
        for (std::int32_t at = graph.start[free[k]]; at < graph.start[free[k] + 1]; ++at)
            if (!grounded[graph.column[at]]) lists[end++] = S.position[graph.column[at]];
        length[k] = end - begin[k];
    }
    // The inner routine: it takes no memory, so there is no failure of it to clean up after.
    if (n > 0)
        amd_2(n, begin.data(), lists.get(), length.data(), static_cast<std::int32_t>(size), end, count.data(),
              inverse.data(), sequence.data(), head.data(), element.data(), degree.data(), work.data(), nullptr,
              nullptr);

    for (std::int32_t p = 0; p < n; ++p) S.node[p] = free[sequence[p]];
    for (std::int32_t v = 0, p = n; v < S.nodes; ++v)
        if (grounded[v]) S.node[p++] = v;
    for (std::int32_t p = 0; p < S.nodes; ++p) S.position[S.node[p]] = p;
    return S;
}

}  // namespace LDLT
