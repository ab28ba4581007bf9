#include "tool/serve/browser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <thread>

namespace velquor {

namespace {

void complain(const std::string& address) {
    std::fprintf(stderr, "velquor: no browser could be started; open %s in yours\n", address.c_str());
}

// It may be the browser itself, and last as long.
void await(pid_t process, const std::string& address) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0) complain(address);
}

}  // namespace

void open_browser(const std::string& address) {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&files, descriptor, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    posix_spawnattr_t ways;
    posix_spawnattr_init(&ways);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&ways, &none);
    posix_spawnattr_setsigdefault(&ways, &all);
    posix_spawnattr_setpgroup(&ways, 0);  // an interrupt of ours is none of the browser's
    posix_spawnattr_setflags(&ways, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    std::string program = "xdg-open", what = address;
    char* const arguments[] = {program.data(), what.data(), nullptr};
    pid_t process = -1;
    const int fault = posix_spawnp(&process, program.c_str(), &files, &ways, arguments, environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&ways);
    if (fault != 0) return complain(address);
    std::thread(await, process, address).detach();
}

}  // namespace velquor
