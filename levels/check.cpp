// What the library refuses: its own rules, in the order of the tables.
#include "levels/check.h"

#include <algorithm>
#include <limits>

#include "levels/boundary.h"
#include "levels/plastic.h"

namespace levels {

namespace {

// Single precision on purpose: the library compares with these values.
constexpr double MODULUSFACTOR = 1.01e-6f, MINEDGE = 1e-8f, MINEDGERATIO = 1e-5f;
constexpr double MINSINE = 0.08;

constexpr std::int32_t TOOLARGE = std::numeric_limits<std::int32_t>::max();

void find_in_call(const Host& t, Findings& findings) {
    if (!t.NODES || !t.ELEMENTS || !t.PROPS || (!t.POINTS && t.NPOINTS != 0))
        add(findings, VQ_IN_CALL, 0, VQ_NULL_TABLE);
    if (std::min({t.NGROUPS, t.NNODES, t.NELEMS, t.NPOINTS}) < 0) add(findings, VQ_IN_CALL, 0, VQ_NEGATIVE_COUNT);
    if (std::max({t.NNODES, t.NELEMS, t.NPOINTS}) == TOOLARGE) add(findings, VQ_IN_CALL, 0, VQ_COUNT_TOO_LARGE);
}

bool is_inside(std::int32_t number, std::int32_t count) { return number >= 1 && number <= count; }

std::vector<unsigned char> used_nodes(const Host& t) {
    std::vector<unsigned char> used(static_cast<std::size_t>(t.NNODES));
    for (std::int32_t e = 1; e <= t.NELEMS; ++e)
        for (const std::int32_t node : corners_of(t, e).node)
            if (is_inside(node, t.NNODES)) used[node - 1] = BY_ELEMENT;
    for (std::int32_t b = 0; b < t.NPOINTS; ++b)
        if (takes_part(t.POINTS[b]) && t.POINTS[b].NODE <= t.NNODES) used[t.POINTS[b].NODE - 1] |= BY_BAR;
    return used;
}

bool names_a_node_twice(const Corners& c) {
    for (int i = 0; i < c.n; ++i)
        for (int j = 0; j < i; ++j)
            if (c.node[i] == c.node[j]) return true;
    return false;
}

// Edges of a polygon of n corners, and the smallest of 1 and the sines of the turning angles from each to the next.
// Lengths by the library's own formula, which overflows where another would not.
struct Shape {
    double longest, shortest, sine;
};
Shape measure(int n, const Point* at) {
    double dy[4], dz[4], L[4];
    for (int i = 0; i < n; ++i) {
        dy[i] = at[(i + 1) % n].y - at[i].y, dz[i] = at[(i + 1) % n].z - at[i].z;
        L[i] = std::sqrt(dy[i] * dy[i] + dz[i] * dz[i]);
    }
    Shape shape{L[0], L[0], 1.0};
    for (int i = 0; i < n; ++i) {
        const int j = (i + 1) % n;
        shape.longest = std::max(shape.longest, L[i]);
        shape.shortest = std::min(shape.shortest, L[i]);
        shape.sine = std::min(shape.sine, dy[i] / L[i] * (dz[j] / L[j]) - dz[i] / L[i] * (dy[j] / L[j]));
    }
    return shape;
}

void find_in_shape(std::int32_t e, int n, Point* at, Findings& findings) {
    const double A2 =
        n == 3 ? (at[0].y - at[2].y) * at[1].z + (at[2].y - at[1].y) * at[0].z + (at[1].y - at[0].y) * at[2].z
               : (at[0].y - at[2].y) * (at[1].z - at[3].z) - (at[0].z - at[2].z) * (at[1].y - at[3].y);
    const bool clockwise = n == 3 ? A2 < 0.0 : !(A2 > 0.0);  // a triangle without area passes
    if (clockwise && n == 4) std::swap(at[1], at[3]);        // its corners are judged in the other order
    const Shape shape = measure(n, at);
    if (shape.longest < MINEDGE) return add(findings, VQ_IN_ELEMENTS, e, VQ_ELEMENT_SMALL);  // the rest follows from it
    if (clockwise) add(findings, VQ_IN_ELEMENTS, e, VQ_CLOCKWISE);
    if (shape.shortest / shape.longest < MINEDGERATIO) add(findings, VQ_IN_ELEMENTS, e, VQ_EDGE_SHORT);
    if (n == 4 && shape.sine < MINSINE) add(findings, VQ_IN_ELEMENTS, e, VQ_CORNER_BAD);
}

// Without a reference EREF is 0, and no element counts as soft.
void find_in_element(const Host& t, std::int32_t e, double EREF, Findings& findings) {
    const Corners c = corners_of(t, e);
    Point at[4];
    bool has_shape = true;
    for (int i = 0; i < c.n; ++i) {
        if (!is_inside(c.node[i], t.NNODES)) return add(findings, VQ_IN_ELEMENTS, e, VQ_NODE_OUTSIDE);
        at[i] = place_of(t, c.node[i]);
        has_shape = has_shape && is_finite(at[i]);
    }
    if (property(t, e, VQ_EMOD) < EREF * MODULUSFACTOR) return;  // so soft an element is not looked at
    if (names_a_node_twice(c)) return add(findings, VQ_IN_ELEMENTS, e, VQ_NODE_TWICE);
    if (has_shape) find_in_shape(e, c.n, at, findings);
}

bool has_finite_properties(const Host& t, std::int32_t e) {
    for (int column = 1; column <= VQ_NCOLUMNS; ++column) {
        if (column == VQ_CARRIED || column == VQ_TENTH) continue;
        if ((column == VQ_FNEG || column == VQ_FPOS) && !t.plastic) continue;
        if (!std::isfinite(property(t, e, column))) return false;
    }
    return true;
}

void find_in_properties(const Host& t, std::int32_t reference, Findings& findings) {
    if (reference == 0) add(findings, VQ_IN_PROPS, 0, VQ_NO_REFERENCE);
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
        if (!has_finite_properties(t, e)) add(findings, VQ_IN_PROPS, e, VQ_NOT_FINITE);
        const double group = std::fabs(property(t, e, VQ_GROUP));
        if (std::isfinite(group) && (group < 1.0 || group >= t.NGROUPS + 1.0))
            add(findings, VQ_IN_PROPS, e, VQ_GROUP_OUTSIDE);
        if (e == reference && property(t, e, VQ_EMOD) <= 0.0) add(findings, VQ_IN_PROPS, e, VQ_REFERENCE_BAD);
    }
}

// The first of several bars on one node keeps it.
void find_in_bars(const Host& t, const std::vector<unsigned char>& used, Findings& findings) {
    std::vector<bool> taken(used.size());
    for (std::int32_t b = 1; b <= t.NPOINTS; ++b) {
        const VYZTUZE_INFO& bar = t.POINTS[b - 1];
        if (!takes_part(bar)) continue;
        const bool has_node = bar.NODE <= t.NNODES, has_host = is_inside(bar.ELEMENT, t.NELEMS);
        if (!std::isfinite(bar.AREA) || !std::isfinite(bar.EMODUL) || !std::isfinite(bar.GMODUL) ||
            !std::isfinite(bar.BARWEIGHT))
            add(findings, VQ_IN_POINTS, b, VQ_NOT_FINITE);
        if (!has_node) add(findings, VQ_IN_POINTS, b, VQ_NODE_OUTSIDE);
        if (has_host && names_a_node_twice(corners_of(t, bar.ELEMENT))) add(findings, VQ_IN_POINTS, b, VQ_NODE_TWICE);
        if (has_node && ((used[bar.NODE - 1] & BY_ELEMENT) || taken[bar.NODE - 1]))
            add(findings, VQ_IN_POINTS, b, VQ_NODE_TAKEN);
        if (!has_host) add(findings, VQ_IN_POINTS, b, VQ_HOST_OUTSIDE);
        if (has_node) taken[bar.NODE - 1] = true;
    }
}

}  // namespace

void find_errors(const Host& t, std::vector<unsigned char>& used, Findings& findings) {
    used = used_nodes(t);
    for (std::int32_t node = 1; node <= t.NNODES; ++node)
        if (used[node - 1] && !is_finite(place_of(t, node))) add(findings, VQ_IN_NODES, node, VQ_NOT_FINITE);
    const std::int32_t reference = reference_element(t);
    const double EREF = reference == 0 ? 0.0 : property(t, reference, VQ_EMOD);
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) find_in_element(t, e, EREF, findings);
    find_in_properties(t, reference, findings);
    find_in_bars(t, used, findings);
}

}  // namespace levels

extern "C" std::int32_t vq_check(std::int32_t NGROUPS, const double* NODES, std::int32_t NNODES,
                                 const std::int32_t* ELEMENTS, std::int32_t NELEMS, const double* PROPS,
                                 std::int32_t NPOINTS, const VYZTUZE_INFO* POINTS, double mode, std::int32_t CAPACITY,
                                 vq_finding* FINDINGS) {
    using namespace levels;
    const ThreadState state;
    const Host t{{NODES, NNODES, ELEMENTS, NELEMS, PROPS}, NGROUPS, NPOINTS, POINTS, is_plastic(mode)};
    Findings findings{FINDINGS, FINDINGS ? CAPACITY : 0, 0};
    find_in_call(t, findings);
    if (findings.count > 0) return static_cast<std::int32_t>(findings.count);
    try {
        std::vector<unsigned char> used;
        find_errors(t, used, findings);
        if (findings.count == 0) find_warnings(t, used, findings);
    } catch (...) {  // no memory
        return -1;
    }
    return static_cast<std::int32_t>(std::min<std::int64_t>(findings.count, TOOLARGE));
}

extern "C" const char* vq_reason(std::int32_t REASON) {
    switch (REASON) {
        case VQ_NULL_TABLE: return "has a null table";
        case VQ_NEGATIVE_COUNT: return "has a negative count";
        case VQ_COUNT_TOO_LARGE: return "has a count of 2147483647";
        case VQ_NOT_FINITE: return "holds a value that is not finite";
        case VQ_NODE_OUTSIDE: return "names a node outside 1 to NNODES";
        case VQ_NODE_TWICE: return "names a node twice, or lies in an element that does";
        case VQ_CLOCKWISE: return "is clockwise, or without area";
        case VQ_EDGE_SHORT: return "has an edge below 1e-5 of its longest";
        case VQ_ELEMENT_SMALL: return "has no edge of 1e-8 or more";
        case VQ_CORNER_BAD: return "has a corner below 4.6 degrees, within 4.6 degrees of straight, or re-entrant";
        case VQ_GROUP_OUTSIDE: return "has a group outside 1 to NGROUPS";
        case VQ_NO_REFERENCE: return "has no row with MATFLAG 1.0, so no reference modulus";
        case VQ_REFERENCE_BAD: return "has the reference modulus, which is not above 0";
        case VQ_NODE_TAKEN: return "stands on a node of an element or another bar";
        case VQ_HOST_OUTSIDE: return "has an ELEMENT outside 1 to NELEMS";
        case VQ_LOOSE_PIECE: return "begins a piece that no element connects with those before it";
        case VQ_MIDDLE_AT_100: return "has the middle of its extent at 100.0, where the plastic search ends at once";
        case VQ_FLAT_TRIANGLE: return "is a triangle whose corners lie in one line";
        case VQ_OBLONG: return "is too oblong for the few layers of its thin wall: GJ is wrong by more than 5 per cent";
        case VQ_COUPLING_ZERO: return "has a COUPLING of 0: groups bend by themselves, YC and ZC are 0";
        case VQ_STRENGTH_MISSING: return "has no row with both strengths, so PLAXIS is only the middle of the extent";
        case VQ_STRENGTH_MIXED: return "lacks a strength that others have";
        case VQ_STRENGTH_NEGATIVE: return "has a negative strength: FNEG and FPOS are both positive";
        case VQ_BAR_OUTSIDE: return "lies outside its ELEMENT, and is pulled to its boundary";
        case VQ_HINGE: return "joins corners that share no edge, and holds them less on every finer mesh";
        case VQ_COUPLING_UNLIKE: return "has another COUPLING than its group: moments take the group's last";
        default: return "has a reason that is not known here";
    }
}
