// Meshes drawn at random, the same ones on every machine up to the rounding of sines and cosines.
#pragma once

#include <cstdint>

#include "host.h"

// Rectangles, I, L, C, T, Z, boxes, lattices with holes, trapezoids, polygons and rings: of walls with one to three
// layers of elements up to four times as long as thick; jittered, skewed, of quadrilaterals, triangles or both, of one
// or two materials, turned, moved and scaled. Every fourth asks for the plastic values.
Host random_mesh(std::uint64_t seed, int fewest_elements, int most_elements);
