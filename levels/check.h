// What the parts of vq_check share: the tables of one call, the shape of an element, and the list of findings.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "levels/velquor_levels.h"

namespace velquor {

// The host's tables. Rows, columns and nodes count from 1.
struct Tables {
    std::int32_t NGROUPS;
    const double* NODES;  // (NNODES, 2)
    std::int32_t NNODES;
    const std::int32_t* ELEMENTS;  // (NELEMS, 4)
    std::int32_t NELEMS;
    const double* PROPS;  // (NELEMS, 10)
    std::int32_t NPOINTS;
    const VYZTUZE_INFO* POINTS;  // (NPOINTS)
    bool plastic;                // the mode is one that reads strengths
};

struct Point {
    double y, z;
};
inline Point place_of(const Tables& t, std::int32_t node) {
    return {t.NODES[node - 1], t.NODES[std::size_t(t.NNODES) + std::size_t(node) - 1]};
}
inline bool is_finite(const Point& at) { return std::isfinite(at.y) && std::isfinite(at.z); }
inline double distance(const Point& a, const Point& b) { return std::hypot(b.y - a.y, b.z - a.z); }

inline double property(const Tables& t, std::int32_t e, int column) {
    return t.PROPS[std::size_t(column - 1) * std::size_t(t.NELEMS) + std::size_t(e) - 1];
}

// Corners of an element, counted from 0: n is 3 or 4.
struct Corners {
    int n;
    std::int32_t node[4];
};
inline Corners corners_of(const Tables& t, std::int32_t e) {
    Corners c;
    for (int i = 0; i < 4; ++i) c.node[i] = t.ELEMENTS[std::size_t(i) * std::size_t(t.NELEMS) + std::size_t(e) - 1];
    c.n = c.node[2] == c.node[3] ? 3 : 4;
    return c;
}

inline bool takes_part(const VYZTUZE_INFO& bar) { return bar.NODE >= 1 && bar.EMODUL >= 2.0; }

// First element with MATFLAG of exactly 1.0, whose modulus is EREF; 0 without one.
inline std::int32_t reference_element(const Tables& t) {
    for (std::int32_t e = 1; e <= t.NELEMS; ++e)
        if (property(t, e, VQ_MATFLAG) == 1.0) return e;
    return 0;
}

// All findings are counted, the first `capacity` written.
struct Findings {
    vq_finding* list;
    std::int64_t capacity, count;
};
inline void add(Findings& findings, std::int32_t table, std::int32_t row, std::int32_t reason) {
    if (findings.count < findings.capacity)
        findings.list[findings.count] = {table, row, reason, reason < VQ_LOOSE_PIECE ? VQ_ERROR : VQ_WARNING};
    ++findings.count;
}

// By whom a node is used, one byte for each node.
enum : unsigned char { BY_ELEMENT = 1, BY_BAR = 2 };

// What vq_velquor refuses. Fills `used`, in which bars count that take part.
void find_errors(const Tables& t, std::vector<unsigned char>& used, Findings& findings);

// What it accepts though it is seldom meant; the tables are without errors.
void find_warnings(const Tables& t, const std::vector<unsigned char>& used, Findings& findings);

// The quadrilateral whose shape makes torsion most wrong in a thin wall, where that is worth a warning, or 0. In a wall
// of n layers of elements that are rho times as long along the wall as across it, GJ is too large by (rho^2 - 1) / n^2,
// or too small where they are shorter (docs/theory.md).
std::int32_t find_oblong(const Tables& t, const std::vector<unsigned char>& used);

}  // namespace velquor
