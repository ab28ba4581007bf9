// What a section must satisfy beyond its form, and the faces of its parts.
#include <algorithm>
#include <cmath>
#include <map>

#include "kit/section/crossings.h"
#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "kit/section/loads.h"
#include "kit/section/profiles.h"
#include "kit/section/shapes.h"
#include "kit/section/units.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double LARGEST = 1e9;                  // coordinate
constexpr double STIFFEST = 1e30;                // modulus
constexpr double MOST_TURNED = 36000;            // degrees
constexpr double FINEST = 1e-9, COARSEST = 0.5;  // accuracy
constexpr int MOST_LEVELS = 6, MOST_GROUPS = 1000;
constexpr double ROUNDING = 1e-9;            // of a distance
constexpr double SHORTEST = 4 * SAME_PLACE;  // of an outline's extent: an edge that is shorter is none
constexpr double FLATTEST = 1e-6;            // rise of an arc over the line between its ends
constexpr const char* PLANES[] = {"xy", "yx", "yz", "zy", "xz", "zx"};
constexpr int RIM = 32;  // points that stand for a disc's rim, half of them for a circle in it

std::string numbered(const char* list, std::size_t i) { return std::string(list) + "[" + std::to_string(i) + "]"; }

void check_material(const Material& m, const std::string& place) {
    const auto demand = [&](double value, const char* name, bool positive) {
        if (!std::isfinite(value) || value < 0 || (positive && value == 0))
            throw Error(place, std::string(name) + " = " + text_of(value) +
                                   (positive ? ": must be above 0" : ": must not be below 0"));
    };
    demand(m.E, "E", true);
    demand(m.G, "G", true);
    for (const auto& [name, value] : {std::pair{"E", m.E}, {"G", m.G}})
        if (value > STIFFEST) throw Error(place, std::string(name) + " = " + text_of(value) + ": must be at most 1e30");
    demand(m.density, "density", false);
    demand(m.tension, "tension", false);
    demand(m.compression, "compression", false);
    if ((m.tension > 0) != (m.compression > 0))
        throw Error(place, "one strength of two", "give tension and compression, or neither");
}

void check_material_of(const std::string& name, const std::vector<Material>& materials, const std::string& place) {
    std::vector<std::string> names;
    for (const Material& m : materials) {
        if (m.name == name) return;
        names.push_back(m.name);
    }
    if (name.empty()) throw Error(place, "no material is named", did_you_mean(name, names));
    throw Error(place + ".material", "unknown material " + in_quotes(name), did_you_mean(name, names));
}

void check_point(const Point& p, const std::string& place) {
    for (const double x : {p.y, p.z})
        if (!(std::abs(x) <= LARGEST))
            throw Error(place, "a coordinate of " + text_of(x), "must be between -1e9 and 1e9");
}

void check_outline(const Outline& outline, const std::string& place) {
    const auto& edges = outline.edges;
    const bool arcs = std::any_of(edges.begin(), edges.end(), [](const Edge& e) { return e.arc; });
    if (edges.size() < (arcs ? 2u : 3u))
        throw Error(place, std::to_string(edges.size()) + " edges enclose nothing",
                    "three are needed, or two with an arc");
    double extent = 0;
    for (const Edge& edge : edges)
        for (const Point& p : {edge.to, edge.arc ? edge.through : edge.to}) {
            check_point(p, place);
            extent = std::max({extent, std::abs(p.y - edges[0].to.y), std::abs(p.z - edges[0].to.z)});
        }
    Point from = edges.back().to;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const Edge& edge = edges[i];
        const std::string here = place + "[" + std::to_string(i) + "]";
        const double length = std::hypot(edge.to.y - from.y, edge.to.z - from.z);
        if (length <= SHORTEST * extent) {
            const std::string last = i > 0 ? "the point before it" : "the last point: outlines close by themselves";
            throw Error(here, "the same point as " + last, "leave one of the two out");
        }
        // The distance of the third point from the line between the ends.
        const double bow =
            ((edge.through.y - from.y) * (edge.to.z - from.z) - (edge.through.z - from.z) * (edge.to.y - from.y)) /
            length;
        if (edge.arc && std::abs(bow) <= std::max(FLATTEST * length, SAME_PLACE * extent))
            throw Error(here, "through lies on the line between the arc's ends",
                        "give a point [y, z] for a straight edge");
        from = edge.to;
    }
    if (std::abs(area_of(outline)) <= SAME_PLACE * extent * extent) {
        const auto found = crossing_of(region_of({outline, {}}));  // the two halves of an eight take each other's area
        if (!found || found->way != Crossing::crosses) throw Error(place, "encloses no area");
    }
}

// Discs of two bars must not overlap; looked for among those that are near along y.
void check_overlaps(const Section& s) {
    const std::vector<Bar>& bars = s.bars;
    std::vector<std::size_t> order;
    double widest = 0;
    const auto radius = [&](std::size_t i) { return std::sqrt(bars[i].area / PI); };
    for (std::size_t i = 0; i < bars.size(); ++i)
        if (!bars[i].as_point) {
            order.push_back(i);
            widest = std::max(widest, radius(i));
        }
    std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) { return bars[i].at.y < bars[j].at.y; });
    for (std::size_t a = 0; a < order.size(); ++a)
        for (std::size_t b = a + 1; b < order.size(); ++b) {
            const Bar &one = bars[order[a]], &other = bars[order[b]];
            if (other.at.y - one.at.y > radius(order[a]) + widest) break;
            const double distance = std::hypot(other.at.y - one.at.y, other.at.z - one.at.z);
            const double least = radius(order[a]) + radius(order[b]);
            if (distance < least * (1 - ROUNDING)) {
                const auto [first, second] = std::minmax(order[a], order[b]);
                throw Error(place_of_bar(s, second), "overlaps " + place_of_bar(s, first),
                            "their centres are " + text_of(distance) + " apart, and must be " + text_of(least));
            }
        }
}

// A bar's centre lies in a part, and so does all of a disc: in one of them away from its boundary, else point for point
// of its rim and of a circle half as wide: a gap between parts may pass that is narrower than these are apart.
void check_inside(const Section& s, const std::vector<Region>& regions) {
    const auto in_a_part = [&](const Point& p) {
        return std::any_of(regions.begin(), regions.end(), [&](const Region& region) { return inside(region, p); });
    };
    for (std::size_t i = 0; i < s.bars.size(); ++i) {
        const Point& c = s.bars[i].at;
        const double r = s.bars[i].as_point ? 0 : std::sqrt(s.bars[i].area / PI);
        if (std::any_of(regions.begin(), regions.end(), [&](const Region& region) {
                return inside(region, c) && (r == 0 || distance_to_boundary(region, c) >= r - region.tolerance);
            }))
            continue;
        if (!in_a_part(c)) throw Error(place_of_bar(s, i), "lies outside of all parts");
        for (int k = 0; k < RIM * 3 / 2; ++k) {
            const double angle = k * 2 * PI / (k < RIM ? RIM : RIM / 2), far = k < RIM ? r : r / 2;
            if (!in_a_part({c.y + far * std::cos(angle), c.z + far * std::sin(angle)}))
                throw Error(place_of_bar(s, i), "its disc, of radius " + text_of(r, 6) + ", reaches out of the parts",
                            "move it, or give \"as_point\": true");
        }
    }
}

void check_group(const std::string& material, int group, double factor, const std::vector<Material>& materials,
                 const std::string& place) {
    check_material_of(material, materials, place);
    if (group < 1 || group > MOST_GROUPS) throw Error(place + ".group", text_of(group), "must be from 1 to 1000");
    if (!(factor >= 0 && factor <= 1)) throw Error(place + ".factor", text_of(factor), "must be from 0 to 1");
}

std::vector<Region> check_part(const Section& s, const Part& part, const std::string& place) {
    check_group(part.material, part.group, part.factor, s.materials, place);
    if (is_mesh(s)) return {};
    check_point(part.place.at, place + ".at");
    if (!(std::abs(part.place.angle) <= MOST_TURNED))
        throw Error(place + ".turn", "an angle of " + text_of(part.place.angle),
                    "must be from -36000 to 36000 degrees");
    if (part.shape.empty() && part.profile.empty()) {
        check_outline(part.face.outer, place + ".outline");
        for (std::size_t i = 0; i < part.face.holes.size(); ++i)
            check_outline(part.face.holes[i], place + "." + numbered("holes", i));
        check_crossings(part.face, place);
    }
    std::vector<Region> regions;
    for (const Face& face : faces_of(s, part, place)) regions.push_back(region_of(face));
    return regions;
}

void check_wishes(const Wishes& wishes) {
    const auto demand = [](double value, const char* name, double least, double most, const char* more = "") {
        if (!(value >= least && value <= most))
            throw Error("wishes." + std::string(name), text_of(value),
                        "must be from " + text_of(least) + " to " + text_of(most) + more);
    };
    demand(wishes.accuracy, "accuracy", FINEST, COARSEST);
    demand(wishes.levels, "levels", 1, MOST_LEVELS);
    demand(wishes.size, "size", 0, LARGEST, "; 0: from the thickness of the walls");
}

// What can be said before the file is read, and of elements that are there.
void check_mesh(const Section& s) {
    const ReadMesh& mesh = s.mesh;
    for (const auto& [name, group] : mesh.groups)
        check_group(group.material, group.group, group.factor, s.materials, "mesh.groups." + printable(name));
    if (!mesh.plane.empty() && std::find(std::begin(PLANES), std::end(PLANES), mesh.plane) == std::end(PLANES))
        throw Error("mesh.plane", in_quotes(mesh.plane) + " is unknown", "it can be xy, yx, yz, zy, xz or zx");
    if (s.wishes.size != 0)
        throw Error("wishes.size", "of a section that comes as a mesh", "its elements are as they are: leave it out");
    for (std::size_t i = 0; i < s.bars.size(); ++i)
        if (!s.bars[i].as_point)
            throw Error(place_of_bar(s, i), "a disc in a mesh that is given",
                        "give \"as_point\": true, or mesh the bar as a group of its own");
    if (mesh.owners.size() != mesh.elements.size() ||
        (!mesh.numbers.empty() && mesh.numbers.size() != mesh.elements.size()))
        throw Error("mesh", "elements, owners and numbers are not equally many");
    const auto nodes = static_cast<std::int64_t>(mesh.nodes.size()), parts = static_cast<std::int64_t>(s.parts.size());
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto& element = mesh.elements[e];
        if (std::any_of(element.begin(), element.end(), [&](auto node) { return node < 1 || node > nodes; }))
            throw Error(place_of_element(s, e), "has a node that there is not");
        if (mesh.owners[e] < 0 || mesh.owners[e] >= parts)
            throw Error(place_of_element(s, e), "belongs to a part that there is not");
    }
    for (const Point& p : mesh.nodes) check_point(p, "mesh");
}

template <class Named>
void check_names(const std::vector<Named>& list, const char* key) {
    std::map<std::string, std::size_t> seen;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].name.empty()) continue;
        const auto [first, fresh] = seen.emplace(list[i].name, i);
        if (!fresh)
            throw Error(numbered(key, i) + ".name",
                        in_quotes(list[i].name) + " is the name of " + numbered(key, first->second),
                        "names must differ");
    }
}

}  // namespace

void check_section(const Section& s) {
    size_of(lengths(), s.length, "units.length");
    size_of(forces(), s.force, "units.force");
    check_wishes(s.wishes);
    for (std::size_t i = 0; i < s.loads.size(); ++i) check_values(s.loads[i], numbered("loads", i));
    const bool drawn = s.drawing.file.empty();  // all of it
    if (is_mesh(s)) {
        check_mesh(s);
    } else if (s.parts.empty() && drawn) {
        throw Error("", "nothing is drawn: key \"parts\" is missing", "give \"parts\", a \"drawing\", or a \"mesh\"");
    }
    if (!s.drawing.unit.empty()) size_of(lengths(), s.drawing.unit, "drawing.unit");
    check_names(s.materials, "materials");
    check_names(s.parts, "parts");
    check_names(s.loads, "loads");
    for (std::size_t i = 0; i < s.materials.size(); ++i) check_material(s.materials[i], numbered("materials", i));
    std::map<int, std::size_t> groups;
    std::vector<Region> regions;
    for (std::size_t i = 0; i < s.parts.size(); ++i) {
        const std::string place = place_of_owner(s, i);
        for (Region& region : check_part(s, s.parts[i], place)) regions.push_back(std::move(region));
        const std::size_t first = groups.emplace(s.parts[i].group, i).first->second;
        if (s.parts[first].factor != s.parts[i].factor)
            throw Error(place + ".factor",
                        text_of(s.parts[i].factor) + " differs from that of " + place_of_owner(s, first),
                        "a group has one factor");
    }
    for (std::size_t i = 0; i < s.bars.size(); ++i) {
        const Bar& bar = s.bars[i];
        const std::string place = place_of_bar(s, i);
        check_material_of(bar.material, s.materials, place);
        if (!(bar.area > 0)) throw Error(place, "area = " + text_of(bar.area) + ": must be above 0");
        if (bar.area > LARGEST * LARGEST) throw Error(place, "area = " + text_of(bar.area) + ": must be at most 1e18");
        check_point(bar.at, place);
    }
    if (is_mesh(s)) return;
    check_overlaps(s);
    if (drawn) check_inside(s, regions);
}

std::string place_of_bar(const Section& s, std::size_t number) {
    const std::string& read = s.bars[number].place;
    return read.empty() ? numbered("bars", number) : read;
}

std::string place_of_element(const Section& s, std::size_t element) {
    return "element " + std::to_string(s.mesh.numbers.empty() ? std::uint64_t{element} + 1 : s.mesh.numbers[element]);
}

std::string place_of_owner(const Section& s, std::size_t owner) {
    const std::size_t parts = s.parts.size();
    if (owner >= parts) return place_of_bar(s, owner - parts);
    if (is_mesh(s)) return "group " + in_quotes(s.parts[owner].name);
    // Those of a drawing come before the listed ones.
    const auto first = std::count_if(s.parts.begin(), s.parts.end(), [](const Part& p) { return !p.where.empty(); });
    const std::string& where = s.parts[owner].where;
    return where.empty() ? numbered("parts", owner - static_cast<std::size_t>(first)) : where;
}

std::vector<Face> faces_of(const Section& section, const Part& part, const std::string& place) {
    std::vector<Face> faces = {part.face};
    if (!part.shape.empty()) {
        faces = faces_of(shape_of(part.shape, place + ".shape"), part.parameters, place + ".parameters");
    } else if (!part.profile.empty()) {
        const Profile profile = profile_of(part.profile, section.length, place + ".profile");
        faces = faces_of(shape_of(profile.shape, place), profile.parameters, place + ".profile");
    }
    for (Face& face : faces) face = placed(face, part.place);
    return faces;
}

}  // namespace velquor
