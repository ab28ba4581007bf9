// Parts of a section from a drawing, a DXF file: each closed outline is a part, of the material of its layer.
#pragma once

#include <string_view>

#include "kit/section/section.h"

namespace velquor {

// Makes the parts that section.drawing speaks of from the text of a DXF file: before those that the section has, in its
// unit of length. What lies inside of an outline comes after it, whatever its layer, else layers come in their order in
// the drawing. Adds notes, takes the file's name away, and checks the section. Throws Error, and nothing else, with the
// layer and the place in the drawing's own coordinates, or with the line of the file.
void read_drawing(Section& section, std::string_view dxf);

// Whether the text may be a DXF file: it begins with a group of code 0, behind comments.
bool is_drawing(std::string_view text);

}  // namespace velquor
