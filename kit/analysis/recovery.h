// Stresses at the nodes, from the fields of nested levels: a level's shear stresses come from the gradients of its
// warping at the node itself, so that they are of second order up to the outline; what two levels differ by takes the
// error out.
#pragma once

#include <exception>
#include <vector>

#include "kit/analysis/stresses.h"
#include "kit/analysis/tables.h"

namespace velquor {

// Spots and their stresses on one level, in the units of the tables. Those of the level before come first.
struct RecoveredLevel {
    std::vector<Point> nodes;                           // in the tables' frame
    std::vector<std::array<std::int32_t, 4>> elements;  // spots of the corners; a triangle repeats its third
    std::vector<std::int32_t> node, zone;               // of each spot
    std::vector<char> border;                           // of each spot: 1 on the border of its zone
    std::vector<std::array<double, 12>> unit;           // as Field::unit
};

// What looks on at the levels of one call. Zones are what has one material and one coupling group: inside of one,
// stresses are continuous.
struct Recovery {
    std::vector<std::int32_t> zones;      // of each coarse element
    std::vector<std::int32_t> materials;  // of each zone: index in the section's list
    std::vector<RecoveredLevel> levels;
    std::exception_ptr failed;  // what kept a level from being recovered
};

Recovery recovery_of(const Section& section, const Mesh& mesh);

// A vq_watch, on a Recovery: adds the level.
void recover_level(void* recovery, const double* NODES, std::int32_t NNODES, const std::int32_t* ELEMENTS,
                   std::int32_t NELEMS, const double* PROPS, const double* RESULT, const double* NODEOUT,
                   const double* ELEMOUT);

// The field on the finest level, extrapolated, in the section's units and frame. `reach` as of reach_of_corners; a
// section that does not warp has no stresses of warping. Rethrows what kept a level from being recovered.
Field field_of(const Recovery& recovery, const Tables& tables, const std::vector<double>& reach, bool warps);

}  // namespace velquor
