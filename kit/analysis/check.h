// What is wrong with a section, or seldom meant, told of its parts, outlines, materials and bars.
#pragma once

#include <string>
#include <vector>

#include "kit/mesh/mesh.h"

namespace velquor {

struct Finding {
    bool is_error = false;  // it cannot be calculated; else it can, but look
    std::string place, message, remedy;
};

// The quoted name of a part with a blank before it, for messages; empty where it has none, or its place tells it.
std::string name_in(const Section& section, std::size_t owner);

// Looks at a section as it was read: checks and meshes it, and looks at the tables of the call. Ends at the first
// error, which is then the last of the findings.
std::vector<Finding> check(const Section& section);

// The same of a section on a mesh that stands. Throws Error where records are wrong, or the mesh is not one of this
// section.
std::vector<Finding> check(const Section& section, const Mesh& mesh);

}  // namespace velquor
