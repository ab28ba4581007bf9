// Sections as lines of text: a request in, an answer out, both JSON objects of one line. docs/protocol.md tells their
// keys; request_schema() and answer_schema() have them as JSON Schemas.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velquor {

constexpr std::size_t LONGEST_REQUEST = std::size_t{1} << 24;  // bytes of a line, without its end
constexpr std::size_t LONGEST_ANSWER = std::size_t{1} << 26;

// As an answer names them.
enum class ErrorKind { REQUEST, REFUSED, UNSOLVED, MEMORY, TIMEOUT, CRASHED, INTERNAL };

// The answer to a line, without a line feed at the end of either. Files that sections name are read from this folder;
// of none, they are refused. Throws nothing but std::bad_alloc, where not even an answer fits into memory.
std::string answer_to(std::string_view request, const std::optional<std::string>& folder = {});

// The answer to a line for which there is no other: with the id of the request, if it can be read.
std::string error_answer(std::string_view request, ErrorKind kind, const std::string& at, const std::string& message,
                         const std::string& remedy = "");

// The answer to a line of so many bytes, more than LONGEST_REQUEST, of which nothing was kept.
std::string answer_to_long(std::size_t bytes);

std::string_view request_schema();
std::string answer_schema();

}  // namespace velquor
