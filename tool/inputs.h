// Sections from what the command line names.
#pragma once

#include <functional>

#include "kit/section/section.h"
#include "tool/commands.h"

namespace velquor {

// One of the inputs, counted in the order of its names, then the shape. Throws Error.
Section section_of(const Inputs& inputs, std::size_t number);
std::size_t count_of(const Inputs& inputs);
std::string name_of(const Inputs& inputs, std::size_t number);

// Does something with the first section, checked, whose notes are told. Returns DONE, or the status of what was
// refused, which is told too.
int with_section(const Inputs& inputs, const std::function<void(const Section&)>& work);

// What an option gives, as "--size". Throws Error where it is no number.
double number_of(const std::string& text, const std::string& option);

// Whether a name is that of a drawing.
bool is_drawing_file(const std::string& name);

}  // namespace velquor
