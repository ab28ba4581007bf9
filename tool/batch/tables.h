// The tables of a file of results.
#pragma once

#include <string>
#include <vector>

namespace velquor {

constexpr int STORE_FORMAT = 1;         // to be raised with every change of the tables or of the values
constexpr int STORE_MARK = 0x56514c42;  // by which a file is known as one of results: SQLite's application_id

// Statements that make all tables and the view.
std::string text_of_tables();

// The columns of `results`, the values each with its bound, in their order.
std::vector<std::string> result_columns();

}  // namespace velquor
