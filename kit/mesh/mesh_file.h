// Sections that come as meshes: files of elements, as Gmsh reads them.
#pragma once

#include <string>

#include "kit/section/section.h"

namespace velquor {

// Largest file that is read, and most nodes of its elements.
constexpr std::uint64_t LARGEST_MESH_FILE = std::uint64_t{1} << 28;
constexpr std::size_t MOST_MESH_NODES = 100000;

// Whether a name ends like that of a mesh, in either case: .msh .bdf .nas .unv .vtk .mesh .stl.
bool is_mesh_file(const std::string& name);

// Reads the file and fills the section's parts and mesh.nodes, elements, owners, numbers and notes by what mesh.groups,
// mesh.join and mesh.plane wish. Triangles and quadrilaterals of first and second order are taken, the latter cut in
// four with straight sides. A part for each group, in the order of their numbers: physical groups where the file has
// any on surfaces, else properties, as Gmsh's numbers of surfaces. A part takes its material from mesh.groups, else the
// only one, else the one that has its name.
//
// Gmsh reads in a copy of this process (apart.h), which may crash, for so many seconds and with 4 GB at most. A link of
// a fixed name in a folder of its own is what Gmsh sees, for it runs files beside a mesh, and takes texts for scripts.
//
// Throws Error: the place is that of an element, a node or a group in the file, behind `place`. The section is checked,
// but for bars outside of all elements, of which mesh_of tells.
void read_mesh(Section& section, const std::string& path, const std::string& place = "", double seconds = 60);

}  // namespace velquor
