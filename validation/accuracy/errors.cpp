// Values and bounds beside a finer calculation.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>

#include "kit/analysis/analysis.h"
#include "random_section.h"
#include "rows.h"

namespace {

constexpr double NOTHING = 1e-6;    // share of the natural size below which a value is 0 by symmetry
constexpr double ROUNDING = 1e-10;  // the same for what is exact
constexpr double WISH = 1e-5;

// The reference: a mesh of its own of elements half as large, and as many levels of it as have no more nodes than this.
constexpr double FINENESS = 2;
constexpr std::size_t NODES = 150000;

velquor::Analysis reference_of(const velquor::Section& section) {
    const velquor::Mesh mesh = velquor::mesh_of(section, FINENESS);
    int levels = 3;
    while (levels < VQ_MAXLEVELS && mesh.nodes.size() << (2 * levels) <= NODES) ++levels;
    return velquor::analyse(section, mesh, levels);
}

// Neither 0 by symmetry, nor exact, nor without a limit.
bool counts(const Value& v) {
    return std::isfinite(v.bound) && std::isfinite(v.reference_bound) && std::abs(v.reference) > NOTHING * v.size &&
           std::max(v.error(), v.bound) > ROUNDING * v.size;
}

// What a value is made of: sums over the section, strengths, warping.
int kind_of(int slot) {
    if (slot >= VQ_PLAXIS_Y && slot <= VQ_PLMOM_U_NEG) return 1;
    const bool warping =
        (slot >= VQ_SCY && slot <= VQ_IW) || (slot >= VQ_GAU && slot <= VQ_WT) || slot == VQ_WR1 || slot == VQ_WR2;
    return warping ? 2 : 0;
}

std::string percent(int part, int whole) {
    return formatted("%.1f %% (%d of %d)", 100.0 * part / std::max(whole, 1), part, whole);
}

}  // namespace

Beside beside_reference(const Case& c) {
    Beside out;
    out.of = &c;
    try {
        const velquor::Analysis tested = velquor::analyse(c.section), reference = reference_of(c.section);
        out.sharp = std::find(reference.sharp.begin(), reference.sharp.end(), 1) != reference.sharp.end();
        out.reference = reference.value, out.reference_bound = reference.bound;
        out.values =
            beside(c.section.name, 0, {tested.value, tested.bound}, {reference.value, reference.bound}, c.exact);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", c.section.name.c_str(), error.what());
    }
    return out;
}

std::vector<Row> error_rows(const std::vector<Beside>& all, std::vector<Value>& seen) {
    Errors smooth, sharp, stresses;
    smooth.must = 1e-3, sharp.must = 2e-3;
    for (const Beside& section : all) {
        Errors& errors = section.sharp ? sharp : smooth;
        ++errors.sections;
        if (section.values.empty()) ++errors.failed;
        if (!section.sharp) ++stresses.sections;
        for (const Value& v : section.values)
            if (counts(v)) add(v.slot == VQ_WT ? stresses : errors, v, seen);
    }
    return {{"default effort, smooth outlines: every value against the converged one", "1e-4", "1e-3",
             text_of(smooth, "sections")},
            {"the same: `WT`, a largest corner stress", "", "", text_of(stresses, "sections")},
            {"sharp re-entrant corners", "3e-4", "2e-3", text_of(sharp, "sections")}};
}

std::vector<Row> bound_rows(const std::vector<Beside>& outlines, int sections, std::vector<Value>& seen) {
    Tally validation, random;
    for (const Beside& outline : outlines) add(validation, outline.values, seen);
    // Other outlines than seeds 1 to 200, by which the shares in the bounds were chosen.
    for (int seed = 1001; seed <= 1000 + sections; ++seed)
        add(random, beside_reference({random_section(static_cast<std::uint64_t>(seed))}).values, seen);
    std::vector<double> kinds[3];
    for (const Value& v : seen) kinds[kind_of(v.slot)].push_back(ratio_of(v));
    const auto median = [&](std::vector<double>& ratios) {
        if (ratios.empty()) return 0.0;
        std::sort(ratios.begin(), ratios.end());
        return 1 / ratios[ratios.size() / 2];
    };
    Tally both = validation;
    both.errors_over_bound.insert(both.errors_over_bound.end(), random.errors_over_bound.begin(),
                                  random.errors_over_bound.end());
    const char* const what = "stated bound holds (true error below it): ";
    const char* const must = "95 %; error never above 5 times the bound";
    return {
        {std::string(what) + "sections of the validation", "98 %", must, share_of(validation, "sections")},
        {std::string(what) + formatted("%d random outlines", sections), "98 %", must, share_of(random, "outlines")},
        {"bound not idle: median of bound over true error", "10", "50",
         median_of(both) + formatted(" (sums over the section %.0f, plastic values %.0f, what rests on warping %.1f)",
                                     median(kinds[0]), median(kinds[1]), median(kinds[2]))}};
}

std::vector<Row> wish_rows(const std::vector<Beside>& all) {
    int reached = 0, sections = 0, met = 0, coarse = 0;
    std::string missed;
    for (const Beside& section : all) {
        if (section.sharp || section.values.empty()) continue;
        velquor::Section wished = section.of->section;
        wished.wishes.accuracy = WISH;
        double largest = 0;
        const char* slot = "";
        try {
            const velquor::Analysis analysis = velquor::analyse(wished);
            met += analysis.met;
            for (const Value& v : beside(wished.name, 0, {analysis.value, analysis.bound},
                                         {section.reference, section.reference_bound}, section.of->exact)) {
                if (!counts(v)) continue;
                if (v.reference_bound > WISH / 3 * v.size && v.error() > WISH * v.size) {
                    ++coarse;
                } else if (v.error() > largest * v.size) {
                    largest = v.error() / v.size, slot = name_of(v.slot);
                }
            }
        } catch (const std::exception& error) {
            largest = HUGE_VAL, slot = error.what();
        }
        ++sections, reached += largest <= WISH;
        if (largest > WISH)
            missed += formatted("%s%s, %s %.1e", missed.empty() ? "" : "; ", wished.name.c_str(), slot, largest);
    }
    return {{"`--accuracy 1e-5` reaches it where the order is 2: every value within 1e-5 of its natural size", "all",
             "95 %",
             percent(reached, sections) + "; said to be met by " + percent(met, sections) +
                 formatted("; %d values beside a reference too coarse", coarse) +
                 (missed.empty() ? "" : "; not by " + missed)}};
}
