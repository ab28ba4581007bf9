// The file of results, an SQLite database: docs/batch.md tells its tables.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool/batch/key.h"
#include "tool/batch/source.h"

struct sqlite3;
struct sqlite3_stmt;

namespace velquor {

// A prepared statement, and the database that it is of.
class Statement {
public:
    Statement() = default;
    explicit Statement(sqlite3_stmt* prepared) : statement(prepared) {}
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&& other) noexcept;
    ~Statement();

    sqlite3_stmt* handle() const { return statement; }
    void bind(int at, std::int64_t value);
    void bind(int at, std::uint64_t value) { bind(at, static_cast<std::int64_t>(value)); }
    void bind(int at, double value);  // NULL where it is not a number
    void bind(int at, const std::string& value);
    void bind(int at, const ContentKey& value);      // which must live until the statement is done
    void bind(int at, const nlohmann::json& value);  // a number, its digits above 2^63 - 1, a text, or NULL
    void clear();                                    // what is bound, and where it stands

    bool is_null(int column) const;
    std::int64_t whole(int column) const;
    double number(int column) const;
    std::string text(int column) const;             // empty for NULL
    nlohmann::ordered_json json(int column) const;  // a number, a text, or null

private:
    sqlite3_stmt* statement = nullptr;
};

// Whether a file begins as SQLite's do.
bool is_database(const std::string& file);

// What SQLite reports is thrown: as Error where the file is at fault, with what to do, else as CannotWrite.
class Store {
public:
    // Opens the file, or makes it. It is waited for so many seconds while another program has it, which `waits` is told
    // once; it returns false to end that. Throws Error where the file is no such.
    Store(const std::string& file, double patience, std::function<bool(bool begins)> waits);
    explicit Store(const std::string& file);  // to be read alone
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    // What there is of a section: nothing, values, or the kind of an error.
    struct Found {
        bool is_there = false, of_this_run = false;
        std::string kind;
    };
    Found find(const ContentKey& key);

    std::int64_t source(const std::string& name);

    void begin();  // what follows is kept as a whole, by commit()
    void commit();
    // The row of an input, and none between it and the one before.
    void put(std::int64_t source, const Item& item);
    void end_of(std::int64_t source);  // no rows behind the last
    // Of an answer as workers give it. False where it was there already.
    bool put(const ContentKey& key, const nlohmann::json& answer);

    // The errors of the first inputs of a source that have one, in their order: "2: shape: has no parameter "hh"", by
    // their lines.
    std::vector<std::string> faults(std::int64_t source, std::size_t most);

    Statement prepare(const std::string& text);
    bool step(Statement& statement);  // whether there is a row
    void run(const std::string& text);

private:
    void open(int flags, const std::string& name);
    void check_form();
    bool has_tables();
    void make_tables();
    void prepare_all();
    bool wait();
    [[noreturn]] void fail(int code);

    std::string file;
    sqlite3* database = nullptr;
    double patience = 0, waited = 0;
    std::function<bool(bool)> waits;
    std::int64_t started = 0;             // microseconds, which tells this run from others
    std::uint64_t line = 0, ordinal = 0;  // of the last row of the source at hand
    Statement find_result, find_error, put_input, drop_inputs, put_result, put_error, drop_error;
};

}  // namespace velquor
