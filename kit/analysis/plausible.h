// Figures and parts that are hardly meant: moduli and densities that no building material has, parts without effect.
#pragma once

#include <vector>

#include "kit/analysis/check.h"

namespace velquor {

// Warnings of the figures of materials that are used, read in the section's units, and of each part that lies in one
// before it of the same material and group, and so adds nothing.
std::vector<Finding> hardly_meant(const Section& section, const Mesh& mesh);

}  // namespace velquor
