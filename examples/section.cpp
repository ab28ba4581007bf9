// A rolled profile by its name: its mesh, its values, and a bound for the error of each. The kit does the work.
#include <iostream>

#include "kit/analysis/values.h"
#include "kit/section/templates.h"
#include "kit/show/show.h"

int main() {
    const velquor::Section section = velquor::section_of_profile("IPE 300");
    const velquor::Values values = in_units(values_of(section, analyse(section)), "cm", "kN");
    for (const char* key : {"A", "Iy", "It", "Iw"}) {
        const velquor::Value& value = values[key].value;
        std::cout << key << " = " << figures(value) << " with a bound of " << bound_text(value) << '\n';
    }
}
