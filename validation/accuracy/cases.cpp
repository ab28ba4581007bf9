#include "cases.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "kit/section/file.h"
#include "kit/section/profiles.h"
#include "section_file.h"

namespace {

constexpr double PI = 3.14159265358979324;
using Parameters = std::map<std::string, double>;

velquor::Section section_of(const std::string& name) {
    velquor::Section section;
    section.name = name;
    section.materials = {{"any", 2.6, 1, 1, 1, 1}};
    section.parts.resize(1);
    section.parts[0].material = "any";
    return section;
}

Case shape(const std::string& name, const std::string& kind, const Parameters& parameters,
           const std::vector<Exact>& exact = {}) {
    velquor::Section section = section_of(name);
    section.parts[0].shape = kind, section.parts[0].parameters = parameters;
    return {section, exact};
}

// Lists of their own, for each stands on the stack.
std::vector<Case> massive_shapes() {
    return {
        shape("square", "rectangle", {{"h", 1}, {"b", 1}}, {{VQ_GJ, 0.140577014955156}}),
        shape("rectangle 5 : 1", "rectangle", {{"h", 5}, {"b", 1}}),
        shape("rectangle 40 : 1", "rectangle", {{"h", 40}, {"b", 1}}),
        shape("rounded rectangle", "rectangle", {{"h", 3}, {"b", 2}, {"r", 0.5}}),
        shape("circle", "circle", {{"d", 2}}, {{VQ_GJ, PI / 2}, {VQ_EA, 2.6 * PI}, {VQ_IYY, 2.6 * PI / 4}}),
        shape("ring", "ring", {{"d", 8}, {"t", 1}}, {{VQ_GJ, PI / 2 * (256 - 81)}, {VQ_EA, 2.6 * PI * 7}}),
        shape("thin ring", "ring", {{"d", 200}, {"t", 2}}),
        shape("hollow rectangle", "hollow_rectangle", {{"h", 200}, {"b", 120}, {"t", 8}, {"ro", 20}, {"ri", 12}}),
        shape("sharp box", "hollow_rectangle", {{"h", 200}, {"b", 120}, {"t", 8}}),
        shape("triangle", "triangle", {{"h", 3}, {"b", 4}, {"a", 1}}),
        shape("trapezoid", "trapezoid", {{"h", 3}, {"b", 4}, {"bt", 2}}),
        shape("hexagon", "polygon", {{"n", 6}, {"d", 2}}),
        shape("octagonal tube", "polygon", {{"n", 8}, {"d", 400}, {"t", 10}}),
    };
}

std::vector<Case> thin_shapes() {
    return {
        shape("welded I", "i_welded", {{"h", 600}, {"b", 300}, {"tw", 10}, {"tf", 20}}),
        shape("welded I of unequal flanges", "i_welded",
              {{"h", 900}, {"b", 200}, {"tw", 8}, {"tf", 12}, {"b2", 350}, {"tf2", 25}, {"a", 5}}),
        shape("sharp channel", "channel", {{"h", 200}, {"b", 80}, {"tw", 6}, {"tf", 10}}),
        shape("sharp angle", "angle", {{"h", 120}, {"b", 80}, {"t", 10}}),
        shape("sharp tee", "tee", {{"h", 200}, {"b", 150}, {"tw", 8}, {"tf", 12}}),
        shape("tee with fillets", "tee", {{"h", 200}, {"b", 150}, {"tw", 8}, {"tf", 12}, {"r", 12}}),
        shape("Z with fillets", "z", {{"h", 200}, {"b", 80}, {"tw", 6}, {"tf", 8}, {"r", 8}}),
        shape("cold-formed C", "cold_c", {{"h", 200}, {"b", 70}, {"c", 20}, {"t", 2}, {"r", 3}}),
        shape("cold-formed Z", "cold_z", {{"h", 200}, {"b", 70}, {"c", 20}, {"t", 2}, {"r", 3}}),
        shape("sigma", "sigma",
              {{"h", 300}, {"b", 80}, {"c", 25}, {"t", 2.5}, {"r", 4}, {"d", 30}, {"hs", 80}, {"hi", 80}}),
        shape("hat", "hat", {{"h", 100}, {"b", 120}, {"bf", 40}, {"c", 15}, {"t", 2}, {"r", 3}}),
        shape("sharp hat", "hat", {{"h", 100}, {"b", 120}, {"bf", 40}, {"c", 15}, {"t", 2}, {"r", 0}}),
        shape("box girder", "box_girder",
              {{"h", 2500},
               {"b", 12000},
               {"bt", 6000},
               {"bb", 5000},
               {"tt", 250},
               {"tb", 220},
               {"tw", 400},
               {"tc", 200},
               {"tr", 450}}),
        shape("concrete T", "concrete_t", {{"h", 700}, {"b", 1500}, {"bw", 300}, {"hf", 150}}),
    };
}

}  // namespace

velquor::Section profile_section(const std::string& name) {
    velquor::Section section = section_of(name);
    section.parts[0].profile = name;
    return section;
}

std::vector<Case> outlines(const std::string& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<Case> cases;
    for (const auto& path : paths) {
        cases.push_back({velquor::read_section(read_section_file(path).section)});
        cases.back().section.name = path.stem();
    }
    if (cases.empty()) throw std::runtime_error(folder + ": no sections");
    return cases;
}

std::vector<Case> shapes_and_profiles() {
    std::vector<Case> cases = massive_shapes();
    for (Case& thin : thin_shapes()) cases.push_back(std::move(thin));
    std::vector<std::pair<std::string, std::vector<std::string>>> families;
    for (const std::string& name : velquor::profile_names()) {
        const std::string family = velquor::profile_of(name, "mm", "").family;
        if (families.empty() || families.back().first != family) families.push_back({family, {}});
        families.back().second.push_back(name);
    }
    for (const auto& [family, names] : families)
        for (const std::size_t i : {std::size_t{0}, names.size() / 2, names.size() - 1})
            cases.push_back({profile_section(names[i])});
    return cases;
}
