// A section's mesh: triangles, and quadrilaterals along its walls, coarse, to be refined by vq_levels.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "kit/section/section.h"

namespace velquor {

// Nodes and elements count from 1 in what the lists hold, as in velquor.h; owners count from 0.
struct Mesh {
    std::vector<Point> nodes;                           // in the section's frame and unit of length
    std::vector<std::array<std::int32_t, 4>> elements;  // counter-clockwise; a triangle repeats its third node
    std::vector<std::int32_t> owners;                   // of each element: index of its part, then those of the bars

    // An edge of an element that stands for an arc, on which new nodes belong.
    struct Bow {
        std::int32_t a, b;  // a < b
        Point centre;
    };
    std::vector<Bow> bows;  // in the order of a, then b

    bool has_corners = false;  // re-entrant ones, or of several materials: there shear stresses have no limit
};

// The mesh of a section, which is looked at by check_section first. `fineness` 2 halves the sizes of all elements;
// `for_stresses` takes more of them along fillets. Throws Error where records are wrong, bars lie outside of all parts,
// parts leave nothing of one another, or a part cannot be meshed. A section that comes as a mesh gives its own
// elements, with straight sides, and is refused another fineness than 1. Meshes are made one at a time in a process:
// calls from several threads wait for each other.
Mesh mesh_of(const Section& section, double fineness = 1, bool for_stresses = false);

}  // namespace velquor
