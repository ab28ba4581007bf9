#include "tool/output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tool/commands.h"

namespace velquor {

namespace {

constexpr int UNLIMITED = 120;

}  // namespace

void write(const std::string& text, const std::string& file) {
    std::FILE* const stream = file.empty() ? stdout : std::fopen(file.c_str(), "wb");
    const std::string name = file.empty() ? "the standard output" : file;
    if (!stream) throw CannotWrite(name + ": cannot be written: " + std::strerror(errno));
    bool good = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    good = std::fflush(stream) == 0 && good;
    int fault = errno;
    if (!file.empty() && std::fclose(stream) != 0 && good) {
        good = false;
        fault = errno;
    }
    if (!good) throw CannotWrite(name + ": cannot be written: " + std::strerror(fault));
}

int width_of_output() {
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : UNLIMITED;
}

Failure failure() {
    try {
        throw;
    } catch (const Unsolved& error) {
        return {error.place, error.fault, error.remedy, NOT_SOLVED};
    } catch (const Error& error) {
        return {error.place, error.fault, error.remedy, REFUSED};
    }
}

void complain(const std::string& input, const Failure& f) {
    const std::string message = Error(f.place, f.fault, f.remedy).what();
    std::fprintf(stderr, "velquor: %s%s%s\n", input.c_str(), input.empty() ? "" : ": ", message.c_str());
}

}  // namespace velquor
