#include "tool/serve/desk.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace velquor {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t MOST_WAITING = 64;
constexpr milliseconds TURN{100};  // between looks whether a caller is still there

// What is dropped while a worker is at it may go on for this long: to end a worker and start another takes 80 ms of
// processor time, as much as a picture. Measured with one and with two workers on two cores, a draft that drops a full
// view which began 50 ms ago came in the median after 40 to 90 ms so, and after 120 to 130 ms where the worker was
// ended.
constexpr milliseconds WORTH_ENDING{300};

struct Order {
    std::string page, request;
    std::optional<Reply> reply;
    std::condition_variable told;
    // While a worker is at it.
    std::uint64_t ticket = 0;
    Clock::time_point given;
};
using Orders = std::deque<std::shared_ptr<Order>>;

void tell(Order& order, Reply reply) {
    if (order.reply) return;
    order.reply = std::move(reply);
    order.told.notify_one();
}

const Reply NO_WORKER = {503, "no worker process can be started; try again, or start velquor serve again"};
const Reply ENDING = {503, "the server is ending"};
const Reply GONE = {409, "its client has left"};
const Reply NEWER = {409, "a newer request of the same page came"};

}  // namespace

struct Desk::State {
    PoolOptions options;
    int bell = -1;  // rung where something is to be done
    std::mutex lock;
    Orders waiting, running;  // of `running`, those that are answered are let go on for a while
    bool ending = false;
    std::thread owner;

    void ring() const {
        const std::uint64_t one = 1;
        while (write(bell, &one, sizeof one) < 0 && errno == EINTR) continue;
    }
    void work(std::unique_ptr<Pool> pool);
    void tell_all(const Reply& reply);
    milliseconds forget_answered(Pool& pool);
    void give(Pool& pool, std::uint64_t& tickets);
};

void Desk::State::tell_all(const Reply& reply) {
    for (Orders* orders : {&waiting, &running}) {
        for (const auto& order : *orders) tell(*order, reply);
        orders->clear();
    }
}

// Ends what nobody waits for and has gone on for too long. The time until the next of these.
milliseconds Desk::State::forget_answered(Pool& pool) {
    auto next = milliseconds(1000);
    for (std::size_t k = 0; k < running.size();) {
        const auto left = std::chrono::ceil<milliseconds>(running[k]->given + WORTH_ENDING - Clock::now());
        if (running[k]->reply && left <= milliseconds::zero()) {
            pool.forget(running[k]->ticket);
            running.erase(running.begin() + static_cast<std::ptrdiff_t>(k));
            continue;
        }
        if (running[k]->reply) next = std::min(next, left);
        ++k;
    }
    return next;
}

void Desk::State::give(Pool& pool, std::uint64_t& tickets) {
    while (!waiting.empty() && pool.waiting() > 0) {
        const std::shared_ptr<Order> order = waiting.front();
        waiting.pop_front();
        order->ticket = ++tickets;
        order->given = Clock::now();
        running.push_back(order);
        pool.give(order->ticket, std::move(order->request));
    }
}

// The owner's thread, with which the processes of its pool end.
void Desk::State::work(std::unique_ptr<Pool> pool) {
    std::uint64_t tickets = 0;
    while (true) try {
            milliseconds most{1000};
            {
                const std::lock_guard<std::mutex> held(lock);
                if (ending) return tell_all(ENDING);
                if (!pool && !waiting.empty()) pool = std::make_unique<Pool>(options);
                if (pool) {
                    most = forget_answered(*pool);
                    give(*pool, tickets);
                }
            }
            pollfd rings = {bell, POLLIN, 0};
            if (!pool) poll(&rings, 1, -1);
            const std::vector<Pool::Done> done = pool ? pool->wait(most, bell) : std::vector<Pool::Done>();
            std::uint64_t times = 0;
            while (read(bell, &times, sizeof times) < 0 && errno == EINTR) continue;
            const std::lock_guard<std::mutex> held(lock);
            for (const Pool::Done& answer : done) {
                const auto its = [&](const auto& order) { return order->ticket == answer.ticket; };
                const auto at = std::find_if(running.begin(), running.end(), its);
                if (at == running.end()) continue;
                tell(**at, {200, answer.answer});
                running.erase(at);
            }
        } catch (const std::exception&) {  // no process, or no memory: the next request tries again
            const std::lock_guard<std::mutex> held(lock);
            pool.reset();
            tell_all(NO_WORKER);
        }
}

Desk::Desk(const PoolOptions& options) : state(std::make_unique<State>()) {
    state->options = options;
    state->bell = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (state->bell < 0) throw std::system_error(errno, std::generic_category(), "an event descriptor");
    std::promise<void> started;
    std::future<void> start = started.get_future();
    state->owner = std::thread([this, &started] {
        std::unique_ptr<Pool> pool;
        try {
            pool = std::make_unique<Pool>(state->options);
        } catch (...) {
            return started.set_exception(std::current_exception());
        }
        started.set_value();
        state->work(std::move(pool));
    });
    try {
        start.get();
    } catch (...) {
        end();
        throw;
    }
}

Desk::~Desk() {
    end();
    close(state->bell);
}

void Desk::end() {
    if (!state->owner.joinable()) return;
    {
        const std::lock_guard<std::mutex> held(state->lock);
        state->ending = true;
    }
    state->ring();
    state->owner.join();
}

Reply Desk::ask(const std::string& page, std::string request, const std::function<bool()>& wanted) {
    const auto order = std::make_shared<Order>();
    order->page = page;
    order->request = std::move(request);
    State& s = *state;
    std::unique_lock<std::mutex> held(s.lock);
    if (s.ending) return ENDING;
    const auto older = [&](const auto& other) { return other->page == page; };
    for (Orders* orders : {&s.waiting, &s.running})
        for (const auto& other : *orders)
            if (older(other)) tell(*other, NEWER);
    s.waiting.erase(std::remove_if(s.waiting.begin(), s.waiting.end(), older), s.waiting.end());
    if (s.waiting.size() >= MOST_WAITING)
        return {503, std::to_string(MOST_WAITING) + " requests wait already; try again in a moment"};
    s.waiting.push_back(order);
    s.ring();
    while (!order->told.wait_for(held, TURN, [&] { return order->reply.has_value(); }))
        if (!wanted()) {
            tell(*order, GONE);
            s.waiting.erase(std::remove(s.waiting.begin(), s.waiting.end(), order), s.waiting.end());
            s.ring();
        }
    return std::move(*order->reply);
}

}  // namespace velquor
