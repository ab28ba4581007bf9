// Load sets as people write them: "N=100 My=20kNm".
#pragma once

#include <string>
#include <string_view>

#include "kit/section/section.h"

namespace velquor {

struct LoadKey {
    const char* name;
    double Load::*value;
    int length;         // power of the unit of length in its unit: force times length^this
    const char* brief;  // in a few words
    const char* meaning;
};
const std::vector<LoadKey>& load_keys();

// Whether it has a shear force or a torque.
bool has_shear(const Load& load);

// Throws Error with this place where a value is no number, or too large.
void check_values(const Load& load, const std::string& place);

// A number in the section's own units, or followed by its unit: "20", "20 kNm", "1.5 kip*in", "3 kN cm2".
// Throws Error with this place.
double load_value(std::string_view text, const LoadKey& key, const Section& section, const std::string& place);

// Values by their names, apart by blanks or commas; the text is the load's name too, but for one in front of a colon:
// "wind: My=20kNm". Throws Error with this place.
Load load_of(std::string_view text, const Section& section, const std::string& place);

// "kN·cm²" as "kN cm2"; "N" where the power is 0.
std::string load_unit(const LoadKey& key, const std::string& length, const std::string& force);

}  // namespace velquor
