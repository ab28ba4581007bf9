// The values of a section under the names that engineers use, each with a bound for its error and a unit.
#pragma once

#include <string>
#include <vector>

#include "kit/analysis/analysis.h"

namespace velquor {

// The converged value lies within value -+ bound: 0 where it is exact but for rounding, infinite where it has no limit,
// not a number where nothing is known of it. Sums, products and so on carry the bounds along, without leaving out
// terms.
struct Value {
    double value = 0, bound = 0;
};
Value operator+(const Value& a, const Value& b);
Value operator-(const Value& a, const Value& b);
Value operator*(const Value& a, const Value& b);
Value operator/(const Value& a, const Value& b);
Value square_root(const Value& a);

// What a section must have for a value, in bits.
enum Needs {
    NOTHING = 0,
    PLASTIC = 1,    // a plastic calculation
    STRENGTHS = 2,  // of all materials
    ONE_MATERIAL = 4,
    DENSITIES = 8,   // of all materials
    WHOLE = 16,      // no groups that bend by themselves
    PRINCIPAL = 32,  // nothing: but the value is one along the principal axes
    AXES = 32 + 64   // one that depends on these, so they must not be any
};

// One line of the table of all values, which text, JSON, CSV and their schema are made from.
struct Measured;  // a section, and what was calculated and measured of it
struct Quantity {
    const char* key;     // in JSON and CSV
    const char* symbol;  // for people
    const char* group;   // heading
    const char* meaning;
    const char* slots;  // of the library, from which it comes; empty: from the mesh
    Dimension dimension;
    int needs;
    bool main;         // shown without being asked for
    const char* twin;  // key of a value before it that it repeats in many sections, or empty
    Value (*of)(const Measured& section);
};
const std::vector<Quantity>& quantities();

struct Entry {
    const Quantity* quantity = nullptr;
    Value value;
    std::string reason;  // why there is no value, or no bound
    bool given = true;
};

// What a material takes up of the section. Bars that are points are taken off the material around them.
struct Share {
    std::string material;
    double area = 0;
    double mass = 0;  // kg/m; 0 where its density is not known
};

struct Values {
    std::string name, length, force;
    std::string reference;       // material by whose moduli values are transformed
    std::vector<Entry> entries;  // of all quantities, in their order
    std::vector<Share> materials;
    std::size_t nodes = 0, elements = 0;  // of the coarse mesh
    int levels = 0;
    double wished = 0, reached = 0;  // bounds relative to natural sizes; not a number: none is known
    std::string worst;               // the slot of the largest bound
    bool met = false;
    std::string limit;               // what keeps the bounds above the wished one, and what helps; empty: they are met
    std::vector<std::string> notes;  // as Section::notes

    const Entry& operator[](const std::string& key) const;  // throws std::out_of_range
};

// In the section's own units; angles in degrees, masses in kg/m whatever the unit of length. Throws Error where the
// analysis is not one of this section.
Values values_of(const Section& section, const Analysis& analysis);

// The same in other units. Throws Error where there is no such unit.
Values in_units(Values values, const std::string& length, const std::string& force);

// "cm4", "kN cm2", "deg", "kg/m"; empty for a number.
std::string unit_of(const Quantity& quantity, const std::string& length, const std::string& force);

}  // namespace velquor
