#include <nlohmann/json.hpp>

#include "kit/requests/answer.h"
#include "kit/requests/data.h"
#include "kit/show/show.h"

namespace velquor {

std::string_view request_schema() { return data::REQUEST_SCHEMA; }

// What answers have in common with results is taken from their schema.
std::string answer_schema() {
    using nlohmann::ordered_json;
    auto schema = ordered_json::parse(data::ANSWER_SCHEMA);
    const auto results = ordered_json::parse(show_schema());
    ordered_json& own = schema["definitions"];
    for (const auto& [name, definition] : results["definitions"].items())
        if (!own.contains(name)) own[name] = definition;
    ordered_json answer = own["section"];
    own.erase("section");
    answer["properties"].erase("input");
    for (const char* key : {"id", "mesh", "fields", "view", "document"})
        answer["properties"][key] = {{"$ref", std::string("#/definitions/") + key}};
    answer["required"] = {"id"};
    own["answer"] = answer;
    own["values"].erase("required");  // those that were wanted
    own["load"]["required"] = {"name", "load", "materials", "resultants"};
    return schema.dump(2) + "\n";
}

}  // namespace velquor
