#include <filesystem>
#include <map>
#include <set>

#include "kit/analysis/values.h"
#include "kit/section/section.h"
#include "kit/section/words.h"
#include "kit/show/show.h"
#include "tool/batch/batch.h"
#include "tool/batch/store.h"
#include "tool/commands.h"
#include "tool/output.h"

namespace velquor {

namespace {

using nlohmann::ordered_json;

constexpr std::size_t PIECE = std::size_t{1} << 16;

// Columns of the query of all inputs, in their order.
enum Column {
    SOURCE,
    LINE,
    ID,
    NAME,
    PARAMETERS,
    KIND,
    AT,
    MESSAGE,
    REMEDY,
    LENGTH,
    FORCE,
    REFERENCE,
    WISHED,
    REACHED,
    MET,
    LEVELS,
    NODES,
    ELEMENTS,
    REASONS,
    MATERIALS,
    LOADS,
    NOTES,
    MORE,
    VALUES
};

std::string query() {
    std::string text =
        "SELECT s.name, i.line, i.id, coalesce(i.name, r.name), i.parameters, e.kind, e.at, e.message, e.remedy, "
        "r.length,"
        " r.force, r.reference, r.wished, r.reached, r.met, r.levels, r.nodes, r.elements, r.reasons, r.materials, "
        "r.loads,"
        " r.notes, r.more";
    for (const Quantity& q : quantities()) text += std::string(", r.\"") + q.key + "\", r.\"" + q.key + "_bound\"";
    return text +
           " FROM inputs i JOIN sources s ON s.number = i.source LEFT JOIN results r ON r.key = i.key"
           " LEFT JOIN errors e ON e.key = i.key ORDER BY i.source, i.line, i.ordinal";
}

ordered_json parsed(const Statement& row, int column) { return ordered_json::parse(row.text(column)); }

// What a run that was stopped has not come to is told as an error of its own kind.
bool is_missing(const Statement& row) { return row.is_null(KIND) && row.is_null(LENGTH); }
constexpr char MISSING[] = "missing", NOT_YET[] = "is not calculated yet", GO_ON[] = "run velquor batch again";

ordered_json answer_of(const Statement& row) {
    ordered_json answer = {{"id", row.json(ID)}};
    if (is_missing(row)) {
        answer["error"] = {{"kind", MISSING}, {"at", ""}, {"message", NOT_YET}, {"remedy", GO_ON}};
        return answer;
    }
    if (row.is_null(LENGTH)) {
        answer["error"] = {{"kind", row.text(KIND)},
                           {"at", row.text(AT)},
                           {"message", row.text(MESSAGE)},
                           {"remedy", row.text(REMEDY)}};
        return answer;
    }
    const std::string length = row.text(LENGTH), force = row.text(FORCE);
    answer["name"] = row.text(NAME);
    answer["units"] = {{"length", length}, {"force", force}};
    answer["reference"] = row.text(REFERENCE);
    answer["accuracy"] = {{"wished", row.json(WISHED)}, {"reached", row.json(REACHED)},
                          {"met", row.whole(MET) != 0}, {"levels", row.whole(LEVELS)},
                          {"nodes", row.whole(NODES)},  {"elements", row.whole(ELEMENTS)}};
    std::map<std::string, std::string> reasons;  // by keys
    if (!row.is_null(REASONS)) {
        const ordered_json given = parsed(row, REASONS);
        for (const auto& [reason, keys] : given.items())
            for (const ordered_json& key : keys) reasons[key.get<std::string>()] = reason;
    }
    ordered_json& values = answer["values"] = ordered_json::object();
    int column = VALUES;
    for (const Quantity& q : quantities()) {
        if (!row.is_null(column) || reasons.count(q.key) > 0) {  // which was asked for
            ordered_json value = {
                {"value", row.json(column)}, {"bound", row.json(column + 1)}, {"unit", unit_of(q, length, force)}};
            if (*q.slots != '\0') value["slots"] = q.slots;
            if (const auto at = reasons.find(q.key); at != reasons.end() && !at->second.empty())
                value["reason"] = at->second;
            values[q.key] = value;
        }
        column += 2;
    }
    if (!row.is_null(NOTES)) answer["notes"] = parsed(row, NOTES);
    answer["materials"] = parsed(row, MATERIALS);
    if (!row.is_null(LOADS)) answer["loads"] = parsed(row, LOADS);
    if (!row.is_null(MORE)) answer.update(parsed(row, MORE));
    return answer;
}

const char* const FIRST[] = {"source", "line", "id", "name"};
const char* const SECOND[] = {"length", "force", "reached", "met"};
const char* const LAST[] = {"error_kind", "error_at", "error_message", "error_remedy"};

std::string heading(const std::vector<std::string>& parameters) {
    std::set<std::string> taken;
    for (const auto* names : {&FIRST, &SECOND, &LAST}) taken.insert(std::begin(*names), std::end(*names));
    for (const Quantity& q : quantities()) taken.insert({q.key, std::string(q.key) + "_bound"});
    std::string text;
    const auto add = [&](const std::string& name) { text += (text.empty() ? "" : ",") + csv_cell(name); };
    for (const char* name : FIRST) add(name);
    for (const std::string& name : parameters) add(taken.count(name) > 0 ? "sweep " + name : name);
    for (const char* name : SECOND) add(name);
    for (const Quantity& q : quantities()) {
        add(q.key);
        add(std::string(q.key) + "_bound");
    }
    for (const char* name : LAST) add(name);
    return text + "\r\n";
}

std::string cell(const ordered_json& value) {
    if (value.is_null()) return "";
    if (value.is_number_float()) return text_of(value.get<double>());
    return csv_cell(value.is_string() ? value.get<std::string>() : value.dump());
}

std::string line_of(const Statement& row, const std::vector<std::string>& parameters) {
    std::string text = csv_cell(row.text(SOURCE));
    const auto add = [&](const std::string& shown) { text += "," + shown; };
    add(std::to_string(row.whole(LINE)));
    add(cell(row.json(ID)));
    add(csv_cell(row.text(NAME)));
    const ordered_json given = row.is_null(PARAMETERS) ? ordered_json::object() : parsed(row, PARAMETERS);
    for (const std::string& name : parameters) add(given.contains(name) ? cell(given[name]) : "");
    const bool has_values = !row.is_null(LENGTH), missing = is_missing(row);
    add(row.text(LENGTH));
    add(row.text(FORCE));
    add(cell(row.json(REACHED)));
    add(!has_values ? "" : row.whole(MET) != 0 ? "true" : "false");
    const int end = VALUES + 2 * static_cast<int>(quantities().size());
    for (int column = VALUES; column < end; ++column) add(row.is_null(column) ? "" : text_of(row.number(column)));
    add(missing ? MISSING : has_values ? "" : csv_cell(row.text(KIND)));
    for (const int column : {AT, MESSAGE, REMEDY})
        add(has_values          ? ""
            : !missing          ? csv_cell(row.text(column))
            : column == MESSAGE ? NOT_YET
            : column == REMEDY  ? GO_ON
                                : "");
    return text + "\r\n";
}

// Of all sweeps, in the order in which they come.
std::vector<std::string> parameters_in(Store& store) {
    std::vector<std::string> names;
    std::set<std::string> known;
    Statement rows = store.prepare(
        "SELECT parameters FROM inputs WHERE ordinal = 0 AND parameters IS NOT NULL ORDER BY source, line");
    while (store.step(rows)) {
        const ordered_json parameters = parsed(rows, 0);
        for (const auto& [name, value] : parameters.items())
            if (known.insert(name).second) names.push_back(name);
    }
    return names;
}

}  // namespace

bool is_results(const std::string& file) { return is_database(file); }

int export_results(const std::string& file, const std::string& output) {
    const bool as_csv = ending_of(output, {".csv", ".jsonl"}) == ".csv";
    std::error_code none;
    if (std::filesystem::equivalent(file, output, none))
        throw Error("-o", "is the file of results itself", "name another");
    Store store(file);
    store.run("BEGIN");  // all that follows sees the same, also while a batch goes on
    const std::vector<std::string> parameters = as_csv ? parameters_in(store) : std::vector<std::string>();
    Statement rows = store.prepare(query());
    std::uint64_t all = 0, missing = 0;
    bool begun = !as_csv, ended = false;
    write_pieces(
        [&](std::string& piece) {
            if (!begun) piece = heading(parameters);
            begun = true;
            while (!ended && piece.size() < PIECE) {
                ended = !store.step(rows);
                if (ended) break;
                ++all;
                missing += is_missing(rows);
                piece += as_csv ? line_of(rows, parameters) : answer_of(rows).dump() + "\n";
            }
            return !piece.empty();
        },
        output);
    if (missing > 0)
        tell(file, {std::to_string(missing) + " of " + std::to_string(all) + " inputs are not calculated yet"});
    return DONE;
}

}  // namespace velquor
