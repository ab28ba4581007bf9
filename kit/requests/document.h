// A file in place of values: the key "document" of an answer.
#pragma once

#include <nlohmann/json.hpp>

#include "kit/requests/request.h"

namespace velquor {

// Calculates the section of the request. Throws what the kit throws, and Error with the place "document.fields[1]".
nlohmann::ordered_json document_of(const Request& wanted);

}  // namespace velquor
