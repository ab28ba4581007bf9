#include "kit/analysis/extent.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

double cross(const Point& o, const Point& a, const Point& b) { return cross(a - o, b - o); }
double apart(const Point& a, const Point& b) { return length(b - a); }

const Point& node_of(const Mesh& mesh, std::int32_t number) { return mesh.nodes[number - 1]; }

// The centre of the arc for which the edge stands; null where it is straight.
const Point* centre_of(const Mesh& mesh, std::int32_t a, std::int32_t b) {
    const std::pair ends = std::minmax(a, b);
    const auto bow = std::lower_bound(mesh.bows.begin(), mesh.bows.end(), ends, [](const Mesh::Bow& x, const auto& e) {
        return std::pair(x.a, x.b) < std::pair(e.first, e.second);
    });
    return bow != mesh.bows.end() && bow->a == ends.first && bow->b == ends.second ? &bow->centre : nullptr;
}

// Arcs of edges are less than half of a circle.
double angle_of(const Point& a, const Point& b, const Point& centre) {
    return 2 * std::asin(std::min(1.0, apart(a, b) / (apart(centre, a) + apart(centre, b))));
}

// The edges of an element, each in its counter-clockwise course.
template <class Take>
void each_edge(const std::array<std::int32_t, 4>& element, Take take) {
    for (std::size_t k = 0; k < 4; ++k)
        if (element[k] != element[(k + 1) % 4]) take(element[k], element[(k + 1) % 4]);
}

using Ways = std::multimap<std::int32_t, std::int32_t>;  // from a node to the next one of the outline

Ways outline_of(const Mesh& mesh) {
    std::map<std::pair<std::int32_t, std::int32_t>, int> uses;
    for (const auto& element : mesh.elements) each_edge(element, [&](auto a, auto b) { ++uses[std::minmax(a, b)]; });
    Ways ways;
    for (const auto& element : mesh.elements)
        each_edge(element, [&](auto a, auto b) {
            if (uses[std::minmax(a, b)] == 1) ways.emplace(a, b);
        });
    return ways;
}

// The next edge of the outline: of several that begin at `at` the first one clockwise from the way back to `from`, so
// that what touches itself in a node is followed along one side.
Ways::iterator next_way(const Mesh& mesh, Ways& ways, std::int32_t from, std::int32_t at) {
    const auto [begin, end] = ways.equal_range(at);
    const Point &o = node_of(mesh, at), &back = node_of(mesh, from);
    const auto turn = [&](const Ways::value_type& way) {
        const Point& to = node_of(mesh, way.second);
        const double angle = std::atan2(-cross(o, back, to), dot(back - o, to - o));
        return angle > 0 ? angle : angle + 2 * PI;
    };
    auto best = begin;
    for (auto way = begin; way != end; ++way)
        if (turn(*way) < turn(*best)) best = way;
    return best == end ? ways.end() : best;
}

}  // namespace

std::vector<double> areas_of(const Mesh& mesh, std::size_t count) {
    std::vector<double> areas(count, 0.0);
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const Point& first = node_of(mesh, mesh.elements[e][0]);
        double area = 0;
        each_edge(mesh.elements[e], [&](auto i, auto j) {
            const Point &a = node_of(mesh, i), &b = node_of(mesh, j);
            area += cross(first, a, b) / 2;
            if (const Point* centre = centre_of(mesh, i, j)) {
                const double angle = angle_of(a, b, *centre), radius = apart(*centre, a);
                area += std::copysign(radius * radius * (angle - std::sin(angle)) / 2, cross(a, b, *centre));
            }
        });
        areas.at(mesh.owners[e]) += area;
    }
    return areas;
}

Perimeter perimeter_of(const Mesh& mesh) {
    Ways ways = outline_of(mesh);
    Perimeter perimeter;
    while (!ways.empty()) {
        double course = 0, area = 0;
        const Point origin = node_of(mesh, ways.begin()->first);
        for (auto way = ways.begin(); way != ways.end();) {
            const auto [i, j] = *way;
            const Point &a = node_of(mesh, i), &b = node_of(mesh, j);
            const Point* centre = centre_of(mesh, i, j);
            course += centre ? angle_of(a, b, *centre) * apart(*centre, a) : apart(a, b);
            area += cross(origin, a, b);
            ways.erase(way);
            way = next_way(mesh, ways, i, j);
        }
        (area > 0 ? perimeter.outside : perimeter.inside) += course;
    }
    return perimeter;
}

Extent extent_of(const Mesh& mesh, double angle) {
    const Point way = {std::cos(angle), std::sin(angle)};
    const auto along = [&](const Point& p) { return dot(way, p); };
    Extent extent = {along(mesh.nodes.front()), along(mesh.nodes.front())};
    const auto take = [&](double value) { extent = {std::min(extent.low, value), std::max(extent.high, value)}; };
    for (const auto& element : mesh.elements)
        for (const std::int32_t n : element) take(along(node_of(mesh, n)));
    for (const Mesh::Bow& bow : mesh.bows) {
        const Point &a = node_of(mesh, bow.a), &b = node_of(mesh, bow.b);
        const double radius = apart(bow.centre, a), side = cross(a, b, bow.centre);
        for (const double sense : {-radius, radius}) {
            const Point top = bow.centre + sense * way;
            if (cross(a, b, top) * side < 0) take(along(top));  // on the arc: the chord lies between it and the centre
        }
    }
    return extent;
}

std::vector<int> pieces_of(const Mesh& mesh) {
    std::vector<std::int32_t> root(mesh.nodes.size() + 1);
    std::iota(root.begin(), root.end(), 0);
    const auto find = [&](std::int32_t n) {
        while (root[n] != n) n = root[n] = root[root[n]];
        return n;
    };
    for (const auto& element : mesh.elements) each_edge(element, [&](auto a, auto b) { root[find(a)] = find(b); });
    std::vector<int> number(root.size(), -1), pieces;
    int count = 0;
    for (const auto& element : mesh.elements) {
        int& piece = number[find(element[0])];
        if (piece < 0) piece = count++;
        pieces.push_back(piece);
    }
    return pieces;
}

Gap gap_around(const Mesh& mesh, const std::vector<int>& pieces, int piece) {
    struct Side {
        std::size_t element;
        Point from, to;
    };
    std::vector<Side> own, others;
    const Ways ways = outline_of(mesh);
    for (std::size_t e = 0; e < pieces.size(); ++e)
        each_edge(mesh.elements[e], [&](auto a, auto b) {
            const auto [begin, end] = ways.equal_range(a);
            if (std::any_of(begin, end, [&](const auto& way) { return way.second == b; }))
                (pieces[e] == piece ? own : others).push_back({e, node_of(mesh, a), node_of(mesh, b)});
        });
    const auto from_side = [](const Point& p, const Side& side) {
        const Point along = side.to - side.from;
        const double share = dot(p - side.from, along) / dot(along, along);
        return apart(p, side.from + std::clamp(share, 0.0, 1.0) * along);
    };
    Gap gap = {std::numeric_limits<double>::infinity(), 0, 0};
    for (const Side& a : own)
        for (const Side& b : others)
            if (const double d = std::min(from_side(a.from, b), from_side(b.from, a)); d < gap.distance)
                gap = {d, a.element, b.element};
    return gap;
}

}  // namespace velquor
