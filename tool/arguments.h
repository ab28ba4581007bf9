// The command line.
#pragma once

#include <functional>
#include <stdexcept>

namespace velquor {

// The command that is asked for, ready to be run. Throws Misuse where there is none.
std::function<int()> command_of(int count, char** arguments);

struct Misuse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace velquor
