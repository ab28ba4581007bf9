// Fits of polynomials to what is known around a point, by least squares.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "kit/section/section.h"

namespace velquor {

// The elements around each spot of a mesh: of spot i those in `element` from begin[i] to begin[i + 1].
struct Neighbours {
    std::vector<std::int32_t> begin, element;
};
Neighbours neighbours_of(const std::vector<std::array<std::int32_t, 4>>& elements, std::size_t spots);

// What lies around a spot, in the order in which it was found.
struct Patch {
    std::vector<std::int32_t> spots, elements;
};

// Adds the next ring of elements around the patch and their spots.
void grow(const Neighbours& around, const std::vector<std::array<std::int32_t, 4>>& elements, Patch& patch);

// What a polynomial has of a point.
struct Fit {
    double value = 0, slope_y = 0, slope_z = 0;
};

// The polynomials of this degree, 1 to 3, closest to `count` fields, at most 3, whose values at points[i] are
// values[count i] and on; what they have at `at`, one for each field. False where the points do not tell all terms:
// then, and only if `anyway`, those that they do not tell are left out.
bool fit(int degree, const Point& at, const std::vector<Point>& points, const std::vector<double>& values, int count,
         bool anyway, Fit* fits);

}  // namespace velquor
