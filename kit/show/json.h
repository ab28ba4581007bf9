// Results as JSON values, in the form of show_schema().
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "kit/analysis/loads.h"
#include "kit/analysis/values.h"

namespace velquor {

// Of these keys alone; empty: of all. Without "input", which is the command's.
nlohmann::ordered_json json_of(const Values& values, const std::vector<std::string>& keys);

nlohmann::ordered_json json_of(const LoadResult& result, bool with_nodes);

}  // namespace velquor
