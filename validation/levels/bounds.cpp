// Bounds beside true errors. The reference is a calculation two levels finer.
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "random_mesh.h"
#include "rows.h"
#include "section_run.h"

namespace {

constexpr double ROUNDING = 1e-10;  // share of the natural size
constexpr int LEVELS = 3, FINER = 5;

struct Tally {
    int meshes = 0, failed = 0;
    int of[5] = {};  // by Verdict
    double largest_ratio = 0;
    std::string worst;
    std::vector<double> errors_over_bound;
};

void add(Tally& tally, const Shape& shape, std::uint64_t seed, std::vector<Value>& seen) {
    const auto values = compare(shape, seed, LEVELS, FINER);
    ++tally.meshes;
    if (values.empty()) ++tally.failed;
    for (const Value& v : values) {
        const Verdict verdict = verdict_of(v);
        ++tally.of[static_cast<int>(verdict)];
        if (verdict != Verdict::holds && verdict != Verdict::fails) continue;
        const double ratio = ratio_of(v);
        tally.errors_over_bound.push_back(ratio);
        if (ratio > tally.largest_ratio) tally.largest_ratio = ratio, tally.worst = v.section + ", " + name_of(v.slot);
        seen.push_back(v);
    }
}

std::string share(const Tally& tally) {
    const int holds = tally.of[0], counted = holds + tally.of[1];
    std::string out = formatted("%.2f %% of %d values of %d meshes, error over bound at most %.2f",
                                100.0 * holds / std::max(counted, 1), counted, tally.meshes, tally.largest_ratio);
    if (!tally.worst.empty()) out += " (" + tally.worst + ")";
    out += formatted("; not counted: %d exact, %d without a bound, %d with a reference too coarse", tally.of[2],
                     tally.of[3], tally.of[4]);
    if (tally.failed > 0) out += formatted("; %d meshes without three levels", tally.failed);
    return out;
}

std::string median(Tally tally) {
    auto& ratios = tally.errors_over_bound;
    if (ratios.empty()) return "nothing measured";
    std::nth_element(ratios.begin(), ratios.begin() + static_cast<long>(ratios.size() / 2), ratios.end());
    return formatted("%.1f", 1 / ratios[ratios.size() / 2]);
}

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
            host.name = std::filesystem::path(path).stem(), host.mode = file.mode;
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
    add(tally, {random_mesh(seed, 20, most_elements)}, seed, seen);
}

}  // namespace

double ratio_of(const Value& v) {
    const double ratio = v.error() / v.bound;
    return std::isnan(ratio) ? v.error() == 0 ? 0 : std::numeric_limits<double>::infinity() : ratio;
}

Verdict verdict_of(const Value& v) {
    if (!std::isfinite(v.bound)) return Verdict::unbounded;
    const double error = v.error();
    if (error <= ROUNDING * v.size && v.bound <= ROUNDING * v.size) return Verdict::exact;
    if (!(v.reference_bound <= v.bound / 5)) {
        if (error + v.reference_bound <= v.bound) return Verdict::holds;
        if (error - v.reference_bound > v.bound) return Verdict::fails;
        return Verdict::unsettled;
    }
    return error <= v.bound ? Verdict::holds : Verdict::fails;
}

std::vector<Row> bound_rows(const std::string& folder, std::vector<Value>& seen) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    Tally sections, meshes, both;
    for (const std::string& path : paths) add(sections, {coarse_section(path)}, 0, seen);
    for (std::uint64_t seed = 1; seed <= 200; ++seed) add_random(meshes, seed, 300, seen);
    both = sections;
    both.errors_over_bound.insert(both.errors_over_bound.end(), meshes.errors_over_bound.begin(),
                                  meshes.errors_over_bound.end());
    return {{"share of values whose true error is below the bound: sections of the validation, on meshes about four "
             "times as coarse as theirs",
             "98 %", "95 %; error never above 5 times the bound", share(sections)},
            {"the same: 200 random meshes (jittered, skewed, oblong up to 4 : 1, mixed, two materials, holes)", "98 %",
             "95 %; error never above 5 times the bound", share(meshes)},
            {"bounds not idle: median of bound over true error", "10", "50",
             median(both) + " (sections " + median(sections) + ", random meshes " + median(meshes) + ")"}};
}

Row random_row(int meshes, std::vector<Value>& seen) {
    Tally tally;
    for (int i = 0; i < meshes; ++i) add_random(tally, 1001 + static_cast<std::uint64_t>(i), 120, seen);
    return {
        formatted("%d random meshes of 20 to 120 elements: the bound beside a calculation two levels finer", meshes),
        "98 %", "95 %; error never above 5 times the bound",
        share(tally) + "; median of bound over error " + median(tally)};
}

std::string formatted(const char* format, ...) {
    char text[1000];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}
