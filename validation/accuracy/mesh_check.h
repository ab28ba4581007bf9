// Whether a mesh is one of its section.
#pragma once

#include <string>
#include <vector>

#include "kit/mesh/mesh.h"

// What is wrong with it, empty where nothing is: areas of the parts, which are given, with the segments of the arcs;
// elements that are clockwise or flat; ends of arcs that stand off their circle by more than 1e-9 of the section;
// tables that vq_velquor would refuse.
std::string fault_of(const velquor::Section& section, const velquor::Mesh& mesh, const std::vector<double>& areas);
