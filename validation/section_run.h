// A section's calculation, and the values that its file asks for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "section_file.h"
#include "velquor.h"

// The host's tables of one call, column after column, as in velquor.h.
struct SectionRun {
    int refine = 1;
    int32_t nnodes = 0, nelems = 0, mesh_nodes = 0;  // the bars' nodes follow those of the mesh
    std::vector<double> nodes, props, result, nodeout, elemout;
    std::vector<int32_t> elements, materials;
    std::vector<VYZTUZE_INFO> bars;
};

// Meshes the section and calls the library. Throws std::runtime_error where the mesh cannot be made, a bar lies in no
// element, or the library gives no results.
SectionRun run_section(const SectionFile& file, int refine);

// The library's value for an expectation, in the expectation's unit.
double value_of(const Expectation& e, const SectionRun& run);

// Ours less theirs, in the unit of the tolerance, and whether it is within it. A study's values are always within.
double difference_of(const Expectation& e, double ours);
bool within(const Expectation& e, double ours);
