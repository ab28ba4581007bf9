#include "tool/batch/lines.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kit/requests/answer.h"
#include "kit/section/section.h"

namespace velquor {

namespace {

constexpr std::size_t BLOCK = std::size_t{1} << 18;

}  // namespace

InputLines::~InputLines() {
    if (file != STDIN_FILENO) close(file);
}

// Whether there is more, or the end was met.
bool InputLines::fill(bool waits) {
    pollfd readable = {file, POLLIN, 0};
    if (poll(&readable, 1, waits ? -1 : 0) <= 0) return waits;
    buffer.erase(0, begin);
    looked -= begin;
    begin = 0;
    const std::size_t size = buffer.size();
    buffer.resize(size + BLOCK);
    const ssize_t count = ::read(file, buffer.data() + size, BLOCK);
    buffer.resize(size + static_cast<std::size_t>(count > 0 ? count : 0));
    if (count < 0 && errno != EINTR && errno != EAGAIN)
        throw Error("", std::string("cannot be read: ") + std::strerror(errno));
    ended = count == 0;
    return true;
}

Next InputLines::next(InputLine& line, bool waits) {
    for (;;) {
        const std::size_t end = buffer.find('\n', looked);
        const bool whole = end != std::string::npos;
        if (!whole && !ended) {
            looked = buffer.size();
            if (too_long || looked - begin > LONGEST_REQUEST) {
                if (!too_long) too_long.emplace();
                too_long->take(std::string_view(buffer).substr(begin));
                passed += looked - begin;
                begin = looked;
            }
            if (!fill(waits)) return Next::LATER;
            continue;
        }
        if (!whole && begin == buffer.size() && !too_long) return Next::END;
        const std::string_view text = std::string_view(buffer).substr(begin, (whole ? end : buffer.size()) - begin);
        ++number;
        line = {number, {}, {}};
        if (too_long || text.size() > LONGEST_REQUEST) {
            if (!too_long) too_long.emplace();
            too_long->take(text);
            line.of_too_long = too_long->key();
            too_long.reset();
        } else {
            line.text = text;
        }
        begin = looked = whole ? end + 1 : buffer.size();
        passed += text.size() + (whole ? 1 : 0);
        if (line.of_too_long || line.text.find_first_not_of(" \t\r") != std::string::npos) return Next::HERE;
    }
}

}  // namespace velquor
