#include "kit/show/fields.h"

#include <algorithm>
#include <map>

#include "kit/analysis/loads.h"
#include "kit/section/loads.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

bool is_axial(const Load& l) { return l.N != 0 || l.My != 0 || l.Mz != 0 || l.B != 0; }

Mesh finest_of(const Analysis& a) {
    Mesh mesh;
    mesh.nodes = a.field.nodes;
    const std::size_t pieces = a.field.elements.size() / a.mesh.elements.size();  // of each coarse element
    for (std::size_t e = 0; e < a.field.elements.size(); ++e) {
        std::array<std::int32_t, 4> element{};
        for (std::size_t c = 0; c < 4; ++c)
            element[c] = a.field.spots[static_cast<std::size_t>(a.field.elements[e][c])].node + 1;
        mesh.elements.push_back(element);
        mesh.owners.push_back(a.mesh.owners[e / pieces]);
    }
    return mesh;
}

void add_warping(const Analysis& a, Fields& fields) {
    const char* const names[] = {"warping", "warping of shear along u", "warping of shear along v"};
    const std::size_t nodes = a.mesh.nodes.size();
    for (std::size_t k = 0; k < 3; ++k) {
        Fields::Column column = {names[k], 1, {}};
        for (const Field::Spot& spot : fields.points)
            column.values.push_back(a.warping[k * nodes + static_cast<std::size_t>(spot.node)]);
        column.values.resize(fields.points.size() + fields.bars.size());
        fields.columns.push_back(std::move(column));
    }
}

void add_stresses(const Section& section, const Analysis& a, const Case& c, Fields& fields) {
    const LoadResult result = result_of(section, a, c.load);
    const std::size_t points = fields.points.size();
    Fields::Column axial = {c.load.name + " axial", 1, {}}, vector = {c.load.name + " shear", 2, {}},
                   amount = {c.load.name + " shear amount", 1, {}}, mises = {c.load.name + " von Mises", 1, {}};
    for (std::size_t i = 0; i < points + fields.bars.size(); ++i) {
        const Stress s = i < points ? result.stresses[i] : Stress{result.bars.at(i - points), 0, 0};
        axial.values.push_back(s.sigma);
        vector.values.push_back(s.tau_y);
        vector.values.push_back(s.tau_z);
        amount.values.push_back(shear(s));
        mises.values.push_back(von_mises(s));
    }
    const bool pulls = !c.unit || is_axial(c.load), shears = !c.unit || !pulls;
    if (pulls) fields.columns.push_back(std::move(axial));
    if (shears) fields.columns.push_back(std::move(vector));
    if (shears) fields.columns.push_back(std::move(amount));
    if (!c.unit) fields.columns.push_back(std::move(mises));
}

}  // namespace

Case unit_case(const std::string& name, const std::string& place) {
    std::vector<std::string> names;
    for (const LoadKey& key : load_keys()) {
        names.emplace_back(key.name);
        if (name != key.name) continue;
        Case c;
        c.load.name = std::string("unit ") + key.name;
        c.load.*key.value = 1;
        c.unit = true;
        return c;
    }
    throw Error(place, "unknown unit load " + in_quotes(name), did_you_mean(name, names));
}

std::vector<Case> cases_of(const Section& section, const Analysis& analysis) {
    std::vector<Case> cases;
    for (const Load& load : section.loads) cases.push_back({load, false});
    if (cases.empty())
        for (const LoadKey& key : load_keys()) {
            const bool by_warping = key.value == &Load::B || key.value == &Load::Tw,
                       axial = key.value == &Load::N || key.value == &Load::My || key.value == &Load::Mz;
            if (axial || (analysis.pieces == 1 && (analysis.warps || !by_warping)))
                cases.push_back(unit_case(key.name, ""));
        }
    return cases;
}

Fields fields_of(const Section& section, const Analysis& a, const std::vector<Case>& cases, bool finest) {
    check_fits(section, a);
    if (a.field.elements.empty()) throw Error("", "no stresses were calculated", "ask the analysis for stresses");
    Fields fields;
    if (finest) {
        fields.mesh = finest_of(a);
        fields.points = a.field.spots;
        fields.cells = a.field.elements;
    } else {
        fields.mesh = a.mesh;
        fields.mesh.bows.clear();
        fields.points.assign(a.field.spots.begin(),
                             a.field.spots.begin() + static_cast<std::ptrdiff_t>(a.field.coarse_spots));
        fields.cells = a.field.coarse;
    }
    for (std::size_t k = 0; k < section.bars.size(); ++k)
        if (section.bars[k].as_point) fields.bars.push_back(k);
    if (!finest && a.pieces == 1) add_warping(a, fields);
    Fields::Column sharp = {"sharp", 1, {}};
    for (std::size_t i = 0; i < fields.points.size(); ++i) sharp.values.push_back(a.field.sharp[i]);
    sharp.values.resize(fields.points.size() + fields.bars.size());
    fields.columns.push_back(std::move(sharp));
    for (const Case& c : cases) add_stresses(section, a, c, fields);
    return fields;
}

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

}  // namespace velquor
