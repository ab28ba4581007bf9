// Walls: pieces of the plane between two sides that run beside each other. Meshed in rows of quadrilaterals they need
// a tenth of the elements that triangles need.
#pragma once

#include <array>

#include "kit/mesh/plane.h"

namespace velquor {

// Four sides around a piece of one owner, counter-clockwise, each a single curve: 0 and 2 along the wall, 1 and 3
// across.
struct Wall {
    std::array<Side, 4> sides;
};

// Points at which stresses have no limit: corners that are re-entrant by more than an angle, corners where materials
// meet. One entry for each point. Above SHARP they need smaller elements; above SMOOTH there is no largest stress.
constexpr double SHARP = 0.3, SMOOTH = 0.01;  // radians
std::vector<bool> sharp_points(const Plane& plane, const std::vector<int>& material_of_owner, double angle);

// Finds walls, straight, tapered and bent, and cuts them out: adds points and lines across to the plane. A wall ends
// one thickness away from sharp points.
std::vector<Wall> cut_walls(Plane& plane, const std::vector<bool>& sharp);

}  // namespace velquor
