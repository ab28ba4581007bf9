#include "tool/pool/supervise.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>

#include "kit/requests/answer.h"
#include "kit/section/section.h"
#include "tool/commands.h"
#include "tool/output.h"
#include "tool/pool/lines.h"

namespace velquor {

namespace {

constexpr std::size_t BLOCK = 1 << 16;  // bytes that are read at once
constexpr std::size_t SMALL = 4096;     // bytes that do not block where anything can be written: PIPE_BUF
constexpr int PATIENCE = 1000;          // ms for a reader to take the end of a line, once a signal came
constexpr std::chrono::milliseconds TURN{
    500};  // by which a signal is seen that came beside a wait, and a reader that left

volatile std::sig_atomic_t signalled = 0;

void heed(int number) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return;  // as of a program in the background
    action.sa_handler = [](int came) { signalled = came; };
    action.sa_flags = 0;  // calls that block are interrupted
    sigaction(number, &action, nullptr);
}

short events_of(int descriptor, short events, int time) {
    pollfd ready = {descriptor, events, 0};
    return poll(&ready, 1, time) > 0 ? ready.revents : short{0};
}

[[noreturn]] void cannot_write(int fault) {
    throw CannotWrite(std::string("the standard output: cannot be written: ") + std::strerror(fault));
}

// A line as a whole, also where a signal comes in the middle, if somebody still reads.
void write_line(std::string line) {
    line += '\n';
    for (std::string_view rest = line; !rest.empty();) {
        if (signalled && (rest.size() == line.size() || events_of(STDOUT_FILENO, POLLOUT, PATIENCE) == 0)) return;
        const ssize_t n = ::write(STDOUT_FILENO, rest.data(), signalled ? std::min(rest.size(), SMALL) : rest.size());
        if (n < 0 && errno == EAGAIN)
            events_of(STDOUT_FILENO, POLLOUT, -1);  // somebody else's doing
        else if (n < 0 && errno != EINTR)
            cannot_write(errno);
        if (n > 0) rest.remove_prefix(static_cast<std::size_t>(n));
    }
}

// False at the end of the input.
bool read_input(std::string& block, Lines& lines) {
    const ssize_t n = read(STDIN_FILENO, block.data(), block.size());
    if (n > 0) lines.add({block.data(), static_cast<std::size_t>(n)});
    if (n < 0 && errno != EINTR && errno != EAGAIN)
        throw Error("", std::string("the standard input cannot be read: ") + std::strerror(errno));
    return n != 0;
}

// Ends as the signal would have ended it, for those who look at how it ended.
[[noreturn]] void end_by_signal() {
    const int number = signalled;
    std::signal(number, SIG_DFL);
    std::raise(number);
    _exit(INTERNAL);
}

}  // namespace

int supervise(const PoolOptions& options) {
    heed(SIGINT);
    heed(SIGTERM);
    {
        Pool pool(options);
        std::string block(BLOCK, '\0');
        Lines lines(LONGEST_REQUEST);
        std::uint64_t given = 0, answered = 0;
        bool more = true;  // input
        while (!signalled) {
            bool dry = false;
            while (!dry && pool.waiting() > 0) {
                const std::optional<RawLine> line = more ? lines.next() : lines.last();
                dry = !line;
                if (!line || is_blank(*line)) continue;
                if (line->size > LONGEST_REQUEST)
                    write_line(answer_to_long(line->size));
                else
                    pool.give(++given, line->text);
            }
            if (dry && !more && answered == given) break;
            const bool reads = dry && more;
            for (Pool::Done& done : pool.wait(TURN, reads ? STDIN_FILENO : -1)) {
                write_line(std::move(done.answer));
                ++answered;
            }
            if (reads && events_of(STDIN_FILENO, POLLIN, 0) != 0) more = read_input(block, lines);
            if (events_of(STDOUT_FILENO, 0, 0) & POLLERR) cannot_write(EPIPE);
        }
    }
    if (signalled) end_by_signal();
    return DONE;
}

}  // namespace velquor
