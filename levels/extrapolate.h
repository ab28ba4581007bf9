// From the results of several levels to those of an infinitely fine mesh.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "levels/velquor_levels.h"

namespace levels {

using Slots = std::array<double, VQ_NSLOTS>;

// What a level gave at the host's nodes, corners and bars.
struct LevelResults {
    Slots slots;
    std::vector<double> nodeout;  // (NNODES, 3)
    std::vector<double> elemout;  // 48 for each element
    std::vector<double> stress;   // 4 for each bar
};

// Cosine and sine of ALPHA.
struct Direction {
    double c, s;
};
Direction direction(const Slots& slots);

// What is known of a section, besides the results of its levels.
struct Nature {
    bool pieces = false;       // parts hang together in no node or in one: what rests on warping has no limit
    bool bars = false;         // bars take part: shear stiffness has none
    bool stiff_bars = false;   // of them some have a shear modulus: all that rests on warping has none
    bool triangles = false;    // among the elements
    std::int8_t exponent = 0;  // in 64ths, the smallest at its sharp corners, where stress has no limit; 0 without any
};

// All slots from those of the levels, two or more, and the direction of their principal axes.
Direction extrapolate_slots(const std::vector<LevelResults>& levels, const Nature& nature, Slots& values,
                            Slots& bounds);

// The finest level's fields become extrapolated ones in the axes of `to`; the others are turned to them on the way.
// Shear stresses at corners with sharp = 1, (4, NELEMS), stay those of the finest level.
void extrapolate_fields(std::vector<LevelResults>& levels, const Nature& nature, const Direction& to,
                        const std::vector<std::int8_t>& sharp);

}  // namespace levels
