// Fuzz target of section files: any text is read or refused, and what is read is written and read again. Half of the
// inputs are changed as JSON, value by value, so that they come past the parser.
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "kit/section/file.h"

namespace {

using nlohmann::json;
using Random = std::minstd_rand;

bool valid_utf8(const std::string& text) {
    try {
        json(text).dump();
        return true;
    } catch (const json::type_error&) {
        return false;
    }
}

// Numbers at which something changes, the others near those that stand there.
json number_near(double value, Random& random) {
    static const double VALUES[] = {0, 1, 2, 3, 10, 0.5, -1, 1e-9, 1e-300, 1e9, -1e9, 1e30, 1e300, 90, 10000};
    switch (random() % 6) {
        case 0: return VALUES[random() % std::size(VALUES)];
        case 1: return static_cast<int>(random() % 20);
        case 2: return -value;
        case 3: return value * 2;
        case 4: return value * (1 + 1e-8);
        default: return value + static_cast<double>(random() % 201) - 100;
    }
}

void collect(json& value, std::vector<json*>& all) {
    all.push_back(&value);
    if (value.is_structured())
        for (json& inner : value) collect(inner, all);
}

// One value is changed, left out, doubled, or replaced by another of the same file.
void change(json& file, Random& random) {
    std::vector<json*> all;
    collect(file, all);
    json& value = *all[random() % all.size()];
    const json other = *all[random() % all.size()];
    const unsigned way = random() % 8;
    if (value.is_number() && way < 6) {
        value = number_near(value.get<double>(), random);
    } else if (value.is_array() && !value.empty() && way < 6) {
        const auto at = value.begin() + static_cast<json::difference_type>(random() % value.size());
        if (way < 2)
            value.erase(at);
        else if (way < 4)
            value.insert(at, json(*at));
        else
            std::swap(*at, value.front());
    } else if (value.is_object() && !value.empty() && way < 6) {
        auto at = value.begin();
        std::advance(at, random() % value.size());
        if (way < 3)
            value.erase(at);
        else
            at.value() = other;
    } else {
        value = other;
    }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    Random random(seed);
    const json file = json::parse(data, data + size, nullptr, false);
    if (!file.is_discarded() && random() % 2 == 0) {
        json changed = file;
        for (unsigned count = 1 + random() % 3; count > 0; --count) change(changed, random);
        const std::string text = changed.dump(-1, ' ', false, json::error_handler_t::replace);
        if (fuzz::put(text, data, most)) return text.size();
    }
    return LLVMFuzzerMutate(data, size, most);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    velquor::Section section;
    try {
        section = velquor::read_section(text);
    } catch (const velquor::Error& error) {
        fuzz::expect(*error.what() != '\0' && valid_utf8(error.what()), "a message in UTF-8");
        return 0;
    }
    const std::string written = velquor::write_section(section);
    try {
        fuzz::expect(velquor::write_section(velquor::read_section(written)) == written, "read again it is the same");
    } catch (const velquor::Error& error) {
        std::fprintf(stderr, "%s\n%s\n", written.c_str(), error.what());
        fuzz::expect(false, "what was written is read");
    }
    return 0;
}
