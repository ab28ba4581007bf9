#include <algorithm>
#include <map>

#include "kit/section/words.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

// A surface of the file: a part, or all bars of a material.
struct Surface {
    std::string name, material;
    std::vector<std::size_t> elements;
};

std::vector<Surface> surfaces_of(const Section& section, const Mesh& mesh) {
    std::vector<Surface> surfaces;
    for (std::size_t k = 0; k < section.parts.size(); ++k) {
        const Part& part = section.parts[k];
        surfaces.push_back({part.name.empty() ? "part " + std::to_string(k + 1) : part.name, part.material, {}});
    }
    std::map<std::string, std::size_t> bars;
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        auto at = static_cast<std::size_t>(mesh.owners[e]);
        if (at >= section.parts.size()) {
            const std::string& material = section.bars.at(at - section.parts.size()).material;
            const auto [known, fresh] = bars.emplace(material, surfaces.size());
            if (fresh) surfaces.push_back({"bars", material, {}});
            at = known->second;
        }
        surfaces[at].elements.push_back(e);
    }
    surfaces.erase(std::remove_if(surfaces.begin(), surfaces.end(), [](const auto& s) { return s.elements.empty(); }),
                   surfaces.end());
    return surfaces;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) result += c == '"' || static_cast<unsigned char>(c) < ' ' ? '\'' : c;
    return result + "\"";
}

}  // namespace

std::string show_mesh(const Section& section, const Mesh& mesh) {
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

    const auto is_triangle = [&](std::size_t e) { return mesh.elements[e][2] == mesh.elements[e][3]; };
    std::string blocks;
    std::size_t number = 0, written = 0;
    for (std::size_t k = 0; k < surfaces.size(); ++k)
        for (const bool triangles : {true, false}) {
            std::string lines;
            std::size_t here = 0;
            for (const std::size_t e : surfaces[k].elements) {
                if (is_triangle(e) != triangles) continue;
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
