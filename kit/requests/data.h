// Schemas that are built in, as they stand in request.schema.json and answer.schema.json.
#pragma once

#include <string_view>

namespace velquor::data {

extern const std::string_view REQUEST_SCHEMA, ANSWER_SCHEMA;

}  // namespace velquor::data
