// Where shear stresses grow without limit, and how fast.
#pragma once

#include "levels/mesh.h"

namespace levels {

// For each node of the host, (NNODES), the exponent k of the distance r with which displacements go near it as r^k, in
// 64ths: 64 where stresses are finite, below that they grow as r^(k - 1); 0 where parts touch in this node alone, which
// holds them less and less as the mesh becomes finer. `finest` is `level` refinements of `host`: angles of arcs tend to
// straight ones.
std::vector<std::int8_t> exponents(const Tables& host, const Tables& finest, int level);

// Up to this exponent stresses count as infinite; above it are the corners of polygons that stand for arcs.
constexpr std::int8_t SHARP = 58, HINGE = 0;

}  // namespace levels
