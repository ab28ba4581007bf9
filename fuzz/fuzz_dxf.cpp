// Fuzz target of drawings: any text is read or refused, and the parts that are made of it are written and read again.
// Half of the inputs are changed group by group, so that they come past the look at their form.
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "kit/section/drawing.h"
#include "kit/section/file.h"

namespace {

using Random = std::minstd_rand;

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char c : text)
        if (c == '\n')
            lines.emplace_back();
        else
            lines.back() += c;
    return lines;
}

// A value is changed, or pairs of lines are left out, doubled or moved.
void change(std::vector<std::string>& lines, Random& random) {
    static const char* const VALUES[] = {"0", "1",  "-1",   "10",   "100",      "1e-7",   "1e9",   "0.5",     "360",
                                         "2", "70", "1000", "LINE", "POLYLINE", "VERTEX", "ARC",   "ELLIPSE", "INSERT",
                                         "4", "62", "A",    "B",    "STEEL",    "BLOCK",  "ENDBLK"};
    const std::size_t pairs = lines.size() / 2;
    if (pairs == 0) return;
    const auto pair = [&] { return lines.begin() + static_cast<std::ptrdiff_t>(2 * (random() % pairs)); };
    const auto at = pair(), other = pair();
    switch (random() % 8) {
        case 0: lines.erase(at, at + 2); break;
        case 1: {
            const std::vector<std::string> copy(at, at + 2);
            lines.insert(other, copy.begin(), copy.end());
            break;
        }
        case 2: std::swap_ranges(at, at + 2, other); break;
        case 3: *at = VALUES[random() % std::size(VALUES)]; break;
        case 4: at[1] = std::to_string(static_cast<int>(random() % 41) - 20); break;
        case 5: at[1] = other[1]; break;
        default: at[1] = VALUES[random() % std::size(VALUES)];
    }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    Random random(seed);
    if (random() % 2 == 0) {
        std::vector<std::string> lines = lines_of(std::string(data, data + size));
        for (unsigned count = 1 + random() % 4; count > 0; --count) change(lines, random);
        std::string text;
        for (const std::string& line : lines) text += (&line == &lines.front() ? "" : "\n") + line;
        if (fuzz::put(text, data, most)) return text.size();
    }
    return LLVMFuzzerMutate(data, size, most);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    velquor::is_drawing(text);
    velquor::Section section;
    section.materials = {{"steel", 210000, 81000, 0, 0, 0}};
    section.drawing.gap = size % 2 == 0 ? 0 : 0.5;
    std::string told;
    try {
        velquor::read_drawing(section, text);
        for (const std::string& note : section.notes) told += note + "\n";
    } catch (const velquor::Error& error) {
        told = error.what();
        fuzz::expect(!told.empty(), "a message");
    }
    fuzz::expect(nlohmann::json(told).dump() != "", "messages in UTF-8");  // dump() throws where they are not
    if (section.parts.empty()) return 0;
    const std::string written = velquor::write_section(section);
    fuzz::expect(velquor::write_section(velquor::read_section(written)) == written, "read again it is the same");
    return 0;
}
