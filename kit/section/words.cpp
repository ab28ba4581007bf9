#include "kit/section/words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace velquor {

namespace {

constexpr std::size_t LONGEST_QUOTE = 60;
constexpr std::size_t MOST_NAMES = 25;  // that are listed

// Letters to insert, drop, replace or swap with their neighbour (restricted Damerau-Levenshtein distance).
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> last, row(b.size() + 1), next(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        next[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            next[j] = std::min({row[j] + 1, next[j - 1] + 1, row[j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                next[j] = std::min(next[j], last[j - 2] + 1);
        }
        last = row;
        std::swap(row, next);
    }
    return row[b.size()];
}

// How many bytes the printable character here has; 0 where there is none. UTF-8 as RFC 3629 has it: no longer forms
// than needed, no surrogates, none above U+10FFFF.
std::size_t letter_at(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) -> unsigned {
        return k < text.size() ? static_cast<unsigned char>(text[k]) : 0u;
    };
    const unsigned first = byte(i), second = byte(i + 1);
    if (first < 0x80) return first >= ' ' && first != 0x7f;
    if (first < 0xc2 || first > 0xf4) return 0;
    const std::size_t bytes = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    for (std::size_t k = i + 1; k < i + bytes; ++k)
        if ((byte(k) & 0xc0) != 0x80) return 0;
    const bool longer = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool beyond = (first == 0xed && second >= 0xa0) || (first == 0xf4 && second >= 0x90);
    if (first == 0xc2 && second < 0xa0) return 0;  // control characters
    return longer || beyond ? 0 : bytes;
}

}  // namespace

std::string text_of(double value) {
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string text_of(double value, int digits) {
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr};
}

std::string text_beside(double size, double value, int digits) {
    const int decimals = std::max(0, digits - static_cast<int>(std::floor(std::log10(std::max(2 * size, 1e-300)))));
    if (decimals > 9) return text_of(std::abs(value) < std::pow(10.0, -decimals) / 2 ? 0 : value, digits);
    char text[400];
    std::string shown(text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr);
    if (decimals > 0) shown.erase(shown.find_last_not_of('0') + 1);
    if (shown.back() == '.') shown.pop_back();
    return shown == "-0" ? "0" : shown;
}

std::string ordinal(std::size_t number) {
    const bool teens = number / 10 % 10 == 1;
    const char* ending = number % 10 == 1 ? "st" : number % 10 == 2 ? "nd" : number % 10 == 3 ? "rd" : "th";
    return std::to_string(number) + (teens ? "th" : ending);
}

std::string printable(std::string_view text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t bytes = letter_at(text, i);
        if (bytes == 0)
            shown += '?';
        else
            shown += text.substr(i, bytes);
        i += std::max<std::size_t>(bytes, 1);
    }
    return shown;
}

std::string in_markup(std::string_view text) {
    std::string safe;
    for (const char c : printable(text)) switch (c) {
            case '&': safe += "&amp;"; break;
            case '<': safe += "&lt;"; break;
            case '>': safe += "&gt;"; break;
            case '"': safe += "&quot;"; break;
            default: safe += c;
        }
    return safe;
}

std::string in_quotes(std::string_view text) {
    std::size_t end = std::min(text.size(), LONGEST_QUOTE);
    while (end > 0 && end < text.size() && (text[end] & 0xc0) == 0x80) --end;  // between two characters of UTF-8
    return "\"" + printable(text.substr(0, end)) + (end < text.size() ? "...\"" : "\"");
}

std::string plain(std::string_view name) {
    std::string result;
    for (const char c : name)
        if (c >= 'A' && c <= 'Z')
            result += static_cast<char>(c - 'A' + 'a');
        else if (c != ' ' && c != '\t')
            result += c;
    return result;
}

std::string did_you_mean(std::string_view word, const std::vector<std::string>& names) {
    const std::string wanted = plain(word.substr(0, LONGEST_QUOTE));
    const std::string* nearest = nullptr;
    std::size_t least = wanted.size() / 3 + 1;  // more than this many wrong letters: another word
    for (const std::string& name : names) {
        const std::size_t distance = edit_distance(wanted, plain(name));
        if (distance < least || (distance == least && !nearest && distance < name.size())) {
            least = distance;
            nearest = &name;
        }
    }
    if (nearest) return "did you mean " + in_quotes(*nearest) + "?";
    if (names.empty() || names.size() > MOST_NAMES) return "";
    std::string all = names.size() == 1 ? "it can only be " : "it can be one of ";
    for (const std::string& name : names) all += (&name == &names.front() ? "" : ", ") + in_quotes(name);
    return all;
}

}  // namespace velquor
