#include "kit/analysis/check.h"

#include <nlohmann/json.hpp>

#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

namespace {

using nlohmann::ordered_json;

// A file that is refused as it is read has one finding, its fault.
std::vector<Finding> findings_of(const std::string& name, const std::string& materials) {
    try {
        const Section section = section_of({{name}, "", {}, {}, {}, {}, materials}, 0);
        tell(name, section.notes);
        return check(section);
    } catch (const Error& error) {
        return {{true, error.place, error.fault, error.remedy}};
    }
}

std::string text_of(const Finding& finding) {
    return std::string(finding.is_error ? "" : "warning: ") +
           Error(finding.place, finding.message, finding.remedy).what();
}

ordered_json json_of(const Finding& finding) {
    return {{"severity", finding.is_error ? "error" : "warning"},
            {"place", finding.place},
            {"message", finding.message},
            {"remedy", finding.remedy}};
}

}  // namespace

int check(const CheckOptions& options) {
    int status = DONE;
    std::string text;
    ordered_json json = {{"sections", ordered_json::array()}};
    for (const std::string& name : options.names) {
        ordered_json section = {{"input", name}, {"findings", ordered_json::array()}};
        const auto findings = findings_of(name, options.materials);
        for (const Finding& finding : findings) {
            if (finding.is_error) status = REFUSED;
            text += name + ": " + text_of(finding) + "\n";
            section["findings"].push_back(json_of(finding));
        }
        if (findings.empty()) text += name + ": nothing found\n";
        json["sections"].push_back(section);
    }
    write(options.json ? json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n" : text,
          options.output);
    return status;
}

}  // namespace velquor
