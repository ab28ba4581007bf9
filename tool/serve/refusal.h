// What the server does not answer: what other sites, forms and forged names could send, and what is too large.
#pragma once

#include <httplib.h>

#include <optional>
#include <string>

namespace velquor {

constexpr std::size_t LARGEST_BODY = std::size_t{2} << 20;  // bytes

struct Refusal {
    int status = 0;
    std::string message;
};

// Of a request whose head was read. `listen` is the address that was asked for. Of what passes: it has a Host that is
// this server's own, comes from no other site, has a method that the path takes, and, as POST, a length within bounds,
// the type application/json and a token of its page.
std::optional<Refusal> refusal_of(const httplib::Request& request, const std::string& listen, bool is_document);

// {"error": {"kind": ..., "message": ...}}
std::string error_text(int status, const std::string& message);

}  // namespace velquor
