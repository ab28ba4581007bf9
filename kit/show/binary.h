// Numbers as bytes, the little end first, and bytes as text.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace velquor {

template <typename Number>
void append(std::string& bytes, Number number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof number);
    for (std::size_t k = 0; k < sizeof number; ++k) bytes += static_cast<char>(bits >> (8 * k) & 0xff);
}

std::string base64(const std::string& bytes);

}  // namespace velquor
