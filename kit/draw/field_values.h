// What coloured fields draw.
#pragma once

#include "kit/analysis/loads.h"
#include "kit/draw/cells.h"
#include "kit/draw/picture.h"

namespace velquor {

// What a panel draws: a value at each spot or node, its range and where it is largest.
struct FieldValues {
    std::vector<Cell> cells, fine;  // to be coloured; for lines of equal value, where others are smoother
    Scale scale;
    std::string unit;
    double least = 0, most = 0;
    Point least_at, most_at;
    bool signs = false;
    bool unlimited = false;      // at sharp corners
    std::vector<Point> corners;  // these
    std::vector<Stress> stresses;
    std::vector<double> bars;  // axial stress of those that are points
    std::string warning;
};

// Of a panel of warping or stresses. `smallest`: edges of cells, in the section's unit, that are not cut. Throws Error
// where stresses are wanted that the analysis has not.
FieldValues values_of(const Picture& picture, const Panel& panel, double smallest);

}  // namespace velquor
