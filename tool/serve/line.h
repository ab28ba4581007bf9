#pragma once

#include <string>

namespace velquor {

// A request as a page sends it, as one line for a worker: of no more levels than are calculated for pages. Throws Error
// where it is not JSON within the limits of docs/protocol.md; what else is wrong with it the worker tells.
std::string line_of(const std::string& body);

}  // namespace velquor
