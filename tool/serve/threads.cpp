#include "tool/serve/threads.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace velquor {

namespace {

// A client that sends its request slowly holds a thread, of some 20 kB. With so many of them 1,000 such clients keep
// nobody waiting.
constexpr std::size_t MOST = 1500;
constexpr std::chrono::seconds IDLE{5};

}  // namespace

void Threads::enqueue(std::function<void()> task) {
    const std::lock_guard<std::mutex> held(lock);
    tasks.push_back(std::move(task));
    come.notify_one();
    if (idle >= tasks.size() || all >= MOST) return;
    try {
        std::thread([this] { work(); }).detach();
        ++all;
    } catch (const std::system_error&) {  // no more are to be had: it waits
    }
}

void Threads::work() {
    std::unique_lock<std::mutex> held(lock);
    while (true) {
        ++idle;
        const bool wanted = come.wait_for(held, IDLE, [&] { return ending || !tasks.empty(); });
        --idle;
        if (!wanted || tasks.empty()) break;
        const std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        held.unlock();
        task();
        held.lock();
    }
    --all;
    gone.notify_all();
}

void Threads::shutdown() {
    std::unique_lock<std::mutex> held(lock);
    ending = true;
    come.notify_all();
    gone.wait(held, [&] { return all == 0; });
}

bool Threads::is_crowded() const {
    const std::lock_guard<std::mutex> held(lock);
    return ending || (!tasks.empty() && all >= MOST);
}

}  // namespace velquor
