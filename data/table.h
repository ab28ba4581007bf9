// Tables that count from 1 and lie column after column, the first index running fastest. This is the only place where
// counting from 1 becomes counting from 0.
//
//   Table<T, R>        owns its memory; begins unallocated, is allocated at its exact size and zeroed
//   View<T, R>         the same layout over memory of somebody else, never freed here
//   Spread<T, S...>    over memory of somebody else too, entries that follow in dimension k standing S(k) apart
//   Block<T, N...>     a small fixed block on the stack or in a record; Real and Integer are its two usual forms
//
// With VQ_CHECK_INDICES (debug builds) every access is compared with the extents, and one outside ends the program. A
// release build compiles an access to the address computation alone. `column` gives the raw memory of one column,
// counted from 0, for the few loops that need it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

namespace table_detail {

#ifdef VQ_CHECK_INDICES
[[noreturn]] inline void index_outside(std::ptrdiff_t index, std::ptrdiff_t extent) {
    std::fprintf(stderr, "table index %td outside 1 to %td\n", index, extent);
    std::abort();
}
inline void check(std::ptrdiff_t index, std::ptrdiff_t extent) {
    if (index < 1 || index > extent) index_outside(index, extent);
}
#else
constexpr void check(std::ptrdiff_t, std::ptrdiff_t) {}
#endif

// Distance of entry (i, j, ...) from entry (1, 1, ...) in a table with the extents n.
template <int R, class... I>
constexpr std::ptrdiff_t offset(const std::ptrdiff_t (&n)[R], I... index) {
    static_assert(sizeof...(I) == R, "one index for each dimension");
    const std::ptrdiff_t at[] = {static_cast<std::ptrdiff_t>(index)...};
    std::ptrdiff_t o = 0;
    for (int k = R - 1; k >= 0; --k) {
        check(at[k], n[k]);
        o = o * n[k] + (at[k] - 1);
    }
    return o;
}

struct FreeMemory {
    void operator()(void* p) const { std::free(p); }
};

}  // namespace table_detail

template <class T, int R>
struct View {
    View() = default;
    template <class... N>
    explicit View(T* memory, N... extents) : data(memory), n{static_cast<std::ptrdiff_t>(extents)...} {
        static_assert(sizeof...(N) == R, "one extent for each dimension");
    }

    template <class... I>
    T& operator()(I... index) const {
        return data[table_detail::offset(n, index...)];
    }
    template <class... I>
    T* column(I... index) const {
        return data + table_detail::offset(n, 1, index...);
    }
    std::ptrdiff_t extent(int dimension) const { return n[dimension - 1]; }

    T* data = nullptr;
    std::ptrdiff_t n[R] = {};
};

template <class T, int... S>
struct Spread {
    static constexpr int rank = sizeof...(S);
    Spread() = default;
    template <class... N>
    explicit Spread(T* memory, N... extents) : data(memory), n{static_cast<std::ptrdiff_t>(extents)...} {
        static_assert(sizeof...(N) == rank, "one extent for each dimension");
    }

    template <class... I>
    T& operator()(I... index) const {
        int k = 0;
        (table_detail::check(index, n[k++]), ...);
        return data[(((static_cast<std::ptrdiff_t>(index) - 1) * S) + ...)];
    }
    std::ptrdiff_t extent(int dimension) const { return n[dimension - 1]; }

    T* data = nullptr;
    std::ptrdiff_t n[rank] = {};
};

template <class T, int R>
struct Table {
    // Zeroed memory for the given extents in place of what was held. Throws std::bad_alloc and holds nothing then.
    template <class... N>
    void allocate(N... extents) {
        release();
        hold(std::calloc(bytes_of(extents...), 1), extents...);
    }
    // The same for a table of which every entry is going to be assigned: until then they are undefined.
    template <class... N>
    void allocate_uncleared(N... extents) {
        release();
        hold(std::malloc(bytes_of(extents...)), extents...);
    }
    void release() {
        data.reset();
        for (std::ptrdiff_t& extent : n) extent = 0;
    }
    bool allocated() const { return data != nullptr; }

    template <class... I>
    T& operator()(I... index) {
        return data.get()[table_detail::offset(n, index...)];
    }
    template <class... I>
    const T& operator()(I... index) const {
        return data.get()[table_detail::offset(n, index...)];
    }
    template <class... I>
    T* column(I... index) {
        return data.get() + table_detail::offset(n, 1, index...);
    }
    template <class... I>
    const T* column(I... index) const {
        return data.get() + table_detail::offset(n, 1, index...);
    }
    std::ptrdiff_t extent(int dimension) const { return n[dimension - 1]; }
    T* memory() { return data.get(); }
    const T* memory() const { return data.get(); }

    std::unique_ptr<T[], table_detail::FreeMemory> data;
    std::ptrdiff_t n[R] = {};

    template <class... N>
    static std::size_t bytes_of(N... extents) {
        static_assert(sizeof...(N) == R, "one extent for each dimension");
        std::size_t bytes = sizeof(T);
        for (const std::ptrdiff_t extent : {static_cast<std::ptrdiff_t>(extents)...})
            if (extent < 0 || __builtin_mul_overflow(bytes, static_cast<std::size_t>(extent), &bytes))
                throw std::bad_alloc();
        return bytes > 0 ? bytes : 1;
    }
    template <class... N>
    void hold(void* memory, N... extents) {
        if (!memory) throw std::bad_alloc();
        data.reset(static_cast<T*>(memory));
        int k = 0;
        ((n[k++] = static_cast<std::ptrdiff_t>(extents)), ...);
    }
};

// An aggregate: Real<2, 2> M{{m11, m21, m12, m22}}. Without an initialiser its entries are undefined.
template <class T, int... N>
struct Block {
    static constexpr int rank = sizeof...(N);
    static constexpr std::ptrdiff_t n[rank] = {N...};

    template <class... I>
    constexpr T& operator()(I... index) {
        return data[table_detail::offset(n, index...)];
    }
    template <class... I>
    constexpr const T& operator()(I... index) const {
        return data[table_detail::offset(n, index...)];
    }

    T data[(N * ...)];
};

template <int... N>
using Real = Block<double, N...>;
template <int... N>
using Integer = Block<std::int32_t, N...>;
