// What the library accepts though it is seldom meant, in the order of the tables.
#include <algorithm>
#include <limits>
#include <map>

#include "levels/check.h"
#include "levels/pieces.h"
#include "levels/sharp.h"

namespace levels {

namespace {

// The plastic search takes 100.0 for the position before its first, and ends where the line moves by less than this.
constexpr double FIRSTLINE = 100.0, MINSTEP = 1e-9;
constexpr double OUTSIDE = 1e-6;  // of a host element's longest edge

void find_in_nodes(const Host& t, Findings& findings) {
    const std::vector<std::int32_t> piece = pieces_of(t);
    const std::vector<std::int8_t> exponent = exponents(t, t, 0);
    bool found = false;
    for (std::int32_t n = 1; n <= t.NNODES; ++n) {
        if (piece[n - 1] == n && found) add(findings, VQ_IN_NODES, n, VQ_LOOSE_PIECE);
        found = found || piece[n - 1] == n;
        if (exponent[n - 1] == HINGE) add(findings, VQ_IN_NODES, n, VQ_HINGE);
    }
}

// All nodes widen the interval of the search: those that nothing uses stand at the origin in it, those of bars that
// take no part at their places, where these are finite.
bool is_middle_at_first_line(const Host& t, const std::vector<unsigned char>& used) {
    std::vector<bool> placed(used.begin(), used.end());
    for (std::int32_t b = 0; b < t.NPOINTS; ++b) {
        const std::int32_t node = t.POINTS[b].NODE;
        if (node >= 1 && node <= t.NNODES && is_finite(place_of(t, node))) placed[node - 1] = true;
    }
    Point lo{1e9, 1e9}, hi{-1e9, -1e9};
    for (std::int32_t n = 1; n <= t.NNODES; ++n) {
        const Point at = placed[n - 1] ? place_of(t, n) : Point{0, 0};
        lo = {std::min(lo.y, at.y), std::min(lo.z, at.z)};
        hi = {std::max(hi.y, at.y), std::max(hi.z, at.z)};
    }
    const auto at_first = [](double a, double b) { return std::fabs(FIRSTLINE - (a + b) * 0.5) < MINSTEP; };
    return at_first(lo.y, hi.y) || at_first(lo.z, hi.z);
}

// Without area, up to the rounding of its coordinates.
bool is_flat_triangle(const Host& t, std::int32_t e) {
    const Corners c = corners_of(t, e);
    if (c.n != 3 || property(t, e, VQ_GMOD) == 0.0) return false;
    const Point p[] = {place_of(t, c.node[0]), place_of(t, c.node[1]), place_of(t, c.node[2])};
    const double L = std::max({distance(p[0], p[1]), distance(p[1], p[2]), distance(p[2], p[0])});
    if (L == 0.0) return true;
    double farthest = L;
    for (const Point& at : p) farthest = std::max({farthest, std::fabs(at.y), std::fabs(at.z)});
    const double area =
        (p[1].y - p[0].y) / L * ((p[2].z - p[0].z) / L) - (p[2].y - p[0].y) / L * ((p[1].z - p[0].z) / L);
    return std::fabs(area) <= 4 * std::numeric_limits<double>::epsilon() * (farthest / L);
}

// The first row of each group of a coupled section that has another factor than the group's first: the library's
// moments take the group's last, its stresses each element's own.
std::vector<std::int32_t> unlike_factors(const Host& t) {
    std::vector<std::int32_t> rows;
    bool coupled = false;
    for (std::int32_t e = 1; e <= t.NELEMS && !coupled; ++e) coupled = property(t, e, VQ_COUPLING) < 1.0;
    if (!coupled) return rows;
    struct Group {
        double factor;
        bool told;
    };
    std::map<std::int64_t, Group> groups;
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
        const double factor = property(t, e, VQ_COUPLING);
        const auto number = static_cast<std::int64_t>(std::fabs(property(t, e, VQ_GROUP)));
        Group& group = groups.try_emplace(number, Group{factor, false}).first->second;
        if (group.told || factor == group.factor) continue;
        group.told = true;
        rows.push_back(e);
    }
    return rows;
}

void find_in_properties(const Host& t, Findings& findings) {
    const double ELIM = (property(t, reference_element(t), VQ_EMOD) + 10.0) / 1000000.0;
    const auto counts = [&](std::int32_t e) {
        return property(t, e, VQ_MATFLAG) >= 0.5 && property(t, e, VQ_EMOD) >= ELIM;
    };
    const auto has_both = [&](std::int32_t e) {
        return property(t, e, VQ_FNEG) != 0.0 && property(t, e, VQ_FPOS) != 0.0;
    };
    bool any = false;
    if (t.plastic) {
        for (std::int32_t e = 1; e <= t.NELEMS && !any; ++e) any = counts(e) && has_both(e);
        if (!any) add(findings, VQ_IN_PROPS, 0, VQ_STRENGTH_MISSING);
    }
    const std::vector<std::int32_t> unlike = unlike_factors(t);
    auto next = unlike.begin();
    bool cleared = false;
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
        if (!cleared && property(t, e, VQ_COUPLING) == 0.0) {
            add(findings, VQ_IN_PROPS, e, VQ_COUPLING_ZERO);
            cleared = true;
        }
        if (t.plastic && counts(e)) {
            if (any && !has_both(e)) add(findings, VQ_IN_PROPS, e, VQ_STRENGTH_MIXED);
            if (property(t, e, VQ_FNEG) < 0.0 || property(t, e, VQ_FPOS) < 0.0)
                add(findings, VQ_IN_PROPS, e, VQ_STRENGTH_NEGATIVE);
        }
        if (next != unlike.end() && *next == e) add(findings, VQ_IN_PROPS, *next++, VQ_COUPLING_UNLIKE);
    }
}

// Lengths over the longest edge, so that none overflows. Of any polygon in either order: by the parity of the edges
// that a ray crosses, and the distance from the nearest edge.
bool is_outside(const Host& t, const VYZTUZE_INFO& bar) {
    const Corners c = corners_of(t, bar.ELEMENT);
    const Point at = place_of(t, bar.NODE);
    Point corner[4];
    double L = 0.0;
    for (int i = 0; i < c.n; ++i) {
        corner[i] = place_of(t, c.node[i]);
        L = std::max(L, distance(corner[i], place_of(t, c.node[(i + 1) % c.n])));
    }
    for (int i = 0; i < c.n; ++i) corner[i] = {(corner[i].y - at.y) / L, (corner[i].z - at.z) / L};
    bool inside = false;
    double nearest = std::numeric_limits<double>::infinity();
    for (int i = 0; i < c.n; ++i) {
        const Point a = corner[i], b = corner[(i + 1) % c.n], d{b.y - a.y, b.z - a.z};
        if ((a.z > 0.0) != (b.z > 0.0) && a.y - a.z * d.y / d.z > 0.0) inside = !inside;
        const double dd = d.y * d.y + d.z * d.z;
        const double s = dd > 0.0 ? std::clamp(-(a.y * d.y + a.z * d.z) / dd, 0.0, 1.0) : 0.0;
        nearest = std::min(nearest, std::hypot(a.y + s * d.y, a.z + s * d.z));
    }
    return !inside && nearest > OUTSIDE;
}

}  // namespace

void find_warnings(const Host& t, const std::vector<unsigned char>& used, Findings& findings) {
    if (t.plastic && is_middle_at_first_line(t, used)) add(findings, VQ_IN_NODES, 0, VQ_MIDDLE_AT_100);
    find_in_nodes(t, findings);
    const std::int32_t oblong = find_oblong(t, used);
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
        if (is_flat_triangle(t, e)) add(findings, VQ_IN_ELEMENTS, e, VQ_FLAT_TRIANGLE);
        if (e == oblong) add(findings, VQ_IN_ELEMENTS, e, VQ_OBLONG);
    }
    find_in_properties(t, findings);
    for (std::int32_t b = 1; b <= t.NPOINTS; ++b)
        if (takes_part(t.POINTS[b - 1]) && is_outside(t, t.POINTS[b - 1]))
            add(findings, VQ_IN_POINTS, b, VQ_BAR_OUTSIDE);
}

}  // namespace levels
