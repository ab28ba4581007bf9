#include <algorithm>

#include "kit/section/words.h"
#include "kit/show/lines.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr int WIDE = 100;                  // columns from which on there is room for the slots' names
constexpr std::size_t SHORTEST_NAME = 16;  // columns to which names in a table may be cut

// Columns on the screen: characters of UTF-8 count once.
std::size_t columns(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}
std::string left(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, columns(text)), ' ');
}
std::string right(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, columns(text)), ' ') + text;
}

// A name that fits into so many columns.
std::string shortened(const std::string& text, std::size_t width) {
    if (columns(text) <= width) return text;
    std::size_t end = 0;
    for (std::size_t count = 0; count < width; ++end) count += (text[end] & 0xc0) != 0x80;
    return text.substr(0, end - 1) + "…";  // in place of the last letter, of which the first byte was counted
}

using Lines = std::vector<std::vector<std::string>>;

std::vector<std::size_t> widths_of(const Lines& lines) {
    std::vector<std::size_t> widths;
    for (const auto& line : lines) {
        widths.resize(std::max(widths.size(), line.size()), 0);
        for (std::size_t k = 0; k < line.size(); ++k) widths[k] = std::max(widths[k], columns(line[k]));
    }
    return widths;
}

std::string trimmed(std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

std::string heading(const Values& v) {
    std::string text = (v.name.empty() ? "Section" : printable(v.name)) + "\n";
    text += std::to_string(v.nodes) + " nodes, " + std::to_string(v.levels) + (v.levels == 1 ? " level" : " levels");
    if (const std::string accuracy = accuracy_of(v); !accuracy.empty()) text += "; " + accuracy;
    if (!v.limit.empty()) text += "\n" + v.limit;
    if (v.materials.size() > 1 && !v.reference.empty()) text += "\nmoduli of reference: " + printable(v.reference);
    return text + "\n";
}

std::string list_of_materials(const Values& v) {
    if (v.materials.size() < 2) return "";
    Lines lines;
    for (const Share& share : v.materials) {
        lines.push_back({printable(share.material), figures({share.area, 0}), raised(v.length + "2"),
                         share.mass > 0 ? figures({share.mass, 0}) : "", share.mass > 0 ? "kg/m" : ""});
    }
    const auto widths = widths_of(lines);
    std::string text = "\nMaterials\n";
    for (const auto& line : lines)
        text += trimmed("  " + left(line[0], widths[0]) + "  " + right(line[1], widths[1]) + " " +
                        left(line[2], widths[2]) + "  " + right(line[3], widths[3]) + " " + line[4]);
    return text;
}

// What is missing, in lines of at most this width.
std::string list_of_missing(const Values& v, std::size_t width) {
    const std::vector<Missing> reasons = missing_of(v);
    std::string text = reasons.empty() ? "" : "\nNot given\n";
    for (const auto& [reason, symbols] : reasons) {
        std::string line = "  " + reason + ":";
        for (const std::string& symbol : symbols) {
            if (columns(line) + 1 + columns(symbol) > width) {
                text += line + "\n";
                line = "   ";
            }
            line += " " + symbol;
        }
        text += line + "\n";
    }
    return text;
}

std::vector<std::string> keys_that_fit(std::size_t width) {
    const std::vector<std::string> narrow = {"A", "mass", "Iy", "Iz", "It", "Iw"},
                                   more = {"Wel_y", "Wel_z", "Wpl_y", "Wpl_z"};
    std::vector<std::string> keys = narrow;
    if (width >= WIDE) keys.insert(keys.end(), more.begin(), more.end());
    return keys;
}

const Quantity& quantity_of(const std::string& key) {
    std::vector<std::string> names;
    for (const Quantity& q : quantities()) {
        if (key == q.key) return q;
        names.emplace_back(q.key);
    }
    throw Error("--columns", "unknown value " + in_quotes(key), did_you_mean(key, names));
}

}  // namespace

std::string show_text(const Values& v, int width, bool all) {
    Lines lines;  // symbol, value, sign, bound, unit, meaning, slots
    std::vector<const char*> groups;
    for (const Line& line : lines_of(v, all)) {
        const Quantity& q = *line.quantity;
        lines.push_back(
            {q.symbol, line.value, line.bound == "exact" ? "" : "±", line.bound, line.unit, q.meaning, q.slots});
        groups.push_back(q.group);
    }
    const auto widths = widths_of(lines);
    std::string text = heading(v), group;
    for (std::size_t k = 0; k < lines.size(); ++k) {
        if (group != groups[k]) text += "\n" + (group = groups[k]) + "\n";
        const auto& line = lines[k];
        std::string row = "  " + left(line[0], widths[0]) + "  " + right(line[1], widths[1]) + " " + left(line[2], 1) +
                          " " + left(line[3], widths[3]) + " " + left(line[4], widths[4]) + "  ";
        row += width >= WIDE ? left(line[5], widths[5]) + "  " + line[6] : line[5];
        text += trimmed(row);
    }
    return text + list_of_materials(v) + list_of_missing(v, static_cast<std::size_t>(width));
}

std::string show_table(const std::vector<Outcome>& outcomes, const std::vector<std::string>& keys, int width) {
    std::vector<const Quantity*> chosen;
    for (const auto& key : keys.empty() ? keys_that_fit(static_cast<std::size_t>(width)) : keys)
        chosen.push_back(&quantity_of(key));
    Lines lines;
    std::string length, force;
    for (const Outcome& outcome : outcomes) {
        if (outcome.failure) continue;
        if (lines.empty()) {
            length = outcome.values.length;
            force = outcome.values.force;
            lines.assign(2, {""});
            for (const Quantity* q : chosen) {
                lines[0].emplace_back(q->symbol);
                lines[1].push_back(raised(unit_of(*q, length, force)));
            }
        }
        const Values values = in_units(outcome.values, length, force);
        lines.push_back({printable(values.name.empty() ? outcome.input : values.name)});
        for (const Quantity* q : chosen) {
            const Entry& entry = values[q->key];
            lines.back().push_back(entry.given ? figures(entry.value) : "-");
        }
    }
    auto widths = widths_of(lines);
    std::string text;
    std::size_t taken = 0;
    for (std::size_t k = 1; k < widths.size(); ++k) taken += 2 + widths[k];
    const std::size_t room = std::max(taken + SHORTEST_NAME, static_cast<std::size_t>(width)) - taken;
    if (!widths.empty()) widths[0] = std::min(widths[0], room);
    for (const auto& line : lines) {
        std::string row = left(shortened(line[0], room), widths[0]);
        for (std::size_t k = 1; k < line.size(); ++k) row += "  " + right(line[k], widths[k]);
        text += trimmed(row);
    }
    return text;
}

}  // namespace velquor
