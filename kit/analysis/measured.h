// A section with its results and measures, as the formulas of quantities.cpp read it.
#pragma once

#include "kit/analysis/extent.h"
#include "kit/analysis/values.h"

namespace velquor {

// The material of an owner of elements.
const Material& material_of(const Section& section, std::int32_t owner);

struct Measured {
    const Section& section;
    const Analysis& analysis;
    bool coupled = false;    // groups bend by themselves: nothing counts from the centroid
    bool composite = false;  // of several materials
    bool densities = true;   // of all materials
    bool points = false;     // some bars are points
    bool round = false;      // both principal moments are equal, so every axis is a principal one
    Perimeter perimeter;
    Extent y, z;               // in the section's frame
    Value alpha, cos, sin;     // of the principal axes, in radians
    Value centre_y, centre_z;  // centroid

    Measured(const Section& of, const Analysis& by);

    Value operator()(int slot) const {
        const auto k = static_cast<std::size_t>(slot);
        return {analysis.value[k], analysis.bound[k]};
    }
};

}  // namespace velquor
