// Largest stresses of load sets beside a finer calculation, and the forces that stresses add up to.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>

#include "kit/analysis/loads.h"
#include "kit/section/loads.h"
#include "rows.h"

namespace {

constexpr double FINENESS = 2;
constexpr std::size_t NODES = 200000;

struct Found {
    double error;  // relative, below 0 on the unsafe side
    std::string where;
};

std::string text_of(std::vector<Found> found, int sections) {
    if (found.empty()) return "none";
    std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) { return a.error < b.error; });
    std::vector<double> amounts;
    for (const Found& f : found) amounts.push_back(std::abs(f.error));
    std::sort(amounts.begin(), amounts.end());
    const auto shown = [](const Found& f) { return formatted("%+.2f %%", 100 * f.error) + " (" + f.where + ")"; };
    return "from " + shown(found.front()) + " to " + shown(found.back()) +
           formatted(", 95 %% within %.2f %%", 100 * amounts[amounts.size() * 19 / 20]) +
           formatted(", median %.3f %%", 100 * amounts[amounts.size() / 2]) +
           formatted("; %.0f values", static_cast<double>(found.size())) + formatted(" of %d sections", sections);
}

velquor::Analysis reference_of(const velquor::Section& section) {
    const velquor::Mesh mesh = velquor::mesh_of(section, FINENESS, true);
    int levels = 4;
    while (levels < VQ_MAXLEVELS && mesh.nodes.size() << (2 * levels) <= NODES) ++levels;
    return velquor::analyse(section, mesh, levels, true);
}

}  // namespace

std::vector<Row> stress_rows(const std::vector<Case>& cases) {
    std::vector<Found> smooth, sharp, resultants;
    int smooth_sections = 0, sharp_sections = 0;
    for (const Case& c : cases) {
        try {
            const velquor::Analysis tested = velquor::analyse(c.section, {true}), reference = reference_of(c.section);
            const bool corners = std::find(reference.sharp.begin(), reference.sharp.end(), 1) != reference.sharp.end();
            ++(corners ? sharp_sections : smooth_sections);
            for (const velquor::LoadKey& key : velquor::load_keys()) {
                const bool warps = key.value == &velquor::Load::B || key.value == &velquor::Load::Tw;
                if (warps && !tested.warps) continue;
                velquor::Load load;
                load.*(key.value) = 1;
                const velquor::LoadResult at = velquor::result_of(c.section, tested, load),
                                          fine = velquor::result_of(c.section, reference, load);
                const std::string where = c.section.name + ", " + key.name;
                for (std::size_t m = 0; m < at.materials.size(); ++m)
                    (corners ? sharp : smooth)
                        .push_back({at.materials[m].von_mises.value / fine.materials[m].von_mises.value - 1, where});
                const bool warping_torque = key.value == &velquor::Load::Tw;
                resultants.push_back({at.resultants.*(warping_torque ? &velquor::Load::T : key.value) - 1, where});
            }
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s: %s\n", c.section.name.c_str(), error.what());
        }
    }
    return {
        {"largest von Mises stress of each unit load, default effort, smooth outlines", "", "-1 % (unsafe) to 1 %",
         text_of(smooth, smooth_sections)},
        {"the same with sharp corners, further than half the wall's thickness from any", "", "",
         text_of(sharp, sharp_sections)},
        {"forces that these stresses add up to", "", "0.5 %", text_of(resultants, smooth_sections + sharp_sections)}};
}
