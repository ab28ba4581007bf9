#include "kit/mesh/named_files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "kit/mesh/mesh_file.h"
#include "kit/section/drawing.h"
#include "kit/section/file.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

void take_drawing(Section& section, const std::filesystem::path& folder) {
    const std::string name = section.drawing.file;
    try {
        read_drawing(section, text_of_file(folder / name));
    } catch (const Error& error) {
        throw Error(printable(name) + (error.place.empty() ? "" : ": ") + error.place, error.fault, error.remedy);
    }
    for (std::string& note : section.notes) note.insert(0, printable(name) + ": ");
}

}  // namespace

void read_named_files(Section& section, const std::filesystem::path& folder) {
    if (!section.mesh.file.empty()) read_mesh(section, folder / section.mesh.file, section.mesh.file);
    if (!section.drawing.file.empty()) take_drawing(section, folder);
}

std::string text_of_file(const std::string& name) {
    const bool standard = name == "-";
    const auto close = [](std::FILE* f) { return f == stdin ? 0 : std::fclose(f); };
    const std::unique_ptr<std::FILE, decltype(close)> file(standard ? stdin : std::fopen(name.c_str(), "rb"), close);
    if (!file) throw Error("", std::string("cannot be read: ") + std::strerror(errno));
    std::string text;
    char block[8192];
    while (const std::size_t size = std::fread(block, 1, sizeof block, file.get())) {
        text.append(block, size);
        if (text.size() > LARGEST_TEXT) break;  // which is refused as too large
    }
    if (std::ferror(file.get())) throw Error("", std::string("cannot be read: ") + std::strerror(errno));
    return text;
}

}  // namespace velquor
