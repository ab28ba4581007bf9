// Triangles in polygons, by Gmsh.
#pragma once

#include <array>
#include <vector>

#include "kit/mesh/plane.h"

namespace velquor {

// Polygons by node numbers from 0: the first counter-clockwise, holes in it clockwise.
struct Hollow {
    std::vector<std::vector<int>> loops;
    int owner;
};

struct Filling {
    std::vector<std::array<int, 3>> triangles;  // counter-clockwise
    std::vector<int> owners;
};

// Adds nodes inside of the polygons and none on them; sizes go by their edges. Throws Failed where the mesher gives up,
// or gives triangles that are too flat.
Filling fill(std::vector<Point>& nodes, const std::vector<Hollow>& polygons);

}  // namespace velquor
