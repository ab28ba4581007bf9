// What a load set does to a section: the largest stresses of each material, where they are, and how much of the
// strength they use.
#pragma once

#include <string>
#include <vector>

#include "kit/analysis/analysis.h"

namespace velquor {

// The largest of a kind, and where. At sharp re-entrant corners shear stresses have no limit: `unlimited` says that
// they do not and `corner` at which corner; value and place are then those of the largest elsewhere, further
// than half of the wall's thickness from any; nearer ones count by their axial stress, which has a limit.
struct Peak {
    double value = 0;
    Point at;
    bool unlimited = false;
    Point corner;
};

struct MaterialStresses {
    std::string material;
    Peak tension, compression;  // the largest and the smallest axial stress, with its sign
    Peak shear, von_mises;      // amounts
    // Of equal strengths von Mises' stress over the strength, of others the greater of both principal stresses over
    // theirs; `has_strength` false where none is known.
    bool has_strength = false;
    Peak utilisation;
};

struct NodeStress {
    Point at;
    std::string material;
    Stress stress;
    bool unlimited = false;  // at a sharp corner: shear stresses mean nothing
};

struct LoadResult {
    Load load;
    std::string length, force;                // its units
    std::vector<Stress> stresses;             // at the spots of Analysis::field
    std::vector<double> bars;                 // axial stress in bars that are points
    std::vector<MaterialStresses> materials;  // in the order of the section's list, those that the mesh has
    std::vector<NodeStress> nodes;            // of the coarse mesh, then bars that are points
    Load resultants;      // of the recovered stresses over the finest mesh, and of the bars; T has the whole torque
    std::string warning;  // of what makes shear stresses mean nothing; empty: they hold
};

// Of an analysis with stresses, in the section's units. Throws Error where there are none, a section that does not warp
// is to carry a bimoment or a torque by warping, one in pieces shear, torsion or a bimoment, one of groups that slip
// anything by bars that are points.
LoadResult result_of(const Section& section, const Analysis& analysis, const Load& load);

// The same in other units. Throws Error where there is no such unit.
LoadResult in_units(LoadResult result, const std::string& length, const std::string& force);

}  // namespace velquor
