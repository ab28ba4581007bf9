// Where results and messages go.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "kit/show/show.h"

namespace velquor {

// Results cannot be written: a full disk, a closed pipe.
struct CannotWrite : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Who read the standard output has seen enough, as in velquor profiles | head.
struct ReaderLeft : CannotWrite {
    using CannotWrite::CannotWrite;
};

// To this file, or to the standard output where the name is empty. Throws CannotWrite unless everything is written, of
// a closed pipe ReaderLeft: a file is then as it was.
void write(const std::string& text, const std::string& file = "");

// The same of pieces, the next of which is appended to an empty text until there is none.
void write_pieces(const std::function<bool(std::string&)>& next, const std::string& file = "");

// The ending of a file's name, one of these, in lower case. Throws Error where it is another.
std::string ending_of(const std::string& file, const std::vector<std::string>& endings);

// Columns of the terminal; of what is no terminal, enough for everything.
int width_of_output();

// The exception that is being handled, as a failure of what the user gave. An exception that is no such is thrown on.
Failure failure();

// A line on the error stream: "velquor: FILE: parts[1].outline[3]: crosses edge 7; outlines must not cross themselves".
void complain(const std::string& input, const Failure& failure);

// The same of what was done to an input: "velquor: FILE: note: 3 loose nodes dropped".
void tell(const std::string& input, const std::vector<std::string>& notes);

}  // namespace velquor
