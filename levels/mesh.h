// Meshes of the levels. Nodes and elements are counted from 1 in the tables, from 0 in code; tables lie column after
// column, as the library takes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "levels/velquor_levels.h"

namespace levels {

// The tables of a mesh, wherever they lie.
struct Tables {
    const double* NODES;  // (NNODES, 2)
    std::int32_t NNODES;
    const std::int32_t* ELEMENTS;  // (NELEMS, 4)
    std::int32_t NELEMS;
    const double* PROPS;  // (NELEMS, 10)

    double y(std::int32_t node) const { return NODES[node - 1]; }
    double z(std::int32_t node) const { return NODES[static_cast<std::size_t>(NNODES) + node - 1]; }
    std::int32_t node(std::size_t e, int corner) const {
        return ELEMENTS[static_cast<std::size_t>(corner) * NELEMS + e];
    }
    int corners(std::size_t e) const { return node(e, 2) == node(e, 3) ? 3 : 4; }
    double property(std::size_t e, int column) const {
        return PROPS[static_cast<std::size_t>(column - 1) * NELEMS + e];
    }
};

inline bool takes_part(const VYZTUZE_INFO& bar) { return bar.NODE >= 1 && bar.EMODUL >= 2.0; }

// A piece of the true course of a host's edge that is one edge of the present level.
struct Arc {
    std::int32_t A, B;  // the host's edge
    std::int32_t a, b;  // nodes of the piece, in the same direction
    double t0, t1;      // its share of the way from A to B
};

// A level of its own memory. Its first nodes are those of the level before, its elements 4 e to 4 e + 3 parts of that
// level's element e: part k holds corner k, in the same place among its own corners, the last of a triangle the middle.
struct Mesh {
    std::vector<double> nodes;           // (nodes, 2)
    std::vector<std::int32_t> elements;  // (elements, 4)
    std::vector<double> props;           // (elements, 10)
    Tables tables() const;
};

// The element of a finer level that holds corner p of element e of the host, `level` refinements below it.
inline std::size_t part_at_corner(std::size_t e, int p, int level) {
    const std::size_t parts = std::size_t{1} << 2 * level;
    return e * parts + static_cast<std::size_t>(p) * ((parts - 1) / 3);
}

// The edges of an accepted mesh whose course `place` may know: the free ones, and those between elements that differ in
// a property.
std::vector<Arc> arcs_of(const Tables& mesh);

// Splits every element in four: a quadrilateral at the middles of its sides and its centre, a triangle at the middles
// of its sides. New nodes of arcs are moved by `place`, centres follow them; the arcs become those of the new mesh.
// Throws std::bad_alloc, also where a number would not fit the tables.
Mesh refined(const Tables& mesh, std::vector<Arc>& arcs, vq_place place, void* context);

// Which part of its former element a bar lies in; that element was counted from 1, as the part is. Outside of all it is
// the part that it is nearest to.
std::int32_t part_with(const Tables& finer, std::int32_t element, double y, double z);

}  // namespace levels
