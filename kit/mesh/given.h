// A section that comes as a mesh: a step of mesh_of.
#pragma once

#include <vector>

#include "kit/mesh/mesh.h"

namespace velquor {

// The mesh of the section as it is given, with straight sides. Materials are those of its owners. Throws Error where a
// bar lies in no element.
Mesh mesh_as_given(const Section& section, const std::vector<int>& materials);

}  // namespace velquor
