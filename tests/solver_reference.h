// What the solver's answers are held against: residuals, and an elimination of the full matrix in long double.
#pragma once

#include <functional>
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

// The largest error of an unknown, relative to what the rounding of A and b to 64-bit reals may change in it:
// |inverse(A)| (|A| |x| + |b|) 2^-52. Scaling of rows and columns does not loosen this measure. x and inverse(A) come
// from elimination with complete pivoting; rows of zeros are left out, and their unknowns have to be 0.
long double error(const meshes::System& s, const Columns& X);

}  // namespace reference
