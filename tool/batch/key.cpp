#include "tool/batch/key.h"

#include <xxhash.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>
#include <set>

#include "kit/section/file.h"
#include "kit/section/words.h"
#include "kit/show/lines.h"

namespace velquor {

namespace {

using nlohmann::json;

constexpr std::size_t MOST_FILES = 10000;    // whose contents are remembered
constexpr std::size_t LONGEST_LABEL = 1000;  // bytes, of no more letters than schemas allow

ContentKey bytes_of(const XXH128_hash_t& hash) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, hash);
    ContentKey key;
    std::copy(std::begin(canonical.digest), std::end(canonical.digest), key.begin());
    return key;
}

void write_text(const std::string& value, std::string& text) {
    text += std::to_string(value.size());  // so that nothing needs to be escaped
    text += '"';
    text += value;
}

// Keys whose values must be written as whole numbers: 3.0 is refused there.
void take_whole(const json& form, std::set<std::string>& keys) {
    for (const auto& [key, value] : form.items()) {
        if (!value.is_structured()) continue;
        if (value.is_object() && value.contains("type") && value["type"] == "integer") keys.insert(key);
        take_whole(value, keys);
    }
}

bool is_whole(const std::string& key) {
    static const std::set<std::string> keys = [] {
        std::set<std::string> all;
        take_whole(json::parse(section_schema()), all);
        return all;
    }();
    return keys.count(key) > 0;
}

// Text that may be anything. What is refused for it does not count as the same as what is not.
bool is_label(const json& value) {
    return value.is_string() && value.get_ref<const std::string&>().size() <= LONGEST_LABEL;
}

bool is_id(const json& value) { return value.is_null() || value.is_number() || is_label(value); }

// Keys in their order, every number as one of 64 bits; the name of what is named left out where it is wanted so.
void write_canonical(const json& value, bool nameless, std::string& text) {
    switch (value.type()) {
        case json::value_t::object:
            text += '{';
            for (const auto& [key, item] : value.items()) {
                if (nameless && key == "name" && is_label(item)) continue;
                write_text(key, text);
                if (item.is_number_float() && is_whole(key)) text += '.';
                write_canonical(item, false, text);
            }
            text += '}';
            break;
        case json::value_t::array:
            text += '[';
            for (const json& item : value) write_canonical(item, false, text);
            text += ']';
            break;
        case json::value_t::string: write_text(value.get_ref<const std::string&>(), text); break;
        case json::value_t::boolean: text += value.get<bool>() ? 't' : 'f'; break;
        case json::value_t::null: text += 'n'; break;
        default: text += text_of(value.get<double>()) + ' ';
    }
}

std::string content_of(const std::string& file) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(file, none)) return "none";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rb"), std::fclose);
    if (!stream) return "none";
    PieceKey key;
    char block[8192];
    while (const std::size_t size = std::fread(block, 1, sizeof block, stream.get())) key.take({block, size});
    const ContentKey bytes = key.key();
    return {bytes.begin(), bytes.end()};
}

void write_file(const json& section, const char* kind, Folder& folder, std::string& text) {
    if (!section.contains(kind) || !section[kind].is_object() || !section[kind].contains("file")) return;
    const json& file = section[kind]["file"];
    if (!file.is_string()) return;
    const std::string path = std::filesystem::path(folder.path) / file.get<std::string>();
    if (folder.contents.size() > MOST_FILES) folder.contents.clear();
    const auto [at, is_new] = folder.contents.try_emplace(path);
    if (is_new) at->second = content_of(path);
    write_text(at->second, text);
}

}  // namespace

ContentKey key_of(const json& request, Folder& folder) {
    std::string text = "request of " + version_text() + "\n";
    for (const auto& [key, value] : request.items()) {
        if (key == "id" && is_id(value)) continue;
        write_text(key, text);
        if (value.is_number_float() && is_whole(key)) text += '.';
        write_canonical(value, key == "section", text);
    }
    if (request.contains("section") && request["section"].is_object())
        for (const char* kind : {"mesh", "drawing"}) write_file(request["section"], kind, folder, text);
    return bytes_of(XXH3_128bits(text.data(), text.size()));
}

ContentKey key_of(std::string_view line) {
    PieceKey key;
    key.take(line);
    return key.key();
}

PieceKey::PieceKey() : state(XXH3_createState()) {
    if (!state) throw std::bad_alloc();
    XXH3_128bits_reset(state);
    take("line of " + version_text() + "\n");
}

PieceKey::~PieceKey() { XXH3_freeState(state); }

void PieceKey::take(std::string_view piece) { XXH3_128bits_update(state, piece.data(), piece.size()); }

ContentKey PieceKey::key() const { return bytes_of(XXH3_128bits_digest(state)); }

}  // namespace velquor
