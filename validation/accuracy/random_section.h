// Sections drawn at random, the same ones on every machine up to the rounding of sines and cosines.
#pragma once

#include <cstdint>
#include <vector>

#include "kit/section/section.h"

// A polygon with 5 to 12 corners that is star-shaped about its centre, up to five times as long as high, some of its
// corners rounded; up to three holes, round or with corners. In every third a second material: a disc or a block
// inside, or a strip across the whole section, whose ends stick out.
velquor::Section random_section(std::uint64_t seed);

// The exact area of each part, less what later parts replace. Arcs that a strip cuts are right within 1e-6.
std::vector<double> areas_of_parts(const velquor::Section& section);
