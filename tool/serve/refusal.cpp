#include "tool/serve/refusal.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "kit/section/words.h"

namespace velquor {

namespace {

using httplib::Request;

constexpr std::size_t MOST_HEADERS = 100;
constexpr std::size_t LONGEST_TOKEN = 100;
constexpr int HTTP_PORT = 80;

bool is_loopback(const std::string& address) { return address.rfind("127.", 0) == 0 || address == "::1"; }

// Names under which a browser reaches this end of the connection. Any other name could be one that somebody else's
// name server has let point here.
bool is_own(const std::string& host, const Request& request, const std::string& listen) {
    const auto is = [&](const std::string& name) {
        const std::string written = name.find(':') == name.npos ? name : "[" + name + "]";
        return host == written + ":" + std::to_string(request.local_port) ||
               (request.local_port == HTTP_PORT && host == written);
    };
    return is(request.local_addr) || is(listen) || (is_loopback(request.local_addr) && is("localhost"));
}

// A link of another site may lead to the page, as a page of its own; nothing else may be fetched from elsewhere.
bool is_from_elsewhere(const Request& request) {
    const std::string from = request.get_header_value("Sec-Fetch-Site");
    if (from.empty() || from == "same-origin" || from == "none") return false;
    const bool opens = request.get_header_value("Sec-Fetch-Mode") == "navigate" &&
                       request.get_header_value("Sec-Fetch-Dest") == "document";
    return !(opens && request.method == "GET" && request.path == "/");
}

bool is_number(const std::string& text) {
    return !text.empty() && text.size() < 18 && text.find_first_not_of("0123456789") == text.npos;
}

bool is_token(const std::string& text) {
    return !text.empty() && text.size() <= LONGEST_TOKEN && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return std::isalnum(c) || c == '-' || c == '_';
    });
}

std::optional<Refusal> refusal_of_body(const Request& request) {
    if (request.has_header("Transfer-Encoding") || request.get_header_value_count("Content-Length") != 1 ||
        !is_number(request.get_header_value("Content-Length")))
        return Refusal{411, "a body without Content-Length; chunks are not taken"};
    if (std::stoull(request.get_header_value("Content-Length")) > LARGEST_BODY)
        return Refusal{413, "a body of " + request.get_header_value("Content-Length") + " bytes; at most " +
                                std::to_string(LARGEST_BODY) + " are taken"};
    const std::string type = request.get_header_value("Content-Type");
    if (plain(type.substr(0, type.find(';'))) != "application/json" || request.has_header("Content-Encoding"))
        return Refusal{415, "a body that is not application/json, uncompressed"};
    if (!is_token(request.get_header_value("X-Velquor-Page")))
        return Refusal{400, "no X-Velquor-Page; it must be up to " + std::to_string(LONGEST_TOKEN) +
                                " letters, digits, - and _, the same in all requests of which the newest counts"};
    return {};
}

const char* kind_of(int status) {
    switch (status) {
        case 403: return "forbidden";
        case 408: return "timeout";
        case 409: return "cancelled";
        case 429:
        case 503: return "busy";
        case 500: return "internal";
        default: return "request";
    }
}

}  // namespace

std::optional<Refusal> refusal_of(const Request& request, const std::string& listen, bool is_document) {
    if (request.headers.size() > MOST_HEADERS)
        return Refusal{400, "more than " + std::to_string(MOST_HEADERS) + " headers"};
    const std::string host = request.get_header_value("Host");
    if (request.get_header_value_count("Host") != 1 || !is_own(host, request, listen))
        return Refusal{403, "Host: " + in_quotes(host) + " is not this server's; use the address that it printed"};
    if (request.has_header("Origin") &&
        (request.get_header_value_count("Origin") != 1 || request.get_header_value("Origin") != "http://" + host))
        return Refusal{403, "Origin: other sites may not ask here"};
    if (is_from_elsewhere(request)) return Refusal{403, "Sec-Fetch-Site: other sites may not ask here"};
    const bool asks = request.path == "/answer";
    if (!asks && !is_document) return Refusal{404, "nothing at this path"};
    if (asks && request.method != "POST") return Refusal{405, "/answer takes POST alone"};
    if (!asks && request.method != "GET" && request.method != "HEAD")
        return Refusal{405, "this path takes GET and HEAD alone"};
    return asks ? refusal_of_body(request) : std::nullopt;
}

std::string error_text(int status, const std::string& message) {
    const nlohmann::ordered_json error = {{"error", {{"kind", kind_of(status)}, {"message", message}}}};
    return error.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace velquor
