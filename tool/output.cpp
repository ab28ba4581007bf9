#include "tool/output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "kit/section/words.h"
#include "tool/commands.h"

namespace velquor {

namespace {

namespace fs = std::filesystem;

constexpr int UNLIMITED = 120;

}  // namespace

void write(const std::string& text, const std::string& file) {
    write_pieces(
        [&, done = false](std::string& piece) mutable {
            if (!done) piece = text;
            return !std::exchange(done, true);
        },
        file);
}

void write_pieces(const std::function<bool(std::string&)>& next, const std::string& file) {
    const std::string name = file.empty() ? "the standard output" : file;
    const auto fail = [&](int fault) {
        const std::string said = name + ": cannot be written: " + std::strerror(fault);
        if (file.empty() && fault == EPIPE) throw ReaderLeft(said);
        throw CannotWrite(said);
    };
    // Beside a file and then in its place, so that it is whole or as it was; devices and pipes as they are.
    std::error_code none;
    const fs::file_status was = fs::status(file, none);
    const bool beside = !file.empty() && (!fs::exists(was) || fs::is_regular_file(was));
    const std::string target =
        fs::is_symlink(fs::symlink_status(file, none)) ? fs::weakly_canonical(file, none).string() : file;
    const std::string path = beside ? target + ".part" : file;

    std::FILE* const stream = file.empty() ? stdout : std::fopen(path.c_str(), "wb");
    if (!stream) fail(errno);
    bool good = true;
    std::string piece;
    try {
        for (; good && next(piece); piece.clear())
            good = std::fwrite(piece.data(), 1, piece.size(), stream) == piece.size();
    } catch (...) {
        if (!file.empty()) std::fclose(stream);
        if (beside) std::remove(path.c_str());
        throw;
    }
    good = std::fflush(stream) == 0 && good;
    int fault = errno;
    if (!file.empty() && std::fclose(stream) != 0 && good) {
        good = false;
        fault = errno;
    }
    if (good && beside) {
        if (fs::exists(was)) fs::permissions(path, was.permissions(), none);
        good = std::rename(path.c_str(), target.c_str()) == 0;
        fault = errno;
    }
    if (!good && beside) std::remove(path.c_str());
    if (!good) fail(fault);
}

std::string ending_of(const std::string& file, const std::vector<std::string>& endings) {
    const std::string ending = plain(fs::path(file).extension().string());
    if (std::find(endings.begin(), endings.end(), ending) != endings.end()) return ending;
    std::string all;
    for (const std::string& known : endings)
        all += (all.empty() ? "" : &known == &endings.back() ? " or " : ", ") + known;
    throw Error("-o", in_quotes(file) + (ending.empty() ? " has no ending" : " has an unknown ending"),
                "it must be " + all);
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

void tell(const std::string& input, const std::vector<std::string>& notes) {
    for (const std::string& note : notes) std::fprintf(stderr, "velquor: %s: note: %s\n", input.c_str(), note.c_str());
}

}  // namespace velquor
