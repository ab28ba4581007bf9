#include "tally.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <limits>

namespace {

constexpr double ROUNDING = 1e-10;  // share of the natural size

}  // namespace

double ratio_of(const Value& v) {
    const double ratio = v.error() / v.bound;
    return std::isnan(ratio) ? v.error() == 0 ? 0 : std::numeric_limits<double>::infinity() : ratio;
}

Verdict verdict_of(const Value& v) {
    if (!std::isfinite(v.bound)) return Verdict::unbounded;
    const double error = v.error();
    if (error <= ROUNDING * v.size && v.bound <= ROUNDING * v.size) return Verdict::exact;
    if (!(v.reference_bound <= v.bound / 5)) {
        if (error + v.reference_bound <= v.bound) return Verdict::holds;
        if (error - v.reference_bound > v.bound) return Verdict::fails;
        return Verdict::unsettled;
    }
    return error <= v.bound ? Verdict::holds : Verdict::fails;
}

void add(Tally& tally, const std::vector<Value>& values, std::vector<Value>& seen) {
    ++tally.sections;
    if (values.empty()) ++tally.failed;
    for (const Value& v : values) {
        const Verdict verdict = verdict_of(v);
        ++tally.of[static_cast<int>(verdict)];
        if (verdict != Verdict::holds && verdict != Verdict::fails) continue;
        const double ratio = ratio_of(v);
        tally.errors_over_bound.push_back(ratio);
        if (ratio > tally.largest_ratio) tally.largest_ratio = ratio, tally.worst = v.section + ", " + name_of(v.slot);
        seen.push_back(v);
    }
}

std::string share_of(const Tally& tally, const char* sections) {
    const int holds = tally.of[0], counted = holds + tally.of[1];
    std::string out =
        formatted("%.2f %% of %d values of %d %s, error over bound at most %.2f", 100.0 * holds / std::max(counted, 1),
                  counted, tally.sections, sections, tally.largest_ratio);
    if (!tally.worst.empty()) out += " (" + tally.worst + ")";
    out += formatted("; not counted: %d exact, %d without a bound, %d with a reference too coarse", tally.of[2],
                     tally.of[3], tally.of[4]);
    if (tally.failed > 0) out += formatted("; %d %s without three levels", tally.failed, sections);
    return out;
}

std::string median_of(Tally tally) {
    auto& ratios = tally.errors_over_bound;
    if (ratios.empty()) return "nothing measured";
    std::nth_element(ratios.begin(), ratios.begin() + static_cast<long>(ratios.size() / 2), ratios.end());
    return formatted("%.1f", 1 / ratios[ratios.size() / 2]);
}

void add(Errors& errors, const Value& v, std::vector<Value>& seen) {
    const double error = v.relative_error();
    if (errors.all.empty() || error > *std::max_element(errors.all.begin(), errors.all.end()))
        errors.worst = v.section + ", " + name_of(v.slot);
    errors.all.push_back(error);
    if (!(error <= errors.must)) ++errors.above[v.section];
    if (error > 0) errors.reference_bound = std::max(errors.reference_bound, v.reference_bound / v.error() * error);
    seen.push_back(v);
}

std::string text_of(const Errors& errors, const char* sections) {
    if (errors.all.empty()) return "nothing measured";
    std::vector<double> sorted = errors.all;
    std::sort(sorted.begin(), sorted.end());
    const std::string failed =
        errors.failed == 0 ? "" : formatted("; %zu %s without three levels", errors.failed, sections);
    std::string above;
    for (const auto& [section, count] : errors.above)
        above += formatted("%s%d of %s", above.empty() ? "; above what must be: " : ", ", count, section.c_str());
    return formatted("largest %.1e (%s), 95 %% below %.1e, median %.1e; %zu values of %zu %s, references to %.0e%s",
                     sorted.back(), errors.worst.c_str(), sorted[sorted.size() * 95 / 100], sorted[sorted.size() / 2],
                     sorted.size(), errors.sections, sections, errors.reference_bound, failed.c_str()) +
           above;
}

std::string formatted(const char* format, ...) {
    char text[1000];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

void print(const Row& row) {
    std::printf("| %s | %s | %s | %s |\n", row.what.c_str(), row.goal.c_str(), row.must.c_str(), row.measured.c_str());
    std::fflush(stdout);
}
