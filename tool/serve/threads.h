// Threads that come as connections do, and end when they have had nothing to do for a while.
#pragma once

#include <httplib.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace velquor {

class Threads final : public httplib::TaskQueue {
public:
    void enqueue(std::function<void()> task) override;
    void shutdown() override;  // returns when all is done
    bool is_crowded() const;   // tasks wait for a thread, or the end has come

private:
    void work();

    mutable std::mutex lock;
    std::condition_variable come, gone;
    std::deque<std::function<void()>> tasks;
    std::size_t all = 0, idle = 0;
    bool ending = false;
};

}  // namespace velquor
