// How far a batch is, on the error stream: a line that is drawn again and again on a terminal, lines now and then else.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <string>

namespace velquor {

struct Counts {
    std::uint64_t inputs = 0;                          // that were read
    std::uint64_t calculated = 0;                      // in this run
    std::uint64_t found = 0;                           // calculated by a run before, or by another beside this one
    std::uint64_t equal = 0;                           // the same as another of this run
    std::map<std::string, std::uint64_t> errors = {};  // inputs without values, by their kinds
    std::uint64_t of = 0;                              // inputs in all; 0: not known
    double share = 0;                                  // that is done; not a number: not known
};

std::string time_text(double seconds);    // "1:09", "2:05:10", "3 d 4 h"
std::string count_text(std::uint64_t n);  // "1,234,567"

class Progress {
public:
    explicit Progress(bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const Counts& counts);        // where it is time to
    void say(const std::string& message);   // a line of its own, also where progress is not to be shown
    void note(const std::string& message);  // the same, unless it is not
    double seconds() const;                 // since the start

private:
    using Clock = std::chrono::steady_clock;
    struct Mark {
        Clock::time_point time;
        std::uint64_t calculated;
        double share;
    };
    void clear();

    bool quiet, terminal, drawn = false;
    Clock::time_point start, last;
    std::deque<Mark> marks;  // of the last seconds, to tell the rate
};

}  // namespace velquor
