#include "tool/serve/line.h"

#include "kit/requests/request.h"

namespace velquor {

namespace {

constexpr int MOST_LEVELS = 4;  // that may be wished; where the bounds wish it, more are added as ever

nlohmann::json in(const nlohmann::json& object, const char* key) {
    return object.is_object() && object.contains(key) ? object[key] : nlohmann::json();
}

}  // namespace

std::string line_of(const std::string& body) {
    nlohmann::json request = parse_request(body);
    nlohmann::json levels = in(request, "levels");
    if (levels.is_null()) levels = in(in(in(request, "section"), "wishes"), "levels");
    if (request.is_object() && levels.is_number() && levels > MOST_LEVELS) request["levels"] = MOST_LEVELS;
    return request.dump();
}

}  // namespace velquor
