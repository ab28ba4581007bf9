#include "mesh_check.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "levels/tally.h"
#include "velquor_levels.h"

namespace {

using velquor::Mesh;
using velquor::Point;

constexpr double ON_ARC = 1e-9;  // of the section's extent
constexpr double AREA = 1e-7;    // of the section's area: reference areas of strips that cut arcs are by chords

double distance(const Point& a, const Point& b) { return std::hypot(a.y - b.y, a.z - b.z); }

double cross(const Point& o, const Point& a, const Point& b) {
    return (a.y - o.y) * (b.z - o.z) - (a.z - o.z) * (b.y - o.y);
}

std::vector<velquor::Circle> circles_of(const velquor::Section& section) {
    std::vector<velquor::Circle> circles;
    for (const velquor::Part& part : section.parts)
        for (const velquor::Face& face : velquor::faces_of(section, part, "")) {
            std::vector<velquor::Outline> outlines = face.holes;
            outlines.push_back(face.outer);
            for (const auto& outline : outlines) {
                Point from = outline.edges.back().to;
                for (const velquor::Edge& edge : outline.edges) {
                    if (edge.arc) circles.push_back(velquor::circle_of(from, edge));
                    from = edge.to;
                }
            }
        }
    return circles;
}

// The first finding of vq_check that is an error.
std::string refusal_of(const velquor::Section& section, const Mesh& mesh) {
    const std::size_t nodes = mesh.nodes.size(), elems = mesh.elements.size();
    std::vector<double> YZ, props(VQ_NCOLUMNS * elems);
    std::vector<std::int32_t> elements;
    for (const Point& p : mesh.nodes) YZ.push_back(p.y);
    for (const Point& p : mesh.nodes) YZ.push_back(p.z);
    for (std::size_t c = 0; c < 4; ++c)
        for (const auto& element : mesh.elements) elements.push_back(element[c]);
    for (std::size_t e = 0; e < elems; ++e) {
        const std::string& name = section.parts[static_cast<std::size_t>(mesh.owners[e])].material;
        const auto material = std::find_if(section.materials.begin(), section.materials.end(),
                                           [&](const velquor::Material& m) { return m.name == name; });
        const auto set = [&](int column, double value) {
            props[static_cast<std::size_t>(column - 1) * elems + e] = value;
        };
        set(VQ_EMOD, material->E), set(VQ_GMOD, material->G);
        for (const int column : {VQ_COUPLING, VQ_GROUP, VQ_MATFLAG, VQ_FNEG, VQ_FPOS}) set(column, 1);
    }
    vq_finding finding = {};
    const auto count = vq_check(1, YZ.data(), static_cast<std::int32_t>(nodes), elements.data(),
                                static_cast<std::int32_t>(elems), props.data(), 0, nullptr, VQ_ELASTIC, 1, &finding);
    if (count > 0 && finding.SEVERITY == VQ_ERROR)
        return formatted("row %d of table %d %s", finding.ROW, finding.TABLE, vq_reason(finding.REASON));
    return "";
}

}  // namespace

std::string fault_of(const velquor::Section& section, const Mesh& mesh, const std::vector<double>& areas) {
    const auto node = [&](std::int32_t n) { return mesh.nodes[static_cast<std::size_t>(n) - 1]; };
    double low = HUGE_VAL, high = -HUGE_VAL;
    for (const Point& p : mesh.nodes) low = std::min({low, p.y}), high = std::max({high, p.y});
    const double extent = high - low;

    const auto circles = circles_of(section);
    std::map<std::pair<std::int32_t, std::int32_t>, Point> bows;
    for (const Mesh::Bow& bow : mesh.bows) {
        bows[{bow.a, bow.b}] = bow.centre;
        const bool known = std::any_of(circles.begin(), circles.end(), [&](const velquor::Circle& circle) {
            return distance(circle.centre, bow.centre) <= ON_ARC * extent &&
                   std::abs(distance(bow.centre, node(bow.a)) - circle.radius) <= ON_ARC * extent &&
                   std::abs(distance(bow.centre, node(bow.b)) - circle.radius) <= ON_ARC * extent;
        });
        if (!known) return formatted("edge %d %d stands off its arc", bow.a, bow.b);
    }

    std::vector<double> meshed(section.parts.size());
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto& corners = mesh.elements[e];
        const std::size_t n = corners[2] == corners[3] ? 3 : 4;
        if (mesh.owners[e] < 0 || static_cast<std::size_t>(mesh.owners[e]) >= meshed.size())
            return formatted("element %zu has no owner", e + 1);
        double& area = meshed[static_cast<std::size_t>(mesh.owners[e])];
        for (std::size_t c = 0; c < n; ++c) {
            const std::int32_t i = corners[c], j = corners[(c + 1) % n];
            const Point a = node(i), b = node(j), origin = node(corners[0]);
            if (!(cross(a, b, node(corners[(c + 2) % n])) > 0))
                return formatted("element %zu is clockwise or flat", e + 1);
            area += cross(origin, a, b) / 2;
            const auto bow = bows.find({std::min(i, j), std::max(i, j)});
            if (bow == bows.end()) continue;
            const double r = distance(bow->second, a), half = std::asin(std::min(1.0, distance(a, b) / 2 / r));
            const double segment = r * r * (half - std::sin(2 * half) / 2);
            area += cross(a, b, bow->second) > 0 ? segment : -segment;
        }
    }
    double whole = 0;
    for (const double area : areas) whole += area;
    for (std::size_t i = 0; i < areas.size(); ++i)
        if (!(std::abs(meshed[i] - areas[i]) <= AREA * whole))
            return formatted("parts[%zu] has an area of %.12g instead of %.12g", i, meshed[i], areas[i]);
    return refusal_of(section, mesh);
}
