#include "outline_run.h"

#ifdef VALIDATE_OUTLINES
#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "kit/analysis/analysis.h"
#include "kit/section/file.h"

namespace {

constexpr double NEAR = 1e-6;  // of the section's extent: a node stands at a wanted place
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

int material_of(const SectionFile& file, const std::string& name) {
    for (size_t i = 0; i < file.materials.size(); ++i)
        if (file.materials[i].name == name) return static_cast<int>(i) + 1;
    return 0;
}

SectionRun run_of(const SectionFile& file, const velquor::Section& section, const velquor::Analysis& analysis) {
    SectionRun run;
    const velquor::Mesh& mesh = analysis.mesh;
    run.nnodes = run.mesh_nodes = static_cast<int32_t>(mesh.nodes.size());
    run.nelems = static_cast<int32_t>(mesh.elements.size());
    run.nodes.resize(2 * mesh.nodes.size());
    double low = HUGE_VAL, high = -HUGE_VAL;
    for (size_t i = 0; i < mesh.nodes.size(); ++i) {
        run.nodes[i] = mesh.nodes[i].y, run.nodes[mesh.nodes.size() + i] = mesh.nodes[i].z;
        low = std::min(low, mesh.nodes[i].z), high = std::max(high, mesh.nodes[i].z);
    }
    run.size = 2 * NEAR * (high - low);
    run.elements.resize(4 * mesh.elements.size());
    for (size_t e = 0; e < mesh.elements.size(); ++e) {
        for (size_t c = 0; c < 4; ++c) run.elements[c * mesh.elements.size() + e] = mesh.elements[e][c];
        const auto owner = static_cast<size_t>(mesh.owners[e]);
        run.materials.push_back(owner < section.parts.size() ? material_of(file, section.parts[owner].material) : 0);
    }
    run.result.assign(analysis.value.begin(), analysis.value.end());
    run.nodeout = analysis.warping, run.elemout = analysis.stress, run.bars = analysis.bars;
    return run;
}

}  // namespace

std::optional<OutlineOutcome> compare_outline(const SectionFile& file) {
    OutlineOutcome out;
    try {
        const velquor::Section section = velquor::read_section(file.section);
        const velquor::Analysis analysis = velquor::analyse(section);
        out.run = run_of(file, section, analysis), out.levels = analysis.levels;
        for (const Expectation& e : file.expected) {
            Comparison c = {NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER, true};
            if (e.outline) {
                c.ours = value_of(e, out.run), c.difference = difference_of(e, c.ours);
                c.ok = e.tolerance < 0 || std::fabs(c.difference) <= e.tolerance;
            }
            out.values.push_back(c);
        }
    } catch (const std::exception& error) {
        throw std::runtime_error(file.path + ": section: " + error.what());
    }
    return out;
}
#else
std::optional<OutlineOutcome> compare_outline(const SectionFile&) { return {}; }
#endif
