// Parametric shapes: what each is, its parameters, and the faces that they make. Y to the right, Z upwards.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "kit/section/section.h"

namespace velquor {

enum class Kind {
    length,           // above 0
    optional_length,  // 0 or above
    offset,           // a length of either sign
    ratio,            // 0 or above, without a unit
    sides,            // a whole number from 3 to 1000
    bars              // a whole number from 0 to 1000
};
bool has_unit(Kind kind);

struct Parameter {
    const char* name;
    const char* meaning;
    Kind kind = Kind::length;
    bool required = true;
    double standard = 0;  // where it is not required and not given
};

// Parameters as a shape reads them: every one of its table, in its range. The checks throw Error with the parameter's
// value, the formula of its limit and what that comes to.
struct Given {
    const std::map<std::string, double>& values;
    const std::string& place;

    double operator()(const char* name) const { return values.at(name); }
    void below(const char* name, const char* formula, double limit) const;
    void at_most(const char* name, const char* formula, double limit) const;
    void above(const char* name, const char* formula, double limit) const;
};

// All parameters of a table, those too that are not given. Throws Error with this place, that of the parameters, where
// one is unknown, missing or not of its kind; `what` is "shape \"i\"".
std::map<std::string, double> all_values(const std::string& what, const std::vector<Parameter>& parameters,
                                         const std::map<std::string, double>& given, const std::string& place);

struct Shape {
    const char* name;
    const char* meaning;  // one line, which ends with the shape's origin
    std::vector<Parameter> parameters;
    std::vector<Face> (*faces)(const Given& given);
    const char* sketch = nullptr;  // lines of at most 60 letters, at most 14 of them; by shapes()
};

// All shapes, in the order in which they are listed.
const std::vector<Shape>& shapes();

// Throws Error with this place where there is no shape of this name.
const Shape& shape_of(const std::string& name, const std::string& place);

// The faces of a shape about its origin. Throws Error where a parameter is unknown, missing or impossible, with this
// place, that of the parameters.
std::vector<Face> faces_of(const Shape& shape, const std::map<std::string, double>& parameters,
                           const std::string& place);

// The sketch of a shape or template; null where there is none.
const char* sketch_of(const std::string& name);

// The three parts of the table.
std::vector<Shape> massive_shapes();
std::vector<Shape> rolled_shapes();
std::vector<Shape> thin_shapes();

}  // namespace velquor
