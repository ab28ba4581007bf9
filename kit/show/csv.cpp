#include "kit/section/words.h"
#include "kit/show/show.h"

#include <cmath>

namespace velquor {

namespace {

std::string cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string cell(const Entry& entry, double value) { return entry.given && std::isfinite(value) ? text_of(value) : ""; }

}  // namespace

std::string show_csv(const std::vector<Outcome>& outcomes) {
    std::string text = "name,length,force";
    for (const Quantity& q : quantities()) text += std::string(",") + q.key + "," + q.key + "_bound";
    text += "\r\n";
    for (const Outcome& outcome : outcomes) {
        if (outcome.failure) continue;
        const Values& v = outcome.values;
        text += cell(v.name.empty() ? outcome.input : v.name) + "," + v.length + "," + v.force;
        for (const Entry& entry : v.entries)
            text += "," + cell(entry, entry.value.value) + "," + cell(entry, entry.value.bound);
        text += "\r\n";
    }
    return text;
}

}  // namespace velquor
