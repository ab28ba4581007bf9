// A section of the validation calculated from its outline, by the kit.
#pragma once

#include <optional>

#include "section_run.h"

struct OutlineOutcome {
    SectionRun run;  // of the coarse mesh, with extrapolated values; `size` is how near a wanted node has to be, twice
    int levels = 0;
    struct Value {
        double ours, difference;  // not numbers where the outline has no such value
        bool ok;
    };
    std::vector<Value> values;  // in the order of the file
};

// The outline of sections/NAME.json is outlines/NAME.json, in the form of kit/section/schema.json; its tolerances are
// those of the section. Nothing where there is no such file, or the kit is not built. Throws std::runtime_error where
// it cannot be calculated, and where a stress or warping is wanted at a place that has no node.
std::optional<OutlineOutcome> compare_outline(const SectionFile& file);
