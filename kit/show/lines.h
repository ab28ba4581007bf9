// What tables of values say, for the screen and for pages alike.
#pragma once

#include <string>
#include <vector>

#include "kit/analysis/values.h"

namespace velquor {

// A value in words. Units are as people write them: "kN·cm²".
struct Line {
    const Quantity* quantity = nullptr;
    std::string value, bound, unit;  // bound: "0.008", "exact", or "?" where none is known
};

// `all`: of all values that are given; else of the main ones, without those that repeat another in this section.
std::vector<Line> lines_of(const Values& values, bool all);

// Main values that are not there and repeat no other, by the reason.
struct Missing {
    std::string reason;
    std::vector<std::string> symbols;
};
std::vector<Missing> missing_of(const Values& values);

// "bounds up to 0.0004 (GIt), more than the 0.0001 that was wished"; empty where no bound is known.
std::string accuracy_of(const Values& values);

// "1.1.0"
std::string version_text();

}  // namespace velquor
