#include "kit/show/lines.h"

#include <algorithm>
#include <cmath>

#include "kit/section/words.h"
#include "kit/show/show.h"
#include "velquor.h"

namespace velquor {

namespace {

// A bound, or what rounding leaves where none is known.
double slack(const Value& v) { return (std::isnan(v.bound) ? 0 : v.bound) + 1e-9 * std::abs(v.value); }
bool same(const Value& a, const Value& b) { return std::abs(a.value - b.value) <= slack(a) + slack(b); }

// Whether the principal axes are y and z, in either order: what lies along them says nothing new.
bool are_principal(const Values& values) {
    const Entry& alpha = values["alpha"];
    if (!alpha.given) return true;
    const double angle = std::abs(alpha.value.value);
    return std::min(angle, std::abs(angle - 90)) <= slack(alpha.value) + 1e-9;
}

// Of main values those that say something new.
bool is_shown(const Values& values, const Entry& entry, bool principal) {
    const Quantity& q = *entry.quantity;
    if (!entry.given || !q.main) return false;
    if (principal && (q.needs & PRINCIPAL) && q.key != std::string("alpha")) return false;
    if (*q.twin == '\0') return true;
    const Entry& twin = values[q.twin];
    return !twin.given || !same(entry.value, twin.value);
}

}  // namespace

std::vector<Line> lines_of(const Values& values, bool all) {
    std::vector<Line> lines;
    const bool principal = are_principal(values);
    for (const Entry& entry : values.entries) {
        if (!(all ? entry.given : is_shown(values, entry, principal))) continue;
        lines.push_back({entry.quantity, figures(entry.value), bound_text(entry.value),
                         raised(unit_of(*entry.quantity, values.length, values.force))});
    }
    return lines;
}

std::vector<Missing> missing_of(const Values& values) {
    std::vector<Missing> reasons;
    for (const Entry& entry : values.entries) {
        if (entry.given || !entry.quantity->main || *entry.quantity->twin != '\0') continue;
        auto at = std::find_if(reasons.begin(), reasons.end(),
                               [&](const Missing& known) { return known.reason == entry.reason; });
        if (at == reasons.end()) at = reasons.insert(at, {entry.reason, {}});
        at->symbols.emplace_back(entry.quantity->symbol);
    }
    return reasons;
}

std::string accuracy_of(const Values& v) {
    if (!std::isfinite(v.reached)) return "";
    std::string name = v.worst;  // in the library; the value's own where there is one of it alone
    for (const Quantity& q : quantities())
        if (v.worst == q.slots) name = q.symbol;
    std::string text = "bounds up to " + bound_text({1, v.reached}) + " (" + name + ")";
    if (!v.met) text += ", more than the " + text_of(v.wished) + " that was wished";
    return text;
}

std::string version_text() {
    return std::to_string(VQ_VERSION_MAJOR) + "." + std::to_string(VQ_VERSION_MINOR) + "." +
           std::to_string(VQ_VERSION_PATCH);
}

}  // namespace velquor
