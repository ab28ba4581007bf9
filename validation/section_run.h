// A section's calculation, and the values that its file asks for.
#pragma once

#include <cstdint>
#include <vector>

#include "section_file.h"
#include "velquor.h"

// The host's tables of one call, column after column, as in velquor.h.
struct SectionRun {
    int refine = 1;
    double size = 0;                                 // of the elements, as wanted
    int32_t nnodes = 0, nelems = 0, mesh_nodes = 0;  // the bars' nodes follow those of the mesh
    std::vector<double> nodes, props, result, nodeout, elemout;
    std::vector<int32_t> elements, materials;
    std::vector<VYZTUZE_INFO> bars;
};

// Meshes the section and calls the library. Throws std::runtime_error where the mesh cannot be made, a bar lies in no
// element, or the library gives no results.
SectionRun run_section(const SectionFile& file, int refine);

// The library's value for an expectation, in the expectation's unit. Throws std::runtime_error where no node is nearer
// to the place of a stress or warping than half an element.
double value_of(const Expectation& e, const SectionRun& run);

// Ours less theirs, in the unit of the tolerance.
double difference_of(const Expectation& e, double ours);

struct Comparison {
    double ours, difference;
    double finer;  // difference with elements half as large, where the expectation has an order; otherwise not a number
    bool ok;       // within the tolerance, and `finer` within the tolerance over 2^order; a study's values always are
};

// The run of a section on its own mesh, and its values, in the order of the file.
struct Outcome {
    SectionRun run;
    std::vector<Comparison> values;
};
Outcome compare(const SectionFile& file);
