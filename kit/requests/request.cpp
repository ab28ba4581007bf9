#include "kit/requests/request.h"

#include <algorithm>
#include <filesystem>

#include "kit/analysis/values.h"
#include "kit/mesh/named_files.h"
#include "kit/requests/answer.h"
#include "kit/section/drawing.h"
#include "kit/section/file.h"
#include "kit/section/parse.h"
#include "kit/section/templates.h"
#include "kit/section/units.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

using nlohmann::json;

const Pattern& request_pattern() {
    static const Pattern once(request_schema());
    return once;
}

void check_keys(const std::vector<std::string>& keys) {
    std::vector<std::string> known;
    for (const Quantity& q : quantities()) known.emplace_back(q.key);
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (std::find(known.begin(), known.end(), keys[i]) == known.end())
            throw Error("values[" + std::to_string(i) + "]", "unknown value " + in_quotes(keys[i]),
                        did_you_mean(keys[i], known));
}

// Pipes and devices may never end, and the standard input is that of the requests.
void check_file(const char* key, const std::string& file, const std::optional<std::string>& folder) {
    if (!folder) throw Error(key, "no files are read here", "velquor worker --files FOLDER reads them from there");
    std::error_code none;
    const auto status = std::filesystem::status(std::filesystem::path(*folder) / file, none);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Error(key, in_quotes(file) + " is no regular file", "name a file, and no folder, pipe or device");
}

Section drawn_by(const json& line) {
    Section section = materials_from(line["section"]);
    read_drawing(section, line["dxf"].get<std::string>());
    return section;
}

Request::Document document_of(const json& wanted) {
    Request::Document document;
    document.form = wanted["form"];
    if (wanted.contains("fields")) document.fields = wanted["fields"].get<std::vector<std::string>>();
    document.dark = wanted.value("dark", false);
    document.project = wanted.value("project", "");
    document.by = wanted.value("by", "");
    document.date = wanted.value("date", "");
    return document;
}

}  // namespace

json parse_request(std::string_view line) {
    if (line.size() > LONGEST_REQUEST)
        throw Error("", "a line of " + std::to_string(line.size()) + " bytes",
                    "at most " + std::to_string(LONGEST_REQUEST) + " are read");
    try {
        return parse_text(line, DEEPEST + 1);
    } catch (const Error& error) {
        const std::string only = "line 1, ";
        throw Error(error.place.substr(error.place.rfind(only, 0) == 0 ? only.size() : 0), error.fault, error.remedy);
    }
}

Request wanted_by(const json& line) {
    check_structure(line, request_pattern());
    const auto ways = line.count("name") + line.count("shape") + line.count("section");
    if (ways != 1)
        throw Error("", ways == 0 ? "no section" : "several sections", R"(give one of "name", "shape" and "section")");
    if (line.contains("dxf") && !line.contains("section"))
        throw Error("dxf", "a drawing without materials", R"(give them as "section": {"materials": [...]})");
    if (line.contains("parameters") && !line.contains("shape"))
        throw Error("parameters", "without \"shape\"", "parameters of a section stand in its parts");
    Request request;
    if (line.contains("units")) {
        request.length = line["units"].value("length", "");
        request.force = line["units"].value("force", "");
        if (!request.length.empty()) size_of(lengths(), request.length, "units.length");
        if (!request.force.empty()) size_of(forces(), request.force, "units.force");
    }
    if (line.contains("values")) request.keys = line["values"].get<std::vector<std::string>>();
    check_keys(request.keys);
    const std::string loads = line.value("loads", "peaks"), mesh = line.value("mesh", "");
    request.loads = loads == "none"    ? Request::Loads::none
                    : loads == "peaks" ? Request::Loads::peaks
                                       : Request::Loads::nodes;
    request.mesh = !mesh.empty();
    request.finest = mesh == "finest";
    if (line.contains("fields")) {
        const json& fields = line["fields"];
        request.fields = fields.is_array() || fields.get<bool>();
        for (std::size_t i = 0; fields.is_array() && i < fields.size(); ++i)
            request.cases.push_back(unit_case(fields[i], "fields[" + std::to_string(i) + "]"));
    }
    const std::string view = line.value("view", "");
    request.view = view.empty() ? Request::View::none : view == "draft" ? Request::View::draft : Request::View::full;
    if (line.contains("document")) request.document = document_of(line["document"]);
    return request;
}

Section section_wanted_by(const json& line, const std::optional<std::string>& folder) {
    Section section;
    if (line.contains("name")) {
        section = section_of_profile(line["name"], "name");
    } else if (line.contains("shape")) {
        std::map<std::string, double> parameters;
        if (line.contains("parameters")) parameters = line["parameters"].get<std::map<std::string, double>>();
        section = section_of_shape(line["shape"], parameters, "shape");
    } else if (line.contains("dxf")) {
        section = drawn_by(line);
    } else {
        section = section_from(line["section"]);
    }
    for (const auto& [key, file] : {std::pair{"mesh.file", section.mesh.file}, {"drawing.file", section.drawing.file}})
        if (!file.empty()) check_file(key, file, folder);
    if (folder) read_named_files(section, *folder);
    section.wishes.accuracy = line.value("accuracy", section.wishes.accuracy);
    section.wishes.levels = line.value("levels", section.wishes.levels);
    section.wishes.size = line.value("size", section.wishes.size);
    check_section(section);
    return section;
}

}  // namespace velquor
