// Bounds beside true errors. The reference is a calculation two levels finer.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "random_mesh.h"
#include "rows.h"
#include "section_run.h"

namespace {

constexpr int LEVELS = 3, FINER = 5;

// A section of the validation with elements four times its size, or less where its parts do not fit together so or the
// mesh would have fewer than eight elements.
Host coarse_section(const std::string& path) {
    SectionFile file = read_section_file(path);
    const double size = file.size;
    for (const double factor : {4.0, 3.0, 2.0, 1.0}) {
        file.size = factor * size;
        try {
            const SectionRun run = run_section(file, 1);
            if (run.nelems < 8 && factor > 1) continue;
            Host host;
            host.name = std::filesystem::path(path).stem(), host.mode = VQ_PLASTIC;
            host.nnodes = run.nnodes, host.nelems = run.nelems;
            host.nodes = run.nodes, host.props = run.props, host.elements = run.elements, host.bars = run.bars;
            for (int32_t e = 0; e < run.nelems; ++e)
                host.groups =
                    std::max(host.groups, static_cast<int32_t>(std::fabs(run.props[(VQ_GROUP - 1) * host.nelems + e])));
            return host;
        } catch (const std::exception&) {
            if (factor == 1) throw;
        }
    }
    return {};
}

void add_random(Tally& tally, std::uint64_t seed, int most_elements, std::vector<Value>& seen) {
    add(tally, compare({random_mesh(seed, 20, most_elements)}, seed, LEVELS, FINER), seen);
}

}  // namespace

std::vector<Row> bound_rows(const std::string& folder, std::vector<Value>& seen) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    Tally sections, meshes, both;
    for (const std::string& path : paths) add(sections, compare({coarse_section(path)}, 0, LEVELS, FINER), seen);
    for (std::uint64_t seed = 1; seed <= 200; ++seed) add_random(meshes, seed, 300, seen);
    both = sections;
    both.errors_over_bound.insert(both.errors_over_bound.end(), meshes.errors_over_bound.begin(),
                                  meshes.errors_over_bound.end());
    return {{"share of values whose true error is below the bound: sections of the validation, on meshes about four "
             "times as coarse as theirs",
             "98 %", "95 %; error never above 5 times the bound", share_of(sections, "meshes")},
            {"the same: 200 random meshes (jittered, skewed, oblong up to 4 : 1, mixed, two materials, holes)", "98 %",
             "95 %; error never above 5 times the bound", share_of(meshes, "meshes")},
            {"bounds not idle: median of bound over true error", "10", "50",
             median_of(both) + " (sections " + median_of(sections) + ", random meshes " + median_of(meshes) + ")"}};
}

Row random_row(int meshes, std::vector<Value>& seen) {
    Tally tally;
    for (int i = 0; i < meshes; ++i) add_random(tally, 1001 + static_cast<std::uint64_t>(i), 120, seen);
    return {
        formatted("%d random meshes of 20 to 120 elements: the bound beside a calculation two levels finer", meshes),
        "98 %", "95 %; error never above 5 times the bound",
        share_of(tally, "meshes") + "; median of bound over error " + median_of(tally)};
}
