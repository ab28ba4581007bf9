// A value on an infinitely fine mesh from its values on nested ones.
#pragma once

namespace levels {

// The value, and how far from it the true one may be.
struct Estimate {
    double value, bound;
};

// The factors by which two parts of an error fall from level to level; 0: not known, what the values show.
struct Falls {
    double first, second;
};

// Errors of integrals over smooth outlines: of the second and the fourth order.
constexpr Falls SMOOTH{4, 16};

// From the values of `count` levels, the finest last; those before one that is not finite do not count. The bound is at
// least `floor`, and infinite where a single value is left.
Estimate estimate(const double* values, int count, const Falls& falls, double floor);

}  // namespace levels
