#include "tool/serve/server.h"

#include <sys/socket.h>

#include <cerrno>
#include <exception>

#include "kit/section/section.h"
#include "kit/section/words.h"
#include "tool/serve/connection.h"
#include "tool/serve/line.h"
#include "tool/serve/refusal.h"
#include "tool/serve/threads.h"

namespace velquor {

namespace {

using httplib::Request;
using httplib::Response;

constexpr std::size_t SMALL = std::size_t{64} << 10;  // bytes of a body; the page's own have some 2000
constexpr int MOST_LARGE = 32;                        // bodies that are not small, at a time
constexpr int BACKLOG = 1024;

const httplib::Headers EVERYWHERE = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"}};

void refuse(Response& response, int status, const std::string& message) {
    response.status = status;
    response.set_content(error_text(status, message), "application/json");
    response.set_header("Cache-Control", "no-store");
    if (status == 503) response.set_header("Retry-After", "1");
}

// What the library itself refuses, in the form of all others.
httplib::Server::HandlerResponse refuse_unread(const Request&, Response& response) {
    if (!response.body.empty()) return httplib::Server::HandlerResponse::Unhandled;
    refuse(response, response.status, "no request of HTTP/1.1 whose head has at most 16 kB, sent within 5 s");
    return httplib::Server::HandlerResponse::Handled;
}

}  // namespace

PageServer::PageServer(const std::string& address, Desk& to) : listen(address), desk(to), documents(site()) {
    new_task_queue = [this] { return threads = new Threads; };  // the library deletes it
    set_default_headers(EVERYWHERE);
    set_error_handler(HandlerWithResponse(refuse_unread));
    set_exception_handler([](const Request&, Response& response, std::exception_ptr) {
        refuse(response, 500, "a fault of ours; memory may be short");
    });
    set_pre_routing_handler([this](const Request& q, Response& p) { return answer_file(q, p); });
    Post("/answer",
         [this](const Request& q, Response& p, const httplib::ContentReader& read) { answer_request(q, p, read); });
}

int PageServer::bind(int port) {
    int descriptor = -1;
    set_socket_options([&](int socket) {
        // As the library would have it, two servers could listen on one port.
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        descriptor = socket;
    });
    errno = 0;
    const int bound = port == 0 ? bind_to_any_port(listen) : bind_to_port(listen, port) ? port : -1;
    const int fault = errno;
    if (bound <= 0) {
        const std::string at = port == 0 ? listen : listen + ", port " + std::to_string(port);
        if (fault == EADDRINUSE)
            throw Error("--port", std::to_string(port) + " is taken", "leave it out for a free one, or name another");
        if (fault == EACCES)
            throw Error("--port", std::to_string(port) + " is not yours to take", "1024 and above are");
        throw Error("--listen", in_quotes(at) + " is no address of this machine",
                    "leave it out to be reached from this machine alone");
    }
    ::listen(descriptor, BACKLOG);  // the library's own 5 are too few for a browser's burst
    return bound;
}

bool PageServer::process_and_close_socket(socket_t socket) try {
    Connection connection(socket, [this] { return threads.load()->is_crowded(); });
    connection.take_head();
    bool closed = false;
    const auto prepare = [&](Request& request) {
        connection.allow_body();
        request.progress = [&](std::uint64_t, std::uint64_t) { return connection.is_there(); };
        request.headers.erase("Accept-Encoding");  // compressing takes longer than a local connection
    };
    if (!process_request(connection, true, closed, prepare)) return false;
    connection.let_go();
    return true;
} catch (const std::exception&) {  // no memory; the socket is closed
    return false;
}

httplib::Server::HandlerResponse PageServer::answer_file(const Request& request, Response& response) const {
    const auto at = documents.find(request.path);
    const bool is_document = at != documents.end();
    if (const auto refusal = refusal_of(request, listen, is_document)) {
        refuse(response, refusal->status, refusal->message);
        if (refusal->status == 405) response.set_header("Allow", is_document ? "GET, HEAD" : "POST");
        return HandlerResponse::Handled;
    }
    if (!is_document) return HandlerResponse::Unhandled;
    response.set_header("ETag", at->second.tag);
    response.set_header("Cache-Control", "no-cache");
    response.status = request.get_header_value("If-None-Match") == at->second.tag ? 304 : 200;
    if (response.status == 200) response.set_content(at->second.text, at->second.type);
    return HandlerResponse::Handled;
}

void PageServer::answer_request(const Request& request, Response& response, const httplib::ContentReader& read) {
    struct Count {
        std::atomic<int>& of;
        const int by;
        const int before = of.fetch_add(by);
        ~Count() { of -= by; }
    };
    const auto size = std::stoull(request.get_header_value("Content-Length"));
    const Count count{large, size > SMALL ? 1 : 0};
    if (count.by > 0 && count.before >= MOST_LARGE)
        return refuse(response, 503,
                      std::to_string(MOST_LARGE) + " large requests are under way; try again in a moment");
    std::string body;
    const bool whole = read([&](const char* piece, std::size_t bytes) {
        body.append(piece, bytes);
        return body.size() <= LARGEST_BODY;
    });
    if (!whole || body.size() != size) return refuse(response, 408, "the body did not come within 5 s");
    std::string line;
    try {
        const std::lock_guard<std::mutex> held(parsing);  // what is parsed takes up to 20 times the memory
        line = line_of(body);
    } catch (const Error& error) {
        return refuse(response, 400, error.what());
    }
    body.clear();
    const auto is_wanted = [&] { return request.progress(0, 0); };
    Reply reply = desk.ask(request.get_header_value("X-Velquor-Page"), std::move(line), is_wanted);
    if (reply.status != 200) return refuse(response, reply.status, reply.text);
    response.status = 200;
    response.body = std::move(reply.text);
    response.set_header("Content-Type", "application/json");
    response.set_header("Cache-Control", "no-store");
}

}  // namespace velquor
