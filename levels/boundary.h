// The boundary to the host, on the way in and out.
#pragma once

#include <cerrno>
#include <cfenv>

namespace levels {

// What arithmetic and the C library may change of the calling thread's state. A host may round in another direction,
// flush denormal numbers to zero or let exceptions trap; while this record lives, the thread has the default
// environment. The host's modes, traps, flags and errno come back with its end.
struct ThreadState {
    std::fenv_t environment;
    int error;

    ThreadState() : error(errno) {
        std::fegetenv(&environment);
        std::fesetenv(FE_DFL_ENV);
    }
    ~ThreadState() {
        std::fesetenv(&environment);
        errno = error;
    }
    ThreadState(const ThreadState&) = delete;
    ThreadState& operator=(const ThreadState&) = delete;
};

}  // namespace levels
