#include "kit/analysis/plausible.h"

#include <algorithm>

#include "kit/section/crossings.h"
#include "kit/section/file.h"
#include "kit/section/units.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

// Wider than what is built with: from light foam to osmium, from soft rubber to diamond. Ends belong to it.
constexpr double LIGHTEST = 50, HEAVIEST = 25000;  // kg/m3
constexpr double SOFTEST = 1e6, STIFFEST = 2e12;   // Pa
constexpr double ROUNDING = 1e-9;                  // of changes of units
constexpr double STEEL_DENSITY = 7850, STEEL_E = 2.1e11;
constexpr double LEAST_RATIO = 10;  // of E over a strength: that of timber, concrete and metals is above 50

bool overlap(const Region& a, const Region& b) {
    return a.low.y < b.high.y && b.low.y < a.high.y && a.low.z < b.high.z && b.low.z < a.high.z;
}

bool lies_within_box(const Region& a, const Region& b) {
    return a.low.y >= b.low.y - b.tolerance && a.high.y <= b.high.y + b.tolerance && a.low.z >= b.low.z - b.tolerance &&
           a.high.z <= b.high.z + b.tolerance;
}

// Whether all elements of a part lie in the region, and none of the region's corners in the part.
bool lies_in(const Region& region, const std::vector<Region>& part, const Mesh& mesh, std::size_t owner) {
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        if (mesh.owners[e] != static_cast<std::int32_t>(owner)) continue;
        Point middle;
        for (const std::int32_t node : mesh.elements[e]) {
            if (!inside(region, mesh.nodes[node - 1])) return false;
            middle = middle + 0.25 * mesh.nodes[node - 1];
        }
        if (!inside(region, middle)) return false;
    }
    return std::none_of(region.pieces.begin(), region.pieces.end(), [&](const Piece& piece) {
        return std::any_of(part.begin(), part.end(), [&](const Region& own) {
            return inside(own, piece.from) && distance_to_boundary(own, piece.from) > region.tolerance;
        });
    });
}

void look_at_figures(const Section& s, std::size_t i, std::vector<Finding>& findings) {
    const Material& m = s.materials[i];
    const std::string place = "materials[" + std::to_string(i) + "]";
    const double length = size_of(lengths(), s.length, "units.length"),
                 force = size_of(forces(), s.force, "units.force");
    const double volume = length * length * length, stress = force / (length * length);  // in m3, in Pa
    const std::string per_volume = " kg/" + s.length + "3", per_area = " " + s.force + "/" + s.length + "2";
    const double density = m.density / volume, E = m.E * stress;
    if (m.density > 0 && (density < LIGHTEST * (1 - ROUNDING) || density > HEAVIEST * (1 + ROUNDING)))
        findings.push_back({false, place + ".density",
                            text_of(m.density, 6) + per_volume + " is that of no building material",
                            "steel has " + text_of(STEEL_DENSITY * volume, 4) + per_volume});
    if (E < SOFTEST * (1 - ROUNDING) || E > STIFFEST * (1 + ROUNDING))
        findings.push_back({false, place + ".E", text_of(m.E, 6) + per_area + " is that of no building material",
                            "steel has " + text_of(STEEL_E / stress, 4) + per_area});
    else if (m.E < LEAST_RATIO * std::max(m.tension, m.compression))
        findings.push_back({false, place,
                            "E = " + text_of(m.E, 6) + per_area + " is less than 10 times the strength of " +
                                text_of(std::max(m.tension, m.compression), 6) + per_area,
                            "steel has E = " + text_of(STEEL_E / stress, 4) + per_area});
}

void look_at_parts_inside(const Section& s, const Mesh& mesh, std::vector<Finding>& findings) {
    if (is_mesh(s)) return;
    std::vector<std::vector<Region>> regions;
    for (std::size_t k = 0; k < s.parts.size(); ++k) {
        regions.emplace_back();
        for (const Face& face : faces_of(s, s.parts[k], place_of_owner(s, k)))
            regions.back().push_back(region_of(face));
    }
    const auto alike = [&](std::size_t a, std::size_t b) {
        return s.parts[a].material == s.parts[b].material && s.parts[a].group == s.parts[b].group;
    };
    const auto meet = [&](std::size_t a, std::size_t b) {
        return std::any_of(regions[a].begin(), regions[a].end(), [&](const Region& one) {
            return std::any_of(regions[b].begin(), regions[b].end(), [&](const Region& o) { return overlap(one, o); });
        });
    };
    for (std::size_t k = 1; k < s.parts.size(); ++k) {
        for (std::size_t before = k; before-- > 0;) {
            if (!alike(k, before)) {
                if (meet(k, before)) break;  // what it takes the place of
                continue;
            }
            const auto around = std::find_if(regions[before].begin(), regions[before].end(), [&](const Region& region) {
                return std::all_of(regions[k].begin(), regions[k].end(),
                                   [&](const Region& own) { return lies_within_box(own, region); });
            });
            if (around == regions[before].end()) continue;
            if (!lies_in(*around, regions[k], mesh, k)) continue;
            findings.push_back({false, place_of_owner(s, k),
                                (name_in(s, k) + " lies wholly inside ").substr(1) + place_of_owner(s, before) +
                                    name_in(s, before) + ", of the same material: adds nothing",
                                "move it, or leave it out"});
            break;
        }
    }
}

}  // namespace

std::vector<Finding> hardly_meant(const Section& section, const Mesh& mesh) {
    std::vector<Finding> findings;
    for (std::size_t i = 0; i < section.materials.size(); ++i) {
        const auto is_of = [&](const auto& owner) { return owner.material == section.materials[i].name; };
        if (std::any_of(section.parts.begin(), section.parts.end(), is_of) ||
            std::any_of(section.bars.begin(), section.bars.end(), is_of))
            look_at_figures(section, i, findings);
    }
    look_at_parts_inside(section, mesh, findings);
    return findings;
}

}  // namespace velquor
