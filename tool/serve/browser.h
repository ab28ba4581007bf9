#pragma once

#include <string>

namespace velquor {

// Shows an address in the browser that the desktop has for it; where there is none, says so on the error stream.
void open_browser(const std::string& address);

}  // namespace velquor
