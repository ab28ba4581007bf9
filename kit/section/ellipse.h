// Ellipses by arcs of circles.
#pragma once

#include <vector>

#include "kit/section/geometry.h"

namespace velquor {

// Of the larger half axis: how far arcs may leave the ellipse that they stand for.
constexpr double OFF_AN_ELLIPSE = 1e-5;

// Points centre + cos(t) right + sin(t) up, from t = begin to end, in degrees, end > begin and at most 360 beyond.
// `right` and `up` need not be square to one another.
struct Arc {
    Point centre, right, up;
    double begin = 0, end = 360;
};
Point at(const Arc& arc, double t);

// The edges along it from its begin: one or two of a circle, else pairs that are tangent to the ellipse at their ends
// and to one another between them. `off`: how far they leave it; 0 of a circle. False where it is too flat for them.
struct Arcs {
    std::vector<Edge> edges;
    double off = 0;
};
bool arcs_of(const Arc& arc, Arcs& found);

}  // namespace velquor
