#include "kit/draw/colours.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr int STEPS = 16;  // between the colours of a map

// Every sixteenth colour of viridis, by S. van der Walt and N. Smith, dedicated to the public (CC0): lightness grows
// evenly, also for those who do not see red or green.
constexpr Colour VIRIDIS[STEPS + 1] = {
    {0.267, 0.0049, 0.329}, {0.282, 0.095, 0.417}, {0.279, 0.176, 0.483}, {0.259, 0.252, 0.525}, {0.230, 0.322, 0.546},
    {0.199, 0.388, 0.555},  {0.173, 0.449, 0.558}, {0.149, 0.508, 0.557}, {0.128, 0.567, 0.551}, {0.121, 0.626, 0.534},
    {0.158, 0.684, 0.502},  {0.246, 0.739, 0.452}, {0.369, 0.789, 0.383}, {0.516, 0.831, 0.294}, {0.679, 0.864, 0.190},
    {0.846, 0.887, 0.100},  {0.993, 0.906, 0.144}};

// Blue through near white to red, each side at its own hue (250 and 30 degrees) in Oklab, the colour space of
// B. Ottosson (2020): lightness falls evenly from 0.97 by 0.065 a step, alike on both sides.
constexpr Colour BLUE_RED[STEPS + 1] = {
    {0.000, 0.336, 0.642}, {0.000, 0.413, 0.725}, {0.125, 0.492, 0.808}, {0.251, 0.572, 0.877}, {0.379, 0.653, 0.926},
    {0.515, 0.733, 0.957}, {0.659, 0.811, 0.971}, {0.808, 0.887, 0.971}, {0.961, 0.961, 0.961}, {0.969, 0.844, 0.822},
    {0.962, 0.729, 0.688}, {0.938, 0.617, 0.563}, {0.897, 0.509, 0.448}, {0.838, 0.408, 0.346}, {0.764, 0.318, 0.257},
    {0.678, 0.236, 0.182}, {0.592, 0.152, 0.106}};

Colour between(const Colour& a, const Colour& b, double t) {
    return {a.r + t * (b.r - a.r), a.g + t * (b.g - a.g), a.b + t * (b.b - a.b)};
}

double reach_of(const Scale& s) { return std::max(std::abs(s.low), std::abs(s.high)); }

// Place on the map, from 0 to STEPS.
double place_of(const Scale& s, double value) {
    const double reach = reach_of(s);
    if (reach == 0) return s.diverging ? STEPS / 2 : 0;
    const double share = s.diverging ? 0.5 + 0.5 * value / reach : value / reach;
    return STEPS * std::clamp(share, 0.0, 1.0);
}

Colour colour_on(const Scale& s, double place) {
    const auto& map = s.diverging ? BLUE_RED : VIRIDIS;
    const int k = std::clamp(static_cast<int>(place), 0, STEPS - 1);
    return between(map[k], map[k + 1], place - k);
}

// Round numbers, five to seven of them where that can be.
std::vector<double> round_numbers(double low, double high) {
    std::vector<double> best;
    if (!(high > low)) return {high};
    const double size = std::pow(10.0, std::floor(std::log10(high - low)) - 1);
    double missed = 100;
    for (const double step : {1.0, 2.0, 2.5, 5.0, 10.0, 20.0, 25.0, 50.0}) {
        std::vector<double> numbers;
        const double slack = 1e-9 * (high - low);
        const double first = std::ceil((low - slack) / (step * size)),
                     last = std::floor((high + slack) / (step * size));
        if (last - first > 20) continue;
        for (double k = first; k <= last; ++k) numbers.push_back(k * (step * size));
        const double off = std::abs(static_cast<double>(numbers.size()) - 6);
        if (off < missed) missed = off, best = numbers;
    }
    return best;
}

}  // namespace

Scale scale_of(double low, double high, bool signs) {
    Scale s;
    s.diverging = signs;
    s.low = std::min(low, 0.0);
    s.high = std::max(high, 0.0);
    if (!signs) s.low = 0;
    const double reach = reach_of(s);
    // Rounding of what is nothing on one side.
    if (s.high < 1e-9 * reach) s.high = 0;
    if (-s.low < 1e-9 * reach) s.low = 0;
    s.ticks = round_numbers(s.low, s.high);
    if (reach > 0) {
        const int exponent = static_cast<int>(std::floor(std::log10(reach)));
        if (exponent < -2 || exponent > 4) s.power = std::pow(1000.0, std::floor(exponent / 3.0));
    }
    return s;
}

Colour colour_at(const Scale& scale, double value) { return colour_on(scale, place_of(scale, value)); }

std::vector<Stop> stops_between(const Scale& scale, double from, double to) {
    const double a = place_of(scale, from), b = place_of(scale, to);
    std::vector<Stop> stops{{0, colour_on(scale, a)}};
    const int steps = a < b ? 1 : -1;
    for (int k = static_cast<int>(steps > 0 ? std::floor(a) + 1 : std::ceil(a) - 1); steps * k < steps * b; k += steps)
        stops.push_back({(k - a) / (b - a), colour_on(scale, k)});
    stops.push_back({1, colour_on(scale, b)});
    return stops;
}

std::vector<Stop> map_of(const Scale& scale) {
    std::vector<Stop> stops;
    for (int k = 0; k <= STEPS; ++k) stops.push_back({static_cast<double>(k) / STEPS, colour_on(scale, k)});
    return stops;
}

std::pair<double, double> ends_of(const Scale& scale) {
    const double reach = reach_of(scale);
    return {scale.diverging ? -reach : 0, reach};
}

std::string with_minus(const std::string& text) {
    return text == "-0" ? "0" : text[0] == '-' ? "\u2212" + text.substr(1) : text;
}

std::string shown_on(const Scale& scale, double given) {
    const double value = given / scale.power;
    const int exponent = value == 0 ? 0 : static_cast<int>(std::floor(std::log10(std::abs(value)) + 1e-12));
    char text[400];
    const int decimals = std::max(0, scale.digits - 1 - exponent);
    std::string shown(text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr);
    if (decimals > 0) shown.erase(shown.find_last_not_of('0') + 1);
    if (shown.back() == '.') shown.pop_back();
    return with_minus(shown);
}

std::string unit_on(const Scale& scale, const std::string& unit) {
    static const char* const digits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    if (scale.power == 1) return raised(unit);
    const int power = static_cast<int>(std::lround(std::log10(scale.power)));
    std::string text = power < 0 ? "10⁻" : "10";
    for (const char c : std::to_string(std::abs(power))) text += digits[c - '0'];
    return text + " " + raised(unit);
}

}  // namespace velquor
