// Stresses of unit loads and of load sets, recovered at the nodes from the fields of all levels.
//
// Frame: the section's Y to the right and Z upwards, x towards the viewer. sigma is the axial stress, positive in
// tension; tau_y and tau_z are the shear stresses on the face towards the viewer, positive along +Y and +Z.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "kit/section/section.h"

namespace velquor {

// Unit loads of Load, in the order of their stresses in Field::unit: first of four the shear stresses tau_y, tau_z,
// then of four the axial stress.
enum UnitLoad { UNIT_T, UNIT_VY, UNIT_VZ, UNIT_TW, UNIT_N, UNIT_MY, UNIT_MZ, UNIT_B };

// Stresses at the nodes, a spot for each node and material: a node between two materials has two. The finest level's
// mesh holds the coarse one: its nodes and spots come first, and what a coarse element became lies in one run.
struct Field {
    struct Spot {
        std::int32_t node;      // from 0
        std::int32_t material;  // index in the section's list
    };
    std::vector<Point> nodes;                           // of the finest level, in the section's frame
    std::vector<std::array<std::int32_t, 4>> elements;  // spots of the corners, from 0; a triangle repeats its third
    std::vector<Spot> spots;
    std::vector<std::array<double, 12>> unit;         // (spots) as UnitLoad has it, of loads in the section's units
    std::vector<std::array<std::int32_t, 4>> coarse;  // the same elements as in Analysis::mesh, by spots
    std::size_t coarse_nodes = 0, coarse_spots = 0;
    std::vector<char> sharp;       // (spots) 1 where shear stresses have no limit
    std::vector<char> near_sharp;  // (spots) 1 there, and within half of the wall's thickness from it
};

struct Stress {
    double sigma = 0, tau_y = 0, tau_z = 0;
};
double shear(const Stress& s);      // amount
double von_mises(const Stress& s);  // sqrt(sigma^2 + 3 tau^2)

// At each spot of the field. Loads of 0 have no part, so that a section without warping needs no bimoment's stresses.
std::vector<Stress> stresses_of(const Field& field, const Load& load);

}  // namespace velquor
