// Systems of given entries, and what the solver's answers are held against: residuals in long double.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "bench/bordered_systems.h"

namespace reference {

using Columns = Table<double, 2>;
using Entries = std::map<std::pair<std::int32_t, std::int32_t>, double>;  // (row, column at or above it) -> value

// The system of the given entries; a diagonal that is missing is stored as 0.
meshes::System system_of(std::int32_t n, Entries entries, const std::vector<std::vector<double>>& columns);
Entries entries_of(const meshes::System& s);

// For each row, counted from 1, the largest |b - A x| of the columns relative to what its terms could amount to:
// sum |a_ij| max |x_j| + max |b_i|, the maxima over the columns; an unknown below 1e-13 of the largest is rounding and
// counts with that. Infinite where x is not finite.
std::vector<long double> residuals(const meshes::System& s, const Columns& X);

}  // namespace reference
