#include "kit/requests/catalogue.h"

#include <nlohmann/json.hpp>

#include "kit/analysis/values.h"
#include "kit/section/loads.h"
#include "kit/section/profiles.h"
#include "kit/section/templates.h"
#include "kit/section/units.h"
#include "kit/show/lines.h"

namespace velquor {

namespace {

using nlohmann::ordered_json;

const char* name_of(Kind kind) {
    switch (kind) {
        case Kind::length: return "length";
        case Kind::optional_length: return "optional length";
        case Kind::offset: return "offset";
        case Kind::ratio: return "ratio";
        case Kind::sides: return "sides";
        default: return "bars";
    }
}

ordered_json shape(const char* name, const char* meaning, bool whole, const std::vector<Parameter>& parameters) {
    const char* const sketch = sketch_of(name);
    ordered_json shape = {{"name", name}, {"meaning", meaning}, {"whole", whole}, {"sketch", sketch ? sketch : ""}};
    for (const Parameter& p : parameters)
        shape["parameters"].push_back({{"name", p.name},
                                       {"meaning", p.meaning},
                                       {"kind", name_of(p.kind)},
                                       {"required", p.required},
                                       {"standard", p.standard}});
    return shape;
}

// Profiles of one family and of the same parameters in one list.
ordered_json families() {
    auto all = ordered_json::array();
    ordered_json head;  // of the last list
    for (const std::string& name : profile_names()) {
        const std::string length = section_of_profile(name).length;
        const Profile profile = profile_of(name, length, "");
        ordered_json family = {{"name", profile.family},
                               {"standard", profile.standard},
                               {"shape", profile.shape},
                               {"unit", length},
                               {"columns", ordered_json::array()}};
        ordered_json row = {profile.name};
        for (const auto& [parameter, value] : profile.parameters) {
            family["columns"].push_back(parameter);
            row.push_back(value);
        }
        if (family != head) all.push_back(head = family);
        all.back()["profiles"].push_back(row);
    }
    return all;
}

ordered_json material(const Material& m) {
    return {{"name", m.name},
            {"E", m.E},
            {"nu", m.E / (2 * m.G) - 1},
            {"density", m.density},
            {"strength", {{"tension", m.tension}, {"compression", m.compression}}}};
}

}  // namespace

std::string catalogue_text() {
    ordered_json all = {{"version", version_text()}};
    all["families"] = families();
    for (const Shape& s : shapes()) all["shapes"].push_back(shape(s.name, s.meaning, false, s.parameters));
    for (const Template& t : templates()) all["shapes"].push_back(shape(t.name, t.meaning, true, t.parameters));
    for (const Quantity& q : quantities())
        all["values"].push_back({{"key", q.key},
                                 {"symbol", q.symbol},
                                 {"group", q.group},
                                 {"meaning", q.meaning},
                                 {"main", q.main},
                                 {"twin", q.twin},
                                 {"unit", unit_of(q, "mm", "N")}});
    for (const LoadKey& key : load_keys())
        all["loads"].push_back(
            {{"key", key.name}, {"brief", key.brief}, {"meaning", key.meaning}, {"unit", load_unit(key, "mm", "N")}});
    for (const Unit& unit : lengths()) all["lengths"].push_back({{"name", unit.name}, {"metres", unit.size}});
    for (const Unit& unit : forces()) all["forces"].push_back({{"name", unit.name}, {"newtons", unit.size}});
    for (const Material& m : {steel_s235(), concrete_c30(), reinforcement_b500()})
        all["materials"].push_back(material(m));
    return all.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace velquor
