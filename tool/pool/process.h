// One worker process, and what may be seen of it from outside.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "tool/pool/pool.h"

namespace velquor {

// Processors that this process may use: its affinity, and the quota of its control group.
std::size_t processors();

struct Process {
    pid_t number = -1;
    int to = -1, from = -1;  // its standard input and output: pipes that do not block
};

// This program as `velquor worker`. It has a process group of its own, which what it forks belongs to and which no key
// at a terminal reaches; it ends with the thread that started it, leaves no core, has no files of this process, and
// what it writes on the error stream is dropped. Throws std::system_error.
Process start_worker(const PoolOptions& options);

// Bytes in memory of the process or, where it has forked, of the largest of these; they share what they have not
// changed.
std::size_t memory_of(const Process& process);

// Ends it with all that it has forked, whatever it is at. What waitpid tells of it: of one that has ended by itself,
// how.
int end_worker(Process& process);

// "signal 11, Segmentation fault", "status 1"
std::string how_it_ended(int status);

}  // namespace velquor
