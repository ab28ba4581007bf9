#include "kit/requests/answer.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "kit/requests/document.h"
#include "kit/requests/request.h"
#include "kit/requests/view.h"
#include "kit/show/json.h"

namespace velquor {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

std::string line_of(const ordered_json& answer) {
    return answer.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

const char* name_of(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::REQUEST: return "request";
        case ErrorKind::REFUSED: return "refused";
        case ErrorKind::UNSOLVED: return "unsolved";
        case ErrorKind::MEMORY: return "memory";
        case ErrorKind::TIMEOUT: return "timeout";
        case ErrorKind::CRASHED: return "crashed";
        default: return "internal";
    }
}

std::string error_line(const json& id, ErrorKind kind, const Error& error) {
    return line_of(
        {{"id", id},
         {"error",
          {{"kind", name_of(kind)}, {"at", error.place}, {"message", error.fault}, {"remedy", error.remedy}}}});
}

json id_of(const json& line) {
    if (!line.is_object() || !line.contains("id")) return nullptr;
    const json& id = line["id"];
    return id.is_number() || id.is_string() ? id : json();
}

ordered_json list_of(const std::vector<std::array<std::int32_t, 4>>& elements, int first) {
    auto list = ordered_json::array();
    for (const auto& e : elements) list.push_back({e[0] + first, e[1] + first, e[2] + first, e[3] + first});
    return list;
}

ordered_json json_of(const Mesh& mesh) {
    ordered_json lists = {{"y", ordered_json::array()}, {"z", ordered_json::array()}};
    for (const Point& node : mesh.nodes) {
        lists["y"].push_back(node.y);
        lists["z"].push_back(node.z);
    }
    lists["elements"] = list_of(mesh.elements, 0);
    lists["part"] = mesh.owners;
    return lists;
}

// Without bars that are points, which are behind the points of the mesh.
ordered_json json_of(const Fields& fields) {
    ordered_json lists = {{"node", ordered_json::array()}, {"material", ordered_json::array()}};
    for (const Field::Spot& point : fields.points) {
        lists["node"].push_back(point.node + 1);
        lists["material"].push_back(point.material);
    }
    lists["elements"] = list_of(fields.cells, 1);
    ordered_json& columns = lists["columns"] = ordered_json::object();
    for (const Fields::Column& column : fields.columns)
        for (std::size_t c = 0; c < column.components; ++c) {
            auto values = ordered_json::array();
            for (std::size_t i = 0; i < fields.points.size(); ++i) {
                const double value = column.values[i * column.components + c];
                values.push_back(std::isfinite(value) ? ordered_json(value) : ordered_json());
            }
            columns[column.name + (column.components == 1 ? "" : c == 0 ? " y" : " z")] = std::move(values);
        }
    return lists;
}

ordered_json answer_of(const json& id, const Request& wanted) {
    if (!wanted.document.form.empty()) return {{"id", id}, {"document", document_of(wanted)}};
    const Section& section = wanted.section;
    const bool loads = wanted.loads != Request::Loads::none && !section.loads.empty();
    Effort effort;
    effort.stresses = loads || wanted.fields || wanted.finest || wanted.view != Request::View::none;
    effort.quick = wanted.view == Request::View::draft;
    const Analysis analysis = analyse(section, effort);
    Values values = values_of(section, analysis);
    const std::string length = wanted.length.empty() ? values.length : wanted.length,
                      force = wanted.force.empty() ? values.force : wanted.force;
    values = in_units(std::move(values), length, force);
    ordered_json answer = {{"id", id}};
    answer.update(velquor::json_of(values, wanted.keys));
    if (loads)
        for (const Load& load : section.loads)
            answer["loads"].push_back(velquor::json_of(in_units(result_of(section, analysis, load), length, force),
                                                       wanted.loads == Request::Loads::nodes));
    if (wanted.view != Request::View::none) answer["view"] = view_of(section, analysis);
    if (!wanted.fields && !wanted.mesh) return answer;
    if (!effort.stresses) {
        answer["mesh"] = json_of(analysis.mesh);
        return answer;
    }
    std::vector<Case> cases = wanted.cases;
    if (wanted.fields && cases.empty()) cases = cases_of(section, analysis);
    const Fields fields = fields_of(section, analysis, cases, wanted.finest);
    if (wanted.mesh) answer["mesh"] = json_of(fields.mesh);
    if (wanted.fields) answer["fields"] = json_of(fields);
    return answer;
}

}  // namespace

std::string answer_to(std::string_view request, const std::optional<std::string>& folder) {
    json id;
    ErrorKind kind = ErrorKind::REQUEST;
    try {
        const json line = parse_request(request);
        id = id_of(line);
        Request wanted = wanted_by(line);
        kind = ErrorKind::REFUSED;
        wanted.section = section_wanted_by(line, folder);
        std::string answer = line_of(answer_of(id, wanted));
        if (answer.size() <= LONGEST_ANSWER) return answer;
        return error_line(id, ErrorKind::MEMORY,
                          {"", "an answer of " + std::to_string(answer.size()) + " bytes",
                           "at most " + std::to_string(LONGEST_ANSWER) + " are written: ask for less at a time"});
    } catch (const Unsolved& error) {
        return error_line(id, ErrorKind::UNSOLVED, error);
    } catch (const Error& error) {
        return error_line(id, kind, error);
    } catch (const std::bad_alloc&) {
        return error_line(id, ErrorKind::MEMORY,
                          {"", "memory could not be had", "a larger size of elements needs less"});
    } catch (const std::exception& error) {
        return error_line(id, ErrorKind::INTERNAL, {"", error.what()});
    }
}

std::string answer_to_long(std::size_t bytes) {
    return error_line(nullptr, ErrorKind::REQUEST,
                      {"", "a line of " + std::to_string(bytes) + " bytes",
                       "at most " + std::to_string(LONGEST_REQUEST) + " are read"});
}

std::string error_answer(std::string_view request, ErrorKind kind, const std::string& at, const std::string& message,
                         const std::string& remedy) {
    json id;
    try {
        id = id_of(parse_request(request));
    } catch (const Error&) {  // it has none that can be read
    }
    return error_line(id, kind, {at, message, remedy});
}

}  // namespace velquor
