// What the parts of vq_check share: the tables of one call, the shape of an element, and the list of findings.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "levels/mesh.h"

namespace levels {

// Everything that a host hands over to a call. Here rows and elements count from 1, as findings do.
struct Host : Tables {
    std::int32_t NGROUPS, NPOINTS;
    const VYZTUZE_INFO* POINTS;  // (NPOINTS)
    bool plastic;                // the mode is one that reads strengths
};

struct Point {
    double y, z;
};
inline Point place_of(const Host& t, std::int32_t node) { return {t.y(node), t.z(node)}; }
inline bool is_finite(const Point& at) { return std::isfinite(at.y) && std::isfinite(at.z); }
inline double distance(const Point& a, const Point& b) { return std::hypot(b.y - a.y, b.z - a.z); }

inline double property(const Host& t, std::int32_t e, int column) {
    return t.property(static_cast<std::size_t>(e) - 1, column);
}

// Corners of an element, counted from 0: n is 3 or 4.
struct Corners {
    int n;
    std::int32_t node[4];
};
inline Corners corners_of(const Host& t, std::int32_t e) {
    Corners c;
    for (int i = 0; i < 4; ++i) c.node[i] = t.node(static_cast<std::size_t>(e) - 1, i);
    c.n = t.corners(static_cast<std::size_t>(e) - 1);
    return c;
}

// First element with MATFLAG of exactly 1.0, whose modulus is EREF; 0 without one.
inline std::int32_t reference_element(const Host& t) {
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
void find_errors(const Host& t, std::vector<unsigned char>& used, Findings& findings);

// What it accepts though it is seldom meant; the tables are without errors.
void find_warnings(const Host& t, const std::vector<unsigned char>& used, Findings& findings);

// Where oblong quadrilaterals in thin walls make GJ wrong by more than is worth a warning, the one whose shape does
// most beside its wall's thickness, or 0. Elements of area A with sides a along the wall and b across it change GJ by
// the sum of G A (a^2 - b^2) / 3 (docs/theory.md).
std::int32_t find_oblong(const Host& t, const std::vector<unsigned char>& used);

}  // namespace levels
