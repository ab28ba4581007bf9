// What a mesh of another program needs before it can be calculated: steps of read_mesh.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "kit/mesh/raw_mesh.h"
#include "kit/section/section.h"

namespace velquor {

// Elements of three or four corners, as indices of nodes from 0; a triangle repeats its third.
struct Loose {
    std::vector<Point> nodes;
    std::vector<std::uint64_t> numbers;  // of the nodes in the file; 0 of those that were made
    struct Element {
        std::uint64_t number = 0;  // in the file
        std::int32_t surface = 0;  // as RawMesh::Surface::number
        std::array<std::int32_t, 4> corners{};
    };
    std::vector<Element> elements;
};

// Each step adds a line to `notes` where it has done something, and throws Error with the place of an element or a node
// behind `place` where it cannot be done.

// The elements in the order of their numbers, quadratic ones cut in four, in the plane in which they lie. Nodes that no
// element has stay in the list, and are told.
Loose in_plane(const RawMesh& raw, const std::string& plane, const std::string& place, std::vector<std::string>& notes);

// Nodes within this distance become the one with the lowest number; quadrilaterals that lose a corner triangles.
void join(Loose& mesh, double distance, const std::string& length, const std::string& place,
          std::vector<std::string>& notes);

// Turns clockwise elements, and cuts quadrilaterals with a corner that is re-entrant or nearly straight in two.
void straighten(Loose& mesh, const std::string& place, std::vector<std::string>& notes);

// Throws Error where two elements cover each other, or where a node lies on an edge that does not have it.
void check_fit(const Loose& mesh, double distance, const std::string& place);

// Leaves out nodes that no element has.
void renumber(Loose& mesh);

}  // namespace velquor
