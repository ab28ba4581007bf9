// Times, and sizes of meshes, over the whole catalogue; whole processes.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "kit/analysis/analysis.h"
#include "kit/section/profiles.h"
#include "rows.h"

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

struct Family {
    std::string name;
    std::vector<double> times;
};

}  // namespace

std::vector<Row> catalogue_rows() {
    std::vector<Family> families;
    std::vector<double> times;
    std::size_t most = 0, failed = 0;
    double longest = 0;
    std::string largest, slowest;
    velquor::analyse(profile_section(velquor::profile_names().front()));  // starts the mesher
    for (const std::string& name : velquor::profile_names()) {
        const std::string family = velquor::profile_of(name, "mm", "").family;
        if (families.empty() || families.back().name != family) families.push_back({family, {}});
        const velquor::Section section = profile_section(name);
        try {
            const auto start = Clock::now();
            const velquor::Analysis analysis = velquor::analyse(section);
            const double time = milliseconds_since(start);
            times.push_back(time), families.back().times.push_back(time);
            if (time > longest) longest = time, slowest = name;
            if (analysis.mesh.nodes.size() > most) most = analysis.mesh.nodes.size(), largest = name;
        } catch (const std::exception& error) {
            ++failed;
            std::fprintf(stderr, "%s: %s\n", name.c_str(), error.what());
        }
    }
    std::string by_family;
    for (const Family& family : families)
        by_family += formatted("%s%s %.1f", by_family.empty() ? "" : ", ", family.name.c_str(), median(family.times));
    return {{formatted("median time of mesh, levels and values over the catalogue of %zu, in a running process",
                       velquor::profile_names().size()),
             "15 ms", "30 ms",
             formatted("%.1f ms; longest %.1f ms (%s); by family: ", median(times), longest, slowest.c_str()) +
                 by_family + (failed > 0 ? formatted("; %zu not calculated", failed) : "")},
            {"largest coarse mesh over the catalogue", "600 nodes", "2,000",
             formatted("%zu nodes (%s)", most, largest.c_str())}};
}

Row process_row(const std::string& command) {
    constexpr int RUNS = 30;
    std::vector<double> times;
    std::string name = "IPE 300", verb = "calc", program = command;
    char* const arguments[] = {program.data(), verb.data(), name.data(), nullptr};
    for (int i = -1; i < RUNS; ++i) {  // the first brings the files into memory
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        pid_t child = 0;
        int status = 0;
        const auto start = Clock::now();
        const bool began = posix_spawn(&child, command.c_str(), &actions, nullptr, arguments, environ) == 0;
        const bool ended = began && waitpid(child, &status, 0) == child;
        const double time = milliseconds_since(start);
        posix_spawn_file_actions_destroy(&actions);
        if (!ended || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
            throw std::runtime_error(command + " calc \"IPE 300\" does not end well");
        if (i >= 0) times.push_back(time / 1000);
    }
    const auto [low, high] = std::minmax_element(times.begin(), times.end());
    return {"whole process, `velquor calc \"IPE 300\"`", "0.15 s", "0.3 s",
            formatted("%.3f s (%.3f to %.3f, %d runs)", median(times), *low, *high, RUNS)};
}
