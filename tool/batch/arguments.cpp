#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include "tool/batch/batch.h"

namespace velquor {

void add_batch(CLI::App& app, BatchOptions& o) {
    CLI::App& command = *app.add_subcommand("batch", "many sections at once, into a file of results");
    command.add_option("FILE", o.inputs, "requests, one a line, or a sweep; - for the standard input")
        ->required()
        ->type_name("");
    command
        .add_option("-o,--output", o.output, "file of results, an SQLite database; a run goes on with what is there")
        ->required()
        ->type_name("FILE");
    command.add_option("--jobs", o.jobs, "sections side by side (one a processor)")->type_name("N");
    command.add_option("--timeout", o.timeout, "seconds that a section may take (60)")->type_name("S");
    command.add_option("--memory", o.memory, "megabytes that it may take (2048)")->type_name("MB");
    command.add_flag("--retry", o.retry, "try again what ended by timeout, memory, a crash or a fault of ours");
    command.add_option("--wait", o.wait, "seconds for another program that has the file of results locked (60)")
        ->type_name("S");
    command.add_flag("--quiet", o.quiet, "no progress, no summary");
    command.footer(
        "Ctrl-C ends in order; the same command goes on.\n\n"
        "Example: velquor batch sections.jsonl -o results.sqlite\n"
        "         velquor export results.sqlite -o results.csv");
}

}  // namespace velquor
