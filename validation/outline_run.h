// A section of the validation calculated from its outlines by the kit; its tolerances are those of the file.
#pragma once

#include <optional>

#include "section_run.h"

struct OutlineOutcome {
    SectionRun run;  // of the coarse mesh, with extrapolated values; `size` is how near a wanted node has to be, twice
    int levels = 0;
    std::vector<Comparison> values;  // in the order of the file; ours not a number where the kit has no such value
};

// Nothing where the kit is not built. Throws std::runtime_error where the section cannot be read or calculated, and
// where a stress or warping is wanted at a place that has no node.
std::optional<OutlineOutcome> compare_outline(const SectionFile& file);
