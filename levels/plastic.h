// Plastic moments where strengths differ.
#pragma once

#include "levels/extrapolate.h"
#include "levels/mesh.h"

namespace levels {

// Whether a mode asks for a plastic calculation.
bool is_plastic(double mode);

// The library gives an element that the line cuts one of its two strengths as a whole, which makes PLMOM an error of
// the row of elements at the line. Here each part has its own: the PLMOM of `slots`, results of this mesh, become exact
// for it.
void part_plastic_moments(const Tables& mesh, double mode, Slots& slots);

}  // namespace levels
