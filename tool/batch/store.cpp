#include "tool/batch/store.h"

#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "kit/analysis/values.h"
#include "kit/section/section.h"
#include "tool/batch/tables.h"
#include "tool/output.h"

namespace velquor {

namespace {

using nlohmann::json;

constexpr char MARK[] = "SQLite format 3";     // with its zero the first 16 bytes
constexpr int SOON = 5, LATER = 25;            // milliseconds between looks at a file that is locked
constexpr double PATIENT = 2;                  // seconds that are waited before it is told
constexpr std::uintmax_t CHECKED = 256 << 20;  // bytes of a file that is checked whole before it is written to
constexpr double READERS_PATIENCE = 10;

const char* const DAMAGED =
    "move it away and run the same command again, or save what can be read: sqlite3 FILE .recover | sqlite3 NEW";

std::string list_of(const std::vector<std::string>& columns, const char* before, const char* after) {
    std::string text;
    for (const std::string& column : columns) text += (text.empty() ? "" : ", ") + (before + column + after);
    return text;
}

json part_of(const json& object, const char* key) { return object.contains(key) ? object[key] : json(); }

std::string text_or_none(const json& value) { return value.is_null() ? "" : value.dump(); }

}  // namespace

bool is_database(const std::string& file) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(file, none)) return false;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rb"), std::fclose);
    char begin[sizeof MARK];
    return stream && std::fread(begin, 1, sizeof begin, stream.get()) == sizeof begin &&
           std::memcmp(begin, MARK, sizeof begin) == 0;
}

Store::Store(const std::string& name, double seconds, std::function<bool(bool)> told)
    : file(name), patience(seconds), waits(std::move(told)) {
    std::error_code none;
    const bool was_there = std::filesystem::exists(file, none) && std::filesystem::file_size(file, none) > 0;
    if (was_there && access(file.c_str(), R_OK | W_OK) != 0)
        throw Error(file, std::string("cannot be used: ") + std::strerror(errno),
                    "it must be readable and writable, or name another with -o");
    if (std::filesystem::exists(file, none) &&
        (!std::filesystem::is_regular_file(file, none) || (was_there && !none && !is_database(file))))
        throw Error(file, "is there and is no file of results", "name another with -o: it is left as it is");
    started = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
                  .count();
    open(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, file);
    if (was_there) check_form();
    run("PRAGMA journal_mode = WAL");
    run("PRAGMA synchronous = NORMAL");
    make_tables();
    prepare_all();
}

Store::Store(const std::string& name) : file(name), patience(READERS_PATIENCE) {
    open(SQLITE_OPEN_READONLY, file);
    const int code = sqlite3_exec(database, "SELECT 1 FROM sqlite_schema", nullptr, nullptr, nullptr) & 0xff;
    if ((code == SQLITE_CANTOPEN || code == SQLITE_READONLY) &&
        !std::filesystem::exists(file + "-wal")) {  // where nothing may be written beside it
        sqlite3_close(database);
        std::string address = "file:";
        for (const char c : std::filesystem::absolute(file).string())
            if (c == '%' || c == '?' || c == '#') {
                char escaped[4];
                std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(c));
                address += escaped;
            } else {
                address += c;
            }
        open(SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, address + "?immutable=1");
    }
    check_form();
    if (!has_tables()) throw Error(file, "has no results yet", "velquor batch writes them");
}

Store::~Store() {
    for (Statement* statement :
         {&find_result, &find_error, &put_input, &drop_inputs, &put_result, &put_error, &drop_error})
        *statement = {};
    sqlite3_close(database);
}

void Store::open(int flags, const std::string& name) {
    const int code = sqlite3_open_v2(name.c_str(), &database, flags, nullptr);
    sqlite3_extended_result_codes(database, 1);
    if (code != SQLITE_OK) fail(code);
}

void Store::check_form() {
    const auto number = [&](const char* text) {
        Statement statement = prepare(text);
        step(statement);
        return statement.whole(0);
    };
    const std::int64_t mark = number("PRAGMA application_id"), format = number("PRAGMA user_version");
    if (mark == 0 && !has_tables()) return;  // begun, and ended before there was anything
    if (mark != STORE_MARK)
        throw Error(file, "is a database, but none of results", "name another with -o: it is left as it is");
    if (format > STORE_FORMAT)
        throw Error(file,
                    "was written in format " + std::to_string(format) + ", and this version knows " +
                        std::to_string(STORE_FORMAT),
                    "use a newer velquor, or name another file");
    std::error_code none;
    if (std::filesystem::file_size(file, none) > CHECKED) return;
    Statement check = prepare("PRAGMA quick_check(1)");
    step(check);
    if (check.text(0) != "ok") throw Error(file, "is damaged", DAMAGED);
}

bool Store::has_tables() {
    Statement statement = prepare("SELECT 1 FROM sqlite_schema");
    return step(statement);
}

void Store::make_tables() {
    begin();
    Statement version = prepare("PRAGMA user_version");
    step(version);
    const bool is_new = version.whole(0) == 0;
    version = {};
    if (is_new) run(text_of_tables());
    commit();
}

void Store::prepare_all() {
    find_result = prepare("SELECT run FROM results WHERE key = ?");
    find_error = prepare("SELECT run, kind FROM errors WHERE key = ?");
    put_input = prepare(
        "INSERT INTO inputs VALUES (?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO UPDATE SET id = excluded.id, name = "
        "excluded.name,"
        " key = excluded.key, parameters = excluded.parameters WHERE id IS NOT excluded.id OR name IS NOT excluded.name"
        " OR key <> excluded.key OR parameters IS NOT excluded.parameters");
    drop_inputs =
        prepare("DELETE FROM inputs WHERE source = ?1 AND (line, ordinal) > (?2, ?3) AND (line, ordinal) < (?4, ?5)");
    const std::vector<std::string> columns = result_columns();
    put_result = prepare("INSERT OR IGNORE INTO results (" + list_of(columns, "\"", "\"") + ") VALUES (" +
                         list_of(std::vector<std::string>(columns.size(), "?"), "", "") + ")");
    put_error = prepare(
        "INSERT INTO errors SELECT ?1, ?2, ?3, ?4, ?5, ?6 WHERE NOT EXISTS (SELECT 1 FROM results WHERE key = ?1)"
        " ON CONFLICT DO UPDATE SET run = excluded.run, kind = excluded.kind, at = excluded.at,"
        " message = excluded.message, remedy = excluded.remedy");
    drop_error = prepare("DELETE FROM errors WHERE key = ?");
}

Statement Store::prepare(const std::string& text) {
    sqlite3_stmt* statement = nullptr;
    int code;
    while ((code = sqlite3_prepare_v3(database, text.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr)) !=
           SQLITE_OK)
        if ((code & 0xff) != SQLITE_BUSY || !wait()) fail(code);
    waited = 0;
    return Statement(statement);
}

bool Store::step(Statement& statement) {
    int code;
    while ((code = sqlite3_step(statement.handle())) != SQLITE_ROW && code != SQLITE_DONE) {
        sqlite3_reset(statement.handle());
        if ((code & 0xff) != SQLITE_BUSY || !wait()) fail(code);
    }
    waited = 0;
    return code == SQLITE_ROW;
}

void Store::run(const std::string& text) {
    int code;
    while ((code = sqlite3_exec(database, text.c_str(), nullptr, nullptr, nullptr)) != SQLITE_OK)
        if ((code & 0xff) != SQLITE_BUSY || !wait()) fail(code);
    waited = 0;
}

// For another program, which has locked the file.
bool Store::wait() {
    const bool was_patient = waited < PATIENT;
    if (waited >= patience) return false;
    const int pause = waited < 0.1 ? SOON : LATER;
    sqlite3_sleep(pause);
    waited += pause / 1000.0;
    return !waits || waits(was_patient && waited >= PATIENT);
}

void Store::fail(int code) {
    std::string said = sqlite3_errmsg(database);
    if (!sqlite3_get_autocommit(database)) sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    switch (code & 0xff) {
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB: throw Error(file, "is damaged: " + said, DAMAGED);
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            throw CannotWrite(file +
                              ": another program has locked it; close what has it open, and run the same command "
                              "again");
        case SQLITE_FULL: throw CannotWrite(file + ": the disk is full; free space, and run the same command again");
        case SQLITE_CANTOPEN:
        case SQLITE_READONLY:
        case SQLITE_PERM:
            throw CannotWrite(file + ": cannot be opened for writing: " + said +
                              "; the file and its folder must be writable");
        case SQLITE_IOERR:
            throw CannotWrite(file + ": " + said + (errno != 0 ? std::string(" (") + std::strerror(errno) + ")" : "") +
                              "; see to the disk and its limits, and run the same command again");
        default: throw CannotWrite(file + ": " + said);
    }
}

void Store::begin() { run("BEGIN IMMEDIATE"); }
void Store::commit() { run("COMMIT"); }

Store::Found Store::find(const ContentKey& key) {
    Found found;
    find_result.clear();
    find_result.bind(1, key);
    if (step(find_result)) {
        found = {true, find_result.whole(0) == started, ""};
    } else {
        find_error.clear();
        find_error.bind(1, key);
        if (step(find_error)) found = {true, find_error.whole(0) == started, find_error.text(1)};
        find_error.clear();
    }
    find_result.clear();
    return found;
}

std::int64_t Store::source(const std::string& name) {
    line = ordinal = 0;
    begin();
    Statement put = prepare("INSERT OR IGNORE INTO sources (name) VALUES (?)");
    put.bind(1, name);
    step(put);
    Statement get = prepare("SELECT number FROM sources WHERE name = ?");
    get.bind(1, name);
    step(get);
    const std::int64_t number = get.whole(0);
    get.clear();
    commit();
    return number;
}

void Store::put(std::int64_t source, const Item& item) {
    if (item.line != line || item.ordinal != ordinal + 1) {
        drop_inputs.clear();
        drop_inputs.bind(1, source);
        drop_inputs.bind(2, line);
        drop_inputs.bind(3, line == 0 ? INT64_MAX : static_cast<std::int64_t>(ordinal));
        drop_inputs.bind(4, item.line);
        drop_inputs.bind(5, item.ordinal);
        step(drop_inputs);
    }
    line = item.line;
    ordinal = item.ordinal;
    const std::string parameters = item.parameters.is_null() ? "" : item.parameters.dump();
    put_input.clear();
    put_input.bind(1, source);
    put_input.bind(2, item.line);
    put_input.bind(3, item.ordinal);
    put_input.bind(4, item.id);
    if (!item.name.empty()) put_input.bind(5, item.name);
    put_input.bind(6, item.key);
    if (!parameters.empty()) put_input.bind(7, parameters);
    step(put_input);
    put_input.clear();
}

void Store::end_of(std::int64_t source) {
    drop_inputs.clear();
    drop_inputs.bind(1, source);
    drop_inputs.bind(2, line);
    drop_inputs.bind(3, ordinal);
    drop_inputs.bind(4, INT64_MAX);
    drop_inputs.bind(5, INT64_MAX);
    step(drop_inputs);
}

std::vector<std::string> Store::faults(std::int64_t source, std::size_t most) {
    Statement get = prepare(
        "SELECT i.line, e.at, e.message, e.remedy FROM inputs i JOIN errors e ON e.key = i.key WHERE i.source = ?"
        " ORDER BY i.line, i.ordinal LIMIT ?");
    get.bind(1, source);
    get.bind(2, static_cast<std::uint64_t>(most));
    std::vector<std::string> faults;
    while (step(get))
        faults.push_back(std::to_string(get.whole(0)) + ": " + Error(get.text(1), get.text(2), get.text(3)).what());
    return faults;
}

bool Store::put(const ContentKey& key, const json& answer) {
    if (answer.contains("error")) {
        const json& error = answer["error"];
        put_error.clear();
        put_error.bind(1, key);
        put_error.bind(2, started);
        int at = 3;
        for (const char* column : {"kind", "at", "message", "remedy"}) put_error.bind(at++, part_of(error, column));
        step(put_error);
        return sqlite3_changes(database) > 0;
    }
    const json none, accuracy = part_of(answer, "accuracy"), units = part_of(answer, "units");
    put_result.clear();
    put_result.bind(1, key);
    put_result.bind(2, started);
    int at = 3;
    put_result.bind(at++, answer.at("name"));
    for (const char* column : {"length", "force"}) put_result.bind(at++, units.at(column));
    put_result.bind(at++, answer.at("reference"));
    for (const char* column : {"wished", "reached", "met", "levels", "nodes", "elements"})
        put_result.bind(at++, accuracy.at(column));
    const json& values = answer.at("values");
    json reasons;  // with the values that are asked for and not there, or have no bound
    for (const Quantity& q : quantities()) {
        const auto value = values.find(q.key);
        if (value != values.end()) {
            put_result.bind(at, value->at("value"));
            put_result.bind(at + 1, value->at("bound"));
            if (value->at("value").is_null() || value->contains("reason"))
                reasons[value->value("reason", "")].push_back(q.key);
        }
        at += 2;
    }
    json more = answer;
    for (const char* column : {"id", "name", "units", "reference", "accuracy", "values", "materials", "loads", "notes"})
        more.erase(column);
    const std::string texts[] = {text_or_none(reasons), text_or_none(part_of(answer, "materials")),
                                 text_or_none(part_of(answer, "loads")), text_or_none(part_of(answer, "notes")),
                                 more.empty() ? "" : more.dump()};
    for (const std::string& text : texts) {
        if (!text.empty()) put_result.bind(at, text);
        ++at;
    }
    step(put_result);
    const bool is_new = sqlite3_changes(database) > 0;
    put_result.clear();
    drop_error.clear();
    drop_error.bind(1, key);
    step(drop_error);
    return is_new;
}

}  // namespace velquor
