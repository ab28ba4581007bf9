// A section and its mesh as the tables of a call, and a call's slots back in the section's units and frame.
#pragma once

#include <map>
#include <vector>

#include "kit/analysis/slots.h"
#include "kit/mesh/mesh.h"
#include "velquor_levels.h"

namespace velquor {

// Lengths and moduli are scaled by powers of two, so that limits of the library that have a unit are met by no section
// of any unit, and every digit stays. The middle of the section is the origin of the tables, unless groups bend by
// themselves: then the origin of the section has a meaning.
struct Tables {
    std::int32_t groups = 1, nodes = 0, elements = 0;
    std::vector<double> NODES;           // (nodes, 2), those of bars that are points last
    std::vector<std::int32_t> ELEMENTS;  // (elements, 4)
    std::vector<double> PROPS;           // (elements, VQ_NCOLUMNS)
    std::vector<VYZTUZE_INFO> bars;
    // By whose moduli values are transformed: that of the first part or, where bars are points, that of the elements
    // in which they lie, which the library takes to be one.
    const Material* reference = nullptr;
    double mode = VQ_ELASTIC;
    bool strengths = false;  // those of the materials; else 1 in one material, nothing in several
    double displaced = 0;    // density around bars that are points, less that of the first element, which counts
    double scale = 1;        // of lengths
    double modulus = 1;      // of moduli and stresses
    Point origin;            // in the section's frame
};

// Throws Error where the mesh is not one of this section: elements name nodes, parts or bars that there are not.
void check_fits(const Section& section, const Mesh& mesh);

// The material of an element, numbered from 1: index in the section's list.
std::size_t material_of(const Section& section, const Mesh& mesh, std::int32_t element);

// Of each owner the part to whose group it belongs: a disc to that of one that it touches.
std::map<std::int32_t, std::size_t> parts_of_owners(const Section& section, const Mesh& mesh);

// Throws Error where bars that are points lie in materials of unlike moduli, or have next to none.
Tables tables_of(const Section& section, const Mesh& mesh);

// Slots of a call, in place.
void bring_back(const Tables& tables, Slots& value, Slots& bound);

// The fields of a call, in place: warping of a unit twist and of unit shear strains, stresses of unit loads; and what
// bars had of the tables' units.
void bring_back(const Tables& tables, std::vector<double>& nodeout, std::vector<double>& elemout,
                std::vector<VYZTUZE_INFO>& bars);

// Natural sizes of the slots, by which a value of 0 is measured: lengths in radii of gyration, moments and couplings in
// the sums of their kind.
Slots natural_sizes(const Slots& value);

}  // namespace velquor
