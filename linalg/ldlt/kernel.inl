// Included once for each build, with VECTOR, the doubles in a vector register, and KERNEL, the namespace of the build.
// No header of the standard library with inline routines may come in here: the linker could give a routine compiled for
// AVX2 to the rest of the library.
#include "linalg/ldlt/kernel.h"
#include "linalg/ldlt/limits.h"

namespace LDLT {
namespace KERNEL {
namespace {

typedef double Vector __attribute__((vector_size(8 * VECTOR), aligned(8), may_alias));

constexpr int FOUR = 4 / VECTOR;  // vectors in four doubles
constexpr int BLOCK = 64;         // columns that are eliminated before the rest of the panel is updated
constexpr int DEPTH = 128;        // pivots that one sweep over an update matrix applies

inline Vector load(const double* p) { return *reinterpret_cast<const Vector*>(p); }
inline void store(double* p, Vector v) { *reinterpret_cast<Vector*>(p) = v; }

// X(R vectors, C) -= L(R vectors, K) W(C, K)^T, with W stored four entries to a pivot.
template <int R, int C>
inline void tile(double* X, std::ptrdiff_t ldx, const double* L, std::ptrdiff_t ldl, const double* W, int K) {
    Vector x[C][R];
#pragma GCC unroll 4
    for (int c = 0; c < C; ++c)
#pragma GCC unroll 4
        for (int v = 0; v < R; ++v) x[c][v] = load(X + c * ldx + v * VECTOR);
    for (int q = 0; q < K; ++q) {
        Vector l[R];
#pragma GCC unroll 4
        for (int v = 0; v < R; ++v) l[v] = load(L + q * ldl + v * VECTOR);
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c)
#pragma GCC unroll 4
            for (int v = 0; v < R; ++v) x[c][v] -= l[v] * W[4 * q + c];
    }
#pragma GCC unroll 4
    for (int c = 0; c < C; ++c)
#pragma GCC unroll 4
        for (int v = 0; v < R; ++v) store(X + c * ldx + v * VECTOR, x[c][v]);
}

// The same for `rows` rows, a multiple of four.
template <int C>
void strip(double* X, std::ptrdiff_t ldx, const double* L, std::ptrdiff_t ldl, const double* W, int K, int rows) {
    constexpr int TALL = 2;
    int i = 0;
    for (; i + TALL * VECTOR <= rows; i += TALL * VECTOR) tile<TALL, C>(X + i, ldx, L + i, ldl, W, K);
    if (i < rows) tile<FOUR, C>(X + i, ldx, L + i, ldl, W, K);
}

// Lower triangle and what lies below it: X(rows, columns) -= L(rows, K) D L(columns, K)^T. Entries above the diagonal
// of X, within four columns of it, are left undefined.
void reduce(double* X, std::ptrdiff_t ldx, int rows, int columns, const double* L, std::ptrdiff_t ldl, const double* d,
            int K) {
    double W[4 * DEPTH];
    for (int q0 = 0; q0 < K; q0 += DEPTH) {
        const int depth = K - q0 < DEPTH ? K - q0 : DEPTH;
        const double* l = L + q0 * ldl;
        for (int j = 0; j < columns; j += 4) {
            for (int q = 0; q < depth; ++q)
                for (int c = 0; c < 4; ++c) W[4 * q + c] = l[q * ldl + j + c] * d[q0 + q];
            double* x = X + j * ldx + j;
            switch (columns - j) {
                case 1: strip<1>(x, ldx, l + j, ldl, W, depth, rows - j); break;
                case 2: strip<2>(x, ldx, l + j, ldl, W, depth, rows - j); break;
                case 3: strip<3>(x, ldx, l + j, ldl, W, depth, rows - j); break;
                default: strip<4>(x, ldx, l + j, ldl, W, depth, rows - j);
            }
        }
    }
}

// Divides four rows and on by the triangle of C finished columns: W(c, b) = L(c, b) D(b).
template <int C>
void divide(double* X, std::ptrdiff_t ldx, int rows, const double (&W)[4][4], const double* inverse) {
    for (int i = 0; i < rows; i += VECTOR) {
        Vector x[C];
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c) x[c] = load(X + c * ldx + i);
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c) {
            x[c] *= inverse[c];
#pragma GCC unroll 4
            for (int b = c + 1; b < C; ++b) x[b] -= x[c] * W[b][c];
            store(X + c * ldx + i, x[c]);
        }
    }
}

// Eliminates columns j to j + C - 1, C up to 4, already reduced by those before them. False at a negative pivot.
template <int C>
bool eliminate_columns(const Front& f, int j, int rows, bool& null) {
    const std::ptrdiff_t ld = f.rows;
    double* X = f.panel + j * ld + j;
    double* inverse = f.inverse + j;
    double W[4][4];
    for (int c = 0; c < C; ++c) {
        double d = X[c * ld + c];
        const double original = f.diagonal[j + c];
        // Written so that a pivot that is not a number counts as negative.
        if (!(d >= -ROUNDING * original)) return false;
        if (d <= NULLPIVOT * original) {
            null = true;
            f.pivot[j + c] = inverse[c] = d = 0;
        } else {
            f.pivot[j + c] = d;
            inverse[c] = 1 / d;
        }
        for (int b = c + 1; b < C; ++b) {
            W[b][c] = X[c * ld + b];
            if (d == 0) W[b][c] = 0;
        }
        for (int i = c + 1; i < 4; ++i) {
            const double l = X[c * ld + i] * inverse[c];
            X[c * ld + i] = l;
            for (int b = c + 1; b < C; ++b) X[b * ld + i] -= l * W[b][c];
        }
    }
    divide<C>(X + 4, ld, rows - 4, W, inverse);
    return true;
}

}  // namespace

Pivots eliminate(const Front& f) {
    const std::ptrdiff_t ld = f.rows;
    const int all = static_cast<int>(f.rows);
    bool null = false;
    for (int block = 0; block < f.k; block += BLOCK) {
        const int end = block + BLOCK < f.k ? block + BLOCK : f.k;
        const double* L = f.panel + block * ld;
        for (int j = block; j < end; j += 4) {
            const int columns = end - j < 4 ? end - j : 4;
            double* X = f.panel + j * ld + j;
            if (j > block) reduce(X, ld, all - j, columns, L + j, ld, f.pivot + block, j - block);
            bool definite = false;
            switch (columns) {
                case 1: definite = eliminate_columns<1>(f, j, all - j, null); break;
                case 2: definite = eliminate_columns<2>(f, j, all - j, null); break;
                case 3: definite = eliminate_columns<3>(f, j, all - j, null); break;
                default: definite = eliminate_columns<4>(f, j, all - j, null);
            }
            if (!definite) return Pivots::negative;
        }
        if (end < f.k)
            reduce(f.panel + end * ld + end, ld, all - end, f.k - end, L + end, ld, f.pivot + block, end - block);
    }
    if (f.r > 0) {
        const int ldu = (f.r + 3) & ~3;
        reduce(f.update, ldu, ldu, f.r, f.panel + f.k, ld, f.pivot, f.k);
    }
    return null ? Pivots::some_null : Pivots::positive;
}

// X holds four right-hand sides for each position. `own` are the k rows of the supernode itself.
void forward(const double* panel, std::ptrdiff_t rows, std::int32_t k, std::int32_t r, const std::int32_t* below,
             double* own, double* X) {
    for (int i = 1; i < k; ++i) {
        Vector x[FOUR];
#pragma GCC unroll 4
        for (int v = 0; v < FOUR; ++v) x[v] = load(own + 4 * i + v * VECTOR);
        for (int j = 0; j < i; ++j)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v) x[v] -= load(own + 4 * j + v * VECTOR) * panel[j * rows + i];
#pragma GCC unroll 4
        for (int v = 0; v < FOUR; ++v) store(own + 4 * i + v * VECTOR, x[v]);
    }
    constexpr int TALL = 4;
    const double* L = panel + k;
    int i = 0;
    for (; i + TALL <= r; i += TALL) {
        Vector x[TALL][FOUR];
#pragma GCC unroll 4
        for (int t = 0; t < TALL; ++t)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v)
                x[t][v] = load(X + 4 * static_cast<std::ptrdiff_t>(below[i + t]) + v * VECTOR);
        for (int j = 0; j < k; ++j)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v) {
                const Vector y = load(own + 4 * j + v * VECTOR);
#pragma GCC unroll 4
                for (int t = 0; t < TALL; ++t) x[t][v] -= y * L[j * rows + i + t];
            }
#pragma GCC unroll 4
        for (int t = 0; t < TALL; ++t)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v)
                store(X + 4 * static_cast<std::ptrdiff_t>(below[i + t]) + v * VECTOR, x[t][v]);
    }
    for (; i < r; ++i) {
        double* x = X + 4 * static_cast<std::ptrdiff_t>(below[i]);
        for (int j = 0; j < k; ++j)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v)
                store(x + v * VECTOR, load(x + v * VECTOR) - load(own + 4 * j + v * VECTOR) * L[j * rows + i]);
    }
}

void backward(const double* panel, std::ptrdiff_t rows, std::int32_t k, std::int32_t r, const std::int32_t* below,
              double* own, const double* X) {
    constexpr int WIDE = 4;
    const double* L = panel + k;
    int j = 0;
    for (; j + WIDE <= k; j += WIDE) {
        Vector x[WIDE][FOUR];
#pragma GCC unroll 4
        for (int t = 0; t < WIDE; ++t)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v) x[t][v] = load(own + 4 * (j + t) + v * VECTOR);
        for (int i = 0; i < r; ++i)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v) {
                const Vector y = load(X + 4 * static_cast<std::ptrdiff_t>(below[i]) + v * VECTOR);
#pragma GCC unroll 4
                for (int t = 0; t < WIDE; ++t) x[t][v] -= y * L[(j + t) * rows + i];
            }
#pragma GCC unroll 4
        for (int t = 0; t < WIDE; ++t)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v) store(own + 4 * (j + t) + v * VECTOR, x[t][v]);
    }
    for (; j < k; ++j) {
        Vector x[FOUR];
#pragma GCC unroll 4
        for (int v = 0; v < FOUR; ++v) x[v] = load(own + 4 * j + v * VECTOR);
        for (int i = 0; i < r; ++i)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v)
                x[v] -= load(X + 4 * static_cast<std::ptrdiff_t>(below[i]) + v * VECTOR) * L[j * rows + i];
#pragma GCC unroll 4
        for (int v = 0; v < FOUR; ++v) store(own + 4 * j + v * VECTOR, x[v]);
    }
    for (j = k - 2; j >= 0; --j) {
        Vector x[FOUR];
#pragma GCC unroll 4
        for (int v = 0; v < FOUR; ++v) x[v] = load(own + 4 * j + v * VECTOR);
        for (int i = j + 1; i < k; ++i)
#pragma GCC unroll 4
            for (int v = 0; v < FOUR; ++v) x[v] -= load(own + 4 * i + v * VECTOR) * panel[j * rows + i];
#pragma GCC unroll 4
        for (int v = 0; v < FOUR; ++v) store(own + 4 * j + v * VECTOR, x[v]);
    }
}

}  // namespace KERNEL
}  // namespace LDLT
