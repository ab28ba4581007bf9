#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <thread>

#include "tool/commands.h"
#include "tool/output.h"
#include "tool/serve/browser.h"
#include "tool/serve/desk.h"
#include "tool/serve/server.h"

namespace velquor {

namespace {

constexpr rlim_t FILES = 4096;  // a connection takes one

void allow_files() {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(limit.rlim_max, FILES));
    setrlimit(RLIMIT_NOFILE, &limit);
}

std::string address_of(const std::string& listen, int port) {
    const bool any = listen == "0.0.0.0" || listen == "::";
    const std::string host = any ? "127.0.0.1" : listen.find(':') == listen.npos ? listen : "[" + listen + "]";
    return "http://" + host + ":" + std::to_string(port) + "/";
}

}  // namespace

int serve(const ServeOptions& options) {
    // Of the main thread alone, which waits for them.
    sigset_t ends;
    sigemptyset(&ends);
    for (const int number : {SIGINT, SIGTERM}) sigaddset(&ends, number);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    allow_files();

    PoolOptions pool;
    pool.jobs = options.jobs;
    pool.seconds = options.seconds;
    pool.megabytes = options.megabytes;
    Desk desk(pool);
    PageServer server(options.listen, desk);
    const int port = server.bind(options.port);
    if (options.listen.rfind("127.", 0) != 0 && options.listen != "localhost" && options.listen != "::1")
        std::fprintf(stderr, "velquor: note: listens on %s: whoever reaches it may use it, without a password\n",
                     options.listen.c_str());
    std::thread accepts([&] { server.listen_after_bind(); });
    const std::string address = address_of(options.listen, port);
    while (!server.is_running()) std::this_thread::yield();  // one that does not run yet cannot be stopped
    try {
        write(address + "\n");
        if (options.open) open_browser(address);
        int number = 0;
        while (sigwait(&ends, &number) != 0) continue;
    } catch (const CannotWrite&) {
        desk.end();
        server.stop();
        accepts.join();
        throw;
    }
    desk.end();
    server.stop();
    accepts.join();
    return DONE;
}

}  // namespace velquor
