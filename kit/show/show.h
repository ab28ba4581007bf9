// Results as text: for people, as JSON and CSV for programs, and meshes for Gmsh. No locale has a part in any of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kit/analysis/loads.h"
#include "kit/analysis/values.h"

namespace velquor {

// What became of one input: its values, or why there are none.
struct Failure {
    std::string place, fault, remedy;
    int status = 1;  // as the command's exit status: 1 refused, 2 not solved
};
struct Outcome {
    std::string input;  // as the user named it
    Values values;
    std::vector<LoadResult> loads;  // in the units of the values
    std::optional<Failure> failure;
};

// A table for reading, in UTF-8, that fits into this many columns. `all`: of all values; else of the main ones, without
// those that repeat another. From 100 columns on each line ends with the slots of the library.
std::string show_text(const Values& values, int width, bool all);

// The largest stresses under a load set, a line for each kind and material.
std::string show_load(const LoadResult& result);

// One section a row, with the values of these keys in the units of the first section; empty: those that fit into the
// width. Throws Error where there is no such key.
std::string show_table(const std::vector<Outcome>& outcomes, const std::vector<std::string>& keys, int width);

// The form of show_schema(): numbers with every digit that they need to be read back as they are, null for none.
std::string show_json(const std::vector<Outcome>& outcomes);
std::string show_schema();  // JSON Schema draft 7, with a line for each key

// RFC 4180: a line of names, then one section a line, each value followed by its bound; empty where there is none.
std::string show_csv(const std::vector<Outcome>& outcomes);
std::string csv_cell(const std::string& text);  // in quotes where it must be

// Gmsh's MSH 4.1 in ASCII: a surface for each part, and one for all bars of a material; physical groups for the parts,
// the bars, and the materials.
std::string show_mesh(const Section& section, const Mesh& mesh);

// "N = 100 kN, My = 20 kN·m": the loads that are not 0.
std::string load_text(const Load& load, const std::string& length, const std::string& force);

// Units and powers as they are printed: "kN cm2" as "kN·cm²".
std::string raised(const std::string& unit);

// Numbers as people read them: as many digits as the bound allows, 7 at most, and the bound rounded up to one.
std::string figures(const Value& value);
std::string bound_text(const Value& value);

}  // namespace velquor
