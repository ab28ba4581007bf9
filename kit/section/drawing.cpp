#include "kit/section/drawing.h"

#include <algorithm>
#include <map>
#include <set>

#include "kit/section/dxf.h"
#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "kit/section/units.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr std::size_t MOST_PARTS = 1000;  // and holes

// The material of a layer that no list names: that of its name, or the only one.
std::string material_of(const std::string& layer, const std::vector<Material>& materials) {
    for (const Material& m : materials)
        if (folded(m.name) == folded(layer)) return m.name;
    if (materials.size() == 1) return materials.front().name;
    std::vector<std::string> names;
    for (const Material& m : materials) names.push_back(m.name);
    const std::string near = did_you_mean(layer, names);
    throw Error(named_layer(layer), "no material has its name",
                "name the layers that are to be read, each with its material" + (near.empty() ? "" : "; " + near));
}

void scale(Outline& outline, double by) {
    for (Edge& edge : outline.edges)
        for (Point* p : {&edge.to, &edge.through}) *p = {p->y * by, p->z * by};
}

// Before each part those that it lies in, else as they stand.
std::vector<Part> in_order(const std::vector<Part>& parts) {
    const std::size_t n = parts.size();
    std::vector<double> area(n);
    std::vector<Region> regions;
    for (std::size_t i = 0; i < n; ++i) {
        area[i] = area_of(parts[i].face);
        regions.push_back(region_of({parts[i].face.outer, {}}));
    }
    std::vector<std::vector<std::size_t>> around(n);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t k = 0; k < n; ++k)
            if (area[k] > area[i] && lies_in(regions[i], regions[k]).inside) around[i].push_back(k);
    std::vector<bool> placed(n, false);
    std::vector<Part> order;
    const auto place = [&](std::size_t i, const auto& again) -> void {
        if (placed[i]) return;
        placed[i] = true;
        for (const std::size_t k : around[i]) again(k, again);
        order.push_back(parts[i]);
    };
    for (std::size_t i = 0; i < n; ++i) place(i, place);
    return order;
}

using Layers = std::map<std::string, Use>;

auto find(const Layers& layers, const std::string& name) {
    return std::find_if(layers.begin(), layers.end(),
                        [&](const auto& layer) { return folded(layer.first) == folded(name); });
}

void take(Section& section, std::string_view dxf) {
    const Drawing& drawing = section.drawing;
    std::vector<std::string> wanted;
    for (const auto& [name, layer] : drawing.layers) wanted.push_back(name);
    const Drawn drawn = drawn_in(dxf, wanted, section.notes);

    std::string unit = drawing.unit.empty() ? drawn.unit : drawing.unit;
    if (unit.empty()) {
        unit = "mm";
        section.notes.push_back("the drawing names no unit of length: taken as mm");
    }
    if (unit[0] == '$')
        throw Error("", "the drawing is in a unit, " + unit + ", that is not read",
                    "draw it in mm, cm, dm, m, in or ft, or give its \"unit\"");
    const double by = size_of(lengths(), unit, "drawing.unit") / size_of(lengths(), section.length, "units.length");

    if (drawn.ellipses > 0)
        section.notes.push_back(std::to_string(drawn.ellipses) + (drawn.ellipses == 1 ? " ellipse" : " ellipses") +
                                " drawn by " + std::to_string(drawn.arcs) + " arcs, at most " + text_of(drawn.off, 1) +
                                " " + unit + " away");

    std::vector<std::string> names;
    for (const Layer& layer : drawn.layers) names.push_back(layer.name);
    for (const std::string& name : wanted) {
        const auto at = std::find_if(drawn.layers.begin(), drawn.layers.end(),
                                     [&](const Layer& layer) { return folded(layer.name) == folded(name); });
        if (at == drawn.layers.end())
            throw Error("drawing.layers", "no layer " + in_quotes(name) + " in the drawing", did_you_mean(name, names));
        if (at->hidden)
            throw Error("drawing.layers", in_quotes(name) + " is off or frozen in the drawing",
                        "put it on there, or leave it out here");
        if (at->runs.empty())
            throw Error("drawing.layers", "nothing is drawn on layer " + in_quotes(name),
                        "draw its outline, or leave it out");
    }

    std::vector<Part> parts;
    std::size_t count = 0;
    std::set<std::string> taken;
    for (const Part& part : section.parts) taken.insert(part.name);
    for (const Layer& layer : drawn.layers) {
        if (layer.runs.empty()) continue;
        const std::vector<Outline> outlines = joined(layer.runs, drawing.gap, layer.name, unit, section.notes);
        count += outlines.size();
        if (count > MOST_PARTS)
            throw Error(named_layer(layer.name), "more than " + std::to_string(MOST_PARTS) + " outlines in all",
                        "name the layers that are to be read");
        const std::vector<Face> faces = nested(outlines, layer.name);
        const auto made = find(drawing.layers, layer.name);
        std::size_t number = 0;
        for (const Face& face : faces) {
            Part part;
            if (made != drawing.layers.end()) {
                part.material = made->second.material;
                part.group = made->second.group;
                part.factor = made->second.factor;
            }
            if (part.material.empty()) part.material = material_of(layer.name, section.materials);
            part.face = face;
            part.where =
                named_layer(layer.name) + (faces.size() > 1 ? ", face at " + text_at(face.outer.edges[0].to) : "");
            do part.name = layer.name + (faces.size() > 1 || number > 0 ? " " + std::to_string(number + 1) : "");
            while (++number > 0 && !taken.insert(part.name).second);
            scale(part.face.outer, by);
            for (Outline& hole : part.face.holes) scale(hole, by);
            parts.push_back(std::move(part));
        }
    }
    if (parts.empty())
        throw Error(
            "", "no outline is drawn",
            "it must have lines, arcs, circles, ellipses or polylines, on layers that are on and in model space");
    parts = in_order(parts);
    section.parts.insert(section.parts.begin(), parts.begin(), parts.end());
    section.drawing.file.clear();
}

}  // namespace

void read_drawing(Section& section, std::string_view dxf) {
    try {
        Section whole = section;
        take(whole, dxf);
        check_section(whole);
        section = std::move(whole);
    } catch (const Error&) {
        throw;
    } catch (const std::exception& error) {
        throw Error("", std::string("the drawing cannot be read: ") + error.what());
    }
}

bool is_drawing(std::string_view text) {
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
        const std::string_view line = text.substr(0, text.find_first_of(" \t\r\n"));
        if (line != "999") return line == "0";
        for (int lines = 0; lines < 2; ++lines) text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    }
}

}  // namespace velquor
