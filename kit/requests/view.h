// What a page draws a section from, in a compact form: the key "view" of an answer.
#pragma once

#include <nlohmann/json.hpp>

#include "kit/analysis/analysis.h"

namespace velquor {

// Of an analysis with stresses.
nlohmann::ordered_json view_of(const Section& section, const Analysis& analysis);

}  // namespace velquor
