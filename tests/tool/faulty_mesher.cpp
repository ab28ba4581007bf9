// In the place of mesh_of, other people's code at its worst: sections by these names crash, hang, grow or end the
// process, those by other names are meshed. "crash once FILE" does it where there is no such file yet; it then holds
// the number of the process.
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "kit/mesh/mesh.h"

namespace velquor {

Mesh meshed(const Section& section, double fineness,
            bool for_stresses) __asm__("__real__ZN7velquor7mesh_ofERKNS_7SectionEdb");
Mesh meshed_or_worse(const Section& section, double fineness,
                     bool for_stresses) __asm__("__wrap__ZN7velquor7mesh_ofERKNS_7SectionEdb");

namespace {

constexpr std::size_t STEP = std::size_t{1} << 25, MOST = std::size_t{3} << 30;

bool is_first(const std::string& file) {
    if (std::ifstream(file)) return false;
    std::ofstream(file + ".part") << getpid();
    return std::rename((file + ".part").c_str(), file.c_str()) == 0;
}

[[noreturn]] void hang() {
    for (;;) pause();
}

// To an end, so that a missing limit fails a test rather than the machine.
void grow(bool shared) {
    std::vector<std::unique_ptr<char[]>> own;
    for (std::size_t size = 0; size < MOST; size += STEP) {
        void* more = nullptr;
        if (shared)
            more = mmap(nullptr, STEP, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        else
            more = own.emplace_back(new char[STEP]).get();
        if (more != MAP_FAILED) std::memset(more, 1, STEP);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    throw std::runtime_error("grew without a limit");
}

}  // namespace

Mesh meshed_or_worse(const Section& section, double fineness, bool for_stresses) {
    std::istringstream words(section.name);
    std::string fault, once, file;
    words >> fault >> once >> file;
    if (once == "once" && !is_first(file)) return meshed(section, fineness, for_stresses);
    if (fault == "crash") std::abort();
    if (fault == "exit") std::exit(7);
    if (fault == "hang") hang();
    if (fault == "fork") {
        const pid_t parent = getpid();
        if (fork() == 0) {
            is_first(once + "/" + std::to_string(parent));
            hang();
        }
        hang();
    }
    if (fault == "grow") grow(once == "shared");
    return meshed(section, fineness, for_stresses);
}

}  // namespace velquor
