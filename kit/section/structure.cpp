// The look at a file by the schema: valijson finds what does not fit, and its place; the words are ours.
#include <array>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#include "kit/section/data.h"
#include "kit/section/file.h"
#include "kit/section/parse.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

using nlohmann::json;
using Adapter = valijson::adapters::NlohmannJsonAdapter;

bool begins(const std::string& text, const char* with) { return text.rfind(with, 0) == 0; }

// The part of the schema that a value of this key or number in its parent is compared with.
const json* inner(const json& whole, const json* schema, const std::string& key, bool in_list) {
    if (!schema) return nullptr;
    const char* holder = in_list ? "items" : "properties";
    if (schema->contains(holder)) {
        const json& held = schema->at(holder);
        if (in_list) schema = &held;
        if (!in_list && held.contains(key)) schema = &held.at(key);
        if (!in_list && !held.contains(key)) return nullptr;
    } else if (!in_list && schema->contains("additionalProperties") && schema->at("additionalProperties").is_object()) {
        schema = &schema->at("additionalProperties");
    } else {
        return nullptr;
    }
    if (schema->contains("$ref"))
        schema = &whole.at(json::json_pointer(schema->at("$ref").get<std::string>().substr(1)));
    return schema;
}

std::string shown(const json& value) {
    if (value.is_string()) return in_quotes(value.get<std::string>());
    if (value.is_number()) return value.dump();
    if (value.is_boolean()) return value.get<bool>() ? "true" : "false";
    return value.is_null() ? "null" : value.is_array() ? "a list" : "an object";
}

// "a number or an object"
std::string types_of(const json& schema) {
    json types = schema.value("type", json::array());
    if (types.is_string()) types = json::array({types});
    std::string text;
    for (const auto& type : types) {
        const auto name = type.get<std::string>();
        text += text.empty() ? "" : " or ";
        text += name == "array"     ? "a list"
                : name == "string"  ? "a text in double quotes"
                : name == "integer" ? "a whole number"
                : name == "object"  ? "an object in braces"
                : name == "boolean" ? "true or false"
                                    : "a number";
    }
    return text;
}

std::string meaning_of(const json& schema) {
    return schema.contains("description") ? ": " + schema["description"].get<std::string>() : "";
}

[[noreturn]] void refuse(const std::string& place, const json& value, const json* schema, const std::string& told) {
    if (!schema) throw Error(place, told);
    if (begins(told, "Value type"))
        throw Error(place, shown(value) + " is given",
                    "it must be " + types_of(*schema) + (place.empty() ? "" : meaning_of(*schema)));
    if (begins(told, "Missing required")) {
        for (const auto& key : schema->at("required"))
            if (!value.contains(key.get<std::string>()))
                throw Error(place, "key " + in_quotes(key.get<std::string>()) + " is missing");
    }
    if (begins(told, "Object contains a property")) {
        std::vector<std::string> names;
        for (const auto& [name, unused] : schema->at("properties").items()) names.push_back(name);
        for (const auto& [name, unused] : value.items())
            if (!schema->at("properties").contains(name))
                throw Error(place, "unknown key " + in_quotes(name), did_you_mean(name, names));
    }
    if (begins(told, "Failed to match against any enum")) {
        const auto names = schema->at("enum").get<std::vector<std::string>>();
        throw Error(place, shown(value) + " is unknown", did_you_mean(value.get<std::string>(), names));
    }
    if (begins(told, "Missing dependency"))
        for (const auto& [key, others] : schema->at("dependencies").items())
            for (const auto& other : others)
                if (value.contains(key) && !value.contains(other.get<std::string>()))
                    throw Error(place, in_quotes(key) + " without " + in_quotes(other.get<std::string>()), "give both");
    const auto bound = [&](const char* key) { return schema->at(key).dump(); };
    for (const auto& [words, key, side] : {std::array{"Expected number greater than or", "minimum", "at least "},
                                           std::array{"Expected number greater", "exclusiveMinimum", "above "},
                                           std::array{"Expected number less than or", "maximum", "at most "},
                                           std::array{"Expected number less", "exclusiveMaximum", "below "}})
        if (begins(told, words))
            throw Error(place, shown(value) + " is given", "it must be " + std::string(side) + bound(key));
    for (const auto& [words, key, side] : {std::array{"Array should contain no fewer", "minItems", "at least "},
                                           std::array{"Array should contain no more", "maxItems", "at most "}})
        if (begins(told, words))
            throw Error(place, "a list of " + std::to_string(value.size()),
                        "it must have " + std::string(side) + bound(key) + meaning_of(*schema));
    if (begins(told, "String should be no fewer")) throw Error(place, "an empty text", "a name is wanted");
    if (begins(told, "String should be no more"))
        throw Error(place, "a text of " + std::to_string(value.get_ref<const std::string&>().size()) + " letters",
                    "at most " + bound("maxLength") + " are read");
    throw Error(place, told);
}

}  // namespace

struct Pattern::State {
    json text;
    valijson::Schema schema;
};

Pattern::Pattern(std::string_view schema) : state(std::make_unique<State>()) {
    state->text = json::parse(schema);
    valijson::SchemaParser().populateSchema(Adapter(state->text), state->schema);
}

Pattern::~Pattern() = default;

std::string_view section_schema() { return data::SCHEMA; }

const Pattern& section_pattern() {
    static const Pattern once(section_schema());
    return once;
}

void check_structure(const json& value, const Pattern& pattern) {
    const auto& [text, compiled] = *pattern.state;
    valijson::ValidationResults faults;
    valijson::Validator validator;
    if (validator.validate(compiled, Adapter(value), nullptr)) return;
    validator.validate(compiled, Adapter(value), &faults);
    valijson::ValidationResults::Error first;
    if (!faults.popError(first)) throw Error("", "the file is not as the schema has it");

    // Each step of its way is a key or a number in brackets; the first stands for the whole.
    std::string place;
    const json* at = &value;
    const json* schema = &text;
    for (std::size_t i = 1; i < first.context.size(); ++i) {
        const std::string step = first.context[i].substr(1, first.context[i].size() - 2);
        schema = inner(text, schema, step, at->is_array());
        if (at->is_array()) {
            place += "[" + step + "]";
            at = &at->at(std::stoul(step));
        } else {
            const std::string name = in_quotes(step);
            place += (place.empty() ? "" : ".") + name.substr(1, name.size() - 2);
            at = &at->at(step);
        }
    }
    refuse(place, *at, schema, first.description);
}

}  // namespace velquor
