// What Gmsh passes over in files, looked up in their text: steps of raw_mesh.
#pragma once

#include <string>

#include "kit/mesh/raw_mesh.h"

namespace velquor {

// Throws Error where Gmsh took fewer plane elements of Nastran's bulk data than stand there, as it does with those that
// name no property.
void check_bulk_data(const std::string& path, const RawMesh& mesh, const std::string& place);

// The first array of whole numbers that a legacy VTK file of text has for its cells becomes their groups; Gmsh, which
// writes such arrays, does not read them. Binary files have one group.
void take_cell_data(const std::string& path, RawMesh& mesh);

}  // namespace velquor
