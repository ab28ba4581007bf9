// velquor worker --jobs N: the lines of docs/protocol.md from the standard input to the standard output, by a pool.
#pragma once

#include "tool/pool/pool.h"

namespace velquor {

// Until the input ends and everything is answered. Reads on only while few requests wait, and writes answers as they
// come. SIGINT and SIGTERM end it, with the workers, behind the end of a line. Returns the exit status; throws
// CannotWrite where nobody reads the answers, Error where the input cannot be read, and what Pool throws.
int supervise(const PoolOptions& options);

}  // namespace velquor
