#include "levels/pieces.h"

#include <algorithm>

namespace levels {
namespace {

// First node of the piece that a node belongs to. Nodes on the way are moved nearer to it.
std::int32_t first_of(std::vector<std::int32_t>& piece, std::int32_t node) {
    const auto at = [&](std::int32_t n) -> std::int32_t& { return piece[static_cast<std::size_t>(n) - 1]; };
    while (at(node) != node) node = at(node) = at(at(node));
    return node;
}

}  // namespace

std::vector<std::int32_t> pieces_of(const Tables& mesh) {
    std::vector<std::int32_t> piece(static_cast<std::size_t>(mesh.NNODES));
    for (std::size_t e = 0; e < static_cast<std::size_t>(mesh.NELEMS); ++e) {
        const bool joins = mesh.property(e, VQ_GMOD) != 0;
        if (!joins && mesh.property(e, VQ_EMOD) == 0) continue;
        for (int n = mesh.corners(e), i = 0; i < n; ++i) {
            const std::int32_t node = mesh.node(e, i);
            std::int32_t& own = piece[static_cast<std::size_t>(node) - 1];
            if (own == 0) own = node;
            if (!joins) continue;
            const std::int32_t a = first_of(piece, mesh.node(e, 0)), b = first_of(piece, node);
            piece[static_cast<std::size_t>(std::max(a, b)) - 1] = std::min(a, b);
        }
    }
    for (std::int32_t& own : piece)
        if (own != 0) own = first_of(piece, own);
    return piece;
}

std::int32_t count_pieces(const Tables& mesh) {
    const std::vector<std::int32_t> piece = pieces_of(mesh);
    std::int32_t count = 0;
    for (std::size_t n = 0; n < piece.size(); ++n) count += piece[n] == static_cast<std::int32_t>(n) + 1;
    return count;
}

}  // namespace levels
