// Oblong quadrilaterals in thin walls, and what they do to GJ: mechanics and formula in docs/theory.md.
#include <algorithm>
#include <tuple>

#include "levels/check.h"

namespace levels {

namespace {

constexpr double MINERROR = 0.05;   // of GJ
constexpr double THIN = 3.0;        // a wall is thin below the section's extent over this
constexpr double MINSTIFF = 0.001;  // of the largest GMOD: softer elements carry no torsion worth a warning

// Sides of elements are numbered through: side s of element e, from its corner s to the next, is 4 (e - 1) + s, and
// s ^ 2 lies opposite to s in a quadrilateral.
using Side = std::int64_t;
constexpr Side FREE = -1;
std::int32_t element_of(Side side) { return static_cast<std::int32_t>(side / 4) + 1; }

struct Element {
    Corners corner;
    Point at[4];
    double mean[2];  // lengths of the sides 0 and 2, 1 and 3
    double GA;       // GMOD times area
    double length(int s) const { return distance(at[s], at[(s + 1) % corner.n]); }
};
Element element(const Host& t, std::int32_t e) {
    Element q{corners_of(t, e), {}, {}, 0};
    for (int i = 0; i < 4; ++i) q.at[i] = place_of(t, q.corner.node[i]);
    for (int s = 0; s < 2; ++s)
        q.mean[s] = (distance(q.at[s], q.at[s + 1]) + distance(q.at[s + 2], q.at[(s + 3) % 4])) / 2;
    q.GA = std::fabs(property(t, e, VQ_GMOD)) * 0.5 *
           std::fabs((q.at[2].y - q.at[0].y) * (q.at[3].z - q.at[1].z) -
                     (q.at[2].z - q.at[0].z) * (q.at[3].y - q.at[1].y));
    return q;
}

// Elements that carry torsion, one for each element.
std::vector<bool> stiff_elements(const Host& t) {
    double GMAX = 0.0;
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) GMAX = std::max(GMAX, std::fabs(property(t, e, VQ_GMOD)));
    std::vector<bool> stiff(static_cast<std::size_t>(t.NELEMS));
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
        const double G = std::fabs(property(t, e, VQ_GMOD));
        stiff[e - 1] = G > 0.0 && G >= MINSTIFF * GMAX;
    }
    return stiff;
}

// For each side the same side of the element beyond it, or FREE. Sides are brought together by their smaller node.
std::vector<Side> sides_beyond(const Host& t, const std::vector<bool>& stiff) {
    struct End {
        std::int32_t larger;
        Side side;
    };
    std::vector<std::int64_t> start(static_cast<std::size_t>(t.NNODES) + 2);
    const auto each_side = [&](auto work) {
        for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
            if (!stiff[e - 1]) continue;
            const Corners c = corners_of(t, e);
            for (int s = 0; s < c.n; ++s) {
                const auto [smaller, larger] = std::minmax({c.node[s], c.node[(s + 1) % c.n]});
                work(smaller, End{larger, 4 * Side{e - 1} + s});
            }
        }
    };
    each_side([&](std::int32_t smaller, const End&) { ++start[smaller]; });
    for (std::size_t n = 1; n < start.size(); ++n) start[n] += start[n - 1];
    std::vector<End> ends(static_cast<std::size_t>(start.back()));
    each_side([&](std::int32_t smaller, const End& end) { ends[--start[smaller]] = end; });
    std::vector<Side> beyond(4 * stiff.size(), FREE);
    for (std::size_t n = 1; n + 1 < start.size(); ++n) {
        const auto first = ends.begin() + start[n], last = ends.begin() + start[n + 1];
        std::sort(first, last,
                  [](const End& a, const End& b) { return std::tie(a.larger, a.side) < std::tie(b.larger, b.side); });
        for (auto a = first, b = first; a != last; a = b) {
            while (b != last && b->larger == a->larger) ++b;
            if (b - a != 2) continue;  // free, or more elements than a plane has room for
            beyond[a[0].side] = a[1].side;
            beyond[a[1].side] = a[0].side;
        }
    }
    return beyond;
}

// (2, NELEMS)  For each quadrilateral the thickness of the row of elements that begins and ends with free sides, across
// its sides 0 and 2, and across 1 and 3; infinite where a triangle ends the row, or it comes back to itself.
std::vector<double> thicknesses(const Host& t, const std::vector<bool>& stiff, const std::vector<Side>& beyond) {
    std::vector<double> thickness(2 * stiff.size());
    const auto of = [&](Side side) -> double& { return thickness[side / 4 * 2 + side % 2]; };
    const auto is_in_row = [&](Side side) { return side != FREE && corners_of(t, element_of(side)).n == 4; };
    for (Side begin = 0; begin < static_cast<Side>(beyond.size()); begin += begin % 4 == 0 ? 1 : 3) {
        if (!stiff[begin / 4] || corners_of(t, element_of(begin)).n == 3 || of(begin) > 0.0) continue;
        Side outer = begin;
        while (is_in_row(beyond[outer]) && (beyond[outer] ^ 2) != begin) outer = beyond[outer] ^ 2;
        double sum = beyond[outer] == FREE ? 0.0 : HUGE_VAL;
        const auto inwards = [&](auto work) {
            for (Side side = outer;; side = beyond[side ^ 2]) {
                work(side);
                if (!is_in_row(beyond[side ^ 2]) || beyond[side ^ 2] == outer) return beyond[side ^ 2] == FREE;
            }
        };
        if (!inwards([&](Side side) { sum += element(t, element_of(side)).mean[1 - side % 2]; })) sum = HUGE_VAL;
        inwards([&](Side side) { of(side) = sum; });
    }
    return thickness;
}

// Torsional stiffness of closed cells by Bredt, each for itself: from the free sides around each hole, along which
// elements lie to the left.
double stiffness_of_cells(const Host& t, const std::vector<bool>& stiff, const std::vector<Side>& beyond,
                          const std::vector<double>& thickness) {
    const auto next = [&](Side side) {
        const int n = corners_of(t, element_of(side)).n;
        return side - side % 4 + (side % 4 + 1) % n;
    };
    double sum = 0.0;
    std::vector<bool> seen(beyond.size());
    for (Side begin = 0; begin < static_cast<Side>(beyond.size()); ++begin) {
        const bool is_side = stiff[begin / 4] && begin % 4 < corners_of(t, element_of(begin)).n;
        if (!is_side || beyond[begin] != FREE || seen[begin]) continue;
        const Point origin = place_of(t, corners_of(t, element_of(begin)).node[0]);
        double A2 = 0.0, walls = 0.0, flexibility = 0.0;  // twice the area inside, and within half of the walls
        for (Side side = begin; !seen[side];) {
            seen[side] = true;
            const Element q = element(t, element_of(side));
            const int s = side % 4;
            const Point a = q.at[s], b = q.at[(s + 1) % q.corner.n];
            A2 += (a.y - origin.y) * (b.z - origin.z) - (a.z - origin.z) * (b.y - origin.y);
            const double wall = q.corner.n == 4 ? thickness[side / 4 * 2 + s % 2] : HUGE_VAL;
            if (std::isfinite(wall)) {
                walls += wall * q.length(s);
                flexibility += q.length(s) / (wall * std::fabs(property(t, element_of(side), VQ_GMOD)));
            }
            for (side = next(side); beyond[side] != FREE;) side = next(beyond[side]);
        }
        if (A2 < 0.0) sum += (walls - A2) * (walls - A2) / flexibility;
    }
    return sum;
}

}  // namespace

std::int32_t find_oblong(const Host& t, const std::vector<unsigned char>& used) {
    Point lo{HUGE_VAL, HUGE_VAL}, hi{-HUGE_VAL, -HUGE_VAL};
    for (std::int32_t n = 1; n <= t.NNODES; ++n) {
        if (!(used[n - 1] & BY_ELEMENT)) continue;
        const Point at = place_of(t, n);
        lo = {std::min(lo.y, at.y), std::min(lo.z, at.z)};
        hi = {std::max(hi.y, at.y), std::max(hi.z, at.z)};
    }
    const double extent = std::max(hi.y - lo.y, hi.z - lo.z);
    const std::vector<bool> stiff = stiff_elements(t);
    const auto each_element = [&](auto work) {
        for (std::int32_t e = 1; e <= t.NELEMS; ++e)
            if (stiff[e - 1]) work(e, element(t, e));
    };
    double longest = 0.0;
    each_element([&](std::int32_t, const Element& q) {
        if (q.corner.n == 4) longest = std::max({longest, q.mean[0] / q.mean[1], q.mean[1] / q.mean[0]});
    });
    if (!(longest * longest - 1.0 > MINERROR)) return 0;

    const std::vector<Side> beyond = sides_beyond(t, stiff);
    const std::vector<double> thickness = thicknesses(t, stiff, beyond);
    // 3 GJ of open walls and its error. What lies in no thin wall of quadrilaterals is as thick as twice its area over
    // its free sides.
    double open = 0.0, error = 0.0, rest = 0.0, rest_sides = 0.0;
    std::int32_t longer = 0, shorter = 0;  // the worst elements, along a wall and across it
    double most = 0.0, least = 0.0;
    each_element([&](std::int32_t e, const Element& q) {
        const double* across = &thickness[2 * static_cast<std::size_t>(e - 1)];
        const int s = across[0] <= across[1] ? 0 : 1;  // the sides that run along the wall
        const double wall = across[s];
        if (q.corner.n == 3 || !(wall * THIN < extent)) {
            rest += q.GA;
            for (int k = 0; k < q.corner.n; ++k)
                if (beyond[4 * Side{e - 1} + k] == FREE) rest_sides += std::fabs(property(t, e, VQ_GMOD)) * q.length(k);
            return;
        }
        const double excess = q.mean[s] * q.mean[s] - q.mean[1 - s] * q.mean[1 - s], local = excess / (wall * wall);
        open += q.GA * wall * wall;
        error += q.GA * excess;
        if (local > most) most = local, longer = e;
        if (local < least) least = local, shorter = e;
    });
    if (rest_sides > 0.0) open += rest * (2.0 * rest / rest_sides) * (2.0 * rest / rest_sides);
    const double stiffness = open + 3.0 * stiffness_of_cells(t, stiff, beyond, thickness);
    return std::fabs(error) > MINERROR * stiffness ? (error > 0.0 ? longer : shorter) : 0;
}

}  // namespace levels
