// From the results of several levels to those of an infinitely fine mesh.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "levels/velquor_levels.h"

namespace levels {

using Slots = std::array<double, VQ_NSLOTS>;

// What a level gave at the host's nodes, corners and bars. Where there are several levels, WT and the shear stresses of
// a unit torque in quadrilaterals are of second order.
struct LevelResults {
    Slots slots;
    std::vector<double> nodeout;  // (NNODES, 3)
    std::vector<double> elemout;  // 48 for each element
    std::vector<double> stress;   // 4 for each bar
};

// What has no limit on finer meshes.
struct Unlimited {
    bool warping = false;  // all that rests on warping: the mesh falls in pieces, or bars have a shear modulus
    bool shear = false;    // shear stiffness: bars take part
    bool stress = false;   // the largest shear stress: there are sharp corners
};

// A value on an infinitely fine mesh, and how far from it that may be.
struct Estimate {
    double value, bound;
};

// From the values of `count` levels, at least one, the finest last; the bound is at least `floor`.
Estimate estimate(const double* values, int count, double floor);

// All slots from those of the levels; principal axes are the finest level's.
void extrapolate_slots(const std::vector<LevelResults>& levels, const Unlimited& unlimited, Slots& values,
                       Slots& bounds);

// The finest level's fields become extrapolated ones, all others turned to its principal axes on the way. Shear
// stresses at corners with sharp = 1, (4, NELEMS), stay as they are.
void extrapolate_fields(std::vector<LevelResults>& levels, const Unlimited& unlimited,
                        const std::vector<std::int8_t>& sharp);

}  // namespace levels
