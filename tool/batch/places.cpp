#include "tool/batch/places.h"

#include <charconv>
#include <vector>

#include "kit/section/file.h"
#include "kit/section/shapes.h"
#include "kit/section/templates.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

using nlohmann::json;
using Pointer = json::json_pointer;

const json& schema() {
    static const json all = json::parse(section_schema());
    return all;
}

// What the schema says of a part of a section, behind references.
const json& meant(const json& form) {
    const json* node = &form;
    while (node->contains("$ref")) node = &schema().at(Pointer((*node)["$ref"].get<std::string>().substr(1)));
    return *node;
}

std::vector<std::string> keys_of(const json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) keys.push_back(key);
    return keys;
}

// The parameters of what has a shape, a part or a whole request; none where its shape is not known.
std::vector<std::string> parameters_of(const json& part) {
    std::vector<std::string> names;
    if (!part.is_object() || !part.contains("shape") || !part["shape"].is_string()) return names;
    const auto take = [&](const auto& known) {
        for (const auto& shape : known)
            if (shape.name == part["shape"])
                for (const Parameter& parameter : shape.parameters) names.emplace_back(parameter.name);
    };
    take(shapes());
    if (names.empty()) take(templates());
    return names;
}

bool has(const std::vector<std::string>& names, const std::string& name) {
    for (const std::string& known : names)
        if (known == name) return true;
    return false;
}

// "parts[1].at[0]" as parts, 1, at, 0; empty where it is not written so.
std::vector<std::string> steps_of(const std::string& name) {
    std::vector<std::string> steps;
    for (std::size_t i = 0; i < name.size();) {
        const bool index = name[i] == '[';
        if (index || (name[i] == '.' && i > 0)) ++i;
        const std::size_t end = index ? name.find(']', i) : std::min(name.find_first_of(".[", i), name.size());
        if (end == std::string::npos || end == i) return {};
        const std::string step = name.substr(i, end - i);
        if (index && step.find_first_not_of("0123456789") != std::string::npos) return {};
        steps.push_back(index ? "[" + step : step);
        i = index ? end + 1 : end;
        if (index && i < name.size() && name[i] != '.' && name[i] != '[') return {};
    }
    return steps;
}

// The parts with a shape that takes this parameter, as "parts[0].h".
std::vector<std::string> owners_of(const json& section, const std::string& parameter) {
    std::vector<std::string> owners;
    if (section.contains("parts") && section["parts"].is_array())
        for (std::size_t i = 0; i < section["parts"].size(); ++i)
            if (has(parameters_of(section["parts"][i]), parameter))
                owners.push_back("parts[" + std::to_string(i) + "]." + parameter);
    return owners;
}

std::vector<std::string> known_names(const json& section) {
    std::vector<std::string> names;
    if (section.contains("parts") && section["parts"].is_array())
        for (const json& part : section["parts"])
            for (const std::string& name : parameters_of(part))
                if (!has(names, name)) names.push_back(name);
    names.insert(names.end(), {"accuracy", "levels", "size"});
    return names;
}

Error unknown(const std::string& at, const std::string& name, const std::vector<std::string>& names) {
    const std::string remedy = did_you_mean(name, names);
    return {at, "unknown name " + in_quotes(name),
            remedy.empty() ? "a parameter of a shape, or a place as parts[0].at[1] or materials[0].E" : remedy};
}

// Walks down the section beside its schema.
Pointer walk(json& section, const std::string& name, const std::string& at) {
    const std::vector<std::string> steps = steps_of(name);
    if (steps.empty()) throw Error(at, in_quotes(name) + " is no place", "as parts[0].at[1] or materials[0].E");
    const json* form = &schema();
    json* value = &section;
    Pointer place("/section");
    std::string here;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        form = &meant(*form);
        std::string step = steps[i];
        if (step[0] == '[') {
            step.erase(0, 1);
            if (!form->contains("items") || (!value->is_null() && !value->is_array()))
                throw Error(at, here + " is no list", "leave " + steps[i] + "] out");
            if (value->is_null() && form->contains("minItems") && form->value("maxItems", 0) == form->at("minItems"))
                *value = std::vector<int>(form->at("minItems").get<std::size_t>(), 0);
            std::size_t index = 0;
            const auto end = step.data() + step.size();
            const bool good = std::from_chars(step.data(), end, index).ec == std::errc();
            if (!good || index >= value->size())
                throw Error(at, here + " has " +
                                    (value->empty()       ? std::string("no entries")
                                     : value->size() == 1 ? "one entry, [0]"
                                                          : std::to_string(value->size()) + " entries, from [0]"));
            here += "[" + step + "]";
            place /= index;
            value = &(*value)[index];
            form = &(*form)["items"];
            continue;
        }
        const json* known = form->contains("properties") ? &(*form)["properties"] : nullptr;
        if (!value->is_null() && !value->is_object())
            throw Error(at, here + " has no names in it", "leave ." + step + " out");
        if (known && known->contains(step)) {
            form = &(*known)[step];
        } else if (known && known->contains("shape") && has(parameters_of(*value), step)) {
            place /= "parameters";
            value = &(*value)["parameters"];
            if (!value->is_null() && !value->is_object())
                throw Error(at, here + ".parameters is no object", R"(as {"h": 300})");
            form = &schema()["definitions"]["positive"];
        } else if (known) {
            std::vector<std::string> names = keys_of(*known);
            if (known->contains("shape"))
                for (const std::string& parameter : parameters_of(*value)) names.push_back(parameter);
            throw unknown(at, step, names);
        } else if (form->contains("additionalProperties") && form->at("additionalProperties").is_object()) {
            const bool of_shape = i == 3 && steps[0] == "parts" && steps[2] == "parameters";
            const std::vector<std::string> names =
                of_shape ? parameters_of(section["parts"][std::stoul(steps[1].substr(1))]) : keys_of(*value);
            if (!has(names, step)) throw unknown(at, step, names);
            form = &(*form)["additionalProperties"];
        } else {
            throw Error(at, here + " has no names in it", "leave ." + step + " out");
        }
        here += (here.empty() ? "" : ".") + step;
        place /= step;
        value = &(*value)[step];
    }
    if (value->is_structured())
        throw Error(at, here + " is no single value",
                    value->empty() ? ""
                                   : "name one of those in it, as " + here +
                                         (value->is_array() ? "[0]" : "." + value->begin().key()));
    return place;
}

}  // namespace

Pointer place_of(json& request, const std::string& name, const std::string& at) {
    if (request.contains("section") && !request["section"].is_object())
        throw Error("section", "is no object", "velquor schema tells its form");
    if (request.contains("parameters") && !request["parameters"].is_object())
        throw Error("parameters", "is no object", R"(as {"h": 300})");
    const std::vector<std::string> own = parameters_of(request);
    if (has(own, name)) return Pointer("/parameters") / name;
    const bool is_named = !request.contains("section") && !request.contains("shape");
    if (name == "accuracy" || name == "levels" || name == "size" || (is_named && name == "name"))
        return Pointer("/" + name);
    if (!request.contains("section")) {
        std::vector<std::string> names = own;
        names.insert(names.end(), {"accuracy", "levels", "size"});
        if (is_named) names.emplace_back("name");
        throw unknown(at, name, names);
    }
    json& section = request["section"];
    if (name.find_first_of(".[") != std::string::npos) return walk(section, name, at);
    const std::vector<std::string> owners = owners_of(section, name);
    if (owners.size() == 1) return walk(section, owners.front(), at);
    if (owners.empty()) throw unknown(at, name, known_names(section));
    std::string ways;
    for (const std::string& owner : owners)
        ways += (ways.empty() ? "" : &owner == &owners.back() ? " or " : ", ") + owner;
    throw Error(at, std::to_string(owners.size()) + " parts have it", ways);
}

}  // namespace velquor
