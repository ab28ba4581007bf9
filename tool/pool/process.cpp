#include "tool/pool/process.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fstream>
#include <system_error>
#include <thread>

namespace velquor {

namespace {

// Processors' worth of time that a control group and those around it leave; infinite where nothing is said.
double quota() {
    double least = INFINITY;
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        if (line.rfind("0::/", 0) != 0) continue;
        for (std::string group = line.substr(3);; group.erase(group.rfind('/'))) {
            std::ifstream file("/sys/fs/cgroup" + group + "/cpu.max");
            double time = 0, of = 0;
            if (file >> time >> of && time > 0 && of > 0) least = std::min(least, time / of);
            if (group.empty()) break;
        }
    }
    return least;
}

// Ends that are not given away close by themselves.
struct Pipe {
    std::array<int, 2> ends = {-1, -1};
    Pipe() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "a pipe");
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        for (const int end : ends)
            if (end >= 0) close(end);
    }
    int give(int end) {
        const int given = ends[end];
        ends[end] = -1;
        fcntl(given, F_SETFL, O_NONBLOCK);
        return given;
    }
};

// In the new process: nothing but calls that may be made between fork and exec, whatever other threads were at.
[[noreturn]] void become_worker(const char* const* arguments, pid_t parent, int in, int out, int fault) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    setpgid(0, 0);
    for (int number = 1; number < NSIG; ++number) std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    // Out of the way of 0, 1 and 2 first, which may have been closed.
    in = fcntl(in, F_DUPFD_CLOEXEC, 3);
    out = fcntl(out, F_DUPFD_CLOEXEC, 3);
    fault = fcntl(fault, F_DUPFD_CLOEXEC, 3);
    const int nothing = fcntl(open("/dev/null", O_WRONLY | O_CLOEXEC), F_DUPFD_CLOEXEC, 3);
    if (dup2(in, 0) == 0 && dup2(out, 1) == 1 && dup2(nothing, 2) == 2) {
        close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
        execv("/proc/self/exe", const_cast<char* const*>(arguments));
    }
    const int reason = errno;
    if (write(fault, &reason, sizeof reason) < 0) _exit(2);
    _exit(1);
}

std::size_t resident(const std::string& process) {
    std::ifstream file("/proc/" + process + "/statm");
    std::size_t all = 0, pages = 0;
    return file >> all >> pages ? pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) : 0;
}

}  // namespace

std::size_t processors() {
    cpu_set_t set;
    CPU_ZERO(&set);
    double count = std::thread::hardware_concurrency();
    if (sched_getaffinity(0, sizeof set, &set) == 0) count = CPU_COUNT(&set);
    return static_cast<std::size_t>(std::max(1.0, std::min(count, std::ceil(quota()))));
}

Process start_worker(const PoolOptions& options) {
    const std::string memory = std::to_string(options.megabytes);
    const char* arguments[] = {"velquor", "worker", "--memory", memory.c_str(), nullptr, nullptr, nullptr};
    if (!options.folder.empty()) {
        arguments[4] = "--files";
        arguments[5] = options.folder.c_str();
    }
    Pipe in, out, fault;
    const pid_t parent = getpid();
    const pid_t number = fork();
    if (number == 0) become_worker(arguments, parent, in.ends[0], out.ends[1], fault.ends[1]);
    if (number < 0) throw std::system_error(errno, std::generic_category(), "a worker process cannot be started");
    Process process = {number, in.give(1), out.give(0)};
    close(fault.ends[1]);
    fault.ends[1] = -1;
    int reason = 0;
    ssize_t told = 0;  // nothing is, once it has become a worker
    while ((told = read(fault.ends[0], &reason, sizeof reason)) < 0 && errno == EINTR) continue;
    if (told > 0) {
        end_worker(process);
        throw std::system_error(reason, std::generic_category(), "a worker process cannot be started");
    }
    return process;
}

std::size_t memory_of(const Process& process) {
    const std::string number = std::to_string(process.number);
    std::size_t largest = resident(number);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    for (std::string child; children >> child;) largest = std::max(largest, resident(child));
    return largest;
}

int end_worker(Process& process) {
    close(process.to);
    close(process.from);
    kill(-process.number, SIGKILL);
    kill(process.number, SIGKILL);
    int status = 0;
    while (waitpid(process.number, &status, 0) < 0 && errno == EINTR) continue;
    process = {};
    return status;
}

std::string how_it_ended(int status) {
    if (!WIFSIGNALED(status)) return "status " + std::to_string(WEXITSTATUS(status));
    const char* const words = sigdescr_np(WTERMSIG(status));
    return "signal " + std::to_string(WTERMSIG(status)) + (words ? std::string(", ") + words : "");
}

}  // namespace velquor
