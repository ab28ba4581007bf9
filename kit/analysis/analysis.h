// The section through the library: from its mesh to the 58 slots, each with a bound, warping and stresses.
#pragma once

#include <vector>

#include "kit/analysis/slots.h"
#include "kit/mesh/mesh.h"
#include "velquor_levels.h"

namespace velquor {

// Results in the section's own units and frame; the mass goes by kg.
struct Analysis {
    Mesh mesh;                        // the coarse mesh, to whose nodes and elements the fields belong
    Slots value{}, bound{};           // as RESULT and BOUNDS of vq_levels
    std::vector<double> warping;      // (nodes, 3)     as NODEOUT
    std::vector<double> stress;       // (48, elements) as ELEMOUT
    std::vector<VYZTUZE_INFO> bars;   // those that are points, in the order of the section's
    std::vector<std::int32_t> sharp;  // (nodes)   1 where shear stresses have no limit
    int levels = 0;                   // that went well
    bool plastic = false;             // plastic slots are filled
    bool strengths = false;  // with strengths of the materials; else with 1 everywhere, and moments mean nothing
    double reached = 0;      // largest bound, relative to its value's natural size
    bool met = false;        // it is within the wished accuracy
};

struct Limits {
    std::int64_t nodes = 400000;  // of the finest level
};

// Throws Error where the section cannot be meshed or is refused, Unsolved where there is no solution.
struct Unsolved : Error {
    using Error::Error;
};
Analysis analyse(const Section& section, const Limits& limits = {});

}  // namespace velquor
