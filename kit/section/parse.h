// JSON text to JSON values, within limits, and the look at them by the schema: steps of read_section.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "kit/section/section.h"

namespace velquor {

constexpr int DEEPEST = 12;  // lists and objects in one another

// Throws Error where the text is too large, too deep, not JSON, or has a key twice in an object.
nlohmann::json parse_text(std::string_view text, int deepest = DEEPEST);

// A JSON Schema that values are compared with.
struct Pattern {
    explicit Pattern(std::string_view schema);
    ~Pattern();
    struct State;
    std::unique_ptr<State> state;
};
const Pattern& section_pattern();  // of schema.json

// Throws Error where the value is not as the schema has it, with the first of the faults.
void check_structure(const nlohmann::json& value, const Pattern& pattern);

// A checked section from what parse_text gave. Throws Error, and nothing else.
Section section_from(const nlohmann::json& value);
Section materials_from(const nlohmann::json& value);  // as read_materials does

}  // namespace velquor
