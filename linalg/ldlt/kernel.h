// The dense kernels of the factorisation. One source, kernel.inl, is built for any processor, and on x86-64 once more
// for those with AVX2 and for those with AVX-512. Vector lanes run along rows or right-hand sides, sums over the inner
// index are sequential and nothing is fused, so all builds round every entry alike.
#pragma once

#include <cstddef>
#include <cstdint>

namespace LDLT {

// A supernode with its k columns assembled in `panel` and room for its r x r update matrix in `update`, lower
// triangles.
struct Front {
    double* panel;        // (rows, k)  rows as LDLT::PADDING tells; in A, out L
    std::ptrdiff_t rows;  // leading dimension of the panel
    std::int32_t k, r;
    double* update;          // (r, r)     leading dimension padded(r); out - L D L^T
    const double* diagonal;  // (k)        original diagonals, what pivots are measured by
    double* pivot;           // (k)        out
    double* inverse;         // (k)        out
};

enum class Pivots : std::int8_t { positive, some_null, negative };

struct Columns {
    const double* panel;  // (rows, k)
    std::ptrdiff_t rows;
    std::int32_t k, r;
};

// The routines of one build.
struct Kernel {
    // Factorises the panel and assigns the update matrix.
    Pivots (*eliminate)(const Front& f);
    // Solve with the finished columns of a supernode. X (k + r, 4) are its rows, gathered, for four right-hand sides.
    void (*forward)(const Columns& c, double* X);
    void (*backward)(const Columns& c, double* X);
    // R -= A X and size += |A| |X|, all (n, 4), for a matrix as the caller gives it.
    void (*subtract_product)(std::int32_t n, const double* a, const std::int32_t* ia, const std::int32_t* ja,
                             const double* X, double* R, double* size);
};

namespace baseline {
extern const Kernel kernel;
}
#ifdef VQ_KERNEL_X86
namespace avx2 {
extern const Kernel kernel;
}
namespace avx512 {
extern const Kernel kernel;
}
#endif

}  // namespace LDLT
