// What is measured on the mesh itself, its arcs included: exact but for rounding.
#pragma once

#include <vector>

#include "kit/mesh/mesh.h"

namespace velquor {

// Area of each owner of elements, in the order of Mesh::owners; `count` of them.
std::vector<double> areas_of(const Mesh& mesh, std::size_t count);

struct Perimeter {
    double outside = 0, inside = 0;  // of the section, and of its holes
};
Perimeter perimeter_of(const Mesh& mesh);

// The interval that the section takes up along y cos + z sin of an angle in radians.
struct Extent {
    double low = 0, high = 0;
};
Extent extent_of(const Mesh& mesh, double angle);

// Pieces that share no edge and no node with each other.
int pieces_of(const Mesh& mesh);

}  // namespace velquor
