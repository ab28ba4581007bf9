#include "tool/batch/sweep.h"

#include <cmath>
#include <limits>

#include "kit/section/section.h"
#include "kit/section/words.h"
#include "tool/batch/places.h"

namespace velquor {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr std::uint64_t MOST = std::numeric_limits<std::int64_t>::max();  // as the store counts
constexpr double MOST_STEPS = 1e15;

double number_in(const ordered_json& axis, const char* key, const std::string& at) {
    if (!axis.contains(key)) throw Error(at, "key " + in_quotes(key) + " is missing");
    if (!axis[key].is_number()) throw Error(at + "." + key, "is no number");
    return axis[key];
}

void take_steps(SweepAxis& axis, const ordered_json& value, const std::string& at) {
    const std::vector<std::string> keys = {"from", "to", "steps"};
    for (const auto& [key, item] : value.items())
        if (key != "from" && key != "to" && key != "steps")
            throw Error(at, "unknown key " + in_quotes(key), did_you_mean(key, keys));
    axis.from = number_in(value, "from", at);
    axis.to = number_in(value, "to", at);
    const double steps = number_in(value, "steps", at);
    if (!(steps >= 2 && steps <= MOST_STEPS && steps == std::floor(steps)))
        throw Error(at + ".steps", text_of(steps), "must be a whole number from 2, as many as there are values");
    if (axis.from == axis.to) throw Error(at, "from and to are the same", "write [" + text_of(axis.from) + "]");
    if (!std::isfinite(axis.to - axis.from)) throw Error(at, "from and to are too far apart");
    axis.count = static_cast<std::uint64_t>(steps);
}

void take_list(SweepAxis& axis, const ordered_json& value, const std::string& at) {
    if (value.empty()) throw Error(at, "the list is empty", "leave it out, or give it values");
    for (std::size_t i = 0; i < value.size(); ++i)
        if (value[i].is_structured() || value[i].is_null())
            throw Error(at + "[" + std::to_string(i) + "]", "is no single value", "a number, a text, true or false");
    axis.list = json(value);
    axis.count = value.size();
}

json value_of(const SweepAxis& axis, std::uint64_t k) {
    if (axis.list.is_array()) return axis.list[k];
    const auto last = static_cast<double>(axis.count - 1);
    return k + 1 == axis.count ? axis.to : axis.from + (axis.to - axis.from) * static_cast<double>(k) / last;
}

// Whole numbers without a point, as a wish for levels must be.
json written(const json& value) {
    if (!value.is_number_float()) return value;
    const double number = value;
    return std::abs(number) < 1e15 && number == std::floor(number) ? json(static_cast<std::int64_t>(number)) : value;
}

}  // namespace

Sweep sweep_of(json request, const ordered_json& axes) {
    Sweep sweep;
    sweep.request = std::move(request);
    if (!axes.is_object() || axes.empty())
        throw Error("sweep", "is no object with values",
                    R"(as {"h": [200, 300], "tw": {"from": 5, "to": 15, "steps": 11}})");
    for (const auto& [name, value] : axes.items()) {
        const std::string at = "sweep." + printable(name);
        SweepAxis axis;
        axis.name = name;
        if (value.is_array())
            take_list(axis, value, at);
        else if (value.is_object())
            take_steps(axis, value, at);
        else
            throw Error(at, "is neither a list nor an object",
                        R"(as [200, 300] or {"from": 5, "to": 15, "steps": 11})");
        axis.place = place_of(sweep.request, name, at);
        for (const SweepAxis& other : sweep.axes)
            if (other.place == axis.place) throw Error(at, "is the same as sweep." + printable(other.name));
        if (axis.count > MOST / sweep.count) throw Error("sweep", "more than " + std::to_string(MOST) + " sections");
        sweep.count *= axis.count;
        sweep.axes.push_back(std::move(axis));
    }
    // A value that is missing has been made beside those that are there, and gets one from the sweep.
    if (sweep.request.contains("section") && sweep.request["section"].is_object()) {
        const json& section = sweep.request["section"];
        if (section.contains("name") && section["name"].is_string()) sweep.name = section["name"];
    }
    return sweep;
}

ordered_json set_section(Sweep& sweep, std::uint64_t number) {
    std::vector<std::uint64_t> index(sweep.axes.size());
    for (std::size_t i = sweep.axes.size(); i-- > 0; number /= sweep.axes[i].count)
        index[i] = number % sweep.axes[i].count;
    ordered_json parameters;
    for (std::size_t i = 0; i < sweep.axes.size(); ++i) {
        const json value = written(value_of(sweep.axes[i], index[i]));
        sweep.request[sweep.axes[i].place] = value;
        parameters[sweep.axes[i].name] = value;
    }
    if (sweep.request.contains("section"))
        sweep.request["section"]["name"] = sweep.name + (sweep.name.empty() ? "" : " ") + told(parameters, " ", " ");
    return parameters;
}

std::string told(const ordered_json& parameters, const char* between, const char* before) {
    std::string text;
    for (const auto& [name, value] : parameters.items()) {
        text += (text.empty() ? "" : between) + name + before;
        text += value.is_string()    ? value.get<std::string>()
                : value.is_boolean() ? (value.get<bool>() ? "true" : "false")
                                     : text_of(value.get<double>());
    }
    return text;
}

}  // namespace velquor
