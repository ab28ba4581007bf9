// Values of vq_levels beside what they converge to.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shapes.h"
#include "watch.h"

// What one call of vq_levels gives.
struct Levels {
    int32_t status = VQ_REFUSED, levels = 0;
    Slots value{}, bound{};
    std::vector<Slots> of_level;  // the results of each level, from coarse to fine
    std::vector<double> elemout;
    std::vector<int32_t> sharp;
};
Levels calculate(const Host& host, int levels);

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

// Three or more levels beside a reference: `finer` levels from the same mesh, where no closed formula is known. Slots
// of the principal frame are left out where both moments are equal or the frames differ, WR1 and WR2 where nothing
// warps. Empty where a call failed.
std::vector<Value> compare(const Shape& shape, std::uint64_t seed, int levels, int finer);

// The slots' names without VQ_.
const char* name_of(int slot);
