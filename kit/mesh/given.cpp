#include "kit/mesh/given.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "kit/mesh/walls.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double BESIDE = 1e-9;  // of an element's extent, by which a bar may lie beside it

// What meets in a node: the angle that elements take up, in all and of the first material, and edges of the boundary
// and between two materials.
struct Around {
    double all = 0, first = 0;
    int material = -1, boundary = 0, between = 0;
};

// The rule of sharp_points of walls.h.
bool is_sharp(const Around& a) {
    if (a.boundary > 0) return a.boundary > 2 || a.all > PI + SMOOTH;
    return a.between > 0 && (a.between != 2 || std::abs(a.first - PI) > SMOOTH);
}

bool has_corners(const Mesh& mesh, const std::vector<int>& materials) {
    std::map<std::pair<std::int32_t, std::int32_t>, int> edges;  // the material to the left of each
    std::vector<Around> around(mesh.nodes.size() + 1);
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto& c = mesh.elements[e];
        const int material = materials[static_cast<std::size_t>(mesh.owners[e])];
        const std::size_t n = c[2] == c[3] ? 3 : 4;
        for (std::size_t k = 0; k < n; ++k) {
            edges[{c[k], c[(k + 1) % n]}] = material;
            const Point at = mesh.nodes[c[k] - 1], to = mesh.nodes[c[(k + 1) % n] - 1] - at,
                        back = mesh.nodes[c[(k + n - 1) % n] - 1] - at;
            const double angle = std::atan2(cross(to, back), dot(to, back));
            Around& a = around[static_cast<std::size_t>(c[k])];
            if (a.material < 0) a.material = material;
            a.all += angle;
            if (material == a.material) a.first += angle;
        }
    }
    for (const auto& [edge, material] : edges) {
        const auto other = edges.find({edge.second, edge.first});
        const bool boundary = other == edges.end();
        if (!boundary && (other->second == material || edge.second < edge.first)) continue;
        for (const std::int32_t node : {edge.first, edge.second})
            ++(boundary ? around[static_cast<std::size_t>(node)].boundary
                        : around[static_cast<std::size_t>(node)].between);
    }
    return std::any_of(around.begin(), around.end(), is_sharp);
}

bool has(const Mesh& mesh, const std::array<std::int32_t, 4>& element, const Point& p) {
    for (std::size_t k = 0; k < 4; ++k) {
        const Point &a = mesh.nodes[element[k] - 1], &b = mesh.nodes[element[(k + 1) % 4] - 1];
        if (cross(b - a, p - a) < -BESIDE * dot(b - a, b - a)) return false;
    }
    return true;
}

}  // namespace

Mesh mesh_as_given(const Section& section, const std::vector<int>& materials) {
    Mesh mesh;
    mesh.nodes = section.mesh.nodes;
    mesh.elements = section.mesh.elements;
    mesh.owners = section.mesh.owners;
    mesh.has_corners = has_corners(mesh, materials);
    for (std::size_t i = 0; i < section.bars.size(); ++i)
        if (std::none_of(mesh.elements.begin(), mesh.elements.end(),
                         [&](const auto& element) { return has(mesh, element, section.bars[i].at); }))
            throw Error(place_of_bar(section, i), "lies in no element of the mesh");
    return mesh;
}

}  // namespace velquor
