// Where the outlines of a face cross, touch or run along one another, and whether a point lies in a face.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kit/section/section.h"

namespace velquor {

// Of the extent of a face: places that are nearer to one another are the same.
constexpr double SAME_PLACE = 1e-7;

// An edge of a face with what questions about places need. Outlines count from 0: the outer one, then the holes.
struct Piece {
    std::size_t outline = 0, edge = 0;
    Point from, to;
    bool arc = false;
    bool left = false;  // of an arc: it bulges to the left of the line between its ends
    Point centre;
    double radius = 0;
    Point low, high;  // the corners of its box
};

// The edges of a face, and the distance below which two places in it are the same.
struct Region {
    std::vector<Piece> pieces;
    double tolerance = 0;
    Point low, high;
};
Region region_of(const Face& face);

// Two edges that meet elsewhere than where one ends and the next begins; the first of them stands before the other in
// the order of the region.
struct Crossing {
    enum Way { crosses, touches, runs_along, turns_back_on };
    Piece edge, other;
    Way way = crosses;
    Point at;
};

// The first crossing along y, if there is one; `but_touching`: of those alone that change sides. Edges are compared
// whose boxes meet, found by a sort along y: some milliseconds for 10,000 edges of a usual outline; all pairs, about a
// second, where all the boxes meet one another.
std::optional<Crossing> crossing_of(const Region& region, bool but_touching = false);

// Whether a point lies in the region or on its boundary, exact for arcs too.
bool inside(const Region& region, const Point& p);

// Throws Error where outlines of the face cross or touch themselves or one another, or where a hole lies outside of the
// outline or in another hole. `place` is that of the part: "parts[1]".
void check_crossings(const Face& face, const std::string& place);

// The least distance of a point from the boundary.
double distance_to_boundary(const Region& region, const Point& p);

}  // namespace velquor
