#include "tool/pool/lines.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace velquor {

bool is_blank(const RawLine& line) {
    return line.size == line.text.size() && line.text.find_first_not_of(" \t\r") == std::string::npos;
}

void Lines::add(std::string_view block) {
    if (begin > 0) {
        held.erase(0, begin);
        looked -= begin;
        begin = 0;
    }
    held.append(block);
    if (held.size() > longest && held.find('\n', looked) == std::string::npos) {  // a line that nobody will take
        dropped += held.size();
        held.clear();
        looked = 0;
    }
}

std::optional<RawLine> Lines::next() {
    const std::size_t end = held.find('\n', looked);
    looked = end == std::string::npos ? held.size() : end + 1;
    if (end == std::string::npos) return {};
    RawLine line;
    line.size = dropped + end - begin;
    if (line.size <= longest) line.text = held.substr(begin, end - begin);
    begin = end + 1;
    dropped = 0;
    return line;
}

std::optional<RawLine> Lines::last() {
    if (begin == held.size() && dropped == 0) return {};
    held += '\n';
    looked = begin;
    return next();
}

bool write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd ready = {descriptor, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace velquor
