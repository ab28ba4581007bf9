#include "kit/show/binary.h"

namespace velquor {

std::string base64(const std::string& bytes) {
    const char* const letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (std::size_t k = 0; k < 4; ++k) text += i + k > bytes.size() ? '=' : letters[bits >> (18 - 6 * k) & 0x3f];
    }
    return text;
}

}  // namespace velquor
