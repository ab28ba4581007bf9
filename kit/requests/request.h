// A request as it was understood: steps of answer_to.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/section/section.h"
#include "kit/show/fields.h"

namespace velquor {

struct Request {
    Section section;                // checked
    std::string length, force;      // of the results; empty: the section's own
    std::vector<std::string> keys;  // of values; empty: all
    enum class Loads { none, peaks, nodes } loads = Loads::peaks;
    bool fields = false, mesh = false, finest = false;
    std::vector<Case> cases;  // of the fields; empty: cases_of the section
    enum class View { none, draft, full } view = View::none;
    struct Document {
        std::string form;  // svg, png, pdf, html, csv, json, section; empty: none
        std::vector<std::string> fields;
        bool dark = false;
        std::string project, by, date;
    } document;
};

// Throw Error: of the line as JSON and by its schema; of what it wants besides a section; and of its section, with the
// place in it. Files are read from this folder, of none they are refused.
nlohmann::json parse_request(std::string_view line);
Request wanted_by(const nlohmann::json& line);
Section section_wanted_by(const nlohmann::json& line, const std::optional<std::string>& folder);

}  // namespace velquor
