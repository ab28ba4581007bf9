// Outlines of lines and arcs: made, measured, and put in their place.
#pragma once

#include "kit/section/section.h"

namespace velquor {

struct Circle {
    Point centre;
    double radius = 0;
};

// The arc of an edge that begins at `from`: its circle, and the angle from its beginning to its end, in radians,
// positive counter-clockwise. Where the three points lie on a line the radius is infinite or not a number.
Circle circle_of(const Point& from, const Edge& edge);
double sweep_of(const Point& from, const Edge& edge);

// The arc from one point to another with this radius, the shorter of the two, that turns left or right on its way.
// The radius is at least half of the distance.
Edge arc_of(const Point& from, const Point& to, double radius, bool left);

// Areas, exact for arcs too. Of an outline: positive where it runs counter-clockwise.
double area_of(const Outline& outline);
double area_of(const Face& face);

struct Corner {
    Point at;
    double radius = 0;  // of the arc that is tangent to both sides; 0: sharp
};

// The polygon of these corners. Throws Error without a place where two arcs overlap on a side.
Outline rounded(const std::vector<Corner>& corners);

// A wall of constant thickness along an open line, its bends rounded with this radius on their inner side.
Outline wall_along(const std::vector<Point>& line, double thickness, double bend);

Outline circle_at(const Point& centre, double radius);

// The point of a circle at an angle in degrees, from the right counter-clockwise; quarters are exact.
Point on_circle(const Point& centre, double radius, double angle);

Face placed(const Face& face, const Place& place);

}  // namespace velquor
