#include "tool/pool/pool.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <deque>
#include <system_error>
#include <utility>

#include "kit/requests/answer.h"
#include "tool/pool/process.h"

namespace velquor {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds LOOK{50};        // between looks at the memory of workers
constexpr std::size_t BLOCK = 1 << 16;  // bytes that are read at once, as many as a pipe holds
constexpr int ATTEMPTS = 2;

struct Task {
    std::uint64_t ticket = 0;
    std::string request;      // with its line feed
    int ended = 0;            // workers that did, over it
    std::uint64_t after = 0;  // of the workers, the last one that was started before that
};

// A place for a worker. One that ended while it waited is replaced when it is needed: so one that always ends at once
// is not started over and over.
struct Worker {
    Process process;
    std::uint64_t number = 0;  // of its process, among all that were started
    bool fresh = true;         // has not answered yet
    bool busy = false;
    Task task;                   // if busy
    std::size_t sent = 0;        // bytes of its request
    std::string answer;          // what has come of it
    Clock::time_point deadline;  // of its request
};

struct Workers {
    PoolOptions options;
    std::vector<Worker> all;
    std::deque<Task> queue;
    std::vector<Pool::Done> done;
    std::string block;
    std::uint64_t started = 0;    // processes
    Clock::time_point expected;   // when the pool was to look again
    Clock::time_point next_look;  // at the memory
};

bool lives(const Worker& w) { return w.process.number >= 0; }

std::string_view request_of(const Task& task) { return {task.request.data(), task.request.size() - 1}; }

void give_up(Workers& s, const Task& task, ErrorKind kind, const std::string& message, const std::string& remedy) {
    s.done.push_back({task.ticket, error_answer(request_of(task), kind, "", message, remedy)});
}

// Ends the process, if it has not ended by itself; the place is free.
int end(Worker& w) {
    const int status = end_worker(w.process);
    w.busy = false;
    w.fresh = true;
    w.answer = {};
    return status;
}

// The process ended, or did what no worker does: a second one may do better.
void lost(Workers& s, Worker& w) {
    const bool was_busy = w.busy;
    const std::string how = how_it_ended(end(w));
    if (!was_busy) return;
    w.task.after = s.started;
    if (++w.task.ended < ATTEMPTS)
        s.queue.push_front(std::move(w.task));
    else
        give_up(s, w.task, ErrorKind::CRASHED, "two workers ended over it, the last one with " + how,
                "another size of elements, wishes.size, may do; please report the section");
}

void send_more(Workers& s, Worker& w) {
    while (w.busy && w.sent < w.task.request.size()) {
        const ssize_t n = write(w.process.to, w.task.request.data() + w.sent, w.task.request.size() - w.sent);
        if (n < 0 && errno == EAGAIN) return;
        if (n < 0 && errno != EINTR) return lost(s, w);
        w.sent += n > 0 ? static_cast<std::size_t>(n) : 0;
    }
}

// One line, and nothing but in answer to a request; anything else is no worker's.
bool is_answer(const Worker& w) {
    return w.busy && w.sent == w.task.request.size() && w.answer.size() > 2 && w.answer.front() == '{' &&
           w.answer[w.answer.size() - 2] == '}';
}

void read_more(Workers& s, Worker& w) {
    for (;;) {
        const ssize_t n = read(w.process.from, s.block.data(), s.block.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && errno == EAGAIN) return;
        if (n <= 0) return lost(s, w);
        const std::string_view piece(s.block.data(), static_cast<std::size_t>(n));
        const std::size_t line = piece.find('\n');
        w.answer.append(piece);
        if (line != piece.npos) {
            if (line + 1 != piece.size() || !is_answer(w)) return lost(s, w);
            w.answer.pop_back();
            s.done.push_back({w.task.ticket, std::move(w.answer)});
            w.answer = {};
            w.busy = w.fresh = false;
            return;
        }
        if (w.answer.size() > LONGEST_ANSWER) {
            end(w);
            return give_up(s, w.task, ErrorKind::MEMORY,
                           "its answer is longer than " + std::to_string(LONGEST_ANSWER >> 20) + " MB",
                           "ask for fewer fields or loads, or for the coarse mesh");
        }
    }
}

void check_limits(Workers& s) {
    const auto now = Clock::now();
    const bool look = now >= s.next_look;
    if (look) s.next_look = now + LOOK;
    for (Worker& w : s.all) {
        if (!w.busy) continue;
        if (now >= w.deadline) {
            end(w);
            char seconds[40];
            std::snprintf(seconds, sizeof seconds, "%g", s.options.seconds);
            give_up(s, w.task, ErrorKind::TIMEOUT, std::string("took longer than ") + seconds + " s",
                    "allow it more by --timeout, or ask for less: fewer levels, a larger size of elements");
        } else if (look && memory_of(w.process) > s.options.megabytes << 20) {
            const bool fresh = w.fresh;
            end(w);
            if (!fresh) {  // it may have kept what others needed
                s.queue.push_front(std::move(w.task));
                continue;
            }
            give_up(s, w.task, ErrorKind::MEMORY,
                    "its worker grew larger than " + std::to_string(s.options.megabytes) + " MB",
                    "allow it more by --memory, or ask for less: fewer levels, a larger size of elements");
        }
    }
}

// A process in each free place; places where none can be started are given up.
void replace(Workers& s) {
    for (std::size_t k = 0; k < s.all.size();) try {
            if (!lives(s.all[k])) {
                s.all[k].process = start_worker(s.options);
                s.all[k].number = ++s.started;
            }
            ++k;
        } catch (const std::system_error&) {
            if (s.all.size() == 1) throw;
            s.all.erase(s.all.begin() + static_cast<std::ptrdiff_t>(k));
        }
}

// Whether one that waits has ended meanwhile, which is no fault of the next request.
bool has_ended(Workers& s, Worker& w) {
    pollfd pipe = {w.process.from, POLLIN, 0};
    if (poll(&pipe, 1, 0) > 0) lost(s, w);
    return !lives(w);
}

void hand_out(Workers& s) {
    bool started = false;  // some just now: that these end is the next request's matter, or it would have no end
    while (!s.queue.empty()) {
        // One that runs already rather than one that is to be started; where a worker has ended over it, a newer one,
        // as what ended the one may have ended others too.
        const Task& task = s.queue.front();
        const bool startable = std::any_of(s.all.begin(), s.all.end(), [](const Worker& w) { return !lives(w); });
        const auto w = std::find_if(s.all.begin(), s.all.end(), [&](const Worker& v) {
            return !v.busy && lives(v) && (!startable || task.ended == 0 || v.number > task.after);
        });
        if (w == s.all.end()) {
            if (!startable) return;
            replace(s);
            started = true;
            continue;
        }
        if (!started && has_ended(s, *w)) continue;
        w->task = std::move(s.queue.front());
        s.queue.pop_front();
        w->busy = true;
        w->sent = 0;
        w->deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>(std::min(s.options.seconds, 1e9)));
        send_more(s, *w);
    }
}

// Time that went by while nobody looked, because the caller was busy or everything stood still, is not the workers'.
void excuse(Workers& s) {
    const auto now = Clock::now();
    if (now > s.expected)
        for (Worker& w : s.all) w.deadline += now - s.expected;
    s.expected = now;
}

// Until something can be read or written, a limit is to be checked, or then. False where a signal came.
bool wait_for_pipes(Workers& s, Clock::time_point until, std::vector<pollfd>& pipes) {
    auto next = until;
    for (std::size_t k = 0; k < s.all.size(); ++k) {
        const Worker& w = s.all[k];
        const bool sends = w.busy && w.sent < w.task.request.size();
        pipes[2 * k] = {w.process.from, POLLIN, 0};
        pipes[2 * k + 1] = {sends ? w.process.to : -1, POLLOUT, 0};
        if (w.busy) next = std::min({next, w.deadline, s.next_look});
    }
    const auto now = Clock::now();
    const auto time = std::max(milliseconds::zero(), std::chrono::ceil<milliseconds>(next - now));
    s.expected = now + time;
    const int ready = poll(pipes.data(), pipes.size(), static_cast<int>(std::min<long long>(time.count(), 1 << 30)));
    excuse(s);
    return ready >= 0;
}

}  // namespace

struct Pool::State : Workers {};

Pool::Pool(const PoolOptions& options) : state(std::make_unique<State>()) {
    // Where a parent has left this ignored, nothing would be told of how workers end.
    struct sigaction before = {};
    if (sigaction(SIGCHLD, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) std::signal(SIGCHLD, SIG_DFL);
    state->options = options;
    state->all.resize(options.jobs > 0 ? options.jobs : processors());
    state->block.resize(BLOCK);
    replace(*state);
    state->expected = state->next_look = Clock::now();
}

Pool::~Pool() {
    for (Worker& w : state->all)
        if (lives(w)) end(w);
}

std::size_t Pool::waiting() const {
    const auto busy = std::count_if(state->all.begin(), state->all.end(), [](const Worker& w) { return w.busy; });
    const std::size_t taken = static_cast<std::size_t>(busy) + state->queue.size();
    return state->all.size() - std::min(taken, state->all.size());
}

void Pool::give(std::uint64_t ticket, std::string request) {
    excuse(*state);
    request += '\n';
    state->queue.push_back({ticket, std::move(request)});
    hand_out(*state);
}

void Pool::forget(std::uint64_t ticket) {
    const auto its = [&](const auto& of) { return of.ticket == ticket; };
    auto& queue = state->queue;
    queue.erase(std::remove_if(queue.begin(), queue.end(), its), queue.end());
    auto& done = state->done;
    done.erase(std::remove_if(done.begin(), done.end(), its), done.end());
    for (Worker& w : state->all)
        if (w.busy && its(w.task)) {
            end(w);
            replace(*state);
            return;
        }
}

std::vector<Pool::Done> Pool::wait(milliseconds most, int also) {
    Workers& s = *state;
    excuse(s);
    const auto until = Clock::now() + most;
    std::vector<pollfd> pipes;
    bool told = !s.done.empty();
    do {
        if (!told) hand_out(s);
        pipes.assign(2 * s.all.size() + 1, {-1, 0, 0});
        pipes.back() = {also, POLLIN, 0};
        if (!wait_for_pipes(s, told ? Clock::now() : until, pipes)) break;
        for (std::size_t k = 0; k < s.all.size(); ++k) {
            Worker& w = s.all[k];
            if (pipes[2 * k + 1].revents != 0) send_more(s, w);
            if (pipes[2 * k].revents != 0 && lives(w)) read_more(s, w);
        }
        check_limits(s);
        told = !s.done.empty() || pipes.back().revents != 0;
    } while (!told && Clock::now() < until);
    s.expected = Clock::now();
    return std::exchange(s.done, {});
}

}  // namespace velquor
