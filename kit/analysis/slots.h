// What each slot of the library's result is made of.
#pragma once

#include <array>

#include "velquor.h"

namespace velquor {

using Slots = std::array<double, VQ_NSLOTS>;

// Powers of the units in which a quantity is given.
struct Dimension {
    int length = 0, force = 0, mass = 0;
};

struct Slot {
    const char* name;  // as in velquor.h, without VQ_
    Dimension dimension;
};
const std::array<Slot, VQ_NSLOTS>& slots();

}  // namespace velquor
