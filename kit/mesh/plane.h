// The section's plane: points, the curves between them, and who lies to the left and right of each.
#pragma once

#include <string>
#include <vector>

#include "kit/section/section.h"

namespace velquor {

constexpr int OUTSIDE = -1;

// A straight line, or an arc of less than a half circle. No two curves cross, and they share their ends alone.
struct Curve {
    int from = 0, to = 0;                 // points, from 0
    double sweep = 0;                     // of an arc: radians, positive counter-clockwise; 0: straight
    Point centre;                         // of an arc
    int left = OUTSIDE, right = OUTSIDE;  // owners: index of a part, then those of the bars
};

struct Plane {
    std::vector<Point> points;
    std::vector<Curve> curves;
    int owners = 0;
};

// Why there is no mesh: of whom, and what is wrong where it is known. A finer one may do where it is not.
struct Failed {
    int owner;
    std::string why;
};
Error error_of(const Section& section, const Failed& failed);

// A curve in one of its directions: k + 1 along it, -(k + 1) against it. What lies to the left belongs to this side.
using Side = int;
inline int curve_of(Side s) { return (s > 0 ? s : -s) - 1; }
inline int begin_of(const Plane& p, Side s) { return s > 0 ? p.curves[curve_of(s)].from : p.curves[curve_of(s)].to; }
inline int end_of(const Plane& p, Side s) { return begin_of(p, -s); }
inline int owner_of(const Plane& p, Side s) { return s > 0 ? p.curves[curve_of(s)].left : p.curves[curve_of(s)].right; }
inline double sweep_of(const Plane& p, Side s) {
    return s > 0 ? p.curves[curve_of(s)].sweep : -p.curves[curve_of(s)].sweep;
}

// At the share t of the way along the curve; its length; the direction of travel at this share.
Point point_at(const Plane& plane, Side side, double t);
double length_of(const Plane& plane, Side side);
Point direction_at(const Plane& plane, Side side, double t);

// Splits a curve at the share t: it keeps the first piece, a new curve at the end of the list takes the other. Returns
// the new point.
int split(Plane& plane, int curve, double t);

// The plane of a checked section, its parts and the discs of its bars: what lies later in the list replaces what it
// covers, lines between two pieces of one owner vanish. Throws Error where a part or a bar is covered whole, or where a
// disc is not covered by parts.
Plane plane_of(const Section& section);

// Closed loops through the sides that are wanted, each side once, with its owner to the left.
std::vector<std::vector<Side>> loops_of(const Plane& plane, const std::vector<Side>& sides);

}  // namespace velquor
