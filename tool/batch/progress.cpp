#include "tool/batch/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace velquor {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds REDRAWN = 200ms, TOLD = 10s;  // on a terminal, and else
constexpr auto LOOKED_BACK = 30s;                                 // for the rate
constexpr int USUAL = 80, SHORTEST_BAR = 10, LONGEST_BAR = 30;

std::string fixed(double value, int decimals) {
    std::string text = std::to_string(std::llround(std::abs(value) * std::pow(10, decimals)));
    const auto places = static_cast<std::size_t>(decimals);
    if (text.size() <= places) text.insert(0, places + 1 - text.size(), '0');
    if (decimals > 0) text.insert(text.size() - places, ".");
    return text;
}

// Never 100 before all is done.
std::string percent(double share) { return fixed(std::floor(share * 1000) / 10, 1) + " %"; }

int width_of_terminal() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : USUAL;
}

}  // namespace

std::string time_text(double seconds) {
    const auto s = static_cast<long long>(std::min(std::ceil(seconds), 1e15));
    const auto two = [](long long n) { return (n < 10 ? "0" : "") + std::to_string(n); };
    if (s < 3600) return std::to_string(s / 60) + ":" + two(s % 60);
    if (s < 24 * 3600) return std::to_string(s / 3600) + ":" + two(s / 60 % 60) + ":" + two(s % 60);
    return std::to_string(s / (24 * 3600)) + " d " + std::to_string(s / 3600 % 24) + " h";
}

std::string count_text(std::uint64_t n) {
    std::string text = std::to_string(n);
    for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3) text.insert(static_cast<std::size_t>(at), ",");
    return text;
}

namespace {

struct Rate {
    double each_second = 0;
    double left = 0;  // seconds; not a number: not known
};

std::uint64_t errors_of(const Counts& counts) {
    std::uint64_t sum = 0;
    for (const auto& [kind, number] : counts.errors) sum += number;
    return sum;
}

// "1 of 20 (5.0 %)" and so on, in this many columns; what is most wanted comes first, and is left out last.
std::string progress_line(const Counts& c, const Rate& rate, int width) {
    const bool known = std::isfinite(c.share);
    std::vector<std::string> words;
    if (known) words.push_back(percent(c.share));
    words.push_back(count_text(c.inputs) + (c.of > 0 ? " of " + count_text(c.of) : ""));
    if (const std::uint64_t errors = errors_of(c))
        words.push_back(count_text(errors) + (errors == 1 ? " error" : " errors"));
    if (std::isfinite(rate.left)) words.push_back(time_text(rate.left) + " left");
    words.push_back(fixed(rate.each_second, rate.each_second < 100 ? 1 : 0) + "/s");
    std::string line;
    for (const std::string& word : words) {
        const std::string longer = line + (line.empty() ? "" : "  ") + word;
        if (static_cast<int>(longer.size()) <= width) line = longer;
    }
    const int bar = std::min(width - static_cast<int>(line.size()) - 4, LONGEST_BAR);
    if (!known || bar < SHORTEST_BAR) return line;
    const auto full = static_cast<std::size_t>(std::clamp(c.share, 0.0, 1.0) * bar);
    return "[" + std::string(full, '#') + std::string(static_cast<std::size_t>(bar) - full, '.') + "]  " + line;
}

}  // namespace

Progress::Progress(bool is_quiet)
    : quiet(is_quiet), terminal(isatty(STDERR_FILENO) == 1), start(Clock::now()), last(start) {}

Progress::~Progress() { clear(); }

double Progress::seconds() const { return std::chrono::duration<double>(Clock::now() - start).count(); }

void Progress::clear() {
    if (drawn) std::fputs("\r\033[K", stderr);
    drawn = false;
}

void Progress::say(const std::string& message) {
    clear();
    std::fprintf(stderr, "velquor: %s\n", message.c_str());
}

void Progress::note(const std::string& message) {
    if (!quiet) say(message);
}

void Progress::show(const Counts& counts) {
    const auto now = Clock::now();
    if (quiet || now - last < (terminal ? REDRAWN : TOLD)) return;
    last = now;
    if (marks.empty()) marks.push_back({start, 0, 0});
    while (marks.size() > 1 && now - marks.front().time > LOOKED_BACK) marks.pop_front();
    const Mark& then = marks.front();
    const double span = std::chrono::duration<double>(now - then.time).count();
    Rate rate;
    rate.each_second = static_cast<double>(counts.calculated - then.calculated) / span;
    rate.left = counts.share > then.share ? (1 - counts.share) / (counts.share - then.share) * span : std::nan("");
    marks.push_back({now, counts.calculated, counts.share});
    if (terminal) {
        std::fprintf(stderr, "\r\033[K%s", progress_line(counts, rate, width_of_terminal() - 1).c_str());
        std::fflush(stderr);
        drawn = true;
    } else {
        std::fprintf(stderr, "velquor: %s\n", progress_line(counts, rate, USUAL - 9).c_str());
    }
}

}  // namespace velquor
