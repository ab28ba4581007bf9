// Many sections at once, on workers of their own, into a file of results that every run goes on with.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace velquor {

struct BatchOptions {
    std::vector<std::string> inputs;  // files, "-" for the standard input
    std::string output;               // the file of results
    std::size_t jobs = 0;             // workers; 0: as many as processors
    double timeout = 60;              // seconds that a section may take
    std::size_t memory = 2048;        // megabytes that a worker may have
    double wait = 60;                 // seconds for another program that has locked the file of results
    bool quiet = false, retry = false;
};

// The subcommand, whose arguments are put there.
void add_batch(CLI::App& app, BatchOptions& options);
// Throws Error where an option has a value that it cannot have.
int batch(const BatchOptions& options);

// Whether results of a batch are to be exported, and that: to the form that the ending of the output tells.
bool is_results(const std::string& file);
int export_results(const std::string& file, const std::string& output);

}  // namespace velquor
