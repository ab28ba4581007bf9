#include "kit/show/json.h"

#include <algorithm>
#include <cmath>

#include "kit/section/loads.h"
#include "kit/show/lines.h"
#include "kit/show/schema.h"
#include "kit/show/show.h"

namespace velquor {

using nlohmann::ordered_json;

namespace {

ordered_json number(double value) { return std::isfinite(value) ? ordered_json(value) : ordered_json(nullptr); }

ordered_json json_of(const Entry& entry, const std::string& length, const std::string& force) {
    ordered_json json;
    json["value"] = entry.given ? number(entry.value.value) : nullptr;
    json["bound"] = entry.given ? number(entry.value.bound) : nullptr;
    json["unit"] = unit_of(*entry.quantity, length, force);
    if (*entry.quantity->slots != '\0') json["slots"] = entry.quantity->slots;
    if (!entry.reason.empty()) json["reason"] = entry.reason;
    return json;
}

}  // namespace

ordered_json json_of(const Values& v, const std::vector<std::string>& keys) {
    ordered_json json;
    json["name"] = v.name;
    json["units"] = {{"length", v.length}, {"force", v.force}};
    json["reference"] = v.reference;
    json["accuracy"] = {
        {"wished", number(v.wished)}, {"reached", number(v.reached)}, {"met", v.met}, {"levels", v.levels},
        {"nodes", v.nodes},           {"elements", v.elements}};
    ordered_json& values = json["values"];
    for (const Entry& entry : v.entries)
        if (keys.empty() || std::find(keys.begin(), keys.end(), entry.quantity->key) != keys.end())
            values[entry.quantity->key] = json_of(entry, v.length, v.force);
    if (!v.notes.empty()) json["notes"] = v.notes;
    json["materials"] = ordered_json::array();
    for (const Share& share : v.materials)
        json["materials"].push_back({{"name", share.material},
                                     {"area", share.area},
                                     {"mass", share.mass > 0 ? ordered_json(share.mass) : ordered_json(nullptr)}});
    return json;
}

namespace {

ordered_json pair_of(const Point& p) { return ordered_json::array({number(p.y), number(p.z)}); }

ordered_json json_of(const Peak& peak) {
    ordered_json json = {{"value", number(peak.value)}, {"at", pair_of(peak.at)}};
    json["unlimited_at"] = peak.unlimited ? pair_of(peak.corner) : ordered_json(nullptr);
    return json;
}

ordered_json json_of(const Load& load) {
    ordered_json json;
    for (const LoadKey& key : load_keys()) json[key.name] = number(load.*(key.value));
    return json;
}

}  // namespace

// Nodes by columns, which a program takes as they are.
ordered_json json_of(const LoadResult& r, bool with_nodes) {
    ordered_json json = {{"name", r.load.name}, {"load", json_of(r.load)}};
    json["materials"] = ordered_json::array();
    for (const MaterialStresses& m : r.materials)
        json["materials"].push_back({{"name", m.material},
                                     {"axial_largest", json_of(m.tension)},
                                     {"axial_smallest", json_of(m.compression)},
                                     {"shear", json_of(m.shear)},
                                     {"von_mises", json_of(m.von_mises)},
                                     {"utilisation", m.has_strength ? json_of(m.utilisation) : ordered_json(nullptr)}});
    json["resultants"] = json_of(r.resultants);
    if (!r.warning.empty()) json["warning"] = r.warning;
    if (!with_nodes) return json;
    ordered_json& nodes = json["nodes"];
    for (const char* column : {"y", "z", "material", "axial", "tau_y", "tau_z", "shear", "von_mises"})
        nodes[column] = ordered_json::array();
    for (const NodeStress& node : r.nodes) {
        const auto limited = [&](double value) { return node.unlimited ? ordered_json(nullptr) : number(value); };
        nodes["y"].push_back(node.at.y);
        nodes["z"].push_back(node.at.z);
        nodes["material"].push_back(node.material);
        nodes["axial"].push_back(number(node.stress.sigma));
        nodes["tau_y"].push_back(limited(node.stress.tau_y));
        nodes["tau_z"].push_back(limited(node.stress.tau_z));
        nodes["shear"].push_back(limited(shear(node.stress)));
        nodes["von_mises"].push_back(limited(von_mises(node.stress)));
    }
    return json;
}

std::string show_json(const std::vector<Outcome>& outcomes) {
    ordered_json json;
    json["velquor"] = version_text();
    json["sections"] = ordered_json::array();
    for (const Outcome& outcome : outcomes) {
        ordered_json section;
        if (outcome.failure) {
            const Failure& f = *outcome.failure;
            section["error"] = {{"place", f.place}, {"fault", f.fault}, {"remedy", f.remedy}, {"status", f.status}};
        } else {
            section = json_of(outcome.values, {});
            for (const LoadResult& load : outcome.loads) section["loads"].push_back(json_of(load, true));
        }
        section["input"] = outcome.input;
        json["sections"].push_back(section);
    }
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

std::string show_schema() {
    auto schema = ordered_json::parse(data::RESULT_SCHEMA);
    ordered_json& values = schema["definitions"]["values"];
    for (const Quantity& q : quantities()) {
        std::string line = std::string(q.symbol) + ": " + q.meaning;
        if (*q.slots != '\0') line += " [" + std::string(q.slots) + "]";
        values["properties"][q.key] = {{"description", line}, {"allOf", {{{"$ref", "#/definitions/value"}}}}};
        values["required"].push_back(q.key);
    }
    return schema.dump(2) + "\n";
}

}  // namespace velquor
