// The rows of the table, each measured by one routine.
#pragma once

#include <string>
#include <vector>

#include "cases.h"
#include "levels/tally.h"

// Of one section: its values as they come by default beside a much finer calculation.
struct Beside {
    const Case* of = nullptr;
    std::vector<Value> values;  // none where a calculation failed
    bool sharp = false;         // corners where stresses have no limit
    Slots reference{}, reference_bound{};
};
Beside beside_reference(const Case& c);

// Errors of the values on smooth outlines and with sharp corners.
std::vector<Row> error_rows(const std::vector<Beside>& all, std::vector<Value>& seen);
// Bounds beside errors: of sections from `outlines`, and of random ones.
std::vector<Row> bound_rows(const std::vector<Beside>& outlines, int sections, std::vector<Value>& seen);
// Smooth outlines once more with a wish for 1e-5.
std::vector<Row> wish_rows(const std::vector<Beside>& all);

// Largest stresses of the unit loads beside a finer calculation, and the resultants of all stresses.
std::vector<Row> stress_rows(const std::vector<Case>& cases);

// Time and size of the mesh over the whole catalogue.
std::vector<Row> catalogue_rows();
// The time of whole processes: this command with `calc "IPE 300"`.
Row process_row(const std::string& command);
