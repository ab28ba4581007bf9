// What a call finds of its thread and leaves as it was.
#pragma once

#include <cerrno>
#include <cfenv>

namespace levels {

// Rounding to nearest, no traps, no flags while it lives; then the host's own again, and the host's errno.
struct Boundary {
    std::fenv_t environment;
    int error = errno;
    Boundary() {
        std::feholdexcept(&environment);
        std::fesetenv(FE_DFL_ENV);
    }
    ~Boundary() {
        std::fesetenv(&environment);
        errno = error;
    }
    Boundary(const Boundary&) = delete;
    Boundary& operator=(const Boundary&) = delete;
};

}  // namespace levels
