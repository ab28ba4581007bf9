// Errors and bounds of many values, counted and put into words.
#pragma once

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "value.h"

// How the bound of a value stands to its error. A reference whose own bound is above a fifth of it leaves a value
// unsettled, unless it holds or fails whatever lies within that bound.
enum class Verdict { holds, fails, exact, unbounded, unsettled };
Verdict verdict_of(const Value& v);

// The error over the bound, infinite where the bound is 0 or the value no number.
double ratio_of(const Value& v);

// Values by how their bounds stand to their errors.
struct Tally {
    int sections = 0, failed = 0;
    int of[5] = {};  // by Verdict
    double largest_ratio = 0;
    std::string worst;
    std::vector<double> errors_over_bound;
};
// The values of one section, none where it failed; `seen` gets those that count.
void add(Tally& tally, const std::vector<Value>& values, std::vector<Value>& seen);
std::string share_of(const Tally& tally, const char* sections);  // the plural of what was counted, "meshes"
std::string median_of(Tally tally);                              // of bound over error

// Relative errors of values.
struct Errors {
    size_t sections = 0, failed = 0;
    std::vector<double> all;
    double reference_bound = 0;  // the largest, relative
    std::string worst;
    double must = HUGE_VAL;
    std::map<std::string, int> above;  // values of each section above what must be reached
};
void add(Errors& errors, const Value& v, std::vector<Value>& seen);
std::string text_of(const Errors& errors, const char* sections);

std::string formatted(const char* format, ...);

// A row of a study's table, and its line in Markdown.
struct Row {
    std::string what, goal, must, measured;
};
void print(const Row& row);
