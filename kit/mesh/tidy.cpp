#include "kit/mesh/tidy.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <unordered_map>

#include "kit/mesh/mesh_file.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double FLAT = 1e-6;       // of the extent: how far nodes may lie off their plane
constexpr double LARGEST = 1e9;     // coordinate
constexpr double NO_AREA = 1e-12;   // of the square of the longest side
constexpr double SLANTEST = 0.081;  // sine at a corner of a quadrilateral; the library refuses those below 0.08

std::string behind(const std::string& place, const std::string& what) {
    return place + (place.empty() ? "" : ": ") + what;
}
std::string element_at(const std::string& place, const Loose::Element& e) {
    return behind(place, "element " + std::to_string(e.number));
}
std::string count_of(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}
std::string point_text(const Point& p) { return "(" + text_of(p.y, 7) + ", " + text_of(p.z, 7) + ")"; }

int corners_of(const Loose::Element& e) { return e.corners[2] == e.corners[3] ? 3 : 4; }

// By the diagonals, that of a triangle too.
double area_of(const Loose& mesh, const std::array<std::int32_t, 4>& c) {
    return cross(mesh.nodes[c[2]] - mesh.nodes[c[0]], mesh.nodes[c[3]] - mesh.nodes[c[1]]) / 2;
}

// Gmsh's types: corners, and their nodes.
struct Type {
    int number, corners, nodes;
};
constexpr Type TYPES[] = {{2, 3, 3}, {3, 4, 4}, {9, 3, 6}, {10, 4, 9}, {16, 4, 8}};

// Elements in the order of their numbers, of first and second order.
struct Read {
    std::uint64_t number;
    std::int32_t surface;
    const Type* type;
    std::vector<std::int32_t> nodes;
};

std::vector<Read> elements_of(const RawMesh& raw, const std::string& place) {
    std::unordered_map<std::uint64_t, std::int32_t> index;
    for (std::size_t i = 0; i < raw.numbers.size(); ++i) index.emplace(raw.numbers[i], static_cast<std::int32_t>(i));
    std::vector<Read> elements;
    for (const RawMesh::Block& block : raw.blocks) {
        const auto* const type =
            std::find_if(std::begin(TYPES), std::end(TYPES), [&](const Type& t) { return t.number == block.type; });
        if (type == std::end(TYPES))
            throw Error(behind(place, "element " + std::to_string(block.numbers.at(0))),
                        "is of the kind " + in_quotes(block.name),
                        "triangles and quadrilaterals of first and second order are read");
        const auto n = static_cast<std::size_t>(type->nodes);
        for (std::size_t e = 0; e < block.numbers.size(); ++e) {
            Read element = {block.numbers[e], block.surface, type, {}};
            for (std::size_t k = 0; k < n; ++k) {
                const auto found = index.find(block.nodes.at(n * e + k));
                if (found == index.end())
                    throw Error(behind(place, "element " + std::to_string(element.number)),
                                "has node " + std::to_string(block.nodes[n * e + k]) + ", which there is not");
                element.nodes.push_back(found->second);
            }
            elements.push_back(std::move(element));
        }
    }
    std::stable_sort(elements.begin(), elements.end(),
                     [](const Read& a, const Read& b) { return a.number < b.number; });
    return elements;
}

// The axes of the file along Y and Z. A plane that is not given is that of the axis along which the nodes spread least.
std::array<int, 2> axes_of(const RawMesh& raw, const std::vector<bool>& used, const std::string& wish,
                           const std::string& place, std::vector<std::string>& notes) {
    const auto node_at = [&](std::size_t i) { return behind(place, "node " + std::to_string(raw.numbers[i])); };
    double low[3] = {INFINITY, INFINITY, INFINITY}, high[3] = {-INFINITY, -INFINITY, -INFINITY}, extent = 0;
    for (std::size_t i = 0; i < used.size(); ++i)
        for (std::size_t k = 0; used[i] && k < 3; ++k) {
            const double x = raw.places[3 * i + k];
            if (!std::isfinite(x)) throw Error(node_at(i), "has a coordinate that is no number");
            if (std::abs(x) > LARGEST)
                throw Error(node_at(i), "has a coordinate of " + text_of(x), "at most 1e9 is taken");
            low[k] = std::min(low[k], x);
            high[k] = std::max(high[k], x);
            extent = std::max(extent, high[k] - low[k]);
        }
    std::string plane = wish;
    int normal = 0;
    if (plane.empty()) {
        for (const int k : {1, 0, 2})  // the plane x, y where there is a choice
            if (high[k] - low[k] <= high[normal] - low[normal]) normal = k;
        plane = normal == 0 ? "yz" : normal == 1 ? "xz" : "xy";
    } else {
        normal = 3 - (plane[0] - 'x') - (plane[1] - 'x');
    }
    // The plane is where half of the nodes lie at most on either side.
    const auto along = [&](std::size_t i) { return raw.places[3 * i + static_cast<std::size_t>(normal)]; };
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < used.size(); ++i)
        if (used[i]) order.push_back(i);
    const auto middle = order.begin() + static_cast<std::ptrdiff_t>(order.size() / 2);
    std::nth_element(order.begin(), middle, order.end(),
                     [&](std::size_t a, std::size_t b) { return along(a) < along(b); });
    const double level = along(*middle);
    const std::string at = std::string(1, static_cast<char>('x' + normal)) + " = " + text_of(level, 7);
    if (high[normal] - low[normal] > FLAT * extent) {
        std::size_t furthest = *middle;
        for (std::size_t i = 0; i < used.size(); ++i)
            if (used[i] && std::abs(along(i) - level) > std::abs(along(furthest) - level)) furthest = i;
        throw Error(node_at(furthest),
                    "lies " + text_of(std::abs(along(furthest) - level), 4) + " off the plane at " + at,
                    wish.empty() ? "a section is plane, in x and y, in y and z or in x and z"
                                 : "mesh.plane is " + in_quotes(wish));
    }
    if (plane != "xy" || high[normal] != 0 || low[normal] != 0)
        notes.push_back("lies in the plane at " + at + ": its " + plane[0] + " and " + plane[1] +
                        " are y and z of the section");
    return {plane[0] - 'x', plane[1] - 'x'};
}

bool is_inside(const Loose& mesh, const Loose::Element& e, const Point& p) {
    for (std::size_t k = 0; k < 4; ++k) {
        const Point &a = mesh.nodes[e.corners[k]], &b = mesh.nodes[e.corners[(k + 1) % 4]];
        if (e.corners[k] != e.corners[(k + 1) % 4] && cross(b - a, p - a) <= 0) return false;
    }
    return true;
}

Point middle_of(const Loose& mesh, const Loose::Element& e) {
    Point sum;
    for (int k = 0; k < corners_of(e); ++k) sum = sum + mesh.nodes[e.corners[k]];
    return 1.0 / corners_of(e) * sum;
}

// Squares of a grid with what has a box in them.
struct Grid {
    Point low;
    double size;
    std::unordered_map<std::int64_t, std::vector<std::int32_t>> cells{};

    std::int64_t column(double x, double from) const {
        return static_cast<std::int64_t>(std::floor((x - from) / size));
    }
    std::int64_t key(std::int64_t i, std::int64_t j) const { return i * (std::int64_t{1} << 31) + j; }
    template <class Do>
    void each(const Point& a, const Point& b, Do act) {
        for (std::int64_t i = column(a.y, low.y); i <= column(b.y, low.y); ++i)
            for (std::int64_t j = column(a.z, low.z); j <= column(b.z, low.z); ++j) act(key(i, j));
    }
};

struct Box {
    Point low, high;
};
Box box_of(const Loose& mesh, const std::vector<std::int32_t>& nodes) {
    Box box = {mesh.nodes[nodes[0]], mesh.nodes[nodes[0]]};
    for (const std::int32_t n : nodes) {
        const Point& p = mesh.nodes[n];
        box.low = {std::min(box.low.y, p.y), std::min(box.low.z, p.z)};
        box.high = {std::max(box.high.y, p.y), std::max(box.high.z, p.z)};
    }
    return box;
}

// As many squares as boxes, over the whole.
Grid grid_of(const Box& whole, std::size_t boxes) {
    const Point extent = whole.high - whole.low;
    const double longest = std::max(extent.y, extent.z),
                 across = std::max(std::min(extent.y, extent.z), 1e-3 * longest);
    return {whole.low, std::sqrt(longest * across / static_cast<double>(boxes))};
}

}  // namespace

Loose in_plane(const RawMesh& raw, const std::string& plane, const std::string& place,
               std::vector<std::string>& notes) {
    const std::vector<Read> read = elements_of(raw, place);
    std::vector<bool> used(raw.numbers.size(), false);
    for (const Read& e : read)
        for (const std::int32_t node : e.nodes) used[static_cast<std::size_t>(node)] = true;
    const auto nodes = static_cast<std::size_t>(std::count(used.begin(), used.end(), true));
    if (nodes > MOST_MESH_NODES)
        throw Error(place, "a mesh of " + std::to_string(nodes) + " nodes",
                    "at most " + std::to_string(MOST_MESH_NODES) +
                        " are taken: mesh it coarser, every element is cut in four on each level");
    const auto axes = axes_of(raw, used, plane, place, notes);

    if (nodes < used.size() && raw.solids == 0)
        notes.push_back(count_of(used.size() - nodes, "loose node", "loose nodes") + " dropped");

    Loose mesh;
    mesh.numbers = raw.numbers;
    for (std::size_t i = 0; i < raw.numbers.size(); ++i)
        mesh.nodes.push_back({raw.places[3 * i + static_cast<std::size_t>(axes[0])],
                              raw.places[3 * i + static_cast<std::size_t>(axes[1])]});
    std::size_t triangles = 0, quadrilaterals = 0;
    for (const Read& e : read) {
        std::vector<std::int32_t> n = e.nodes;
        const auto add = [&](std::array<std::int32_t, 4> corners) {
            mesh.elements.push_back({e.number, e.surface, corners});
        };
        switch (e.type->nodes) {
            case 3: add({n[0], n[1], n[2], n[2]}); break;
            case 4: add({n[0], n[1], n[2], n[3]}); break;
            case 6:
                ++triangles;
                for (const auto& t : {std::array{0, 3, 5}, {3, 1, 4}, {5, 4, 2}, {3, 4, 5}})
                    add({n[t[0]], n[t[1]], n[t[2]], n[t[2]]});
                break;
            default:
                ++quadrilaterals;
                if (n.size() == 8) {  // the middle, where the functions of its eight nodes have it
                    Point middle;
                    for (int k = 0; k < 4; ++k)
                        middle = middle + 0.5 * mesh.nodes[n[k + 4]] + (-0.25) * mesh.nodes[n[k]];
                    n.push_back(static_cast<std::int32_t>(mesh.nodes.size()));
                    mesh.nodes.push_back(middle);
                    mesh.numbers.push_back(0);
                }
                for (int k = 0; k < 4; ++k) add({n[k], n[k + 4], n[8], n[(k + 3) % 4 + 4]});
        }
    }
    if (triangles > 0)
        notes.push_back(count_of(triangles, "quadratic triangle", "quadratic triangles") + " split into linear ones");
    if (quadrilaterals > 0)
        notes.push_back(count_of(quadrilaterals, "quadratic quadrilateral", "quadratic quadrilaterals") +
                        " split into linear ones");
    return mesh;
}

void join(Loose& mesh, double distance, const std::string& length_unit, const std::string& place,
          std::vector<std::string>& notes) {
    std::vector<bool> used(mesh.nodes.size(), false);
    for (const auto& e : mesh.elements)
        for (const std::int32_t node : e.corners) used[static_cast<std::size_t>(node)] = true;
    std::vector<std::int32_t> order, root(mesh.nodes.size());
    std::iota(root.begin(), root.end(), 0);
    for (std::size_t i = 0; i < used.size(); ++i)
        if (used[i]) order.push_back(static_cast<std::int32_t>(i));
    std::sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
        const Point &p = mesh.nodes[a], &q = mesh.nodes[b];
        return p.y != q.y ? p.y < q.y : p.z != q.z ? p.z < q.z : a < b;
    });
    const auto find = [&](std::int32_t n) {
        while (root[n] != n) n = root[n] = root[root[n]];
        return n;
    };
    std::size_t joined = 0;
    for (std::size_t a = 0; distance > 0 && a < order.size(); ++a)
        for (std::size_t b = a + 1; b < order.size(); ++b) {
            const Point apart = mesh.nodes[order[b]] - mesh.nodes[order[a]];
            if (apart.y > distance) break;
            if (length(apart) > distance) continue;
            const auto [low, high] = std::minmax({find(order[a]), find(order[b])});  // a list: of values
            if (low == high) continue;
            root[high] = low;
            ++joined;
        }
    for (auto& e : mesh.elements) {
        std::vector<std::int32_t> left;
        for (const std::int32_t corner : e.corners)
            if (left.empty() || left.back() != find(corner)) left.push_back(find(corner));
        if (left.back() == left.front()) left.pop_back();
        if (left.size() < 3 || std::count(left.begin(), left.end(), left[0]) > 1)
            throw Error(element_at(place, e), "has less than three corners",
                        joined > 0 ? "nodes within " + text_of(distance, 3) + " " + length_unit +
                                         " are joined: give a smaller mesh.join"
                                   : "");
        if (left.size() == 3) left.push_back(left.back());
        std::copy(left.begin(), left.end(), e.corners.begin());
    }
    if (joined > 0)
        notes.push_back(count_of(joined, "doubled node", "doubled nodes") + " joined within " + text_of(distance, 3) +
                        " " + length_unit);
}

void straighten(Loose& mesh, const std::string& place, std::vector<std::string>& notes) {
    std::size_t turned = 0, cut = 0;
    std::vector<Loose::Element> made;
    for (auto& e : mesh.elements) {
        const int n = corners_of(e);
        auto& c = e.corners;
        const auto at = [&](int k) -> const Point& { return mesh.nodes[c[static_cast<std::size_t>((k + n) % n)]]; };
        double longest = 0;
        for (int k = 0; k < n; ++k) longest = std::max(longest, length(at(k + 1) - at(k)));
        double area = area_of(mesh, c);
        if (!(std::abs(area) > NO_AREA * longest * longest))
            throw Error(element_at(place, e), "encloses no area, at " + point_text(at(0)), "leave it out of the mesh");
        if (area < 0) {
            std::swap(c[1], n == 3 ? c[2] : c[3]);
            if (n == 3) c[3] = c[2];
            ++turned;
            area = -area;
        }
        double sine = 1;
        for (int k = 0; k < n; ++k)
            sine = std::min(sine, cross(at(k) - at(k - 1), at(k + 1) - at(k)) /
                                      (length(at(k) - at(k - 1)) * length(at(k + 1) - at(k))));
        if (n == 3 || sine >= SLANTEST) {
            made.push_back(e);
            continue;
        }
        // Of both diagonals the one that leaves the larger least area; a quadrilateral that crosses itself has none.
        std::array<std::array<std::int32_t, 4>, 2> best{};
        double least = 0;
        for (const std::size_t k : {0u, 1u}) {
            const std::array<std::array<std::int32_t, 4>, 2> halves = {
                {{c[k], c[k + 1], c[k + 2], c[k + 2]}, {c[k], c[k + 2], c[(k + 3) % 4], c[(k + 3) % 4]}}};
            const double smaller = std::min(area_of(mesh, halves[0]), area_of(mesh, halves[1]));
            if (smaller > least) least = smaller, best = halves;
        }
        if (least <= NO_AREA * longest * longest)
            throw Error(element_at(place, e), "crosses itself, at " + point_text(at(0)),
                        "its corners must follow one another around it");
        for (const auto& half : best) made.push_back({e.number, e.surface, half});
        ++cut;
    }
    mesh.elements = std::move(made);
    if (turned > 0) notes.push_back(count_of(turned, "clockwise element", "clockwise elements") + " turned");
    if (cut > 0)
        notes.push_back(count_of(cut, "quadrilateral", "quadrilaterals") +
                        " with a corner that is re-entrant, straight or sharp split into triangles");
}

void check_fit(const Loose& mesh, double distance, const std::string& place) {
    const auto number = [&](std::int32_t e) {
        return std::to_string(mesh.elements[static_cast<std::size_t>(e)].number);
    };
    std::vector<std::int32_t> all;
    std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> edges;  // in their direction, with their element
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto& c = mesh.elements[e].corners;
        all.insert(all.end(), c.begin(), c.end());
        for (std::size_t k = 0; k < 4; ++k) {
            if (c[k] == c[(k + 1) % 4]) continue;
            const auto [first, fresh] = edges.emplace(std::pair(c[k], c[(k + 1) % 4]), static_cast<std::int32_t>(e));
            if (!fresh)
                throw Error(element_at(place, mesh.elements[e]),
                            "lies on element " + number(first->second) + ": both are on one side of the edge from " +
                                point_text(mesh.nodes[c[k]]) + " to " + point_text(mesh.nodes[c[(k + 1) % 4]]),
                            "leave one of them out");
        }
    }
    Grid grid = grid_of(box_of(mesh, all), mesh.elements.size());
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto& c = mesh.elements[e].corners;
        const Box box = box_of(mesh, {c.begin(), c.end()});
        grid.each(box.low, box.high,
                  [&](std::int64_t key) { grid.cells[key].push_back(static_cast<std::int32_t>(e)); });
    }
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const Point p = middle_of(mesh, mesh.elements[e]);
        grid.each(p, p, [&](std::int64_t key) {
            for (const std::int32_t other : grid.cells[key])
                if (other != static_cast<std::int32_t>(e) &&
                    is_inside(mesh, mesh.elements[static_cast<std::size_t>(other)], p))
                    throw Error(element_at(place, mesh.elements[e]),
                                "lies on element " + number(other) + ", at " + point_text(p), "leave one of them out");
        });
    }
    // Edges of the boundary beside nodes of it: they fall apart where they look joined.
    grid.cells.clear();
    std::vector<std::int32_t> boundary;
    for (const auto& entry : edges) {
        const std::pair<std::int32_t, std::int32_t> edge = entry.first;

        if (edges.count({edge.second, edge.first}) > 0) continue;
        boundary.push_back(edge.first);
        const Point at = mesh.nodes[edge.first];
        grid.each(at, at, [&](std::int64_t key) { grid.cells[key].push_back(edge.first); });
    }
    for (const auto& entry : edges) {
        const std::pair<std::int32_t, std::int32_t> edge = entry.first;

        if (edges.count({edge.second, edge.first}) > 0) continue;
        const Point a = mesh.nodes[edge.first], b = mesh.nodes[edge.second];
        const Box box = box_of(mesh, {edge.first, edge.second});
        const Point margin = {distance, distance};
        grid.each(box.low - margin, box.high + margin, [&](std::int64_t key) {
            const auto cell = grid.cells.find(key);
            if (cell == grid.cells.end()) return;
            for (const std::int32_t n : cell->second) {
                const Point p = mesh.nodes[n] - a, along = unit(b - a);
                const double t = dot(p, along);
                if (n == edge.first || n == edge.second || t <= distance || t >= length(b - a) - distance) continue;
                if (std::abs(cross(along, p)) > distance) continue;
                throw Error(behind(place, "node " + std::to_string(mesh.numbers[n])),
                            "at " + point_text(mesh.nodes[n]) + " lies on an edge of element " + number(entry.second) +
                                ", which does not have it",
                            "elements must share whole edges");
            }
        });
    }
}

void renumber(Loose& mesh) {
    std::vector<std::int32_t> moved(mesh.nodes.size(), -1);
    for (const auto& e : mesh.elements)
        for (const std::int32_t node : e.corners) moved[static_cast<std::size_t>(node)] = 0;
    std::int32_t kept = 0;
    for (std::size_t i = 0; i < moved.size(); ++i) {
        if (moved[i] < 0) continue;
        mesh.nodes[static_cast<std::size_t>(kept)] = mesh.nodes[i];
        mesh.numbers[static_cast<std::size_t>(kept)] = mesh.numbers[i];
        moved[i] = kept++;
    }
    mesh.nodes.resize(static_cast<std::size_t>(kept));
    mesh.numbers.resize(static_cast<std::size_t>(kept));
    for (auto& e : mesh.elements)
        for (std::int32_t& node : e.corners) node = moved[static_cast<std::size_t>(node)];
}

}  // namespace velquor
