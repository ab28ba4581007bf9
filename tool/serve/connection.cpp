#include "tool/serve/connection.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tool/serve/refusal.h"

namespace velquor {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds TO_SEND{5000};   // the whole request
constexpr milliseconds TO_READ{10000};  // the whole answer
constexpr milliseconds TO_CLOSE{500};
constexpr milliseconds CROWDED{500};         // in place of these where others wait for a thread
constexpr milliseconds TURN{250};            // between looks whether they do
constexpr std::size_t LARGEST_HEAD = 16384;  // bytes

void name_of(int descriptor, int (*ask)(int, sockaddr*, socklen_t*), std::string& address, int& port) {
    sockaddr_storage name = {};
    socklen_t size = sizeof name;
    std::array<char, INET6_ADDRSTRLEN> text = {};
    address.clear();
    port = 0;
    if (ask(descriptor, reinterpret_cast<sockaddr*>(&name), &size) != 0) return;
    const auto* const four = reinterpret_cast<const sockaddr_in*>(&name);
    const auto* const six = reinterpret_cast<const sockaddr_in6*>(&name);
    const void* const bytes = name.ss_family == AF_INET6 ? static_cast<const void*>(&six->sin6_addr) : &four->sin_addr;
    if (!inet_ntop(name.ss_family, bytes, text.data(), text.size())) return;
    address = text.data();
    port = ntohs(name.ss_family == AF_INET6 ? six->sin6_port : four->sin_port);
    const std::string mapped = "::ffff:";  // four bytes, where both kinds are listened to
    if (address.rfind(mapped, 0) == 0 && address.find('.') != address.npos) address.erase(0, mapped.size());
}

}  // namespace

Connection::Connection(int socket, std::function<bool()> others_wait)
    : descriptor(socket), crowded(std::move(others_wait)), left(LARGEST_HEAD) {
    const int yes = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);  // head and body are written in turn
    begin(TO_SEND);
}

Connection::~Connection() { close(descriptor); }

void Connection::begin(Time most) {
    begun = Clock::now();
    allowed = most;
}

bool Connection::wait(short event) {
    while (true) {
        const auto end = begun + (crowded() ? std::min(allowed, CROWDED) : allowed);
        const auto time = std::min(TURN, std::chrono::ceil<milliseconds>(end - Clock::now()));
        if (time <= milliseconds::zero()) return false;
        pollfd ready = {descriptor, event, 0};
        if (poll(&ready, 1, static_cast<int>(time.count())) > 0) return true;
    }
}

bool Connection::receive() {
    std::array<char, 4096> block;
    while (left > 0 && wait(POLLIN)) {
        const ssize_t n = recv(descriptor, block.data(), std::min(block.size(), left), MSG_DONTWAIT);
        if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (n <= 0) return false;
        came.append(block.data(), static_cast<std::size_t>(n));
        left -= static_cast<std::size_t>(n);
        return true;
    }
    return false;
}

// The library matches Range by std::regex, a call in the other for each character: 8,000 of them take more than 4 MB of
// stack. Nobody needs it here.
void Connection::take_head() {
    while (came.find("\r\n\r\n") == came.npos && receive()) continue;
    const std::string name = "range", other = "x-nil";
    for (std::size_t line = came.find('\n'); line != came.npos; line = came.find('\n', line + 1))
        if (strncasecmp(came.c_str() + line + 1, name.c_str(), name.size()) == 0)
            came.replace(line + 1, name.size(), other);
}

void Connection::allow_body() { left += LARGEST_BODY; }

ssize_t Connection::read(char* to, size_t size) {
    if (at == came.size()) {
        came.clear();
        at = 0;
        if (!receive()) return -1;
    }
    const std::size_t taken = std::min(size, came.size() - at);
    std::memcpy(to, came.data() + at, taken);
    at += taken;
    return static_cast<ssize_t>(taken);
}

ssize_t Connection::write(const char* from, size_t size) {
    if (!std::exchange(writes, true)) begin(TO_READ);
    while (wait(POLLOUT)) {
        const ssize_t n = send(descriptor, from, size, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (n >= 0) return n;
        if (errno != EINTR && errno != EAGAIN) break;
    }
    return -1;
}

// Closed while something lies unread, the connection would be reset, and the answer lost with it.
void Connection::let_go() {
    shutdown(descriptor, SHUT_WR);
    begin(TO_CLOSE);
    left = LARGEST_HEAD + 2 * LARGEST_BODY;
    while (receive()) came.clear();
}

bool Connection::is_there() const {
    pollfd ready = {descriptor, POLLRDHUP, 0};
    return poll(&ready, 1, 0) <= 0;
}

void Connection::get_remote_ip_and_port(std::string& address, int& port) const {
    name_of(descriptor, getpeername, address, port);
}

void Connection::get_local_ip_and_port(std::string& address, int& port) const {
    name_of(descriptor, getsockname, address, port);
}

}  // namespace velquor
