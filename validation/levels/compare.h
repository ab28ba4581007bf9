// Values of vq_levels beside what they converge to.
#pragma once

#include <cstdint>
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

// Three or more levels beside a reference: `finer` levels from the same mesh, where no closed formula is known. Empty
// where a call failed.
std::vector<Value> compare(const Shape& shape, std::uint64_t seed, int levels, int finer);
