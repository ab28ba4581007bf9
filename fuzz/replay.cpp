// Feeds every file of the given folders to a fuzz target: what once found something, as a test for any compiler.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/input.h"

int main(int count, char** folders) {
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (int k = 1; k < count; ++k)
        for (const fs::directory_entry& entry : fs::directory_iterator(folders[k])) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
        std::fprintf(stderr, "%s\n", file.filename().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::fprintf(stderr, "%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
