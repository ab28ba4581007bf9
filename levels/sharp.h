// Where shear stresses grow without limit.
#pragma once

#include "levels/mesh.h"

namespace levels {

// For each node of the host, (NNODES), whether stresses are infinite there on an infinitely fine mesh. `finest` is
// `level` refinements of `host`: angles of arcs tend to straight ones.
std::vector<std::int8_t> sharp_nodes(const Tables& host, const Tables& finest, int level);

}  // namespace levels
