// What the fuzz targets share: the bytes of one input read as numbers, tables of exact size, and the end at a find.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// The bytes that are left, read from the front; behind the end everything is 0.
struct Input {
    const std::uint8_t* data;
    std::size_t size;
};

inline std::uint8_t byte(Input& in) {
    if (in.size == 0) return 0;
    --in.size;
    return *in.data++;
}

// 0 <= value < limit, limit up to 256
inline int below(Input& in, int limit) { return byte(in) % limit; }

template <class T>
T raw(Input& in) {
    std::uint8_t bytes[sizeof(T)];
    for (std::uint8_t& b : bytes) b = byte(in);
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Small numbers, the ends of the range, any 32 bits.
inline std::int32_t integer(Input& in) {
    constexpr std::int32_t LOWEST = std::numeric_limits<std::int32_t>::min(),
                           HIGHEST = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t ENDS[] = {LOWEST, LOWEST + 1, -1, 0, 1, 65536, 1 << 30, HIGHEST - 1, HIGHEST};
    const int kind = byte(in);
    if (kind < 192) return kind - 32;
    if (kind < 240) return ENDS[static_cast<std::size_t>(kind) % std::size(ENDS)];
    return raw<std::int32_t>(in);
}

// Halves around 0, the values at which something changes, any 64 bits.
inline double real(Input& in) {
    using Limits = std::numeric_limits<double>;
    static constexpr double VALUES[] = {0.0,
                                        -0.0,
                                        Limits::infinity(),
                                        -Limits::infinity(),
                                        Limits::quiet_NaN(),
                                        Limits::max(),
                                        -Limits::max(),
                                        Limits::min(),
                                        Limits::denorm_min(),
                                        -Limits::denorm_min(),
                                        1e300,
                                        -1e300,
                                        1e-300,
                                        1e155,
                                        1e153,
                                        1e-155,
                                        1e100,
                                        1e-100,
                                        1e16,
                                        1e12,
                                        1e8,
                                        2.1e11,
                                        1e-3,
                                        1e-5,
                                        1e-5f,
                                        1.01e-6f,
                                        1e-8f,
                                        1e-8,
                                        1e-12,
                                        1e-16,
                                        0.0001,
                                        0.08,
                                        1.0 + Limits::epsilon(),
                                        1.0 - Limits::epsilon(),
                                        2.0 - Limits::epsilon(),
                                        11,
                                        21,
                                        2147483647.5,
                                        2147483648.0,
                                        -2147483649.0,
                                        1.0 / 3};
    const int kind = byte(in);
    if (kind < 128) return (kind - 32) * 0.5;
    if (kind < 240) return VALUES[static_cast<std::size_t>(kind) % std::size(VALUES)];
    return raw<double>(in);
}

// A table on the heap at its exact size, so that AddressSanitizer sees one entry read or written outside. It is never
// null, also where it has no entries.
template <class T>
struct Exact {
    explicit Exact(std::size_t count) : entry(new T[count]()), size(count) {}
    Exact(const Exact& other) : Exact(other.size) { std::copy_n(other.entry.get(), size, entry.get()); }

    T& operator[](std::size_t k) { return entry[k]; }
    const T& operator[](std::size_t k) const { return entry[k]; }
    T* begin() { return entry.get(); }
    const T* begin() const { return entry.get(); }

    std::unique_ptr<T[]> entry;
    std::size_t size;
};

template <class T>
bool same_bits(const Exact<T>& a, const Exact<T>& b) {
    return a.size == b.size && std::memcmp(a.begin(), b.begin(), a.size * sizeof(T)) == 0;
}

// Puts a text in the place of an input. False where it has no room.
inline bool put(const std::string& text, std::uint8_t* data, std::size_t most) {
    if (text.size() > most) return false;
    std::copy(text.begin(), text.end(), data);
    return true;
}

// Ends the program as a find where a promise is broken.
inline void expect(bool kept, const char* promise) {
    if (kept) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

}  // namespace fuzz

// Of libFuzzer; not there where a corpus is replayed.
extern "C" __attribute__((weak)) std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
