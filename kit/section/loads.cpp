#include "kit/section/loads.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "kit/section/units.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double LARGEST = 1e30;

// The unit's size over the section's own of the same kind: "kN m", "kN*m", "kN-m" and "kNm" are one, and so is "m-kN".
double unit_size(std::string unit, const LoadKey& key, const Section& section, const std::string& place) {
    std::string plain;
    bool parted = false;
    for (std::size_t i = 0; i < unit.size(); ++i) {
        if (unit.compare(i, 2, "²") == 0) {
            plain += '2';
            ++i;
        } else if (unit.compare(i, 2, "·") == 0) {
            parted = true;
            ++i;
        } else if (unit[i] == ' ' || unit[i] == '*' || unit[i] == '-') {
            parted = true;
        } else {
            plain += unit[i];
        }
    }
    const double own_force = size_of(forces(), section.force, place),
                 own_length = size_of(lengths(), section.length, place);
    for (const Unit& force : forces()) {
        const std::string name = force.name;
        if (key.length == 0 && plain == name) return force.size / own_force;
        for (const Unit& length : lengths()) {
            const std::string raised = std::string(length.name) + (key.length == 2 ? "2" : "");
            if (key.length > 0 && (plain == name + raised || (parted && plain == raised + name)))
                return force.size / own_force * std::pow(length.size / own_length, key.length);
        }
    }
    throw Error(place, "unknown unit " + in_quotes(unit) + " of " + key.name,
                "as in " + in_quotes(load_unit(key, section.length, section.force)));
}

bool is_gap(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == ','; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && is_gap(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_gap(text.back())) text.remove_suffix(1);
    return text;
}

}  // namespace

const std::vector<LoadKey>& load_keys() {
    static const std::vector<LoadKey> keys = {
        {"N", &Load::N, 0, "normal force", "normal force at the centroid, positive in tension"},
        {"My", &Load::My, 1, "bending about y", "moment about the y axis through the centroid: pulls at +z"},
        {"Mz", &Load::Mz, 1, "bending about z", "moment about the z axis through the centroid: presses at +y"},
        {"Vy", &Load::Vy, 0, "force along y through M", "shear force along +y through the shear centre"},
        {"Vz", &Load::Vz, 0, "force along z through M", "shear force along +z through the shear centre"},
        {"T", &Load::T, 1, "torque of free twist",
         "torque about the shear centre of free (Saint-Venant) twist, from y to z"},
        {"Tw", &Load::Tw, 1, "torque of warping shear", "torque about the shear centre of warping shear, from y to z"},
        {"B", &Load::B, 2, "bimoment", "bimoment: pulls where the warping is positive"}};
    return keys;
}

bool has_shear(const Load& load) { return load.Vy != 0 || load.Vz != 0 || load.T != 0 || load.Tw != 0; }

void check_values(const Load& load, const std::string& place) {
    for (const LoadKey& key : load_keys())
        if (const double value = load.*key.value; !(std::abs(value) <= LARGEST))
            throw Error(place + "." + key.name, text_of(value), "must be a number from -1e30 to 1e30");
}

double load_value(std::string_view text, const LoadKey& key, const Section& section, const std::string& place) {
    text = trimmed(text);
    const bool plus = !text.empty() && text.front() == '+' && text.substr(0, 2) != "+-";
    const std::string_view digits = text.substr(plus);
    double value = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (fault != std::errc() || !std::isfinite(value))
        throw Error(place, std::string(key.name) + ": " + in_quotes(text) + " is not a number", "as in 12.5 or 12.5kN");
    std::string unit(end, static_cast<std::size_t>(digits.data() + digits.size() - end));
    unit.erase(0, unit.find_first_not_of(" \t*"));
    if (!unit.empty() && unit.front() == ',')
        throw Error(place, std::string(key.name) + ": " + in_quotes(text) + " with a comma", "decimals follow a point");
    if (!unit.empty()) value *= unit_size(unit, key, section, place);
    if (std::abs(value) > LARGEST)
        throw Error(place, std::string(key.name) + ": " + in_quotes(text) + " is too large", "at most 1e30 is read");
    return value;
}

Load load_of(std::string_view text, const Section& section, const std::string& place) {
    Load load;
    std::string_view title = text;
    if (const std::size_t colon = text.find(':'); colon != std::string_view::npos) {
        title = text.substr(0, colon);
        text = text.substr(colon + 1);
        if (trimmed(title).empty()) title = text;
    }
    load.name = printable(trimmed(title));
    std::vector<std::string> names, given;
    for (const LoadKey& key : load_keys()) names.emplace_back(key.name);
    std::size_t at = 0;
    while (true) {
        while (at < text.size() && is_gap(text[at])) ++at;
        if (at == text.size()) break;
        const std::size_t sign = text.find('=', at);
        if (sign == std::string_view::npos)
            throw Error(place, "no value for " + in_quotes(text.substr(at)), "as in \"N=100 My=20kNm\"");
        std::string name(text.substr(at, sign - at));
        while (!name.empty() && is_gap(name.back())) name.pop_back();
        const auto key =
            std::find_if(load_keys().begin(), load_keys().end(), [&](const LoadKey& k) { return name == k.name; });
        if (key == load_keys().end()) throw Error(place, "unknown load " + in_quotes(name), did_you_mean(name, names));
        if (std::find(given.begin(), given.end(), name) != given.end())
            throw Error(place, name + " is given twice", "add both up");
        given.push_back(name);
        // Up to the name in front of the next sign.
        std::size_t end = text.find('=', sign + 1);
        if (end != std::string_view::npos) {
            while (end > sign && is_gap(text[end - 1])) --end;
            while (end > sign && !is_gap(text[end - 1])) --end;
        }
        end = std::min(end, text.size());
        load.*(key->value) = load_value(text.substr(sign + 1, end - sign - 1), *key, section, place);
        at = end;
    }
    if (given.empty()) throw Error(place, "a load without values", "as in \"N=100 My=20kNm\"");
    return load;
}

std::string load_unit(const LoadKey& key, const std::string& length, const std::string& force) {
    return force + (key.length == 0 ? "" : " " + length) + (key.length == 2 ? "2" : "");
}

}  // namespace velquor
