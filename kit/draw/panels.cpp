// Panels by their names, and their headings.
#include <algorithm>

#include "kit/draw/colours.h"
#include "kit/draw/picture.h"
#include "kit/section/loads.h"
#include "kit/section/words.h"
#include "kit/show/show.h"

namespace velquor {

std::string title_of(const Panel& panel) {
    if (!panel.title.empty()) return panel.title;
    static const char* const directions[] = {"Warping of a unit twist", "Warping of a unit shear along u",
                                             "Warping of a unit shear along v"};
    switch (panel.what) {
        case Shown::outline: return "Outline and axes";
        case Shown::mesh: return "Mesh";
        case Shown::warping: return directions[std::clamp(panel.direction, 0, 2)];
        case Shown::axial: return "Axial stress σ";
        case Shown::shear: return "Shear stress τ";
        default: return "Von Mises' stress";
    }
}

std::string subtitle_of(const Picture& picture, const Panel& panel) {
    if (panel.what == Shown::mesh)
        return std::to_string(picture.values.nodes) + " nodes, " + std::to_string(picture.values.elements) +
               " elements; the coarsest of " + std::to_string(picture.values.levels) +
               (picture.values.levels == 1 ? " level" : " levels");
    if (panel.what == Shown::outline) {
        const std::string& unit = picture.section.length;
        return "dimensions in " + (unit == "in" ? "inches" : unit == "ft" ? "feet" : unit);
    }
    if (panel.what == Shown::warping) return "";
    std::string text;
    for (const LoadKey& c : load_keys()) {
        const double value = panel.load.*c.value;
        if (value == 0) continue;
        const std::string unit = raised(load_unit(c, picture.section.length, picture.section.force));
        text += (text.empty() ? "" : ", ") + std::string(c.name) + " = " + with_minus(figures({value, 0})) + " " + unit;
        if (panel.unit_case) text += ": " + std::string(c.brief);
    }
    if (panel.unit_case) return text;
    // Of the command line the name tells the loads.
    if (panel.load.name.find('=') != std::string::npos) return panel.load.name;
    return (panel.load.name.empty() ? "" : panel.load.name + ": ") + (text.empty() ? "no load" : text);
}

Panel panel_of(const Section& section, const std::string& text, const std::string& place) {
    static const std::vector<std::pair<const char*, Shown>> fields = {
        {"outline", Shown::outline}, {"mesh", Shown::mesh},   {"warping", Shown::warping},
        {"axial", Shown::axial},     {"shear", Shown::shear}, {"mises", Shown::mises}};
    const std::size_t colon = text.find(':');
    const std::string name = text.substr(0, colon), of = colon == std::string::npos ? "" : text.substr(colon + 1);
    std::vector<std::string> names;
    Panel panel;
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const auto& f) { return name == f.first; });
    for (const auto& f : fields) names.emplace_back(f.first);
    if (field == fields.end()) throw Error(place, "unknown field " + in_quotes(name), did_you_mean(name, names));
    panel.what = field->second;
    if (panel.what == Shown::outline || panel.what == Shown::mesh) {
        if (colon != std::string::npos)
            throw Error(place, in_quotes(text) + ": " + name + " is of no load", "leave out what follows the colon");
        return panel;
    }
    names.clear();
    if (panel.what == Shown::warping) {
        names = {"T", "u", "v"};
        const auto at = std::find(names.begin(), names.end(), of.empty() ? "T" : of);
        if (at == names.end())
            throw Error(place, "unknown warping " + in_quotes(of),
                        "warping:T of a unit twist, warping:u and warping:v of shear");
        panel.direction = static_cast<int>(at - names.begin());
        return panel;
    }
    for (const Load& load : section.loads) {
        if (colon == std::string::npos || load.name == of) {
            panel.load = load;
            return panel;
        }
        names.push_back(load.name);
    }
    const std::string wanted = colon != std::string::npos ? of : panel.what == Shown::shear ? "Vz" : "My";
    for (const LoadKey& c : load_keys()) {
        Load load;
        load.name = c.name;
        load.*c.value = 1;
        if (panel.what == Shown::axial && has_shear(load)) continue;
        if (panel.what == Shown::shear && !has_shear(load)) continue;
        names.emplace_back(c.name);
        if (wanted != c.name) continue;
        panel.load = load;
        panel.unit_case = true;
        return panel;
    }
    throw Error(place, "unknown load " + in_quotes(of) + " of " + name, did_you_mean(of, names));
}

}  // namespace velquor
