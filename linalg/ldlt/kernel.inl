// Included once for each build, with VECTOR, the doubles in a vector register, 2, 4 or 8, and KERNEL, the namespace of
// the build. No header of the standard library with inline routines may come in here: the linker could give a routine
// compiled for AVX2 to the rest of the library.
#include "linalg/ldlt/kernel.h"
#include "linalg/ldlt/limits.h"

namespace LDLT {
namespace KERNEL {
namespace {

constexpr int SHORT = VECTOR < 4 ? VECTOR : 4;  // rows come in fours, so a longer vector needs a shorter one beside it
constexpr int FOUR = 4 / SHORT;
typedef double Vector __attribute__((vector_size(8 * VECTOR)));
typedef double Short __attribute__((vector_size(8 * SHORT)));

constexpr int BLOCK = 64;    // columns that are eliminated before the rest of the panel is updated
constexpr int DEPTH = 128;   // pivots that one sweep over an update matrix applies
constexpr int HEIGHT = 256;  // rows of L that stay in the cache with them

template <class V>
inline V load(const double* p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);  // at any address
    return v;
}
template <class V>
inline void store(double* p, V v) {
    __builtin_memcpy(p, &v, sizeof v);
}

// X(R vectors, C) -= L(R vectors, K) W(C, K)^T, with W stored four entries to a pivot; where X is FRESH it counts as 0.
template <class V, int R, int C, bool FRESH>
inline void tile(double* X, std::ptrdiff_t ldx, const double* L, std::ptrdiff_t ldl, const double* W, int K) {
    constexpr int LENGTH = sizeof(V) / sizeof(double);
    V x[C][R];
#pragma GCC unroll 4
    for (int c = 0; c < C; ++c)
#pragma GCC unroll 4
        for (int v = 0; v < R; ++v) x[c][v] = FRESH ? V{} : load<V>(X + c * ldx + v * LENGTH);
    for (int q = 0; q < K; ++q) {
        V l[R];
#pragma GCC unroll 4
        for (int v = 0; v < R; ++v) l[v] = load<V>(L + q * ldl + v * LENGTH);
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c)
#pragma GCC unroll 4
            for (int v = 0; v < R; ++v) x[c][v] -= l[v] * W[4 * q + c];
    }
#pragma GCC unroll 4
    for (int c = 0; c < C; ++c)
#pragma GCC unroll 4
        for (int v = 0; v < R; ++v) store<V>(X + c * ldx + v * LENGTH, x[c][v]);
}

// The same for `rows` rows, a multiple of four.
template <int C, bool FRESH>
void strip(double* X, std::ptrdiff_t ldx, const double* L, std::ptrdiff_t ldl, const double* W, int K, int rows) {
    int i = 0;
    for (; i + 2 * VECTOR <= rows; i += 2 * VECTOR) tile<Vector, 2, C, FRESH>(X + i, ldx, L + i, ldl, W, K);
    for (; i + VECTOR <= rows; i += VECTOR) tile<Vector, 1, C, FRESH>(X + i, ldx, L + i, ldl, W, K);
    for (; i < rows; i += SHORT) tile<Short, 1, C, FRESH>(X + i, ldx, L + i, ldl, W, K);
}

template <bool FRESH>
void strip_of(int columns, double* X, std::ptrdiff_t ldx, const double* L, std::ptrdiff_t ldl, const double* W, int K,
              int rows) {
    switch (columns) {
        case 1: strip<1, FRESH>(X, ldx, L, ldl, W, K, rows); break;
        case 2: strip<2, FRESH>(X, ldx, L, ldl, W, K, rows); break;
        case 3: strip<3, FRESH>(X, ldx, L, ldl, W, K, rows); break;
        default: strip<4, FRESH>(X, ldx, L, ldl, W, K, rows);
    }
}

// Lower triangle and what lies below it: X(rows, columns) -= L(rows, K) D L(columns, K)^T. Entries above the diagonal
// of X, within four columns of it, are left undefined.
void reduce(double* X, std::ptrdiff_t ldx, int rows, int columns, const double* L, std::ptrdiff_t ldl, const double* d,
            int K, bool fresh) {
    double W[4 * DEPTH];
    for (int q0 = 0; q0 < K; q0 += DEPTH) {
        const int depth = K - q0 < DEPTH ? K - q0 : DEPTH;
        const double* l = L + q0 * ldl;
        for (int i0 = 0; i0 < rows; i0 += HEIGHT) {
            const int end = rows - i0 < HEIGHT ? rows : i0 + HEIGHT;
            for (int j = 0; j < columns && j < end; j += 4) {
                for (int q = 0; q < depth; ++q)
                    for (int c = 0; c < 4; ++c) W[4 * q + c] = l[q * ldl + j + c] * d[q0 + q];
                const int i = j < i0 ? i0 : j;
                double* x = X + j * ldx + i;
                if (fresh && q0 == 0)
                    strip_of<true>(columns - j, x, ldx, l + i, ldl, W, depth, end - i);
                else
                    strip_of<false>(columns - j, x, ldx, l + i, ldl, W, depth, end - i);
            }
        }
    }
}

// Divides four rows and on by the triangle of C finished columns: W(c, b) = L(c, b) D(b).
template <int C>
void divide(double* X, std::ptrdiff_t ldx, int rows, const double (&W)[4][4], const double* inverse) {
    for (int i = 0; i < rows; i += SHORT) {
        Short x[C];
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c) x[c] = load<Short>(X + c * ldx + i);
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c) {
            x[c] *= inverse[c];
#pragma GCC unroll 4
            for (int b = c + 1; b < C; ++b) x[b] -= x[c] * W[b][c];
            store<Short>(X + c * ldx + i, x[c]);
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

// Four right-hand sides of one row.
struct Four {
    Short v[FOUR];
};
inline Four load4(const double* p) {
    Four x;
#pragma GCC unroll 4
    for (int v = 0; v < FOUR; ++v) x.v[v] = load<Short>(p + v * SHORT);
    return x;
}
inline void store4(double* p, const Four& x) {
#pragma GCC unroll 4
    for (int v = 0; v < FOUR; ++v) store<Short>(p + v * SHORT, x.v[v]);
}
inline Four operator*(Four x, double factor) {
#pragma GCC unroll 4
    for (int v = 0; v < FOUR; ++v) x.v[v] *= factor;
    return x;
}
inline Four operator-(Four x, const Four& y) {
#pragma GCC unroll 4
    for (int v = 0; v < FOUR; ++v) x.v[v] -= y.v[v];
    return x;
}
inline Four operator+(Four x, const Four& y) {
#pragma GCC unroll 4
    for (int v = 0; v < FOUR; ++v) x.v[v] += y.v[v];
    return x;
}
inline void operator-=(Four& x, const Four& y) { x = x - y; }
inline void operator+=(Four& x, const Four& y) { x = x + y; }
inline Four magnitude(Four x) {
    typedef long long Bits __attribute__((vector_size(8 * SHORT)));
#pragma GCC unroll 4
    for (int v = 0; v < FOUR; ++v) x.v[v] = (Short)((Bits)x.v[v] & 0x7fffffffffffffffLL);
    return x;
}

// Columns j to j + C - 1 of a panel on all rows behind; the columns are read from top to bottom, side by side.
template <int C>
void forward_columns(const Columns& p, int j, double* X) {
    const double* L = p.panel + j * p.rows;
    Four x[C];
    for (int c = 0; c < C; ++c) {
        x[c] = load4(X + 4 * (j + c));
        for (int b = 0; b < c; ++b) x[c] -= x[b] * L[b * p.rows + j + c];
        store4(X + 4 * (j + c), x[c]);
    }
    const int rows = p.k + p.r;
    for (int i = j + C; i < rows; ++i) {
        Four y = load4(X + 4 * i);
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c) y -= x[c] * L[c * p.rows + i];
        store4(X + 4 * i, y);
    }
}

template <int C>
void backward_columns(const Columns& p, int j, double* X) {
    const double* L = p.panel + j * p.rows;
    Four x[C];
    for (int c = 0; c < C; ++c) x[c] = load4(X + 4 * (j + c));
    const int rows = p.k + p.r;
    for (int i = j + C; i < rows; ++i) {
        const Four y = load4(X + 4 * i);
#pragma GCC unroll 4
        for (int c = 0; c < C; ++c) x[c] -= y * L[c * p.rows + i];
    }
    for (int c = C - 1; c >= 0; --c) {
        for (int b = c + 1; b < C; ++b) x[c] -= x[b] * L[c * p.rows + j + b];
        store4(X + 4 * (j + c), x[c]);
    }
}

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
            if (j > block) reduce(X, ld, all - j, columns, L + j, ld, f.pivot + block, j - block, false);
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
            reduce(f.panel + end * ld + end, ld, all - end, f.k - end, L + end, ld, f.pivot + block, end - block,
                   false);
    }
    if (f.r > 0) {
        const int ldu = (f.r + 3) & ~3;
        reduce(f.update, ldu, ldu, f.r, f.panel + f.k, ld, f.pivot, f.k, true);
    }
    return null ? Pivots::some_null : Pivots::positive;
}

void forward(const Columns& c, double* X) {
    int j = 0;
    for (; j + 4 <= c.k; j += 4) forward_columns<4>(c, j, X);
    switch (c.k - j) {
        case 1: forward_columns<1>(c, j, X); break;
        case 2: forward_columns<2>(c, j, X); break;
        case 3: forward_columns<3>(c, j, X); break;
        default: break;
    }
}

void backward(const Columns& c, double* X) {
    const int rest = c.k % 4, j = c.k - rest;
    switch (rest) {
        case 1: backward_columns<1>(c, j, X); break;
        case 2: backward_columns<2>(c, j, X); break;
        case 3: backward_columns<3>(c, j, X); break;
        default: break;
    }
    for (int i = j - 4; i >= 0; i -= 4) backward_columns<4>(c, i, X);
}

void subtract_product(std::int32_t n, const double* a, const std::int32_t* ia, const std::int32_t* ja, const double* X,
                      double* R, double* size) {
    for (std::int32_t i = 0; i < n; ++i) {
        const std::ptrdiff_t row = 4 * static_cast<std::ptrdiff_t>(i);
        const Four x = load4(X + row);
        Four r = load4(R + row), w = load4(size + row);
        const double diagonal = a[ia[i] - 1];
        const Four d = x * diagonal;
        r -= d;
        w += magnitude(d);
        for (std::int32_t at = ia[i]; at < ia[i + 1] - 1; ++at) {
            const std::ptrdiff_t column = 4 * static_cast<std::ptrdiff_t>(ja[at] - 1);
            const Four u = load4(X + column) * a[at], v = x * a[at];
            r -= u;
            w += magnitude(u);
            store4(R + column, load4(R + column) - v);
            store4(size + column, load4(size + column) + magnitude(v));
        }
        store4(R + row, r);
        store4(size + row, w);
    }
}

}  // namespace

extern const Kernel kernel = {eliminate, forward, backward, subtract_product};

}  // namespace KERNEL
}  // namespace LDLT
