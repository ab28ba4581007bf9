// Where nodes lie on the curves: sizes from the local thickness, graded, finer at sharp points.
#pragma once

#include <vector>

#include "kit/mesh/walls.h"

namespace velquor {

// Shares of the nodes between the ends of each curve, growing from its beginning. Opposite sides of a wall have the
// same. `size`: of the coarsest elements, 0 from the thickness. `fineness` 2 halves all sizes;
// `for_stresses` divides fillets, where stresses are largest, into more.
// Throws Failed where a piece is too thin for the mesher, or curves are too many; Error where `size` is too small.
std::vector<std::vector<double>> divide(const Plane& plane, const std::vector<Wall>& walls,
                                        const std::vector<bool>& sharp, double size, double fineness,
                                        bool for_stresses);

}  // namespace velquor
