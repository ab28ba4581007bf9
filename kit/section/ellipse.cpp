#include "kit/section/ellipse.h"

#include <algorithm>
#include <cmath>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double ROUNDING = 1e-9;  // of a radius: an ellipse that differs less from a circle is one
constexpr int MOST_PAIRS = 256;    // of arcs
constexpr int LOOKS = 4;           // at an arc, between its ends

Point tangent_at(const Arc& arc, double t) {
    const Point p = on_circle({}, 1, t);
    return unit(p.y * arc.up - p.z * arc.right);
}

// The middle of the arc that leaves `from` along u and ends at `to`.
Point middle_of(const Point& from, const Point& u, const Point& to) {
    const Point chord = to - from;
    const double turn = std::atan2(cross(u, chord), dot(u, chord));  // half of the arc's angle
    return 0.5 * (from + to) - std::tan(turn / 2) / 2 * left_of(chord);
}

// Along the line from the centre, which is more than the distance.
double distance_from(const Arc& arc, const Point& p) {
    const Point out = p - arc.centre;
    const double area = cross(arc.right, arc.up), c = cross(out, arc.up) / area, s = cross(arc.right, out) / area;
    const double share = std::hypot(c, s);
    return std::abs(share - 1) / share * length(out);
}

// Two arcs from one point to another, tangent there to the ellipse and to one another where they meet, which is where
// both lines to it from the tangents' corners are equally long.
void add_pair(const Arc& arc, double begin, double end, Arcs& found) {
    const Point a = at(arc, begin), b = at(arc, end), u = tangent_at(arc, begin), v = tangent_at(arc, end);
    const Point chord = b - a, sum = u + v;
    const double square = 2 * (1 - dot(u, v)), half = dot(chord, sum);
    const double reach = dot(chord, chord) / (half + std::sqrt(half * half + square * dot(chord, chord)));
    const Point joint = 0.5 * (a + b + reach * (u - v));
    found.edges.push_back({joint, true, middle_of(a, u, joint)});
    found.edges.push_back({b, true, middle_of(b, -1 * v, joint)});
    for (const auto& [from, edge] :
         {std::pair{a, found.edges[found.edges.size() - 2]}, std::pair{joint, found.edges.back()}}) {
        const Circle circle = circle_of(from, edge);
        const double sweep = sweep_of(from, edge);
        for (int k = 1; k <= LOOKS; ++k)
            found.off = std::max(found.off,
                                 distance_from(arc, circle.centre + turned(from - circle.centre, sweep * k / LOOKS)));
    }
}

}  // namespace

Point at(const Arc& arc, double t) {
    const Point p = on_circle({}, 1, t);
    return arc.centre + p.y * arc.right + p.z * arc.up;
}

bool arcs_of(const Arc& arc, Arcs& found) {
    const double sweep = arc.end - arc.begin, r = length(arc.right), largest = std::max(r, length(arc.up));
    found = {};
    if (std::abs(length(arc.up) - r) <= ROUNDING * r && std::abs(dot(arc.right, arc.up)) <= ROUNDING * r * r) {
        const int count = sweep > 180 ? 2 : 1;
        for (int k = 0; k < count; ++k)
            found.edges.push_back(
                {at(arc, arc.begin + sweep * (k + 1) / count), true, at(arc, arc.begin + sweep * (k + 0.5) / count)});
        return true;
    }
    const int quarters = std::max(1, static_cast<int>(std::ceil(sweep / 90)));
    for (int pairs = quarters; pairs <= MOST_PAIRS; pairs += quarters) {
        found = {};
        for (int k = 0; k < pairs; ++k)
            add_pair(arc, arc.begin + sweep * k / pairs, arc.begin + sweep * (k + 1) / pairs, found);
        if (found.off <= OFF_AN_ELLIPSE * largest) return true;
    }
    return false;
}

}  // namespace velquor
