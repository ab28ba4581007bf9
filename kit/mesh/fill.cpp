#include "kit/mesh/fill.h"

#include <gmsh.h>

#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "kit/mesh/gmsh_session.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double SMALLEST_SINE = 1e-7;  // of an angle, below which a triangle is none
constexpr double GROWTH = 0.5;          // of the size, over the distance

// The middle of every edge and its length.
struct Sized {
    Point at;
    double size;
};

std::vector<Sized> edges_of(const std::vector<Point>& nodes, const std::vector<Hollow>& polygons) {
    std::vector<Sized> edges;
    for (const Hollow& polygon : polygons)
        for (const auto& loop : polygon.loops)
            for (std::size_t i = 0; i < loop.size(); ++i) {
                const Point &a = nodes[loop[i]], &b = nodes[loop[(i + 1) % loop.size()]];
                edges.push_back({0.5 * (a + b), length(b - a)});
            }
    return edges;
}

// Sizes grow inwards from all edges.
double size_at(const std::vector<Sized>& edges, const Point& p) {
    double size = std::numeric_limits<double>::infinity();
    for (const Sized& e : edges) {
        const Point to = p - e.at;
        const double room = (size - e.size) / GROWTH;
        if (room > 0 && dot(to, to) < room * room) size = e.size + GROWTH * std::sqrt(dot(to, to));
    }
    return size;
}

bool well_shaped(const Point& a, const Point& b, const Point& c) {
    const double twice = cross(b - a, c - a), ab = length(b - a), bc = length(c - b), ca = length(a - c);
    return twice > SMALLEST_SINE * std::max({ab * bc, bc * ca, ca * ab});
}

}  // namespace

Filling fill(std::vector<Point>& nodes, const std::vector<Hollow>& polygons) {
    Filling filling;
    if (polygons.empty()) return filling;
    const MeshSession session;
    namespace geo = gmsh::model::geo;
    gmsh::model::mesh::setSizeCallback([&, edges = edges_of(nodes, polygons)](int, int, double y, double z, double) {
        return size_at(edges, {y, z});
    });

    std::set<int> points;
    std::map<std::pair<int, int>, int> lines;
    const auto line = [&](int a, int b) {
        const auto key = std::minmax(a, b);
        const auto [at, fresh] = lines.emplace(std::make_pair(key.first, key.second), 0);
        if (fresh) {
            for (const int p : {a, b})
                if (points.insert(p).second) geo::addPoint(nodes[p].y, nodes[p].z, 0, 0, p + 1);
            at->second = geo::addLine(key.first + 1, key.second + 1);
            geo::mesh::setTransfiniteCurve(at->second, 2);
        }
        return a < b ? at->second : -at->second;
    };
    std::vector<int> surfaces;
    for (const Hollow& polygon : polygons) {
        std::vector<int> loops;
        for (const auto& loop : polygon.loops) {
            std::vector<int> curves;
            for (std::size_t i = 0; i < loop.size(); ++i) curves.push_back(line(loop[i], loop[(i + 1) % loop.size()]));
            loops.push_back(geo::addCurveLoop(curves));
        }
        surfaces.push_back(geo::addPlaneSurface(loops));
    }
    geo::synchronize();
    try {
        gmsh::model::mesh::generate(2);
        gmsh::model::mesh::removeSizeCallback();
    } catch (...) {
        gmsh::model::mesh::removeSizeCallback();
        throw Failed{polygons.front().owner, {}};
    }

    std::map<std::pair<double, double>, int> drawn;  // Gmsh keeps the coordinates of points as they are
    for (const int p : points) drawn.emplace(std::make_pair(nodes[p].y, nodes[p].z), p);
    std::vector<std::size_t> tags;
    std::vector<double> xyz, parameters;
    gmsh::model::mesh::getNodes(tags, xyz, parameters);
    std::map<std::size_t, int> number;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        const Point p = {xyz[3 * i], xyz[3 * i + 1]};
        const auto known = drawn.find({p.y, p.z});
        if (known == drawn.end()) nodes.push_back(p);
        number[tags[i]] = known != drawn.end() ? known->second : static_cast<int>(nodes.size()) - 1;
    }
    for (std::size_t s = 0; s < surfaces.size(); ++s) {
        std::vector<int> types;
        std::vector<std::vector<std::size_t>> elements, corners;
        gmsh::model::mesh::getElements(types, elements, corners, 2, surfaces[s]);
        if (types.size() != 1 || corners[0].empty()) throw Failed{polygons[s].owner, {}};
        for (std::size_t i = 0; i + 2 < corners[0].size(); i += 3) {
            std::array<int, 3> t = {number[corners[0][i]], number[corners[0][i + 1]], number[corners[0][i + 2]]};
            if (cross(nodes[t[1]] - nodes[t[0]], nodes[t[2]] - nodes[t[0]]) < 0) std::swap(t[1], t[2]);
            if (!well_shaped(nodes[t[0]], nodes[t[1]], nodes[t[2]])) throw Failed{polygons[s].owner, {}};
            filling.triangles.push_back(t);
            filling.owners.push_back(polygons[s].owner);
        }
    }
    return filling;
}

}  // namespace velquor
