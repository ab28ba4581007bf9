#include <algorithm>
#include <charconv>
#include <cmath>

#include "kit/section/words.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr int MOST_DIGITS = 7, FEWEST_DIGITS = 2;
constexpr double EXACT = 1e-9;  // relative bounds up to this are rounding

std::string formatted(double value, std::chars_format form, int precision) {
    char text[400];
    return {text, std::to_chars(text, text + sizeof text, value, form, precision).ptr};
}

// Decimal exponent of the first digit.
int exponent_of(double value) { return static_cast<int>(std::floor(std::log10(std::abs(value)))); }

// With this many digits; plain where that is readable.
std::string rounded(double value, int digits) {
    const int exponent = exponent_of(value);
    if (exponent >= -4 && exponent < MOST_DIGITS)
        return formatted(value, std::chars_format::fixed, std::max(0, digits - 1 - exponent));
    std::string text = formatted(value, std::chars_format::scientific, digits - 1);
    for (const char* const lean : {"e+0", "e+", "e-0"})  // 1.5e+09: 1.5e9
        if (const std::size_t at = text.find(lean); at != std::string::npos)
            return text.replace(at, std::string(lean).size(), lean[1] == '-' ? "e-" : "e");
    return text;
}

}  // namespace

std::string figures(const Value& v) {
    if (v.value == 0 || std::abs(v.value) <= v.bound) return "0";
    if (!(v.bound > 0)) return rounded(v.value, MOST_DIGITS);
    const int digits = exponent_of(v.value) - exponent_of(v.bound) + 1;
    return rounded(v.value, std::clamp(digits, FEWEST_DIGITS, MOST_DIGITS));
}

std::string bound_text(const Value& v) {
    if (!std::isfinite(v.bound)) return "?";
    if (v.bound <= EXACT * std::abs(v.value)) return "exact";
    const double unit = std::pow(10.0, exponent_of(v.bound));
    return rounded(std::ceil(v.bound / unit * (1 - 1e-12)) * unit, 1);
}

}  // namespace velquor
