// Files that are built into the library: profiles.json and schema.json of this folder, as they stand there.
#pragma once

#include <string_view>

namespace velquor::data {

extern const std::string_view PROFILES, SCHEMA;

}  // namespace velquor::data
