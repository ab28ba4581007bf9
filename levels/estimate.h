// A value on an infinitely fine mesh from its values on nested ones.
#pragma once

namespace levels {

// The value, and how far from it the true one may be.
struct Estimate {
    double value, bound;
};

// The factors by which two parts of an error fall from level to level, 0 where they are not known but for what the
// values show, and the bound as a share of the whole correction. Where the error is a series of even powers a third
// part stands to the second as this to the first: the bound has a multiple of it, and a much smaller share.
struct Falls {
    double first, second;
    double share;
    double third = 0;  // this multiple; 0: no such series
};

// Errors of the second and the fourth order: of what rests on warping, of lines that cut elements; of areas and
// centres of smooth outlines, of second moments, and of what is made of several. Shares are from random meshes
// (docs/levels.md).
constexpr Falls SMOOTH{4, 16, 0.08}, CUT{4, 16, 0.2};
constexpr Falls OUTLINE{4, 16, 8e-5, 10}, MOMENTS{4, 16, 3.5e-4, 10}, MIXED{4, 16, 1.2e-3, 45};

// From the values of `count` levels, the finest last; those before one that is not finite do not count. The bound is at
// least `floor`, and infinite where a single value is left.
Estimate estimate(const double* values, int count, const Falls& falls, double floor);

}  // namespace levels
