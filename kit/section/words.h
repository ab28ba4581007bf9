// Words for messages: numbers, quoted names, and the name that was meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velquor {

// The shortest text that reads back as the same number; no locale changes it.
std::string text_of(double value);

// The number to so many digits, without zeros at its end.
std::string text_of(double value, int digits);

// A coordinate or a length beside a size, however far from the origin it is, without zeros at its end: with 4 digits to
// 0.01 at a size of 100, to 0.1 at one of 500.
std::string text_beside(double size, double value, int digits = 4);

// "3rd"
std::string ordinal(std::size_t number);

// The text with a question mark for each control character and each byte that is not of UTF-8.
std::string printable(std::string_view text);

// The same for HTML, SVG and XML: what has a meaning there is escaped.
std::string in_markup(std::string_view text);

// In double quotes; what cannot be printed is replaced, what is long is cut.
std::string in_quotes(std::string_view text);

// The name as it is compared: lower case, without blanks.
std::string plain(std::string_view name);

// "did you mean "IPE 300"?" with the nearest of the names, or the names themselves where none is near and they are few;
// empty where neither helps.
std::string did_you_mean(std::string_view word, const std::vector<std::string>& names);

}  // namespace velquor
