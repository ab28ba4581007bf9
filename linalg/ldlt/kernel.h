// The dense kernels of the factorisation. One source, kernel.inl, is built for every x86-64 processor and once more for
// those with AVX2. Vector lanes run along rows or right-hand sides, sums over the inner index are sequential and
// nothing is fused, so both builds round every entry alike.
#pragma once

#include <cstddef>
#include <cstdint>

namespace LDLT {

// A supernode with its k columns assembled in `panel` and its r x r update matrix in `update`, lower triangles.
struct Front {
    double* panel;        // (rows, k)  rows as panel_rows says, padding 0; in A, out L
    std::ptrdiff_t rows;  // leading dimension of the panel
    std::int32_t k, r;
    double* update;          // (r, r)     leading dimension padded(r); out less L D L^T
    const double* diagonal;  // (k)        original diagonals, what pivots are measured by
    double* pivot;           // (k)        out
    double* inverse;         // (k)        out
};

enum class Pivots : std::int8_t { positive, some_null, negative };

namespace baseline {
Pivots eliminate(const Front& f);
void forward(const double* panel, std::ptrdiff_t rows, std::int32_t k, std::int32_t r, const std::int32_t* below,
             double* own, double* X);
void backward(const double* panel, std::ptrdiff_t rows, std::int32_t k, std::int32_t r, const std::int32_t* below,
              double* own, const double* X);
}  // namespace baseline

#ifdef VQ_KERNEL_AVX2
namespace avx2 {
Pivots eliminate(const Front& f);
void forward(const double* panel, std::ptrdiff_t rows, std::int32_t k, std::int32_t r, const std::int32_t* below,
             double* own, double* X);
void backward(const double* panel, std::ptrdiff_t rows, std::int32_t k, std::int32_t r, const std::int32_t* below,
              double* own, const double* X);
}  // namespace avx2
#endif

}  // namespace LDLT
