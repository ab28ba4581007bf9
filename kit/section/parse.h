// JSON text to JSON values, within limits, and the look at them by the schema: steps of read_section.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace velquor {

// Throws Error where the text is too large, too deep, not JSON, or has a key twice in an object.
nlohmann::json parse_text(std::string_view text);

// Throws Error where the value is not as schema.json has it, with the first of the faults.
void check_structure(const nlohmann::json& value);

}  // namespace velquor
