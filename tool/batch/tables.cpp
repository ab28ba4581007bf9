#include "tool/batch/tables.h"

#include "kit/analysis/values.h"
#include "kit/show/lines.h"

namespace velquor {

namespace {

// Of `results`, before the values and behind them.
const std::vector<std::string> HEAD_COLUMNS = {"key",    "run",     "name", "length", "force", "reference",
                                               "wished", "reached", "met",  "levels", "nodes", "elements"};
const std::vector<std::string> TAIL_COLUMNS = {"reasons", "materials", "loads", "notes", "more"};

}  // namespace

std::vector<std::string> result_columns() {
    std::vector<std::string> columns = HEAD_COLUMNS;
    for (const Quantity& q : quantities()) {
        columns.emplace_back(q.key);
        columns.push_back(std::string(q.key) + "_bound");
    }
    columns.insert(columns.end(), TAIL_COLUMNS.begin(), TAIL_COLUMNS.end());
    return columns;
}

std::string text_of_tables() {
    std::string values, shown;
    for (const Quantity& q : quantities())
        for (const std::string& column : {std::string(q.key), std::string(q.key) + "_bound"}) {
            values += ", \"" + column + "\" REAL";
            shown += ", r.\"" + column + "\"";
        }
    return "CREATE TABLE about (name TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;"
           "INSERT INTO about VALUES ('format', '" +
           std::to_string(STORE_FORMAT) + "'), ('velquor', '" + version_text() +
           "');"
           "CREATE TABLE sources (number INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);"
           "CREATE TABLE inputs (source INTEGER, line INTEGER, ordinal INTEGER, id, name TEXT, key BLOB NOT NULL,"
           " parameters TEXT, PRIMARY KEY (source, line, ordinal)) WITHOUT ROWID;"
           "CREATE TABLE results (key BLOB NOT NULL PRIMARY KEY, run INTEGER, name TEXT, length TEXT, force TEXT,"
           " reference TEXT, wished REAL, reached REAL, met INTEGER, levels INTEGER, nodes INTEGER, elements INTEGER" +
           values +
           ", reasons TEXT, materials TEXT, loads TEXT, notes TEXT, more TEXT);"
           "CREATE TABLE errors (key BLOB NOT NULL PRIMARY KEY, run INTEGER, kind TEXT NOT NULL, at TEXT, message TEXT,"
           " remedy TEXT);"
           "CREATE VIEW sections AS SELECT s.name AS source, i.line, i.ordinal, i.id, coalesce(i.name, r.name) AS name,"
           " i.parameters, r.length, r.force, r.reference, r.reached, r.met, r.levels, r.nodes, r.elements" +
           shown +
           ", r.loads, r.notes, e.kind AS error_kind, e.at AS error_at, e.message AS error_message,"
           " e.remedy AS error_remedy, hex(i.key) AS key FROM inputs i JOIN sources s ON s.number = i.source"
           " LEFT JOIN results r ON r.key = i.key LEFT JOIN errors e ON e.key = i.key"
           " ORDER BY i.source, i.line, i.ordinal;"
           "PRAGMA user_version = " +
           std::to_string(STORE_FORMAT) +
           ";"
           "PRAGMA application_id = " +
           std::to_string(STORE_MARK) + ";";
}

}  // namespace velquor
