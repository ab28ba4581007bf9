// Fuzz target of meshes from files: any file is read, whole and sound, or refused. The first letter of an input is the
// kind of the file. Gmsh reads in a process of its own, where it may crash: that is counted, and told at the end.
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "kit/mesh/mesh.h"
#include "kit/mesh/mesh_file.h"
#include "kit/section/vectors.h"

namespace {

using Random = std::minstd_rand;

const char* const KINDS[] = {"msh", "bdf", "unv", "vtk", "mesh", "stl"};

// What became of the inputs; written when the process ends.
struct Ends {
    std::map<std::string, long> counts;
    ~Ends() {
        for (const auto& [end, count] : counts) std::fprintf(stderr, "ends: %ld %s\n", count, end.c_str());
    }
};

std::string new_file(const char* ending) {
    const std::string file = std::string("/tmp/velquor-fuzz-XXXXXX.") + ending;
    std::vector<char> name(file.c_str(), file.c_str() + file.size() + 1);
    const int made = mkstemps(name.data(), static_cast<int>(std::strlen(ending)) + 1);
    fuzz::expect(made >= 0, "a temporary file");
    close(made);
    return name.data();
}

// Words and numbers of the text, which are changed one by one, so that the form stays.
std::vector<std::pair<std::size_t, std::size_t>> words_of(const std::string& text) {
    std::vector<std::pair<std::size_t, std::size_t>> words;
    for (std::size_t i = 1; i < text.size();) {
        const std::size_t begin = text.find_first_not_of(" ,\n", i);
        if (begin == std::string::npos) break;
        i = std::min(text.find_first_of(" ,\n", begin), text.size());
        words.emplace_back(begin, i - begin);
    }
    return words;
}

void change(std::string& text, Random& random) {
    static const char* const WORDS[] = {"0",          "1",          "2",    "3",  "-1",  "9", "16",
                                        "4294967296", "2147483647", "nan",  "4",  "5",   "7", "10",
                                        "1e9",        "1000000000", "1e-9", "-7", "0.5", "$"};
    const auto words = words_of(text);
    if (words.empty()) return;
    const auto [at, size] = words[random() % words.size()];
    const auto [from, length] = words[random() % words.size()];
    switch (random() % 5) {
        case 0: text.replace(at, size, text.substr(from, length)); break;
        case 1: text.erase(at, std::min(text.find('\n', at), text.size()) - at); break;          // the rest of a line
        case 2: text.insert(at, text.substr(from, text.find('\n', from) - from) + "\n"); break;  // another line
        default: text.replace(at, size, WORDS[random() % std::size(WORDS)]);
    }
}

void expect_sound(const velquor::Section& section) {
    const velquor::Mesh mesh = mesh_of(section);
    fuzz::expect(!mesh.elements.empty() && mesh.owners.size() == mesh.elements.size(), "elements with owners");
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        fuzz::expect(static_cast<std::size_t>(mesh.owners[e]) < section.parts.size(), "an owner");
        const auto& c = mesh.elements[e];
        double area = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            fuzz::expect(c[k] >= 1 && static_cast<std::size_t>(c[k]) <= mesh.nodes.size(), "a node");
            const velquor::Point o = mesh.nodes.at(static_cast<std::size_t>(c[0]) - 1);
            area += cross(mesh.nodes.at(static_cast<std::size_t>(c[k]) - 1) - o,
                          mesh.nodes.at(static_cast<std::size_t>(c[(k + 1) % 4]) - 1) - o);
        }
        fuzz::expect(area > 0, "a counter-clockwise element");
    }
}

}  // namespace

extern "C" __attribute__((weak)) std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    Random random(seed);
    std::string text(reinterpret_cast<const char*>(data), size);
    if (random() % 5 == 0) return LLVMFuzzerMutate(data, size, most);
    for (unsigned count = 1 + random() % 4; count > 0; --count) change(text, random);
    text.resize(std::min(text.size(), most));
    std::copy(text.begin(), text.end(), data);
    return text.size();
}

extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Ends ends;
    // What ends in the process that reads is no find.
    static const int alone = pthread_atfork(nullptr, nullptr, [] {
        if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(nullptr);
    });
    fuzz::expect(alone == 0, "a handler");
    if (size < 2) return 0;
    const std::string path = new_file(KINDS[data[0] % std::size(KINDS)]);
    std::ofstream(path, std::ios::binary) << std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
    velquor::Section section;
    section.materials = {{"m", 1, 0.4}};
    try {
        read_mesh(section, path, "", 5);
        expect_sound(section);
        ++ends.counts["read"];
    } catch (const velquor::Error& error) {
        fuzz::expect(*error.what() != '\0', "a message");
        const bool of_reader = error.fault.find("the reader of meshes") == 0;
        ++ends.counts[of_reader ? error.fault : "refused"];
        // A process that cannot answer in another way than by a crash or a limit of its own is ours.
        fuzz::expect(error.fault.find("an answer that ends too soon") == std::string::npos, "a whole answer");
        fuzz::expect(error.fault.find("failed without a reason") == std::string::npos, "a reason");
    }
    unlink(path.c_str());
    return 0;
}
