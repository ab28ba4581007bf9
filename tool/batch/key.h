// What results are kept under: a section's own content, whatever it is called and however its numbers are written.
#pragma once

#include <array>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

struct XXH3_state_s;

namespace velquor {

// 128 bits of XXH3.
using ContentKey = std::array<unsigned char, 16>;

// A folder whose files sections name, with what their content came to. A file is read once in a run.
struct Folder {
    std::string path;
    std::map<std::string, std::string> contents = {};
};

// Of a request as docs/protocol.md has it: its `id` and the name of its section do not count, 300 and 300.0 are one,
// and so are its keys in any order. What the files that it names contain counts, and the version of Velquor.
ContentKey key_of(const nlohmann::json& request, Folder& folder);

// Of a line that is no request: its bytes.
ContentKey key_of(std::string_view line);

// Of a line that is too long to be held: pieces of it, one after the other.
class PieceKey {
public:
    PieceKey();
    ~PieceKey();
    PieceKey(const PieceKey&) = delete;
    PieceKey& operator=(const PieceKey&) = delete;
    void take(std::string_view piece);
    ContentKey key() const;

private:
    XXH3_state_s* state;
};

}  // namespace velquor
