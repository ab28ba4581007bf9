// Stresses and warping at the nodes, for other programs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/analysis/analysis.h"

namespace velquor {

// A load set, or a unit load, of which only what it makes is told: axial stresses or shear stresses.
struct Case {
    Load load;
    bool unit = false;
};

// The unit load of this name: N, My, Mz, B, T, Vy, Vz or Tw. Throws Error with this place where there is no such.
Case unit_case(const std::string& name, const std::string& place);

// The load sets of the section; of one without them all unit loads that it can carry.
std::vector<Case> cases_of(const Section& section, const Analysis& analysis);

// What is known at the points of a mesh. A point is a node with one of its materials: stresses may differ between those
// of one node. Behind the points come the bars that are points themselves.
struct Fields {
    Mesh mesh;                                       // the coarse one or the finest, without its arcs
    std::vector<Field::Spot> points;                 // nodes count from 0
    std::vector<std::array<std::int32_t, 4>> cells;  // elements of the mesh by points, from 0
    std::vector<std::size_t> bars;                   // those that are points, by their place in the section's list

    // "warping", "sharp"; "snow axial", "snow shear", a vector, "snow shear amount", "snow von Mises".
    struct Column {
        std::string name;
        std::size_t components = 1;  // or 2: along y and z
        std::vector<double> values;  // (points and bars, components) row by row
    };
    std::vector<Column> columns;
};

// Of an analysis with stresses. Warping is that of a unit twist about the shear centre and of unit shear strains along
// u and v, in the section's units; it is known on the coarse mesh alone, and not of pieces that do not touch.
Fields fields_of(const Section& section, const Analysis& analysis, const std::vector<Case>& cases, bool finest);

// VTK's XML for unstructured grids, in binary: y and z of the section are x and y there. Cells have the numbers of
// their material and part, whose names stand in the field data.
std::string show_vtu(const Section& section, const Fields& fields);

// The mesh as show_mesh gives it, and a view for each column; stresses step between materials. Without the bars that
// are points.
std::string show_mesh(const Section& section, const Fields& fields);

// RFC 4180: a line of names, then one for each point: number of the node from 1, empty for bars, place, material,
// columns.
std::string show_csv(const Section& section, const Fields& fields);

// What a file's parts are: each part, and all bars of a material.
struct Surface {
    std::string name, material;
    std::vector<std::size_t> elements;  // from 0
};
std::vector<Surface> surfaces_of(const Section& section, const Mesh& mesh);

}  // namespace velquor
