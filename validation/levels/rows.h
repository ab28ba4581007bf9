// The rows of the table, each measured by one routine.
#pragma once

#include <string>
#include <vector>

#include "compare.h"
#include "tally.h"

// Largest relative errors of three levels over smooth outlines, and over sharp corners; `seen` gets the values.
std::vector<Row> smooth_rows(std::vector<Value>& seen);
Row sharp_row(std::vector<Value>& seen);
// GJ of oblongs in one layer, four levels; torsional corner stress of a strip, three levels.
Row oblong_row(std::vector<Value>& seen);
Row stress_row();

// Bounds of three levels beside true errors: sections of the validation in this folder and 200 random meshes; then as
// many smaller ones.
std::vector<Row> bound_rows(const std::string& folder, std::vector<Value>& seen);
Row random_row(int meshes, std::vector<Value>& seen);

// Time of three levels over that of the finest call alone.
std::vector<Row> time_rows();
