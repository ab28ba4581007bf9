#include "kit/section/profiles.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "kit/section/data.h"
#include "kit/section/section.h"
#include "kit/section/shapes.h"
#include "kit/section/units.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

struct Family {
    std::string name, standard, shape, unit;
    std::vector<std::string> columns;
    double share = 0;  // of what the distance from a tip is to where tf is measured; 0: as the shape has it
    bool less_web = false;
};

struct Row {
    const Family* family;
    std::string name;
    std::vector<double> values;
};

struct Tables {
    std::vector<Family> families;
    std::vector<std::string> names;
    std::unordered_map<std::string, Row> rows;  // by plain names
};

const Tables& tables() {
    static const Tables all = [] {
        Tables t;
        const auto data = nlohmann::ordered_json::parse(data::PROFILES);
        t.families.reserve(data.at("families").size());  // rows point into it
        for (const auto& family : data.at("families")) {
            t.families.push_back({family.at("name"), family.value("standard", ""), family.at("shape"),
                                  family.at("unit"), family.at("columns")});
            if (family.contains("tf_at")) {
                t.families.back().share = family["tf_at"].at("share");
                t.families.back().less_web = family["tf_at"].at("of") == "b - tw";
            }
            for (const auto& [name, values] : family.at("profiles").items()) {
                t.names.push_back(name);
                t.rows[plain(name)] = {&t.families.back(), name, values};
            }
        }
        return t;
    }();
    return all;
}

bool is_letter(char c) { return c >= 'a' && c <= 'z'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Another spelling of a plain name: "he200b" is HEB 200.
std::string usual_spelling(const std::string& name) {
    const bool is_he = name.size() > 3 && name.compare(0, 2, "he") == 0 &&
                       std::all_of(name.begin() + 2, name.end() - 1, is_digit) &&
                       std::string("abm").find(name.back()) != std::string::npos;
    return is_he ? "he" + name.substr(name.size() - 1) + name.substr(2, name.size() - 3) : name;
}

// Of names that share a letter of their family with the wanted one, for no HP is a W. An equal angle may have one leg.
std::string meant(const std::string& name) {
    const std::string wanted = usual_spelling(plain(name));
    const std::size_t cross = wanted.find('x');
    if (wanted[0] == 'l' && cross != std::string::npos) {
        const auto angle = tables().rows.find(wanted.substr(0, cross) + "x" + wanted.substr(1));
        if (angle != tables().rows.end()) return "did you mean " + in_quotes(angle->second.name) + "?";
    }
    std::vector<std::string> near;
    for (const std::string& known : tables().names) {
        const std::string family = plain(known);
        const auto of_family = [&](char c) {
            return family.substr(0, family.find_first_of("0123456789")).find(c) != std::string::npos;
        };
        const auto end = std::find_if_not(wanted.begin(), wanted.end(), is_letter);
        if (wanted.begin() == end || std::any_of(wanted.begin(), end, of_family)) near.push_back(known);
    }
    return near.empty() ? "" : did_you_mean(wanted, near);
}

}  // namespace

const std::vector<std::string>& profile_names() { return tables().names; }

Profile profile_of(const std::string& name, const std::string& length, const std::string& place) {
    const auto found = tables().rows.find(usual_spelling(plain(name)));
    if (found == tables().rows.end()) throw Error(place, "unknown profile " + in_quotes(name), meant(name));
    const Row& row = found->second;
    const Family& family = *row.family;
    Profile profile = {row.name, family.name, family.standard, family.unit, family.shape, {}};
    for (std::size_t i = 0; i < family.columns.size(); ++i) profile.parameters[family.columns[i]] = row.values.at(i);
    if (family.share > 0) {
        const auto& p = profile.parameters;
        profile.parameters["e"] = family.share * (p.at("b") - (family.less_web ? p.at("tw") : 0));
    }
    if (family.unit == length) return profile;
    const double scale = size_of(lengths(), family.unit, place) / size_of(lengths(), length, place);
    for (const Parameter& parameter : shape_of(profile.shape, place).parameters) {
        const auto value = profile.parameters.find(parameter.name);
        if (value != profile.parameters.end() && has_unit(parameter.kind)) value->second *= scale;
    }
    return profile;
}

}  // namespace velquor
