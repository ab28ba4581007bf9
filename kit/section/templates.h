// Whole sections from a few parameters: templates of reinforced concrete and of composite girders, and sections of one
// part for each plain shape and rolled profile, with materials of standard values.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "kit/section/section.h"
#include "kit/section/shapes.h"

namespace velquor {

// In mm and N. `given` has every parameter of the table, in its range.
struct Template {
    const char* name;
    const char* meaning;  // one line, which ends with the section's origin
    std::vector<Parameter> parameters;
    Section (*section)(const Given& given);
    const char* sketch = nullptr;  // as of a shape; by templates()
};

// All templates, in the order in which they are listed.
const std::vector<Template>& templates();

// Materials in mm and N, with characteristic strengths:
//   C30/37  concrete of EN 1992-1-1, table 3.1: E 33000, nu 0.2, 2500 kg/m3, fctm 2.9, fck 30
//   B500    reinforcement of EN 1992-1-1, 3.2.7: E 200000, nu 0.3, 7850 kg/m3, fyk 500
//   S235    structural steel of EN 1993-1-1, 3.2.6: E 210000, nu 0.3, 7850 kg/m3, fy 235 (plates up to 40 mm)
Material concrete_c30();
Material reinforcement_b500();
Material steel_s235();

// The section of a template, or one part of S235 with a plain shape, in mm and N. It is checked. Throws Error with
// this place where there is neither, or where the parameters are unknown, missing or impossible.
Section section_of_shape(const std::string& name, const std::map<std::string, double>& parameters,
                         const std::string& place = "");

// One part with a rolled profile: the European ones of S235 in mm and N, the American ones in inches and kips, W shapes
// of A992 (E 29000, fy 50), the others of A36 (fy 36), with nu 0.3 and 490 lb/ft3. It is checked.
Section section_of_profile(const std::string& name, const std::string& place = "");

}  // namespace velquor
