// Work of other people's code that may crash, end the process, hang, or take all memory: done in a process of its own.
#pragma once

#include <cstddef>
#include <string>

namespace velquor {

struct Limits {
    double seconds = 60;
    std::size_t memory = std::size_t{4} << 30;  // bytes beyond what the process has
    std::size_t answer = std::size_t{1} << 30;  // bytes of the answer
};

// How the process ended that gave no answer: "crashed (signal 11)", "took longer than 60 s".
struct Ended {
    std::string how;
};

// What work(about) returns, done in a copy of this process (fork, without exec), which has the calling thread alone:
// locks that other threads held are held in it for ever, but for those of malloc, and then the time runs out. The copy
// has no files but the pipe of its answer, no signal handlers, the locale C, and is ended with its parent; nothing that
// it does is seen here but what it returns. Throws Ended, and std::system_error where no process is to be had.
std::string done_apart(std::string (*work)(const std::string&), const std::string& about, const Limits& limits = {});

}  // namespace velquor
