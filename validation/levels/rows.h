// The rows of the table, each measured by one routine.
#pragma once

#include <string>
#include <vector>

#include "compare.h"

struct Row {
    std::string what, goal, must, measured;
};

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

// How the bound of a value stands to its error. A reference whose own bound is above a fifth of it leaves a value
// unsettled, unless it holds or fails whatever lies within that bound.
enum class Verdict { holds, fails, exact, unbounded, unsettled };
Verdict verdict_of(const Value& v);

// The error over the bound, infinite where the bound is 0 or the value no number.
double ratio_of(const Value& v);

std::string formatted(const char* format, ...);
