// Where threads hand in requests and wait for answers; one thread behind it owns the worker processes.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tool/pool/pool.h"

namespace velquor {

struct Reply {
    int status = 200;  // 200: an answer of docs/protocol.md; 409, 503: why there is none
    std::string text;  // the answer, or the reason in words
};

class Desk {
public:
    // Throws std::system_error where no worker can be started.
    explicit Desk(const PoolOptions& options);
    ~Desk();  // as end() does; nobody waits any more
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    // Of one line, from any thread, which waits. A request of the same page that waits or is at work is answered with
    // 409 at once. 503 where too many wait already, where no worker can be started, and at the end. `wanted` is asked
    // now and then, in the thread that waits: once it says no, the request is dropped.
    Reply ask(const std::string& page, std::string request, const std::function<bool()>& wanted);

    void end();  // who waits is answered with 503, and who comes; the workers end

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace velquor
