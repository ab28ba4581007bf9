#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <vector>

#include "kit/requests/answer.h"
#include "tool/commands.h"
#include "tool/output.h"
#include "tool/pool/lines.h"
#include "tool/pool/supervise.h"

namespace velquor {

namespace {

// Freed memory stays with the process: a section takes about as much as the one before. Given back and taken anew it
// would cost up to a quarter of the time.
void keep_memory() {
    constexpr int MUCH = 1 << 30;
    mallopt(M_MMAP_THRESHOLD, MUCH);
    mallopt(M_TRIM_THRESHOLD, MUCH);
    mallopt(M_TOP_PAD, 1 << 24);
}

// The standard output for answers alone: what other people's code prints goes nowhere.
int take_output() {
    const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1), nothing = open("/dev/null", O_WRONLY);
    if (output < 0 || nothing < 0 || dup2(nothing, STDOUT_FILENO) < 0)
        throw CannotWrite(std::string("the standard output: ") + std::strerror(errno));
    close(nothing);
    return output;
}

// Of what it writes to; sanitizers take address space as they like.
void limit_memory(std::size_t megabytes) {
#ifndef VQ_SANITIZED
    rlimit limit{};
    getrlimit(RLIMIT_DATA, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, static_cast<rlim_t>(megabytes) << 20);
    setrlimit(RLIMIT_DATA, &limit);
#else
    (void)megabytes;
#endif
}

bool ran_out = false;

// Other people's code may swallow the exception, and give a wrong reason for what it then lacks.
void note_lack() {
    ran_out = true;
    throw std::bad_alloc();
}

std::string answer_of(const RawLine& line, const WorkerOptions& options) {
    if (line.size > LONGEST_REQUEST) return answer_to_long(line.size);
    ran_out = false;
    std::string answer = answer_to(line.text, options.folder);
    if (!ran_out) return answer;
    return error_answer(line.text, ErrorKind::MEMORY, "", "memory could not be had",
                        "a larger size of elements needs less; --memory allows more");
}

}  // namespace

int work(const WorkerOptions& options) {
    if (options.jobs) {
        PoolOptions pool;
        pool.jobs = *options.jobs;
        pool.seconds = options.seconds;
        if (options.megabytes > 0) pool.megabytes = options.megabytes;
        if (options.folder) pool.folder = *options.folder;
        return supervise(pool);
    }
    keep_memory();
    if (options.megabytes > 0) limit_memory(options.megabytes);
    std::set_new_handler(note_lack);
    const int output = take_output();
    Lines lines(LONGEST_REQUEST);
    std::vector<char> block(std::size_t{1} << 16);
    const auto answer = [&](const RawLine& line) {
        if (is_blank(line)) return;
        if (!write_all(output, answer_of(line, options) + "\n"))
            throw CannotWrite(std::string("the standard output: cannot be written: ") + std::strerror(errno));
    };
    while (true) {
        const ssize_t size = read(STDIN_FILENO, block.data(), block.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throw Error("", std::string("the standard input cannot be read: ") + std::strerror(errno));
        if (size == 0) break;
        lines.add({block.data(), static_cast<std::size_t>(size)});
        while (const auto line = lines.next()) answer(*line);
    }
    if (const auto line = lines.last()) answer(*line);
    return DONE;
}

}  // namespace velquor
