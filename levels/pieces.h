// Whether a mesh is one piece.
#pragma once

#include "levels/mesh.h"

namespace levels {

// For each node of an accepted mesh the number of the first node of its piece: nodes are joined by the elements that
// have them. Elements of GMOD 0 carry no shear and join nothing; 0 where no element has the node, or only such as have
// no EMOD either.
std::vector<std::int32_t> pieces_of(const Tables& mesh);

// How many there are.
std::int32_t count_pieces(const Tables& mesh);

}  // namespace levels
