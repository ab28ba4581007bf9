// Places in a request, from the names that a sweep gives them.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace velquor {

// The place in a request of what is named: a parameter of the only part with a shape that takes it, a place in the
// section as messages write it, "parts[1].at[0]", or one of the request's own wishes. What it stands in is made where
// the request has it not. Throws Error with `at`, where there is no such place.
nlohmann::json::json_pointer place_of(nlohmann::json& request, const std::string& name, const std::string& at);

}  // namespace velquor
