// One connection of the server, which serves one request: what its client may send, and how long it may take.
#pragma once

#include <httplib.h>

#include <chrono>
#include <functional>
#include <string>

namespace velquor {

// Closes the socket at its end. Reads and writes fail once the client has taken its time, which is short where others
// wait for a thread, and reads also once it has sent more than it may.
class Connection final : public httplib::Stream {
public:
    Connection(int socket, std::function<bool()> others_wait);
    ~Connection() override;

    // The head as it came, whole or broken off, is what is read first. None of its headers is Range.
    void take_head();
    void allow_body();      // behind the head, which was read
    void let_go();          // nothing more is written: waits for a moment until the client has read and closes
    bool is_there() const;  // the client, as far as can be known

    bool is_readable() const override { return true; }
    bool is_writable() const override { return is_there(); }
    ssize_t read(char* to, size_t size) override;
    ssize_t write(const char* from, size_t size) override;
    void get_remote_ip_and_port(std::string& address, int& port) const override;
    void get_local_ip_and_port(std::string& address, int& port) const override;
    socket_t socket() const override { return descriptor; }

private:
    using Clock = std::chrono::steady_clock;
    using Time = std::chrono::milliseconds;

    bool wait(short event);  // false once the time is over
    void begin(Time most);

    int descriptor;
    std::function<bool()> crowded;
    Clock::time_point begun;
    Time allowed;
    bool writes = false;
    bool receive();    // appends to what came; false once no more will come
    std::size_t left;  // bytes that may still come
    std::string came;
    std::size_t at = 0;  // what is to be read next of it
};

}  // namespace velquor
