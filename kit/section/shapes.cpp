#include "kit/section/shapes.h"

#include <cmath>

#include "kit/section/crossings.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double LARGEST = 1e9;

[[noreturn]] void refuse(const Given& given, const char* name, const char* relation, const char* formula,
                         double limit) {
    std::string right = formula;
    if (text_of(limit) != right) right += " = " + text_of(limit);
    throw Error(given.place, std::string(name) + " = " + text_of(given(name)) + ": must be " + relation + " " + right);
}

const char* fault_of(Kind kind, double value) {
    if (!std::isfinite(value) || std::abs(value) > LARGEST) return "must be a number between -1e9 and 1e9";
    if (kind == Kind::length && value <= 0) return "must be above 0";
    if ((kind == Kind::optional_length || kind == Kind::ratio) && value < 0) return "must not be below 0";
    if (kind == Kind::sides && (value != std::floor(value) || value < 3 || value > 1000))
        return "must be a whole number from 3 to 1000";
    if (kind == Kind::bars && (value != std::floor(value) || value < 0 || value > 1000))
        return "must be a whole number from 0 to 1000";
    return nullptr;
}

}  // namespace

bool has_unit(Kind kind) { return kind == Kind::length || kind == Kind::optional_length || kind == Kind::offset; }

void Given::below(const char* name, const char* formula, double limit) const {
    if (!((*this)(name) < limit)) refuse(*this, name, "below", formula, limit);
}

void Given::at_most(const char* name, const char* formula, double limit) const {
    if (!((*this)(name) <= limit)) refuse(*this, name, "at most", formula, limit);
}

void Given::above(const char* name, const char* formula, double limit) const {
    if (!((*this)(name) > limit)) refuse(*this, name, "above", formula, limit);
}

const std::vector<Shape>& shapes() {
    static const std::vector<Shape> all = [] {
        std::vector<Shape> table;
        for (const auto& part : {massive_shapes(), rolled_shapes(), thin_shapes()})
            table.insert(table.end(), part.begin(), part.end());
        for (Shape& shape : table) shape.sketch = sketch_of(shape.name);
        return table;
    }();
    return all;
}

const Shape& shape_of(const std::string& name, const std::string& place) {
    std::vector<std::string> names;
    for (const Shape& shape : shapes()) {
        if (shape.name == name) return shape;
        names.emplace_back(shape.name);
    }
    throw Error(place, "unknown shape " + in_quotes(name), did_you_mean(name, names));
}

std::map<std::string, double> all_values(const std::string& what, const std::vector<Parameter>& parameters,
                                         const std::map<std::string, double>& given, const std::string& place) {
    std::vector<std::string> names;
    std::map<std::string, double> values;
    for (const Parameter& parameter : parameters) {
        names.emplace_back(parameter.name);
        values[parameter.name] = parameter.standard;
    }
    for (const auto& [name, value] : given) {
        if (!values.count(name))
            throw Error(place, what + " has no parameter " + in_quotes(name), did_you_mean(name, names));
        values[name] = value;
    }
    for (const Parameter& parameter : parameters) {
        const auto found = given.find(parameter.name);
        if (found == given.end()) {
            if (parameter.required)
                throw Error(place, std::string(parameter.name) + " is missing",
                            what + " needs it: " + parameter.meaning);
        } else if (const char* wanted = fault_of(parameter.kind, found->second)) {
            throw Error(place, std::string(parameter.name) + " = " + text_of(found->second) + ": " + wanted);
        }
    }
    return values;
}

std::vector<Face> faces_of(const Shape& shape, const std::map<std::string, double>& parameters,
                           const std::string& place) {
    const auto values = all_values("shape " + in_quotes(shape.name), shape.parameters, parameters, place);
    try {
        const std::vector<Face> faces = shape.faces({values, place});
        // Within the limits of its parameters a shape crosses nothing; but it may be too thin for its extent.
        for (const Face& face : faces)
            if (const auto found = crossing_of(region_of(face)))
                throw Error(place, "edges meet at (" + text_of(found->at.y, 6) + ", " + text_of(found->at.z, 6) + ")",
                            "walls, gaps and radii must be above " + text_of(SAME_PLACE) + " of the whole, or 0");
        return faces;
    } catch (const Error& error) {
        if (!error.place.empty()) throw;
        throw Error(place, error.fault, error.remedy);
    }
}

}  // namespace velquor
