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

// The piece that each element belongs to, counted from 0: pieces share no edge and no node with each other.
std::vector<int> pieces_of(const Mesh& mesh);

// The least distance of a piece from the others. Arcs count as the chords of their edges.
struct Gap {
    double distance = 0;
    std::size_t here = 0, there = 0;  // elements of the piece and of another one
};
Gap gap_around(const Mesh& mesh, const std::vector<int>& pieces, int piece);

}  // namespace velquor
