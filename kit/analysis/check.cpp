#include "kit/analysis/check.h"

#include <algorithm>
#include <map>
#include <set>

#include "kit/analysis/extent.h"
#include "kit/analysis/plausible.h"
#include "kit/analysis/tables.h"
#include "kit/section/file.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr std::size_t MOST_MEASURED = 10000;  // elements among which the gaps between pieces are looked for

std::string place_of_material(std::size_t i) { return "materials[" + std::to_string(i) + "]"; }

// What the user may not have meant, though nothing in the tables shows it.
void look_at_materials(const Section& s, std::vector<Finding>& findings) {
    std::set<std::string> used;
    for (const Part& part : s.parts) used.insert(part.material);
    for (const Bar& bar : s.bars) used.insert(bar.material);
    const auto strong = [&](const Material& m) { return m.tension > 0; };
    const bool any = std::any_of(s.materials.begin(), s.materials.end(),
                                 [&](const Material& m) { return used.count(m.name) > 0 && strong(m); });
    for (std::size_t i = 0; i < s.materials.size(); ++i) {
        const Material& m = s.materials[i];
        if (used.count(m.name) == 0) {
            findings.push_back(
                {false, place_of_material(i), in_quotes(m.name) + " is used by nothing", "leave it out"});
        } else if (any && !strong(m)) {
            findings.push_back({false, place_of_material(i), in_quotes(m.name) + " has no strength, others have",
                                "give it one, or there are no plastic values"});
        }
    }
}

// Oblongs are cured by the levels, which begin a plastic search at another place than 100.0 too; what concerns all
// strengths was told of the materials; a bar between an arc and its chord lies outside of its element.
bool is_of_no_concern(std::int32_t reason) {
    return reason == VQ_OBLONG || reason == VQ_MIDDLE_AT_100 || reason == VQ_STRENGTH_MISSING ||
           reason == VQ_STRENGTH_MIXED || reason == VQ_BAR_OUTSIDE;
}

// Parts that a list of nodes or elements of the tables belongs to.
struct Owners {
    const Section& section;
    const Mesh& mesh;
    std::map<std::int32_t, std::int32_t> of_node{};

    std::string of_element(std::int32_t e) const {
        return place_of_owner(section, static_cast<std::size_t>(mesh.owners[e - 1]));
    }
    std::string node(std::int32_t n) {
        if (of_node.empty())
            for (std::size_t e = 0; e < mesh.elements.size(); ++e)
                for (const std::int32_t corner : mesh.elements[e]) of_node.emplace(corner, mesh.owners[e]);
        const auto found = of_node.find(n);
        return found != of_node.end() ? place_of_owner(section, static_cast<std::size_t>(found->second)) : "";
    }
};

std::string text_of_point(const Point& p) { return "(" + text_of(p.y) + ", " + text_of(p.z) + ")"; }

// Told of each piece but the largest, by its first part.
void look_at_pieces(const Section& s, const Mesh& mesh, std::vector<Finding>& findings) {
    const std::vector<int> pieces = pieces_of(mesh);
    const auto count = static_cast<std::size_t>(1 + *std::max_element(pieces.begin(), pieces.end()));
    Mesh whole = mesh;
    whole.owners.assign(pieces.begin(), pieces.end());
    const std::vector<double> areas = areas_of(whole, count);
    const auto largest = static_cast<std::size_t>(std::max_element(areas.begin(), areas.end()) - areas.begin());
    std::vector<std::size_t> first(count, s.parts.size() + s.bars.size());
    for (std::size_t e = 0; e < pieces.size(); ++e)
        first[pieces[e]] = std::min(first[pieces[e]], static_cast<std::size_t>(mesh.owners[e]));
    std::set<std::size_t> said;
    for (std::size_t piece = 0; piece < count; ++piece) {
        if (piece == largest || !said.insert(first[piece]).second) continue;
        const std::string name = first[piece] == first[largest] ? " a piece of it" : name_in(s, first[piece]);
        std::string message = (name + " does not touch the others").substr(1);
        if (mesh.elements.size() <= MOST_MEASURED) {
            const Gap gap = gap_around(mesh, pieces, static_cast<int>(piece));
            const auto next = static_cast<std::size_t>(mesh.owners[gap.there]);
            message += ", " + text_beside(gap.distance, gap.distance, 3) + " " + s.length + " from " +
                       place_of_owner(s, next) + name_in(s, next);
        }
        findings.push_back(
            {false, place_of_owner(s, first[piece]), message, "let them touch, or torsion and shear have no meaning"});
    }
}

void look_at_tables(const Section& s, const Mesh& mesh, std::vector<Finding>& findings) {
    const Tables t = tables_of(s, mesh);
    const auto list = [&](vq_finding* into, std::int32_t capacity) {
        return vq_check(t.groups, t.NODES.data(), t.nodes, t.ELEMENTS.data(), t.elements, t.PROPS.data(),
                        static_cast<std::int32_t>(t.bars.size()), t.bars.data(), t.mode, capacity, into);
    };
    std::vector<vq_finding> found(std::max(0, list(nullptr, 0)));
    list(found.data(), static_cast<std::int32_t>(found.size()));
    Owners owners = {s, mesh};
    std::set<std::string> said;  // a part once for each reason
    bool told_of_pieces = false;
    for (const vq_finding& f : found) {
        if (is_of_no_concern(f.REASON)) continue;
        Finding finding = {f.SEVERITY == VQ_ERROR, "", vq_reason(f.REASON), ""};
        if (f.TABLE == VQ_IN_NODES && f.ROW > 0) {
            const Point p = mesh.nodes[std::min<std::size_t>(f.ROW - 1, mesh.nodes.size() - 1)];
            finding.place = owners.node(f.ROW);
            if (f.REASON == VQ_LOOSE_PIECE) {
                if (!told_of_pieces) look_at_pieces(s, mesh, findings);
                told_of_pieces = true;
                continue;
            } else if (f.REASON == VQ_HINGE) {
                finding.message = "hangs in a single point, " + text_of_point(p);
                finding.remedy = "a point holds nothing: let parts touch along a line";
            }
        } else if (f.TABLE == VQ_IN_ELEMENTS || f.TABLE == VQ_IN_PROPS) {
            if (f.ROW > 0)
                finding.place = is_mesh(s) && f.TABLE == VQ_IN_ELEMENTS
                                    ? place_of_element(s, static_cast<std::size_t>(f.ROW) - 1)
                                    : owners.of_element(f.ROW);
            if (f.REASON == VQ_COUPLING_ZERO) {
                finding.place += ".factor";
                finding.message = "is 0: this group bends by itself";
                finding.remedy = "1 for parts that act together";
            } else if (finding.is_error && is_mesh(s)) {
                finding.remedy = "mesh it anew";
            } else if (finding.is_error) {
                finding.message = "its mesh " + finding.message;
                finding.remedy = "look for edges that come very near to each other, or give a size";
            }
        } else if (f.TABLE == VQ_IN_POINTS && f.ROW > 0) {
            std::vector<std::size_t> points;
            for (std::size_t i = 0; i < s.bars.size(); ++i)
                if (s.bars[i].as_point) points.push_back(i);
            finding.place = place_of_bar(s, points[f.ROW - 1]);
        }
        if (said.insert(finding.place + finding.message).second) findings.push_back(finding);
        if (finding.is_error) return;
    }
}

}  // namespace

std::string name_in(const Section& s, std::size_t owner) {
    const bool named = owner < s.parts.size() && !is_mesh(s) && !s.parts[owner].name.empty();
    return named ? " " + in_quotes(s.parts[owner].name) : "";
}

std::vector<Finding> check(const Section& section, const Mesh& mesh) {
    check_section(section);
    check_fits(section, mesh);
    std::vector<Finding> findings;
    look_at_materials(section, findings);
    for (const Finding& finding : hardly_meant(section, mesh)) findings.push_back(finding);
    look_at_tables(section, mesh, findings);
    return findings;
}

std::vector<Finding> check(const Section& section) {
    std::vector<Finding> findings;
    try {
        check_section(section);
        findings = check(section, mesh_of(section));
    } catch (const Error& error) {
        findings.push_back({true, error.place, error.fault, error.remedy});
    }
    return findings;
}

}  // namespace velquor
