// Lines of a file or a pipe, numbered, and without waiting for them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool/batch/key.h"

namespace velquor {

struct InputLine {
    std::uint64_t number = 0;               // from 1; blank ones count, and are left out
    std::string text;                       // without its end; of a line that is too long nothing
    std::optional<ContentKey> of_too_long;  // key of such a line
};

enum class Next { HERE, LATER, END };

// Owns the descriptor, unless it is that of the standard input.
class InputLines {
public:
    explicit InputLines(int descriptor) : file(descriptor) {}
    ~InputLines();
    InputLines(const InputLines&) = delete;
    InputLines& operator=(const InputLines&) = delete;

    // LATER where nothing can be read now and `waits` is not set. Throws Error where reading fails.
    Next next(InputLine& line, bool waits = false);

    std::uint64_t read() const { return passed; }  // bytes of the lines that were handed out
    int descriptor() const { return file; }

private:
    bool fill(bool waits);

    int file;
    std::string buffer;
    std::size_t begin = 0;   // of what is still to be handed out
    std::size_t looked = 0;  // up to where no end of a line is in the buffer
    std::uint64_t number = 0, passed = 0;
    bool ended = false;
    std::optional<PieceKey> too_long;  // of the line that is being read
};

}  // namespace velquor
