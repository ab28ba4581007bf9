#include "kit/mesh/apart.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <system_error>

namespace velquor {

namespace {

enum Exit { ANSWERED = 0, NO_MEMORY = 81, THREW = 82, LEFT = 83 };
constexpr int PIPE = 3;  // in the copy

using Clock = std::chrono::steady_clock;

std::size_t memory_of_process() {
    unsigned long long pages = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(file, "%llu", &pages) != 1) pages = 0;
        std::fclose(file);
    }
    return static_cast<std::size_t>(pages) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void limit(int resource, rlim_t most) {
    rlimit now{};
    getrlimit(static_cast<__rlimit_resource_t>(resource), &now);
    now.rlim_cur = std::min(most, now.rlim_max);
    setrlimit(static_cast<__rlimit_resource_t>(resource), &now);
}

void send(const void* data, std::size_t size) {
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t sent = ::write(PIPE, at, size);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) _exit(LEFT);
        at += sent;
        size -= static_cast<std::size_t>(sent);
    }
}

// The copy: all that is written, opened and handled elsewhere stays as it is there.
[[noreturn]] void be_the_copy(std::string (*work)(const std::string&), const std::string& about, const Limits& limits,
                              std::size_t memory, pid_t parent, int pipe) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(LEFT);
    for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_DFL);
    const int nothing = open("/dev/null", O_RDWR);
    if (nothing < 0) _exit(LEFT);
    // The pipe first out of the way of the numbers below.
    const int kept = fcntl(pipe, F_DUPFD, 10), quiet = fcntl(nothing, F_DUPFD, 10);
    for (const int standard : {0, 1, 2}) dup2(quiet, standard);
    if (kept < 0 || dup2(kept, PIPE) < 0) _exit(LEFT);
    close_range(PIPE + 1, ~0U, 0);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_AS, memory + limits.memory);
    limit(RLIMIT_CPU, static_cast<rlim_t>(limits.seconds) + 1);
    std::atexit([] { _exit(LEFT); });  // comes first, and so keeps what the parent has registered from being done twice
    std::setlocale(LC_ALL, "C");
    try {
        const std::string answer = work(about);
        const std::uint64_t size = answer.size();
        send(&size, sizeof size);
        send(answer.data(), answer.size());
        _exit(ANSWERED);
    } catch (const std::bad_alloc&) {
        _exit(NO_MEMORY);
    } catch (...) {
        _exit(THREW);
    }
}

// Ends and buries the process, whatever happens here.
struct Process {
    pid_t number;
    int pipe;
    bool buried = false;
    Process(pid_t process, int from) : number(process), pipe(from) {}
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        close(pipe);
        if (!buried) {
            kill(number, SIGKILL);
            bury();
        }
    }
    // Its status; that of an answer where somebody else has taken it, as hosts do that ignore SIGCHLD.
    int bury() {
        int status = ANSWERED;
        while (waitpid(number, &status, 0) < 0)
            if (errno != EINTR) {
                status = ANSWERED;
                break;
            }
        buried = true;
        return status;
    }
};

std::string seconds_of(const Limits& limits) {
    char text[40];
    std::snprintf(text, sizeof text, "%.0f s", limits.seconds);
    return text;
}

// Adds what comes next; false at the end.
bool receive(int pipe, Clock::time_point deadline, const Limits& limits, std::string& into) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) throw Ended{"took longer than " + seconds_of(limits)};
    pollfd ready = {pipe, POLLIN, 0};
    if (poll(&ready, 1, static_cast<int>(std::min<long long>(left, 60000))) <= 0) return true;
    char block[8192];
    const ssize_t size = read(pipe, block, sizeof block);
    if (size > 0) into.append(block, static_cast<std::size_t>(size));
    return size > 0 || (size < 0 && (errno == EINTR || errno == EAGAIN));
}

std::string how_it_ended(int status, const Limits& limits) {
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU) return "took longer than " + seconds_of(limits);
    if (WIFSIGNALED(status)) return "crashed (signal " + std::to_string(WTERMSIG(status)) + ")";
    switch (WEXITSTATUS(status)) {
        case NO_MEMORY: return "wanted more than " + std::to_string(limits.memory >> 20) + " MB of memory";
        case THREW: return "failed without a reason";
        default: return "ended without an answer (status " + std::to_string(WEXITSTATUS(status)) + ")";
    }
}

}  // namespace

std::string done_apart(std::string (*work)(const std::string&), const std::string& about, const Limits& limits) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "a pipe");
    const std::size_t memory = memory_of_process();
    const pid_t parent = getpid();
    const pid_t number = fork();
    if (number == 0) be_the_copy(work, about, limits, memory, parent, ends[1]);
    const int fault = errno;
    close(ends[1]);
    if (number < 0) {
        close(ends[0]);
        throw std::system_error(fault, std::generic_category(), "a process");
    }
    Process process(number, ends[0]);
    const auto deadline = Clock::now() + std::chrono::milliseconds(static_cast<long long>(limits.seconds * 1000));
    std::string answer;
    std::uint64_t size = 0;
    const auto whole = [&] {
        if (answer.size() < sizeof size) return false;
        answer.copy(reinterpret_cast<char*>(&size), sizeof size);
        if (size > limits.answer) throw Ended{"gave an answer of " + std::to_string(size >> 20) + " MB"};
        return answer.size() >= sizeof size + size;
    };
    while (!whole())
        if (!receive(process.pipe, deadline, limits, answer)) throw Ended{how_it_ended(process.bury(), limits)};
    process.bury();
    return answer.substr(sizeof size, size);
}

}  // namespace velquor
