#include "random_section.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "bench/meshes.h"
#include "kit/section/geometry.h"

namespace {

using meshes::Random;
using meshes::uniform;
using velquor::Corner;
using velquor::Outline;
using velquor::Part;
using velquor::Point;
using velquor::Section;

constexpr double PI = 3.14159265358979324;

int between(Random& random, int low, int high) { return low + meshes::below(random, high - low + 1); }  // both may come
bool one_in(Random& random, int n) { return meshes::below(random, n) == 0; }
double distance(const Point& a, const Point& b) { return std::hypot(a.y - b.y, a.z - b.z); }
double cross(const Point& a, const Point& b) { return a.y * b.z - a.z * b.y; }

// Points along the outline: `steps` in each edge.
std::vector<Point> points_along(const Outline& outline, int steps) {
    std::vector<Point> points;
    Point from = outline.edges.back().to;
    for (const velquor::Edge& edge : outline.edges) {
        const double sweep = edge.arc ? velquor::sweep_of(from, edge) : 0;
        const Point c = edge.arc ? velquor::circle_of(from, edge).centre : Point{};
        for (int i = 1; i <= steps; ++i) {
            const double t = static_cast<double>(i) / steps, cosine = std::cos(t * sweep), sine = std::sin(t * sweep);
            const double y = from.y - c.y, z = from.z - c.z;
            if (edge.arc)
                points.push_back({c.y + cosine * y - sine * z, c.z + sine * y + cosine * z});
            else
                points.push_back({from.y + t * (edge.to.y - from.y), from.z + t * (edge.to.z - from.z)});
        }
        from = edge.to;
    }
    return points;
}

std::vector<Corner> star(Random& random, double aspect) {
    const int n = between(random, 5, 12);
    const double begin = uniform(random, 0, 2 * PI);
    std::vector<Corner> corners;
    for (int i = 0; i < n; ++i) {
        const double angle = begin + 2 * PI * (i + uniform(random, -0.3, 0.3)) / n, r = uniform(random, 0.5, 1);
        corners.push_back({{aspect * r * std::cos(angle), r * std::sin(angle)}});
    }
    return corners;
}

// Arcs in every third corner, which take up to 40 % of the shorter side.
void round_some(Random& random, std::vector<Corner>& corners) {
    const std::size_t n = corners.size();
    for (std::size_t i = 0; i < n; ++i) {
        const Point a = corners[(i + n - 1) % n].at, b = corners[i].at, c = corners[(i + 1) % n].at;
        const Point in = {b.y - a.y, b.z - a.z}, out = {c.y - b.y, c.z - b.z};
        const double turn = std::abs(std::atan2(cross(in, out), in.y * out.y + in.z * out.z));
        const double tangent = uniform(random, 0.1, 0.4) * std::min(distance(a, b), distance(b, c));
        if (one_in(random, 3) && turn > 0.3 && turn < 2.6) corners[i].radius = tangent / std::tan(turn / 2);
    }
}

bool contains(const std::vector<Point>& points, const Point& p) {
    bool inside = false;
    for (std::size_t i = 0, j = points.size() - 1; i < points.size(); j = i++) {
        const Point &a = points[i], &b = points[j];
        if ((a.z > p.z) != (b.z > p.z) && p.y < (b.y - a.y) * (p.z - a.z) / (b.z - a.z) + a.y) inside = !inside;
    }
    return inside;
}

// Circles inside of the outline, apart from it and from one another by a part of their radius.
struct Room {
    std::vector<Point> outline;
    std::vector<velquor::Circle> taken{};

    bool find(Random& random, double extent, double aspect, velquor::Circle& circle) {
        for (int attempt = 0; attempt < 30; ++attempt) {
            circle = {{uniform(random, -0.7, 0.7) * aspect, uniform(random, -0.7, 0.7)}, uniform(random, 0.06, 0.35)};
            if (!contains(outline, circle.centre)) continue;
            double space = HUGE_VAL;
            for (const Point& p : outline) space = std::min(space, distance(p, circle.centre));
            for (const auto& other : taken)
                space = std::min(space, distance(other.centre, circle.centre) - other.radius);
            if (space < circle.radius + std::max(0.3 * circle.radius, 0.03 * extent)) continue;
            taken.push_back(circle);
            return true;
        }
        return false;
    }
};

Outline regular(const velquor::Circle& circle, int n, double begin) {
    std::vector<Corner> corners;
    for (int i = 0; i < n; ++i)
        corners.push_back({{circle.centre.y + circle.radius * std::cos(begin + 2 * PI * i / n),
                            circle.centre.z + circle.radius * std::sin(begin + 2 * PI * i / n)}});
    return velquor::rounded(corners);
}

Outline round_or_not(Random& random, const velquor::Circle& circle) {
    if (one_in(random, 2)) return velquor::circle_at(circle.centre, circle.radius);
    const int n = between(random, 3, 6);
    return regular(circle, n, uniform(random, 0, 2 * PI));
}

// A strip through the centre and beyond, none of whose sides passes close by a corner, an arc or a hole. None where
// there is no such strip.
Outline strip(Random& random, const Section& section, const Room& room, double extent) {
    std::vector<Point> keep;
    const Outline& outer = section.parts[0].face.outer;
    Point from = outer.edges.back().to;
    for (const velquor::Edge& edge : outer.edges) {
        keep.push_back(edge.to);
        if (edge.arc)
            for (const Point& p : points_along({{{from, false, {}}, edge}}, 8)) keep.push_back(p);
        from = edge.to;
    }
    for (int attempt = 0; attempt < 30; ++attempt) {
        const double angle = uniform(random, 0, PI), half = uniform(random, 0.05, 0.2), beyond = 1.3 * extent;
        const Point along = {std::cos(angle), std::sin(angle)}, across = {-along.z, along.y};
        bool clear = true;
        for (const Point& p : keep) clear = clear && std::abs(std::abs(cross(along, p)) - half) > 0.03 * extent;
        for (const auto& circle : room.taken)
            clear = clear && std::abs(cross(along, circle.centre)) > half + 1.2 * circle.radius;
        if (!clear) continue;
        const auto at = [&](double u, double v) {
            return Point{u * along.y + v * across.y, u * along.z + v * across.z};
        };
        return velquor::rounded({{at(-beyond, -half)}, {at(beyond, -half)}, {at(beyond, half)}, {at(-beyond, half)}});
    }
    return {};
}

// Of what lies inside a convex polygon that runs counter-clockwise; signed as the first polygon runs.
double area_inside(std::vector<Point> polygon, const std::vector<Point>& convex) {
    for (std::size_t i = 0; i < convex.size(); ++i) {
        const Point a = convex[i], b = convex[(i + 1) % convex.size()];
        const auto side = [&](const Point& p) { return cross({b.y - a.y, b.z - a.z}, {p.y - a.y, p.z - a.z}); };
        std::vector<Point> rest;
        for (std::size_t k = 0; k < polygon.size(); ++k) {
            const Point p = polygon[k], q = polygon[(k + 1) % polygon.size()];
            const double sp = side(p), sq = side(q);
            if (sp >= 0) rest.push_back(p);
            if ((sp >= 0) != (sq >= 0)) {
                const double t = sp / (sp - sq);
                rest.push_back({p.y + t * (q.y - p.y), p.z + t * (q.z - p.z)});
            }
        }
        polygon = rest;
    }
    double area = 0;
    for (std::size_t k = 0; k < polygon.size(); ++k) area += cross(polygon[k], polygon[(k + 1) % polygon.size()]) / 2;
    return area;
}

}  // namespace

velquor::Section random_section(std::uint64_t seed) {
    Random random = {seed};
    Section section;
    section.name = "random " + std::to_string(seed);
    section.materials = {{"first", 2.6, 1, 0, 2, 2},
                         {"second", uniform(random, 0.5, 20), uniform(random, 0.2, 8), 0, 3, 3}};
    const double aspect = uniform(random, 1, 5), extent = 1.5 * std::sqrt(aspect);
    Part body;
    body.material = "first";
    for (;;) {  // arcs of two corners may overlap on a side
        auto corners = star(random, aspect);
        round_some(random, corners);
        try {
            body.face.outer = velquor::rounded(corners);
            break;
        } catch (const velquor::Error&) {
        }
    }
    Room room = {points_along(body.face.outer, 40)};
    velquor::Circle circle;
    for (int holes = between(random, 0, 3); holes > 0; --holes)
        if (room.find(random, extent, aspect, circle)) body.face.holes.push_back(round_or_not(random, circle));
    section.parts.push_back(body);
    if (one_in(random, 3)) {
        Part inlay;
        inlay.material = "second";
        if (one_in(random, 2))
            inlay.face.outer = strip(random, section, room, aspect);
        else if (room.find(random, extent, aspect, circle))
            inlay.face.outer = round_or_not(random, circle);
        if (!inlay.face.outer.edges.empty()) section.parts.push_back(inlay);
    }
    // Anywhere, and of any size.
    const double scale = std::pow(10.0, uniform(random, 0, 3));
    const velquor::Place place = {
        false, uniform(random, 0, 360), {uniform(random, -3, 3) * scale, uniform(random, -3, 3) * scale}};
    for (Part& part : section.parts) {
        const auto scaled = [&](Outline& outline) {
            for (velquor::Edge& edge : outline.edges)
                for (Point* p : {&edge.to, &edge.through}) p->y *= scale, p->z *= scale;
        };
        scaled(part.face.outer);
        for (Outline& hole : part.face.holes) scaled(hole);
        part.place = place;
    }
    return section;
}

std::vector<double> areas_of_parts(const velquor::Section& section) {
    const Part& body = section.parts[0];
    std::vector<double> areas = {velquor::area_of(body.face)};
    if (section.parts.size() < 2) return areas;
    const Part& inlay = section.parts[1];
    areas.push_back(velquor::area_of(inlay.face));
    const auto outline = points_along(body.face.outer, 40);
    const auto ends = points_along(inlay.face.outer, 1);
    const bool apart = std::all_of(ends.begin(), ends.end(), [&](const Point& p) { return contains(outline, p); });
    areas[0] -= apart ? areas[1] : std::abs(area_inside(points_along(body.face.outer, 4000), ends));
    return areas;
}
