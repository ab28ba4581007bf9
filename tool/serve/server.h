// What the server answers: the files of the page, and requests of docs/protocol.md by the desk.
#pragma once

#include <httplib.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>

#include "tool/serve/desk.h"
#include "tool/serve/site.h"

namespace velquor {

class Threads;

class PageServer final : public httplib::Server {
public:
    PageServer(const std::string& address, Desk& desk);

    // The port that is listened on, 0 as `port` for a free one. Throws Error where it cannot be.
    int bind(int port);

private:
    bool process_and_close_socket(socket_t socket) override;
    HandlerResponse answer_file(const httplib::Request& request, httplib::Response& response) const;
    void answer_request(const httplib::Request& request, httplib::Response& response,
                        const httplib::ContentReader& read);

    std::string listen;
    Desk& desk;
    std::map<std::string, SiteFile> documents;
    std::atomic<Threads*> threads = nullptr;
    std::atomic<int> large = 0;  // bodies that are under way
    std::mutex parsing;
};

}  // namespace velquor
