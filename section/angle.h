// The angle of a direction, and the direction of an angle, without the C library: it chooses its routines by the
// processor, and they differ in the last bit. These use + - * /, the square root and powers of two alone, which IEEE
// 754 fixes to the last bit, and carry some 100 bits: what they return is the exact value rounded to nearest, but for
// one argument in 1e14.
#pragma once

namespace BASICCHAR_MOD {

// atan2: the angle of (x, y) from the axis of x, -pi to pi. Zeros, infinities and NaN as the C library has them.
double angle_of(double y, double x);

// Cosine and sine of an angle within -pi to pi; NaN of any other.
struct Direction {
    double cosine, sine;
};
Direction direction_of(double angle);

}  // namespace BASICCHAR_MOD
