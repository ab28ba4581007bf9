#include <algorithm>

#include "kit/analysis/tables.h"
#include "kit/section/file.h"
#include "kit/section/words.h"
#include "kit/show/fields.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) result += c == '"' || static_cast<unsigned char>(c) < ' ' ? '\'' : c;
    return result + "\"";
}

bool is_triangle(const Mesh& mesh, std::size_t e) { return mesh.elements[e][2] == mesh.elements[e][3]; }

// Elements in the order of their numbers in the file: surface by surface, of each the triangles first.
std::vector<std::size_t> in_order(const std::vector<Surface>& surfaces, const Mesh& mesh) {
    std::vector<std::size_t> order;
    for (const Surface& surface : surfaces)
        for (const bool triangles : {true, false})
            for (const std::size_t e : surface.elements)
                if (is_triangle(mesh, e) == triangles) order.push_back(e);
    return order;
}

// The head of a view: its name, time 0, and how many numbers there are.
std::string head_of_view(const std::string& name, std::size_t components, std::size_t count) {
    return "1\n" + quoted(name) + "\n1\n0\n3\n0\n" + std::to_string(components == 2 ? 3 : 1) + "\n" +
           std::to_string(count) + "\n";
}

std::string numbers_at(const Fields::Column& column, std::int32_t point) {
    std::string text;
    for (std::size_t k = 0; k < column.components; ++k)
        text += " " + text_of(column.values[static_cast<std::size_t>(point) * column.components + k]);
    return column.components == 2 ? text + " 0" : text;
}

}  // namespace

std::string show_mesh(const Section& section, const Fields& fields) {
    std::string text = show_mesh(section, fields.mesh);
    const std::vector<std::size_t> order = in_order(surfaces_of(section, fields.mesh), fields.mesh);
    for (const Fields::Column& column : fields.columns) {
        text += "$ElementNodeData\n" + head_of_view(column.name, column.components, order.size());
        for (std::size_t number = 0; number < order.size(); ++number) {
            const std::size_t corners = is_triangle(fields.mesh, order[number]) ? 3 : 4;
            text += std::to_string(number + 1) + " " + std::to_string(corners);
            for (std::size_t c = 0; c < corners; ++c) text += numbers_at(column, fields.cells[order[number]][c]);
            text += "\n";
        }
        text += "$EndElementNodeData\n";
    }
    return text;
}

std::string show_mesh(const Section& section, const Mesh& mesh) {
    check_section(section);
    check_fits(section, mesh);
    const auto surfaces = surfaces_of(section, mesh);
    std::vector<std::string> materials;
    for (const Surface& s : surfaces)
        if (std::find(materials.begin(), materials.end(), s.material) == materials.end())
            materials.push_back(s.material);
    const auto count = [](std::size_t n) { return std::to_string(n); };

    std::string text = "$MeshFormat\n4.1 0 8\n$EndMeshFormat\n$PhysicalNames\n";
    text += count(surfaces.size() + materials.size()) + "\n";
    for (std::size_t k = 0; k < surfaces.size(); ++k)
        text += "2 " + count(k + 1) + " " + quoted(surfaces[k].name) + "\n";
    for (std::size_t k = 0; k < materials.size(); ++k)
        text += "2 " + count(surfaces.size() + k + 1) + " " + quoted("material " + materials[k]) + "\n";
    text += "$EndPhysicalNames\n$Entities\n0 0 " + count(surfaces.size()) + " 0\n";

    Point low = mesh.nodes.at(0), high = low;
    for (const Point& p : mesh.nodes) {
        low = {std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    const std::string box =
        text_of(low.y) + " " + text_of(low.z) + " 0 " + text_of(high.y) + " " + text_of(high.z) + " 0";
    for (std::size_t k = 0; k < surfaces.size(); ++k) {
        const auto material = std::find(materials.begin(), materials.end(), surfaces[k].material) - materials.begin();
        text += count(k + 1) + " " + box + " 2 " + count(k + 1) + " " +
                count(surfaces.size() + static_cast<std::size_t>(material) + 1) + " 0\n";
    }

    const std::string nodes = count(mesh.nodes.size());
    text += "$EndEntities\n$Nodes\n1 " + nodes + " 1 " + nodes + "\n2 1 0 " + nodes + "\n";
    for (std::size_t n = 0; n < mesh.nodes.size(); ++n) text += count(n + 1) + "\n";
    for (const Point& p : mesh.nodes) text += text_of(p.y) + " " + text_of(p.z) + " 0\n";

    std::string blocks;
    std::size_t number = 0, written = 0;
    for (std::size_t k = 0; k < surfaces.size(); ++k)
        for (const bool triangles : {true, false}) {
            std::string lines;
            std::size_t here = 0;
            for (const std::size_t e : surfaces[k].elements) {
                if (is_triangle(mesh, e) != triangles) continue;
                lines += count(++number);
                for (std::size_t c = 0; c < (triangles ? 3u : 4u); ++c)
                    lines += " " + std::to_string(mesh.elements[e][c]);
                lines += "\n";
                ++here;
            }
            if (here == 0) continue;
            blocks += "2 " + count(k + 1) + (triangles ? " 2 " : " 3 ") + count(here) + "\n" + lines;
            ++written;
        }
    text += "$EndNodes\n$Elements\n" + count(written) + " " + count(number) + " 1 " + count(number) + "\n";
    return text + blocks + "$EndElements\n";
}

}  // namespace velquor
