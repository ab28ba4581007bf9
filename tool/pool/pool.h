// Worker processes, velquor worker each, that answer requests side by side. One that crashes, takes too long or grows
// too large is replaced, and only the request that it had is concerned.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velquor {

struct PoolOptions {
    std::size_t jobs = 0;          // processes; 0: as many as processors that this one may use
    double seconds = 60;           // that a request may take
    std::size_t megabytes = 2048;  // that a worker may have
    std::string folder;            // of files that sections name; empty: none may be read
};

// Of one thread alone, with which its processes end. SIGPIPE is to be ignored.
class Pool {
public:
    // Starts the processes. Throws std::system_error where none is to be had.
    explicit Pool(const PoolOptions& options);
    ~Pool();  // ends them, whatever they are at
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    std::size_t waiting() const;  // workers without a request

    // Gives a request to a worker that waits: one line, as docs/protocol.md has it, without its end. Where none waits,
    // it is kept until one does. Throws std::system_error as wait does.
    void give(std::uint64_t ticket, std::string request);

    // A request that is no longer wanted: no answer comes. Its worker is replaced, and the new one waits at once.
    void forget(std::uint64_t ticket);

    struct Done {
        std::uint64_t ticket;
        std::string answer;  // one line, without its end: the worker's, or an error
    };
    // Answers that have come, at the latest after this time; sooner too where a descriptor in `also` can be read, or a
    // signal came. Of a request that a worker ended over, a second worker is asked before it is given up. Time runs for
    // requests while this waits, not while the caller is busy. Throws std::system_error where processes have ended and
    // no other can be started in the place of any of them.
    std::vector<Done> wait(std::chrono::milliseconds most, int also = -1);

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace velquor
