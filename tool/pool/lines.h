// Lines out of what read(2) gives, in whatever pieces.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velquor {

struct RawLine {
    std::string text;      // without its line feed; empty where it is longer than is kept
    std::size_t size = 0;  // bytes that it has
};

// Of spaces, tabs and carriage returns at most: no request.
bool is_blank(const RawLine& line);

class Lines {
public:
    explicit Lines(std::size_t most) : longest(most) {}

    void add(std::string_view block);
    std::optional<RawLine> next();  // the next whole line
    std::optional<RawLine> last();  // at the end: what stands behind the last line feed, if anything

private:
    std::size_t longest;
    std::string held;
    std::size_t begin = 0, looked = 0;  // in `held`: of the next line, and how far no line feed was found
    std::size_t dropped = 0;            // of the next line, before `held`
};

// Writes all of it, whatever a descriptor takes at a time. False where it cannot be written, by errno.
bool write_all(int descriptor, std::string_view text);

}  // namespace velquor
