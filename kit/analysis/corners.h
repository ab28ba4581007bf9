// How far the neighbourhood of sharp corners reaches, in which shear stresses have a limit but say only how near the
// corner they were taken.
#pragma once

#include <vector>

#include "kit/mesh/mesh.h"

namespace velquor {

// Of each node: half of the wall's thickness at the corner, at least the longest edge there; 0 where `sharp` (nodes)
// is 0. The thickness is the distance to the nearest point of the outline that is further away along it.
std::vector<double> reach_of_corners(const Mesh& mesh, const std::vector<std::int32_t>& sharp);

}  // namespace velquor
