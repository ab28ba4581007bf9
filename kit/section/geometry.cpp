#include "kit/section/geometry.h"

#include <algorithm>
#include <cmath>

#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double ROUNDING = 1e-9;  // of a side, below which it is none

}  // namespace

Circle circle_of(const Point& from, const Edge& edge) {
    const Point a = edge.through - from, b = edge.to - from;
    const double twice = 2 * cross(a, b), aa = dot(a, a), bb = dot(b, b);
    const Point centre = {(b.z * aa - a.z * bb) / twice, (a.y * bb - b.y * aa) / twice};
    return {from + centre, length(centre)};
}

double sweep_of(const Point& from, const Edge& edge) {
    const Point c = circle_of(from, edge).centre;
    const double begin = std::atan2(from.z - c.z, from.y - c.y), end = std::atan2(edge.to.z - c.z, edge.to.y - c.y);
    const bool left = cross(edge.through - from, edge.to - edge.through) > 0;
    if (left) return end > begin ? end - begin : end - begin + 2 * PI;
    return end < begin ? end - begin : end - begin - 2 * PI;
}

Edge arc_of(const Point& from, const Point& to, double radius, bool left) {
    const double half = length(to - from) / 2;
    const double depth = radius - std::sqrt(std::max(0.0, (radius - half) * (radius + half)));
    const Point outwards = (left ? -1 : 1) * left_of(unit(to - from));
    return {to, true, 0.5 * (from + to) + depth * outwards};
}

double area_of(const Outline& outline) {
    double area = 0;
    if (outline.edges.empty()) return 0;
    const Point origin = outline.edges.back().to;
    Point from = origin;
    for (const Edge& edge : outline.edges) {
        area += cross(from - origin, edge.to - origin) / 2;
        if (edge.arc) {
            const double r = circle_of(from, edge).radius, sweep = sweep_of(from, edge);
            area += r * r / 2 * (sweep - std::sin(sweep));
        }
        from = edge.to;
    }
    return area;
}

double area_of(const Face& face) {
    double area = std::abs(area_of(face.outer));
    for (const Outline& hole : face.holes) area -= std::abs(area_of(hole));
    return area;
}

Outline rounded(const std::vector<Corner>& corners) {
    const std::size_t n = corners.size();
    std::vector<double> side(n), tangent(n);  // of the side that leads to the corner; of the arc, cut off both sides
    for (std::size_t i = 0; i < n; ++i) side[i] = length(corners[i].at - corners[(i + n - 1) % n].at);
    for (std::size_t i = 0; i < n; ++i) {
        const Point in = corners[i].at - corners[(i + n - 1) % n].at, out = corners[(i + 1) % n].at - corners[i].at;
        tangent[i] = corners[i].radius * std::tan(std::abs(std::atan2(cross(in, out), dot(in, out))) / 2);
    }
    Outline outline;
    for (std::size_t i = 0; i < n; ++i) {
        const double radius = corners[i].radius, left = side[i] - tangent[i] - tangent[(i + n - 1) % n];
        if (left < -ROUNDING * side[i])
            throw Error("", "the radii of two corners overlap on a side of " + text_of(side[i]), "give smaller radii");
        const Point at = corners[i].at;
        if (radius <= 0 || tangent[i] <= 0) {
            outline.edges.push_back({at, false, {}});
            continue;
        }
        const Point in = unit(at - corners[(i + n - 1) % n].at), out = unit(corners[(i + 1) % n].at - at);
        if (left > ROUNDING * side[i]) outline.edges.push_back({at - tangent[i] * in, false, {}});
        const double beyond = std::hypot(radius, tangent[i]) - radius;  // from the corner to the arc
        outline.edges.push_back({at + tangent[i] * out, true, at + beyond * unit(out - in)});
    }
    return outline;
}

Outline wall_along(const std::vector<Point>& line, double thickness, double bend) {
    std::vector<Corner> right, left;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const Point in = unit(i > 0 ? line[i] - line[i - 1] : line[1] - line[0]);
        const Point out = i + 1 < line.size() ? unit(line[i + 1] - line[i]) : in;
        const Point aside = thickness / 2 / (1 + dot(in, out)) * (left_of(in) + left_of(out));
        const double turn = cross(in, out), inner = turn != 0 ? bend : 0, outer = turn != 0 ? bend + thickness : 0;
        right.push_back({line[i] - aside, turn > 0 ? outer : inner});
        left.push_back({line[i] + aside, turn > 0 ? inner : outer});
    }
    right.insert(right.end(), left.rbegin(), left.rend());
    return rounded(right);
}

Outline circle_at(const Point& c, double r) {
    return {{{{c.y - r, c.z}, true, {c.y, c.z + r}}, {{c.y + r, c.z}, true, {c.y, c.z - r}}}};
}

Point on_circle(const Point& centre, double radius, double angle) {
    const double quarters = std::remainder(angle, 360) / 90;
    double c = std::cos(quarters * PI / 2), s = std::sin(quarters * PI / 2);
    if (quarters == std::round(quarters)) c = std::round(c), s = std::round(s);
    return {centre.y + radius * c, centre.z + radius * s};
}

Face placed(const Face& face, const Place& place) {
    // Quarter turns are exact, so that parts which touch still do.
    const auto [c, s] = on_circle({}, 1, place.angle);
    const auto move = [&, c = c, s = s](Point& p) {
        if (place.mirrored) p.y = -p.y;
        p = place.at + Point{c * p.y - s * p.z, s * p.y + c * p.z};
    };
    const auto move_all = [&](Outline& outline) {
        for (Edge& edge : outline.edges) {
            move(edge.to);
            if (edge.arc) move(edge.through);
        }
    };
    Face result = face;
    move_all(result.outer);
    for (Outline& hole : result.holes) move_all(hole);
    return result;
}

}  // namespace velquor
