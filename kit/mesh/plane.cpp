#include "kit/mesh/plane.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double PARTED = 0.01;  // of the shortest curve at a point: where directions there are compared

}  // namespace

Error error_of(const Section& section, const Failed& failed) {
    const char* const remedy = "look for edges that come very near to each other, or give a size";
    const bool known = !failed.why.empty();
    return {failed.owner < 0 ? "parts" : place_of_owner(section, failed.owner),
            known ? failed.why : "no mesh could be made of it", known ? "" : remedy};
}

Point point_at(const Plane& plane, Side side, double t) {
    const Curve& c = plane.curves[curve_of(side)];
    if (side < 0) t = 1 - t;
    const Point &a = plane.points[c.from], &b = plane.points[c.to];
    if (t <= 0) return a;
    if (t >= 1) return b;
    if (c.sweep == 0) return a + t * (b - a);
    // From the nearer end, so that the curve is the same seen from both.
    return t < 0.5 ? c.centre + turned(a - c.centre, t * c.sweep) : c.centre + turned(b - c.centre, (t - 1) * c.sweep);
}

double length_of(const Plane& plane, Side side) {
    const Curve& c = plane.curves[curve_of(side)];
    const Point &a = plane.points[c.from], &b = plane.points[c.to];
    return c.sweep == 0 ? length(b - a) : length(a - c.centre) * std::abs(c.sweep);
}

Point direction_at(const Plane& plane, Side side, double t) {
    const Curve& c = plane.curves[curve_of(side)];
    const Point chord = plane.points[c.to] - plane.points[c.from];
    if (side < 0) t = 1 - t;
    const Point along = c.sweep == 0 ? chord : turned(chord, (t - 0.5) * c.sweep);
    return (side > 0 ? 1 : -1) * unit(along);
}

int split(Plane& plane, int curve, double t) {
    const int middle = static_cast<int>(plane.points.size());
    plane.points.push_back(point_at(plane, curve + 1, t));
    Curve rest = plane.curves[curve];
    rest.from = plane.curves[curve].to = middle;
    rest.sweep *= 1 - t;
    plane.curves[curve].sweep *= t;
    plane.curves.push_back(rest);
    return middle;
}

std::vector<std::vector<Side>> loops_of(const Plane& plane, const std::vector<Side>& sides) {
    std::multimap<int, Side> starts;
    for (const Side s : sides) starts.emplace(begin_of(plane, s), s);
    std::vector<std::vector<Side>> loops;
    for (const Side first : sides) {
        const auto here = starts.equal_range(begin_of(plane, first));
        auto at = std::find_if(here.first, here.second, [&](const auto& s) { return s.second == first; });
        if (at == here.second) continue;
        std::vector<Side> loop;
        while (true) {
            const Side s = at->second;
            loop.push_back(s);
            starts.erase(at);
            if (end_of(plane, s) == begin_of(plane, first)) break;
            // Of several ways on, the one furthest to the left goes around the smallest piece. Curves that are tangent
            // to each other have parted a little way on.
            const auto [low, high] = starts.equal_range(end_of(plane, s));
            double reach = length_of(plane, s);
            for (auto k = low; k != high; ++k) reach = std::min(reach, length_of(plane, k->second));
            const auto part = [&](Side of) { return PARTED * reach / length_of(plane, of); };
            const Point in = plane.points[end_of(plane, s)] - point_at(plane, s, 1 - part(s));
            double best = -4;
            at = high;
            for (auto k = low; k != high; ++k) {
                if (owner_of(plane, k->second) != owner_of(plane, first)) continue;
                const Point out = point_at(plane, k->second, part(k->second)) - plane.points[end_of(plane, s)];
                const double turn = std::atan2(cross(in, out), dot(in, out));
                if (turn > best) best = turn, at = k;
            }
            if (at == high) throw Failed{owner_of(plane, first), "its outline does not close where it meets others"};
        }
        loops.push_back(loop);
    }
    return loops;
}

}  // namespace velquor
