// The section through the library: from its mesh to the 58 slots, each with a bound, warping and stresses.
#pragma once

#include <cstdint>
#include <vector>

#include "kit/analysis/slots.h"
#include "kit/analysis/stresses.h"
#include "kit/mesh/mesh.h"
#include "velquor_levels.h"

namespace velquor {

// Results in the section's own units and frame; masses in kg.
struct Analysis {
    Mesh mesh;                        // the coarse mesh, to whose nodes and elements the fields belong
    Slots value{}, bound{};           // as RESULT and BOUNDS of vq_levels
    std::vector<double> warping;      // (nodes, 3)     as NODEOUT
    std::vector<double> stress;       // (48, elements) as ELEMOUT
    std::vector<VYZTUZE_INFO> bars;   // those that are points, in the order of the section's
    std::string reference;            // material by whose moduli values are transformed
    std::vector<std::int32_t> sharp;  // (nodes)   1 where shear stresses have no limit
    int levels = 0;                   // that went well
    bool plastic = false;             // plastic slots are filled
    bool strengths = false;           // with the strengths of the materials; else with 1: PLMOM means nothing
    bool warps = true;                // under torsion; else, as a circle, it carries no bimoment
    int pieces = 1;                   // that do not touch: of more than one, what rests on warping means nothing
    double reached = 0;               // the largest bound, relative to its value's natural size; without WT
    int worst = 0;                    // the slot that has it
    bool met = false;                 // it is within the wished accuracy
    Field field;                      // stresses at the nodes, where they were asked for
};

struct Unsolved : Error {
    using Error::Error;
};

// Calculates a section, which is looked at by check_section first. Where the wished accuracy is not met by the wished
// number of levels, takes further levels as long as the finest has at most this number of nodes; of a mesh that is
// given and fine, fewer than wished, but two. Throws Error where records are wrong, or the section cannot be meshed or
// is refused; Unsolved where there is no solution.
struct Effort {
    bool stresses = false;  // fills Analysis::field, and takes a level more than the usual three
    std::int64_t most_nodes = 300000;
    bool quick = false;  // no level more for stresses
};
Analysis analyse(const Section& section, const Effort& effort = {});

// The same on a mesh that stands, with this number of levels alone.
Analysis analyse(const Section& section, const Mesh& mesh, int levels, bool stresses = false);

// Throws Error where records are wrong, or the analysis is not one of this section.
void check_fits(const Section& section, const Analysis& analysis);

}  // namespace velquor
