// Section values beside what they converge to.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "velquor.h"

using Slots = std::array<double, VQ_NSLOTS>;

// A value that a closed formula gives.
struct Exact {
    int slot;
    double value;
};

// One slot of one section.
struct Value {
    std::string section;
    std::uint64_t seed = 0;  // of a random mesh
    int slot = 0;
    double value = 0, bound = 0, reference = 0;
    double reference_bound = 0;  // 0 for a closed formula
    double size = 0;             // natural size of the slot, see below
    std::vector<double> of_level;

    double error() const;
    double relative_error() const;  // over the reference; lengths, angles and couplings, whose 0 is chosen or met by
                                    // chance, over their natural size where that is larger
};

// Amounts of each slot for a section of this size, by which its 0 is known: lengths measure in radii of gyration,
// moments and couplings in the sums of their kind.
Slots natural_sizes(const Slots& result);

// Values with their bounds, and a reference with its own; exact ones replace it. Slots of the principal frame are left
// out where both moments are equal or the frames differ, WR1 and WR2 where nothing warps.
struct Bounded {
    Slots value{}, bound{};
};
std::vector<Value> beside(const std::string& section, std::uint64_t seed, const Bounded& tested,
                          const Bounded& reference, const std::vector<Exact>& exact);

// The slots' names without VQ_.
const char* name_of(int slot);
