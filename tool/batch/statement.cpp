#include <sqlite3.h>

#include <cmath>
#include <utility>

#include "tool/batch/store.h"

namespace velquor {

Statement::Statement(Statement&& other) noexcept : statement(std::exchange(other.statement, nullptr)) {}

Statement& Statement::operator=(Statement&& other) noexcept {
    std::swap(statement, other.statement);
    return *this;
}

Statement::~Statement() { sqlite3_finalize(statement); }

void Statement::bind(int at, std::int64_t value) { sqlite3_bind_int64(statement, at, value); }

void Statement::bind(int at, double value) {
    if (std::isfinite(value))
        sqlite3_bind_double(statement, at, value);
    else
        sqlite3_bind_null(statement, at);
}

void Statement::bind(int at, const std::string& value) {
    sqlite3_bind_text64(statement, at, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void Statement::bind(int at, const ContentKey& value) {
    sqlite3_bind_blob(statement, at, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
}

void Statement::bind(int at, const nlohmann::json& value) {
    const bool is_large = value.is_number_unsigned() && value.get<std::uint64_t>() > INT64_MAX;
    if (is_large) {
        const std::string digits = value.dump();
        sqlite3_bind_blob(statement, at, digits.data(), static_cast<int>(digits.size()), SQLITE_TRANSIENT);
    } else if (value.is_number_integer())
        bind(at, value.get<std::int64_t>());
    else if (value.is_number())
        bind(at, value.get<double>());
    else if (value.is_string())
        bind(at, value.get_ref<const std::string&>());
    else if (value.is_boolean())
        bind(at, std::int64_t{value.get<bool>()});
    else
        sqlite3_bind_null(statement, at);
}

void Statement::clear() {
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
}

bool Statement::is_null(int column) const { return sqlite3_column_type(statement, column) == SQLITE_NULL; }

std::int64_t Statement::whole(int column) const { return sqlite3_column_int64(statement, column); }

double Statement::number(int column) const { return sqlite3_column_double(statement, column); }

std::string Statement::text(int column) const {
    const auto* const begin = sqlite3_column_text(statement, column);
    if (!begin) return "";
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

nlohmann::ordered_json Statement::json(int column) const {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER: return whole(column);
        case SQLITE_FLOAT: return number(column);
        case SQLITE_NULL: return nullptr;
        case SQLITE_BLOB: return nlohmann::ordered_json::parse(text(column));
        default: return text(column);
    }
}

}  // namespace velquor
