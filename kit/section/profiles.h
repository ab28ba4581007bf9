// Rolled profiles by their names.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace velquor {

struct Profile {
    std::string name, family, standard;
    std::string unit;   // of length, in which its table is printed
    std::string shape;  // of shapes.h, with every parameter that the tables know
    std::map<std::string, double> parameters;
};

// Names of all profiles, in the order of their tables.
const std::vector<std::string>& profile_names();

// The profile of this name, whatever its blanks and capitals ("ipe300"), in this unit of length. Throws Error with this
// place where there is none, with the name that was meant.
Profile profile_of(const std::string& name, const std::string& length, const std::string& place);

}  // namespace velquor
