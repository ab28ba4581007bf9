#include "kit/section/units.h"

#include <algorithm>

#include "kit/section/section.h"
#include "kit/section/words.h"

namespace velquor {

// Inch and foot since 1959; the pound-force is 0.45359237 kg under the standard gravity of 9.80665 m/s2.
const std::vector<Unit>& lengths() {
    static const std::vector<Unit> units = {{"mm", 0.001}, {"cm", 0.01},   {"dm", 0.1},
                                            {"m", 1},      {"in", 0.0254}, {"ft", 0.3048}};
    return units;
}

const std::vector<Unit>& forces() {
    static const std::vector<Unit> units = {
        {"N", 1}, {"kN", 1e3}, {"MN", 1e6}, {"kgf", 9.80665}, {"lbf", 4.4482216152605}, {"kip", 4448.2216152605}};
    return units;
}

namespace {

// As people write them out; each is told its sign.
struct Word {
    const char *word, *sign;
};
constexpr Word WORDS[] = {{"inch", "in"}, {"inches", "in"}, {"foot", "ft"},       {"feet", "ft"},
                          {"metre", "m"}, {"meter", "m"},   {"millimetre", "mm"}, {"millimeter", "mm"},
                          {"lb", "lbf"},  {"lbs", "lbf"},   {"pound", "lbf"},     {"newton", "N"}};

}  // namespace

double size_of(const std::vector<Unit>& units, const std::string& name, const std::string& place) {
    std::vector<std::string> names;
    for (const Unit& unit : units) {
        if (unit.name == name) return unit.size;
        names.emplace_back(unit.name);
    }
    for (const Word& word : WORDS)
        if (plain(name) == word.word && std::count(names.begin(), names.end(), word.sign) > 0)
            throw Error(place, "unknown unit " + in_quotes(name), "did you mean " + in_quotes(word.sign) + "?");
    throw Error(place, "unknown unit " + in_quotes(name), did_you_mean(name, names));
}

}  // namespace velquor
