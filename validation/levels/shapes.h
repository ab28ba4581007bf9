// Sections of the study whose outline is known: each from the elements that its wall asks for.
#pragma once

#include <vector>

#include "host.h"
#include "value.h"

struct Shape {
    Host host;
    std::vector<Exact> exact{};  // for E = 2.6 and G = 1
};

// No sharp re-entrant corner: rectangles, rounds, tubes, polygons, rolled profiles with fillets; quadrilaterals, and
// the same split in triangles. Nodes lie on the true arcs, two elements through the wall.
std::vector<Shape> smooth_shapes();

// Walls that meet at sharp corners, two elements through the wall.
std::vector<Shape> sharp_shapes();

// Walls of one layer of elements four times as long as thick.
std::vector<Shape> oblong_shapes();

// A strip of 40 : 1, its thickness 1, in layers of squares.
Shape strip_40(int layers, bool triangles);
double strip_40_stress();  // the largest shear stress of a unit torque

// For measuring time: an IPE 300 of elements of this size, and a plate with four straight sides of n x n elements.
Host rolled_profile(double size, bool triangles);
Host plate(int n, bool triangles);
