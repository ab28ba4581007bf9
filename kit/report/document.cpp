#include "kit/report/document.h"

namespace velquor {

std::pair<std::string, std::string> letter_and_index(const std::string& symbol) {
    std::size_t end = symbol.empty() ? 0 : 1;
    while (end < symbol.size() && (symbol[end] & 0xc0) == 0x80) ++end;  // the rest of a letter of several bytes
    const auto is_capital = [](char c) { return c >= 'A' && c <= 'Z'; };
    const bool stiffness = symbol.size() > 1 && (symbol[0] == 'E' || symbol[0] == 'G') && is_capital(symbol[1]);
    if (stiffness) end = 2;
    const std::size_t index = end < symbol.size() && symbol[end] == ',' ? end + 1 : end;
    return {symbol.substr(0, end), symbol.substr(index)};
}

}  // namespace velquor
