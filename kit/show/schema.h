// The schema of results as it stands in result.schema.json, without the keys of the values.
#pragma once

#include <string_view>

namespace velquor::data {

extern const std::string_view RESULT_SCHEMA;

}  // namespace velquor::data
