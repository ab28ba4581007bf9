#include "kit/analysis/values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "kit/analysis/extent.h"
#include "kit/analysis/measured.h"
#include "kit/section/units.h"

namespace velquor {

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();

// A bound times a size, of which either may be 0 beside an infinite one.
double times(double a, double b) { return a == 0 || b == 0 ? 0 : a * b; }

std::vector<Share> shares_of(const Section& section, const Analysis& analysis) {
    std::vector<Share> shares;
    for (const Material& m : section.materials) shares.push_back({m.name, 0, 0});
    const auto add = [&](const std::string& name, double area) {
        for (Share& share : shares)
            if (share.material == name) share.area += area;
    };
    const auto areas = areas_of(analysis.mesh, section.parts.size() + section.bars.size());
    for (std::size_t k = 0; k < areas.size(); ++k)
        add(material_of(section, static_cast<std::int32_t>(k)).name, areas[k]);
    std::size_t point = 0;
    for (const Bar& bar : section.bars) {
        if (!bar.as_point) continue;
        const auto host = static_cast<std::size_t>(analysis.bars.at(point++).ELEMENT) - 1;
        add(bar.material, bar.area);
        add(material_of(section, analysis.mesh.owners.at(host)).name, -bar.area);
    }
    const double metre = 1 / size_of(lengths(), section.length, "units.length");
    for (std::size_t k = 0; k < shares.size(); ++k)
        shares[k].mass = section.materials[k].density * shares[k].area * metre;
    shares.erase(std::remove_if(shares.begin(), shares.end(), [](const Share& s) { return s.area == 0; }),
                 shares.end());
    return shares;
}

// Why a section has not what a value needs; null where it has.
const char* missing(int needs, const Measured& s) {
    if ((needs & WHOLE) && s.coupled) return "groups of parts slip on each other";
    if ((needs & PLASTIC) && !s.analysis.plastic) return "several materials, some without strengths";
    if ((needs & STRENGTHS) && !s.analysis.strengths) return "materials without strengths";
    if ((needs & ONE_MATERIAL) && s.composite) return "several materials";
    if ((needs & AXES) == AXES && s.round) return "every axis is a principal one";
    if ((needs & DENSITIES) && !s.densities) return "a material without density";
    return nullptr;
}

const char* no_limit(const Quantity& q, const Measured& s) {
    if (s.analysis.pieces > 1) return "the section falls in pieces that do not touch";
    if (q.key == std::string("Wt")) return "stresses grow without limit at sharp corners, or where materials meet";
    if (s.points) return "bars are points; it needs them as discs";
    return "no limit was found; more levels or smaller elements may find one";
}

Entry entry_of(const Quantity& q, const Measured& s) {
    if (const char* reason = missing(q.needs, s)) return {&q, {}, reason, false};
    const Value value = q.of(s);
    if (!std::isfinite(value.value) || std::isinf(value.bound)) return {&q, {}, no_limit(q, s), false};
    if (std::isnan(value.bound)) return {&q, value, "no bound from one level", true};
    return {&q, value, "", true};
}

std::string limit_of(const Section& section, const Analysis& a) {
    if (a.met || a.levels < 2) return "";
    const std::string next = std::to_string(a.levels + 1), most = std::to_string(Effort().most_nodes);
    const bool drawn = !is_mesh(section);
    std::string limit, remedy = "; smaller elements may help: --size tells theirs";
    if (a.levels >= VQ_MAXLEVELS) {
        limit = std::to_string(a.levels) + " levels are the most";
    } else if (static_cast<std::int64_t>(a.mesh.nodes.size()) << (2 * a.levels) > Effort().most_nodes) {
        limit = "level " + next + " would have more than " + most + " nodes";
        remedy = ", and is taken with --levels " + next;
    } else {
        limit = "level " + next + " was not solved";
    }
    return drawn ? limit + remedy : limit;
}

double power(double base, int exponent) {
    double result = 1;
    for (int k = std::abs(exponent); k > 0; --k) result *= base;
    return exponent < 0 ? 1 / result : result;
}

}  // namespace

const Material& material_of(const Section& section, std::int32_t owner) {
    const auto k = static_cast<std::size_t>(owner), parts = section.parts.size();
    const std::string& name = k < parts ? section.parts[k].material : section.bars.at(k - parts).material;
    for (const Material& m : section.materials)
        if (m.name == name) return m;
    throw std::out_of_range("no material " + name);
}

Value operator+(const Value& a, const Value& b) { return {a.value + b.value, a.bound + b.bound}; }
Value operator-(const Value& a, const Value& b) { return {a.value - b.value, a.bound + b.bound}; }
Value operator*(const Value& a, const Value& b) {
    return {a.value * b.value,
            times(std::abs(a.value), b.bound) + times(std::abs(b.value), a.bound) + times(a.bound, b.bound)};
}
Value operator/(const Value& a, const Value& b) {
    const double size = std::abs(b.value), least = size - b.bound;
    if (least <= 0) return {a.value / b.value, INF};
    return {a.value / b.value, (a.bound + times(std::abs(a.value) / size, b.bound)) / least};
}
Value square_root(const Value& a) {
    const double root = std::sqrt(a.value);
    return {root, a.bound < a.value ? root - std::sqrt(a.value - a.bound) : std::sqrt(a.bound)};
}

const Entry& Values::operator[](const std::string& key) const {
    for (const Entry& entry : entries)
        if (entry.quantity->key == key) return entry;
    throw std::out_of_range("no value " + key);
}

Values values_of(const Section& section, const Analysis& analysis) {
    check_fits(section, analysis);
    const Measured measured(section, analysis);
    Values values;
    values.name = section.name;
    values.length = section.length;
    values.force = section.force;
    for (const Quantity& q : quantities()) values.entries.push_back(entry_of(q, measured));
    values.reference = analysis.reference;
    values.materials = shares_of(section, analysis);
    values.nodes = analysis.mesh.nodes.size();
    values.elements = analysis.mesh.elements.size();
    values.levels = analysis.levels;
    values.wished = section.wishes.accuracy;
    values.reached = analysis.levels > 1 ? analysis.reached : std::nan("");
    values.worst = slots()[static_cast<std::size_t>(analysis.worst)].name;
    values.met = analysis.levels > 1 && analysis.met;
    values.limit = limit_of(section, analysis);
    values.notes = section.notes;
    return values;
}

Values in_units(Values values, const std::string& length, const std::string& force) {
    const double l = size_of(lengths(), values.length, "units.length") / size_of(lengths(), length, "--units");
    const double f = size_of(forces(), values.force, "units.force") / size_of(forces(), force, "--force");
    for (Entry& entry : values.entries) {
        const Dimension& d = entry.quantity->dimension;
        if (d.mass != 0) continue;
        const double scale = power(l, d.length) * power(f, d.force);
        entry.value = {entry.value.value * scale, entry.value.bound * scale};
    }
    for (Share& share : values.materials) share.area *= l * l;
    values.length = length;
    values.force = force;
    return values;
}

std::string unit_of(const Quantity& quantity, const std::string& length, const std::string& force) {
    const Dimension& d = quantity.dimension;
    if (d.mass != 0) return "kg/m";
    if (quantity.key == std::string("alpha")) return "deg";
    const auto raised = [](const std::string& unit, int exponent) {
        return exponent == 1 ? unit : unit + std::to_string(exponent);
    };
    std::string unit = d.force == 0 ? "" : raised(force, d.force);
    if (d.length > 0) unit += (unit.empty() ? "" : " ") + raised(length, d.length);
    if (d.length < 0) unit += "/" + raised(length, -d.length);
    return unit;
}

}  // namespace velquor
