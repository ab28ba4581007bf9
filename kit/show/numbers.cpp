#include <algorithm>
#include <charconv>
#include <cmath>

#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr int MOST_DIGITS = 7, FEWEST_DIGITS = 2;
constexpr int SMALLEST = -4;    // exponent of numbers that are written without a power of ten
constexpr double EXACT = 1e-9;  // relative bounds up to this are rounding

std::string formatted(double value, std::chars_format form, int precision) {
    char text[400];
    return {text, std::to_chars(text, text + sizeof text, value, form, precision).ptr};
}

// Decimal exponent of the first digit.
int exponent_of(double value) { return static_cast<int>(std::floor(std::log10(std::abs(value)))); }

// The power of ten that is written behind a number of this exponent: 0 where it is readable without, else a third one.
int power_of(int exponent) {
    if (exponent >= SMALLEST && exponent < MOST_DIGITS) return 0;
    return 3 * static_cast<int>(std::floor(exponent / 3.0));
}

// With decimals down to that of exponent `last`, "83.561e6"; of an exact value without zeros at the end.
std::string written(double value, int last, int power, bool exact) {
    // Powers up to 22 are exact, and a division by one rounds once.
    const double scaled = power < 0 ? value * std::pow(10.0, -power) : value / std::pow(10.0, power);
    std::string text = formatted(scaled, std::chars_format::fixed, std::max(0, power - last));
    if (exact && text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
    }
    return power == 0 ? text : text + "e" + std::to_string(power);
}

}  // namespace

std::string figures(const Value& v) {
    if (v.value == 0 || std::abs(v.value) <= v.bound) return "0";
    const int exponent = exponent_of(v.value);
    const int wanted = v.bound > 0 ? exponent - exponent_of(v.bound) + 1 : MOST_DIGITS;
    return written(v.value, exponent - std::clamp(wanted, FEWEST_DIGITS, MOST_DIGITS) + 1, power_of(exponent),
                   v.bound <= EXACT * std::abs(v.value));
}

std::string bound_text(const Value& v) {
    if (!std::isfinite(v.bound)) return "?";
    if (v.bound <= EXACT * std::abs(v.value)) return "exact";
    int last = exponent_of(v.bound);
    if (std::abs(v.value) > v.bound) last = std::max(last, exponent_of(v.value) - MOST_DIGITS + 1);
    const double unit = std::pow(10.0, last);
    const double up = std::ceil(v.bound / unit * (1 - 1e-12)) * unit;
    last = exponent_of(up * (1 + 1e-12));
    const int power = std::abs(v.value) > v.bound ? power_of(exponent_of(v.value))
                      : last < SMALLEST           ? last
                                                  : power_of(last);
    return written(up, last, power, false);
}

std::string raised(const std::string& unit) {
    static const char* const digits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶"};
    std::string text;
    for (const char c : unit)
        if (c >= '0' && c <= '6')
            text += digits[c - '0'];
        else
            text += c == ' ' ? std::string("·") : std::string(1, c);
    return unit == "deg" ? "°" : text;
}

}  // namespace velquor
