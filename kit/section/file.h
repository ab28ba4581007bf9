// Sections as JSON text. The form is that of schema.json; lengths and forces are in the units that the text names.
#pragma once

#include <string>
#include <string_view>

#include "kit/section/section.h"

namespace velquor {

// Largest text that is read, and most numbers, texts, lists and objects in it.
constexpr std::size_t LARGEST_TEXT = std::size_t{1} << 24;
constexpr std::size_t MOST_VALUES = 200000;
constexpr std::size_t MOST_BARS = 10000;  // those of rows and rings too

// The schema of the text, JSON Schema draft 7.
std::string_view section_schema();

// Reads and checks a section. Throws Error, and nothing else, with the place in the text as "parts[1].outline[3]", or
// its line and column where it is no JSON. A mesh or a drawing is named, not read: kit/mesh/mesh_file.h and drawing.h
// do that.
Section read_section(std::string_view text);

// The same without parts and without the name of a mesh or a drawing: materials, groups, layers, bars, loads and wishes
// for one that is named
// elsewhere. It is checked once that is read.
Section read_materials(std::string_view text);

// The text of a section, with every digit that its numbers need: read again it gives the same section. Rows and rings
// of bars are written bar for bar, a mesh by the name of its file; without one it throws Error.
std::string write_section(const Section& section);

// What the schema cannot say: that names are known and unlike, what excludes what, that outlines enclose something and
// do not cross, and that bars lie in parts and apart; and of a section that a program filled what the schema says of
// numbers. Throws Error with the place as in the text.
void check_section(const Section& section);

// The faces of a part, in its place and in the section's unit of length. `place` is that of the part in the text.
std::vector<Face> faces_of(const Section& section, const Part& part, const std::string& place);

}  // namespace velquor
