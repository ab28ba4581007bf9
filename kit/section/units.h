// Units of length and of force that a section may be given in.
#pragma once

#include <string>
#include <vector>

namespace velquor {

struct Unit {
    const char* name;
    double size;  // in metres, in newtons
};

const std::vector<Unit>& lengths();
const std::vector<Unit>& forces();

// The size of the unit with this name. Throws Error with this place where there is none.
double size_of(const std::vector<Unit>& units, const std::string& name, const std::string& place);

}  // namespace velquor
