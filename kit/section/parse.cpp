#include "kit/section/parse.h"

#include <algorithm>
#include <set>

#include "kit/section/file.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

using nlohmann::json;

// Follows the parser through the text: counts, and knows where it is.
struct Watch {
    struct Level {
        bool list;
        std::size_t count = 0;
        std::set<std::string> keys;
        std::string key;
    };
    std::size_t deepest;
    std::vector<Level> levels = {};
    std::size_t values = 0;

    std::string place() const {
        std::string text;
        for (const Level& level : levels)
            if (level.list)
                text += "[" + std::to_string(level.count - 1) + "]";
            else if (!level.key.empty())
                text += (text.empty() ? "" : ".") + level.key;
        return text;
    }

    void begin_value() {
        if (!levels.empty() && levels.back().list) ++levels.back().count;
        if (++values > MOST_VALUES)
            throw Error(place(), "more than " + std::to_string(MOST_VALUES) + " values in the file");
    }

    bool operator()(int, json::parse_event_t event, json& value) {
        using Event = json::parse_event_t;
        switch (event) {
            case Event::object_start:
            case Event::array_start:
                begin_value();
                if (levels.size() == deepest)
                    throw Error(place(), "nested deeper than " + std::to_string(deepest) + " lists and objects");
                levels.push_back({event == Event::array_start, 0, {}, {}});
                break;
            case Event::object_end:
            case Event::array_end: levels.pop_back(); break;
            case Event::value: begin_value(); break;
            case Event::key: {
                const std::string key = value.get<std::string>();
                const std::string shown = in_quotes(key);
                levels.back().key.clear();
                if (!levels.back().keys.insert(key).second) throw Error(place(), "key " + shown + " stands twice");
                levels.back().key = shown.substr(1, shown.size() - 2);
                break;
            }
        }
        return true;
    }
};

std::string line_and_column(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, byte > 0 ? std::min(byte - 1, text.size()) : 0);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t last = before.rfind('\n');
    const std::size_t column = before.size() - (last == std::string_view::npos ? 0 : last + 1) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// What the parser's own message says after its number, its place, and what it was reading.
std::string fault_of(const json::parse_error& error) {
    std::string text = error.what();
    if (const std::size_t at = text.find(" - "); at != std::string::npos) text = text.substr(at + 3);
    return "not JSON: " + printable(text);
}

}  // namespace

json parse_text(std::string_view text, int deepest) {
    if (text.size() > LARGEST_TEXT)
        throw Error("", "the file has " + std::to_string(text.size()) + " bytes",
                    "at most " + std::to_string(LARGEST_TEXT) + " are read");
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos)
        throw Error("", "nothing is given", "it must be an object in braces");
    if (text.substr(0, 2).find_first_of(std::string_view("\0\xfe\xff", 3)) != std::string_view::npos)
        throw Error("", "not a text in UTF-8", "save it as UTF-8");
    Watch watch = {static_cast<std::size_t>(deepest)};
    try {
        return json::parse(text.begin(), text.end(), [&](int depth, json::parse_event_t event, json& value) {
            return watch(depth, event, value);
        });
    } catch (const json::parse_error& error) {
        throw Error(line_and_column(text, error.byte), fault_of(error));
    } catch (const json::out_of_range&) {
        throw Error(watch.place(), "a number is too large for 64 bits");
    }
}

}  // namespace velquor
