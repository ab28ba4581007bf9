#include <algorithm>

#include "kit/section/words.h"
#include "kit/show/binary.h"
#include "kit/show/fields.h"

namespace velquor {

namespace {

constexpr int VERTEX = 1, TRIANGLE = 5, QUADRILATERAL = 9;  // VTK's types of cells

// Numbers with their length before them, little end first.
template <typename Number>
std::string array(const std::string& type, const std::string& name, std::size_t components,
                  const std::vector<Number>& numbers) {
    std::string bytes;
    append(bytes, static_cast<std::uint64_t>(numbers.size() * sizeof(Number)));
    for (const Number number : numbers) append(bytes, number);
    return "<DataArray type=\"" + type + "\" Name=\"" + in_markup(name) + "\"" +
           (components > 1 ? " NumberOfComponents=\"" + std::to_string(components) + "\"" : "") +
           " format=\"binary\">" + base64(bytes) + "</DataArray>\n";
}

// Names as arrays that hold their numbers: not every reader takes VTK's arrays of texts.
std::string arrays_of_names(const std::string& what, const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t k = 0; k < names.size(); ++k)
        text += "<DataArray type=\"Int32\" Name=\"" + in_markup(what + " " + names[k]) +
                "\" NumberOfTuples=\"1\" format=\"ascii\">" + std::to_string(k) + "</DataArray>\n";
    return text;
}

}  // namespace

std::string show_vtu(const Section& section, const Fields& fields) {
    const auto surfaces = surfaces_of(section, fields.mesh);
    std::vector<std::string> materials, parts;
    for (const Material& m : section.materials) materials.push_back(m.name);
    for (const Surface& s : surfaces) parts.push_back(s.name);

    std::vector<double> points;
    const auto add_point = [&](const Point& p) { points.insert(points.end(), {p.y, p.z, 0}); };
    for (const Field::Spot& spot : fields.points) add_point(fields.mesh.nodes[static_cast<std::size_t>(spot.node)]);
    for (const std::size_t bar : fields.bars) add_point(section.bars[bar].at);

    std::vector<std::int64_t> corners, ends;
    std::vector<std::uint8_t> types;
    std::vector<std::int32_t> material, part(fields.cells.size());
    for (std::size_t k = 0; k < surfaces.size(); ++k)
        for (const std::size_t e : surfaces[k].elements) part[e] = static_cast<std::int32_t>(k);
    for (const auto& cell : fields.cells) {
        const bool triangle = cell[2] == cell[3];
        corners.insert(corners.end(), cell.begin(), cell.end() - triangle);
        ends.push_back(static_cast<std::int64_t>(corners.size()));
        types.push_back(triangle ? TRIANGLE : QUADRILATERAL);
        material.push_back(fields.points[static_cast<std::size_t>(cell[0])].material);
    }
    for (std::size_t k = 0; k < fields.bars.size(); ++k) {
        const std::string& name = section.bars[fields.bars[k]].material;
        corners.push_back(static_cast<std::int64_t>(fields.points.size() + k));
        ends.push_back(static_cast<std::int64_t>(corners.size()));
        types.push_back(VERTEX);
        material.push_back(
            static_cast<std::int32_t>(std::find(materials.begin(), materials.end(), name) - materials.begin()));
        part.push_back(static_cast<std::int32_t>(parts.size()));
    }
    if (!fields.bars.empty()) parts.push_back("bars that are points");

    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\" header_type=\"UInt64\">\n"
        "<UnstructuredGrid>\n<FieldData>\n" +
        arrays_of_names("material", materials) + arrays_of_names("part", parts) +
        "</FieldData>\n<Piece NumberOfPoints=\"" + std::to_string(points.size() / 3) + "\" NumberOfCells=\"" +
        std::to_string(types.size()) + "\">\n<Points>\n" + array("Float64", "Points", 3, points) +
        "</Points>\n<Cells>\n" + array("Int64", "connectivity", 1, corners) + array("Int64", "offsets", 1, ends) +
        array("UInt8", "types", 1, types) + "</Cells>\n<PointData>\n";
    for (const Fields::Column& column : fields.columns) {
        std::vector<double> values = column.values;
        if (column.components == 2) {  // vectors have three components there
            values.clear();
            for (std::size_t i = 0; i + 1 < column.values.size(); i += 2)
                values.insert(values.end(), {column.values[i], column.values[i + 1], 0});
        }
        text += array("Float64", column.name, column.components == 2 ? 3 : 1, values);
    }
    return text + "</PointData>\n<CellData>\n" + array("Int32", "material", 1, material) +
           array("Int32", "part", 1, part) + "</CellData>\n</Piece>\n</UnstructuredGrid>\n</VTKFile>\n";
}

}  // namespace velquor
