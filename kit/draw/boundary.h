// The section's true shape, from its mesh: boundaries between elements of unlike kind, with their arcs.
#pragma once

#include <vector>

#include "kit/draw/pen.h"
#include "kit/mesh/mesh.h"
#include "kit/mesh/plane.h"

namespace velquor {

// From the section's frame to the sheet: y to the right, z upwards.
struct View {
    double scale = 1, x = 0, y = 0;  // where the section's origin lies

    SheetPoint operator()(const Point& p) const { return {x + scale * p.y, y - scale * p.z}; }
};

// What the elements' kinds, numbers from 0, have between them and around them. The plane has no points but these.
struct Boundary {
    Plane plane;
    int kinds = 0;
};
Boundary boundary_of(const Mesh& mesh, const std::vector<int>& kinds);

// Arc of an edge from a to b about its centre: radians, positive counter-clockwise; 0 of a straight edge.
double sweep_of(const Mesh& mesh, std::int32_t a, std::int32_t b, Point& centre);

// Adds to the path all loops around elements of a kind, with these to their left.
void trace(const Pen& pen, const View& view, const Boundary& boundary, int kind);

// Adds an edge to the path, from where it stands.
void trace_edge(const Pen& pen, const View& view, const Point& to, const Point& centre, double sweep);

// Where the straight line through a point, along a direction of length 1, passes from outside into the kinds and out of
// them: distances from the point, increasing.
std::vector<double> crossings(const Boundary& boundary, const Point& from, const Point& along);

}  // namespace velquor
