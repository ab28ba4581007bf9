#include "kit/requests/view.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kit/analysis/measured.h"
#include "kit/draw/boundary.h"
#include "kit/section/vectors.h"
#include "kit/show/binary.h"

namespace velquor {

namespace {

using nlohmann::ordered_json;

constexpr int LAST = 255;  // of a byte: materials behind it, or none

std::uint8_t byte_of(int number) {
    return static_cast<std::uint8_t>(number == OUTSIDE ? LAST : std::min(number, LAST));
}

struct Bytes {
    std::string bytes;
    void real(double value) {
        append(bytes, std::isfinite(value) ? static_cast<float>(value) : std::numeric_limits<float>::quiet_NaN());
    }
    void point(const Point& p) {
        real(p.y);
        real(p.z);
    }
};

std::string elements_of(const std::vector<std::array<std::int32_t, 4>>& elements) {
    std::string bytes;
    for (const auto& element : elements)
        for (const std::int32_t point : element) append(bytes, point);
    return base64(bytes);
}

int number_of(const Section& section, const std::string& material) {
    const auto& list = section.materials;
    return static_cast<int>(
        std::find_if(list.begin(), list.end(), [&](const Material& m) { return m.name == material; }) - list.begin());
}

// Borders between materials and around them, with their arcs.
void add_borders(const Section& section, const Mesh& mesh, const Point& origin, ordered_json& view) {
    std::vector<int> kinds;
    for (const std::int32_t owner : mesh.owners) kinds.push_back(number_of(section, material_of(section, owner).name));
    const Plane plane = boundary_of(mesh, kinds).plane;
    Bytes curves;
    std::string sides;
    for (const Curve& curve : plane.curves) {
        curves.point(plane.points[static_cast<std::size_t>(curve.from)] - origin);
        curves.point(plane.points[static_cast<std::size_t>(curve.to)] - origin);
        curves.real(curve.sweep);
        curves.point(curve.centre - origin);
        append(sides, byte_of(curve.left));
        append(sides, byte_of(curve.right));
    }
    view["curves"] = base64(curves.bytes);
    view["sides"] = base64(sides);
}

}  // namespace

ordered_json view_of(const Section& section, const Analysis& a) {
    const Field& field = a.field;
    Point low = field.nodes.front(), high = low;
    for (const Point& p : field.nodes) {
        low = {std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    const Point origin = {(low.y + high.y) / 2, (low.z + high.z) / 2};
    ordered_json view = {{"origin", {origin.y, origin.z}}, {"box", {low.y, low.z, high.y, high.z}}};

    Bytes points, unit, warping;
    std::string material, sharp;
    for (std::size_t i = 0; i < field.spots.size(); ++i) {
        points.point(field.nodes[static_cast<std::size_t>(field.spots[i].node)] - origin);
        append(material, byte_of(field.spots[i].material));
        append(sharp, static_cast<std::uint8_t>(field.sharp[i] ? 1 : field.near_sharp[i] ? 2 : 0));
        for (const double stress : field.unit[i]) unit.real(stress);
    }
    if (a.pieces == 1)
        for (std::size_t i = 0; i < field.coarse_spots; ++i)
            warping.real(a.warping[static_cast<std::size_t>(field.spots[i].node)]);
    view["points"] = base64(points.bytes);
    view["elements"] = elements_of(field.elements);
    view["coarse_points"] = field.coarse_spots;
    view["coarse_elements"] = elements_of(field.coarse);
    view["material"] = base64(material);
    view["sharp"] = base64(sharp);
    view["unit"] = base64(unit.bytes);
    view["warping"] = base64(warping.bytes);
    add_borders(section, a.mesh, origin, view);
    view["bars"] = ordered_json::array();
    for (const Bar& bar : section.bars)
        if (bar.as_point)
            view["bars"].push_back({bar.at.y, bar.at.z, std::sqrt(bar.area / PI), number_of(section, bar.material)});
    view["materials"] = ordered_json::array();
    for (const Material& m : section.materials) view["materials"].push_back(m.name);
    return view;
}

}  // namespace velquor
