#include "kit/mesh/mesh.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "kit/mesh/divide.h"
#include "kit/mesh/fill.h"
#include "kit/mesh/given.h"
#include "kit/mesh/plane.h"
#include "kit/mesh/walls.h"
#include "kit/section/file.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr int ATTEMPTS = 6;  // with walls, without them, then both again on elements half as large
constexpr double FINEST = 1000;
constexpr double FAR = 1000;   // distance from the origin over the extent
constexpr double LOST = 1e-6;  // of the area to be filled, by which what is filled may differ from it

std::vector<int> materials_of(const Section& section) {
    std::map<std::string, int> number;
    for (const Material& m : section.materials) number.emplace(m.name, static_cast<int>(number.size()));
    std::vector<int> materials;
    for (const Part& part : section.parts) materials.push_back(number[part.material]);
    for (const Bar& bar : section.bars) materials.push_back(number[bar.material]);
    return materials;
}

// Nodes of each curve from its beginning to its end; numbers from 0.
std::vector<std::vector<int>> nodes_on(const Plane& plane, const std::vector<std::vector<double>>& shares, Mesh& mesh) {
    std::vector<int> number(plane.points.size(), -1);
    const auto node = [&](int point) {
        if (number[point] < 0) {
            number[point] = static_cast<int>(mesh.nodes.size());
            mesh.nodes.push_back(plane.points[point]);
        }
        return number[point];
    };
    std::vector<std::vector<int>> on(plane.curves.size());
    for (std::size_t k = 0; k < on.size(); ++k) {
        on[k].push_back(node(plane.curves[k].from));
        for (const double t : shares[k]) {
            on[k].push_back(static_cast<int>(mesh.nodes.size()));
            mesh.nodes.push_back(point_at(plane, static_cast<Side>(k + 1), t));
        }
        on[k].push_back(node(plane.curves[k].to));
        if (plane.curves[k].sweep == 0) continue;
        for (std::size_t i = 0; i + 1 < on[k].size(); ++i) {
            const auto [a, b] = std::minmax(on[k][i], on[k][i + 1]);
            mesh.bows.push_back({a + 1, b + 1, plane.curves[k].centre});
        }
    }
    std::sort(mesh.bows.begin(), mesh.bows.end(),
              [](const Mesh::Bow& p, const Mesh::Bow& q) { return p.a != q.a ? p.a < q.a : p.b < q.b; });
    return on;
}

std::vector<int> along(const std::vector<std::vector<int>>& on, Side side) {
    std::vector<int> nodes = on[curve_of(side)];
    if (side < 0) std::reverse(nodes.begin(), nodes.end());
    return nodes;
}

// Quadrilaterals between the four sides; nodes inside blend what the sides have (W. J. Gordon and C. A. Hall, 1973).
void fill_wall(const Wall& wall, int owner, const std::vector<std::vector<int>>& on, Mesh& mesh) {
    const std::vector<int> low = along(on, wall.sides[0]), high = along(on, -wall.sides[2]);
    const std::vector<int> first = along(on, -wall.sides[3]), last = along(on, wall.sides[1]);
    const std::size_t m = low.size(), n = first.size();
    std::vector<std::vector<int>> grid(m, std::vector<int>(n));
    const auto at = [&](int node) { return mesh.nodes[node]; };
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < n; ++j) {
            if (j == 0)
                grid[i][j] = low[i];
            else if (j + 1 == n)
                grid[i][j] = high[i];
            else if (i == 0)
                grid[i][j] = first[j];
            else if (i + 1 == m)
                grid[i][j] = last[j];
            else {
                // Shares by the lengths on the sides, which are the same on opposite ones.
                const double r = length(at(low[i]) - at(low[0])) / length(at(low[m - 1]) - at(low[0]));
                const double s = static_cast<double>(j) / static_cast<double>(n - 1);
                const double u = std::min(r, 1.0);
                const Point p = (1 - s) * at(low[i]) + s * at(high[i]) + (1 - u) * at(first[j]) + u * at(last[j]) -
                                ((1 - s) * ((1 - u) * at(low[0]) + u * at(low[m - 1])) +
                                 s * ((1 - u) * at(high[0]) + u * at(high[m - 1])));
                grid[i][j] = static_cast<int>(mesh.nodes.size());
                mesh.nodes.push_back(p);
            }
        }
    for (std::size_t i = 0; i + 1 < m; ++i)
        for (std::size_t j = 0; j + 1 < n; ++j) {
            mesh.elements.push_back({grid[i][j] + 1, grid[i + 1][j] + 1, grid[i + 1][j + 1] + 1, grid[i][j + 1] + 1});
            mesh.owners.push_back(owner);
        }
}

double area_of(const std::vector<Point>& nodes, const std::vector<int>& loop) {
    double area = 0;
    for (std::size_t i = 0; i < loop.size(); ++i)
        area += cross(nodes[loop[i]] - nodes[loop[0]], nodes[loop[(i + 1) % loop.size()]] - nodes[loop[0]]) / 2;
    return area;
}

bool encloses(const std::vector<Point>& nodes, const std::vector<int>& loop, const Point& p) {
    bool inside = false;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const Point &a = nodes[loop[i]], &b = nodes[loop[(i + 1) % loop.size()]];
        if ((a.z > p.z) != (b.z > p.z) && p.y < a.y + (p.z - a.z) / (b.z - a.z) * (b.y - a.y)) inside = !inside;
    }
    return inside;
}

// What no wall covers: polygons with their holes.
std::vector<Hollow> hollows_of(const Plane& plane, const std::vector<Wall>& walls,
                               const std::vector<std::vector<int>>& on, const std::vector<Point>& nodes) {
    std::vector<bool> taken(2 * plane.curves.size(), false);
    const auto index = [](Side s) { return 2 * static_cast<std::size_t>(curve_of(s)) + (s < 0); };
    for (const Wall& w : walls)
        for (const Side s : w.sides) taken[index(s)] = true;
    std::vector<Side> open;
    for (std::size_t k = 0; k < plane.curves.size(); ++k)
        for (const Side s : {static_cast<Side>(k + 1), -static_cast<Side>(k + 1)})
            if (!taken[index(s)] && owner_of(plane, s) != OUTSIDE) open.push_back(s);
    struct Loop {
        std::vector<int> nodes;
        int owner;
        double area;
        std::size_t hollow;
    };
    std::vector<Loop> loops;
    for (const std::vector<Side>& sides : loops_of(plane, open)) {
        Loop loop = {{}, owner_of(plane, sides.front()), 0, 0};
        for (const Side s : sides) {
            const std::vector<int> part = along(on, s);
            loop.nodes.insert(loop.nodes.end(), part.begin(), part.end() - 1);
        }
        loop.area = area_of(nodes, loop.nodes);
        loops.push_back(std::move(loop));
    }
    std::vector<Hollow> hollows;
    for (Loop& loop : loops)
        if (loop.area > 0) {
            loop.hollow = hollows.size();
            hollows.push_back({{loop.nodes}, loop.owner});
        }
    for (const Loop& hole : loops) {
        if (hole.area > 0) continue;
        const Loop* around = nullptr;
        for (const Loop& loop : loops)
            if (loop.area > 0 && loop.owner == hole.owner && (around == nullptr || loop.area < around->area)) {
                // A node that both have tells nothing; the middle of an edge of the hole does.
                const Point p = 0.5 * (nodes[hole.nodes[0]] + nodes[hole.nodes[1]]);
                if (encloses(nodes, loop.nodes, p)) around = &loop;
            }
        if (around == nullptr) throw Failed{hole.owner, {}};
        hollows[around->hollow].loops.push_back(hole.nodes);
    }
    return hollows;
}

Mesh meshed(const Section& section, const Plane& plane, const std::vector<Wall>& walls, const std::vector<bool>& sharp,
            double fineness, bool for_stresses) {
    Mesh mesh;
    const auto on = nodes_on(plane, divide(plane, walls, sharp, section.wishes.size, fineness, for_stresses), mesh);
    const std::vector<Hollow> hollows = hollows_of(plane, walls, on, mesh.nodes);
    for (const Wall& wall : walls) fill_wall(wall, owner_of(plane, wall.sides[0]), on, mesh);
    std::vector<double> open(plane.owners, 0), filled(plane.owners, 0);
    for (const Hollow& hollow : hollows)
        for (const auto& loop : hollow.loops) open[hollow.owner] += area_of(mesh.nodes, loop);
    const Filling filling = fill(mesh.nodes, hollows);
    for (std::size_t i = 0; i < filling.triangles.size(); ++i) {
        const auto& t = filling.triangles[i];
        mesh.elements.push_back({t[0] + 1, t[1] + 1, t[2] + 1, t[2] + 1});
        mesh.owners.push_back(filling.owners[i]);
        filled[filling.owners[i]] += area_of(mesh.nodes, {t[0], t[1], t[2]});
    }
    for (int owner = 0; owner < plane.owners; ++owner)
        if (!(std::abs(filled[owner] - open[owner]) <= LOST * open[owner])) throw Failed{owner, {}};
    return mesh;
}

void move(Plane& plane, const Point& by) {
    for (Point& p : plane.points) p = p + by;
    for (Curve& c : plane.curves) c.centre = c.centre + by;
}

Mesh moved(Mesh mesh, const Point& by) {
    for (Point& p : mesh.nodes) p = p + by;
    for (Mesh::Bow& bow : mesh.bows) bow.centre = bow.centre + by;
    return mesh;
}

// The place near which a section is meshed that lies far from its origin, where digits are missing; else the origin.
Point place_of(const Plane& plane) {
    double extent = 0;
    const Point at = plane.points.front();
    for (const Point& p : plane.points) extent = std::max(extent, length(p - at));
    return length(at) > FAR * extent ? at : Point{};
}

}  // namespace

Mesh mesh_of(const Section& section, double fineness, bool for_stresses) {
    check_section(section);
    if (!(fineness > 0 && fineness <= FINEST))
        throw Error("fineness", text_of(fineness), "must be above 0, and at most 1000");
    if (is_mesh(section)) {
        if (section.mesh.elements.empty())
            throw Error("mesh.file", in_quotes(section.mesh.file) + " was not read", "read_mesh does that");
        if (fineness != 1) throw Error("mesh", "its elements are as they are", "levels cut each of them in four");
        return mesh_as_given(section, materials_of(section));
    }
    if (!section.drawing.file.empty())
        throw Error("drawing.file", "is named, and has not been read",
                    "read_drawing of kit/section/drawing.h does that");
    Plane drawn = plane_of(section);
    const Point place = place_of(drawn);
    move(drawn, -1 * place);
    const std::vector<int> materials = materials_of(section);
    const std::vector<bool> sharp = sharp_points(drawn, materials, SHARP);
    const std::vector<bool> corners = sharp_points(drawn, materials, SMOOTH);
    for (int attempt = 1;; ++attempt) {
        Plane plane = drawn;
        const std::vector<Wall> walls = attempt % 2 == 1 ? cut_walls(plane, sharp) : std::vector<Wall>();
        std::vector<bool> all_sharp = sharp;
        all_sharp.resize(plane.points.size(), false);
        try {
            Mesh mesh = meshed(section, plane, walls, all_sharp, fineness, for_stresses);
            mesh.has_corners = std::find(corners.begin(), corners.end(), true) != corners.end();
            return moved(std::move(mesh), place);
        } catch (const Failed& failed) {
            if (attempt % 2 == 0) fineness *= 2;
            if (attempt < ATTEMPTS && failed.why.empty()) continue;
            throw error_of(section, failed);
        }
    }
}

}  // namespace velquor
