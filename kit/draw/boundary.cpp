#include "kit/draw/boundary.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double STRAIGHT = 1e-7;  // sine of the angle up to which two lines are one

int corners(const std::array<std::int32_t, 4>& element) { return element[2] == element[3] ? 3 : 4; }

}  // namespace

double sweep_of(const Mesh& mesh, std::int32_t a, std::int32_t b, Point& centre) {
    const auto [low, high] = std::minmax(a, b);
    const auto bow = std::lower_bound(mesh.bows.begin(), mesh.bows.end(), std::make_pair(low, high),
                                      [](const Mesh::Bow& of, const std::pair<std::int32_t, std::int32_t>& key) {
                                          return of.a != key.first ? of.a < key.first : of.b < key.second;
                                      });
    if (bow == mesh.bows.end() || bow->a != low || bow->b != high) return 0;
    centre = bow->centre;
    const Point from = mesh.nodes[static_cast<std::size_t>(a - 1)] - centre,
                to = mesh.nodes[static_cast<std::size_t>(b - 1)] - centre;
    return std::atan2(cross(from, to), dot(from, to));
}

Boundary boundary_of(const Mesh& mesh, const std::vector<int>& kinds) {
    // Of each directed edge the kind to its left.
    std::map<std::pair<std::int32_t, std::int32_t>, int> left;
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto& nodes = mesh.elements[e];
        const auto n = static_cast<std::size_t>(corners(nodes));
        for (std::size_t i = 0; i < n; ++i) left[{nodes[i], nodes[(i + 1) % n]}] = kinds[e];
    }
    Boundary boundary;
    boundary.plane.points = mesh.nodes;
    for (const auto& [edge, kind] : left) {
        boundary.kinds = std::max(boundary.kinds, kind + 1);
        const auto other = left.find({edge.second, edge.first});
        const int right = other == left.end() ? OUTSIDE : other->second;
        if (right == kind || (right != OUTSIDE && edge.first > edge.second)) continue;
        Curve curve;
        curve.from = edge.first - 1;
        curve.to = edge.second - 1;
        curve.left = kind;
        curve.right = right;
        curve.sweep = sweep_of(mesh, edge.first, edge.second, curve.centre);
        boundary.plane.curves.push_back(curve);
    }
    boundary.plane.owners = boundary.kinds;
    return boundary;
}

void trace_edge(const Pen& pen, const View& view, const Point& to, const Point& centre, double sweep) {
    const SheetPoint end = view(to);
    if (sweep == 0) {
        cairo_line_to(pen.cairo, end.x, end.y);
        return;
    }
    // On the sheet y points downwards, and angles turn the other way.
    const SheetPoint c = view(centre);
    const double last = std::atan2(end.y - c.y, end.x - c.x), radius = std::hypot(end.x - c.x, end.y - c.y);
    if (sweep > 0)
        cairo_arc_negative(pen.cairo, c.x, c.y, radius, last + sweep, last);
    else
        cairo_arc(pen.cairo, c.x, c.y, radius, last + sweep, last);
}

void trace(const Pen& pen, const View& view, const Boundary& boundary, int kind) {
    const Plane& plane = boundary.plane;
    std::vector<Side> sides;
    for (std::size_t k = 0; k < plane.curves.size(); ++k) {
        const Side side = static_cast<Side>(k) + 1;
        if (plane.curves[k].left == kind) sides.push_back(side);
        if (plane.curves[k].right == kind) sides.push_back(-side);
    }
    const auto point = [&](int number) { return plane.points[static_cast<std::size_t>(number)]; };
    for (const std::vector<Side>& loop : loops_of(plane, sides)) {
        // From a corner, so that no straight edge is parted.
        const auto goes_on = [&](std::size_t k) {
            const Side before = loop[(k + loop.size() - 1) % loop.size()], after = loop[k];
            if (sweep_of(plane, before) != 0 || sweep_of(plane, after) != 0) return false;
            const Point in = point(end_of(plane, before)) - point(begin_of(plane, before)),
                        out = point(end_of(plane, after)) - point(begin_of(plane, after));
            return std::abs(cross(in, out)) <= STRAIGHT * length(in) * length(out) && dot(in, out) > 0;
        };
        std::size_t first = 0;
        while (first + 1 < loop.size() && goes_on(first)) ++first;
        const SheetPoint start = view(point(begin_of(plane, loop[first])));
        cairo_move_to(pen.cairo, start.x, start.y);
        for (std::size_t k = 0; k < loop.size(); ++k) {
            const std::size_t at = (first + k) % loop.size();
            const Side side = loop[at];
            if (k + 1 < loop.size() && goes_on((at + 1) % loop.size())) continue;
            trace_edge(pen, view, point(end_of(plane, side)),
                       plane.curves[static_cast<std::size_t>(curve_of(side))].centre, sweep_of(plane, side));
        }
        cairo_close_path(pen.cairo);
    }
}

std::vector<double> crossings(const Boundary& boundary, const Point& from, const Point& along) {
    std::vector<double> found;
    const Plane& plane = boundary.plane;
    for (std::size_t k = 0; k < plane.curves.size(); ++k) {
        if (plane.curves[k].right != OUTSIDE) continue;
        // Arcs by pieces: a scan seldom meets one, and must not miss it.
        const Side side = static_cast<Side>(k) + 1;
        const int pieces = sweep_of(plane, side) == 0 ? 1 : 8;
        for (int p = 0; p < pieces; ++p) {
            const Point a = point_at(plane, side, static_cast<double>(p) / pieces) - from,
                        b = point_at(plane, side, static_cast<double>(p + 1) / pieces) - from;
            const double left = cross(along, a), right = cross(along, b);
            if ((left > 0) == (right > 0)) continue;
            found.push_back(dot(along, a) + left / (left - right) * dot(along, b - a));
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace velquor
