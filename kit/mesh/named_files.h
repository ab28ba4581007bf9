// Files that are named: by a section, or by people.
#pragma once

#include <filesystem>
#include <string>

#include "kit/section/section.h"

namespace velquor {

// Reads the mesh or the drawing that a section names, if any, whose name starts from this folder. What is said of it
// begins with its name. Throws Error.
void read_named_files(Section& section, const std::filesystem::path& folder);

// The text of a file, of the standard input for "-"; of one that is too large for a section a part that is refused as
// such. Throws Error where it cannot be read.
std::string text_of_file(const std::string& name);

}  // namespace velquor
