#include "linalg/usedlapack.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

extern "C" {
void dgetrf_(const std::int32_t* m, const std::int32_t* n, double* a, const std::int32_t* lda, std::int32_t* ipiv,
             std::int32_t* info);
void dgetri_(const std::int32_t* n, double* a, const std::int32_t* lda, const std::int32_t* ipiv, double* work,
             const std::int32_t* lwork, std::int32_t* info);

// LAPACK is linked statically, so that the host's choice of a BLAS and its threads play no part. Two routines that it
// calls are given here in place of the Fortran runtime: the reporter of illegal arguments, of which there are none and
// which would write to a stream, and the joining of two strings, for the name of a block size.
void xerbla_(const char*, const std::int32_t*, std::size_t) {}
void _gfortran_concat_string(std::size_t length, char* joined, std::size_t length1, const char* string1,
                             std::size_t length2, const char* string2) {
    const std::size_t first = std::min(length, length1), second = std::min(length - first, length2);
    std::memcpy(joined, string1, first);
    std::memcpy(joined + first, string2, second);
    std::memset(joined + first + second, ' ', length - first - second);
}
}

namespace USEDLAPACK {

namespace {

void fill_with_infinity(std::int32_t n, double* A) {
    std::fill_n(A, static_cast<std::ptrdiff_t>(n) * n, std::numeric_limits<double>::infinity());
}

}  // namespace

void invert(std::int32_t n, double* A, std::int32_t* pivots, double* work, std::int32_t lwork) {
    if (n <= 0) return;
    std::int32_t info;
    dgetrf_(&n, &n, A, &n, pivots, &info);
    dgetri_(&n, A, &n, pivots, work, &lwork, &info);
    if (info > 0) fill_with_infinity(n, A);
}

std::int32_t workspace_of_inverse(std::int32_t n) {
    const std::int32_t query = -1, leading = std::max(n, 1), pivot = 0;
    std::int32_t info;
    double A = 0.0, work = 0.0;
    dgetri_(&n, &A, &leading, &pivot, &work, &query, &info);
    return std::max(n, static_cast<std::int32_t>(work));
}

void invert_3x3(double* A) {
    const auto a = [A](int i, int j) -> double& { return A[i + 3 * j]; };
    int pivot[3];

    // L and U in place, L scaled with the reciprocal of its pivot.
    for (int k = 0; k < 3; ++k) {
        int p = k;
        for (int i = k + 1; i < 3; ++i)
            if (std::fabs(a(i, k)) > std::fabs(a(p, k))) p = i;
        pivot[k] = p;
        if (a(p, k) == 0.0) return fill_with_infinity(3, A);
        if (p != k)
            for (int j = 0; j < 3; ++j) std::swap(a(k, j), a(p, j));
        if (std::fabs(a(k, k)) >= std::numeric_limits<double>::min()) {
            const double reciprocal = 1.0 / a(k, k);
            for (int i = k + 1; i < 3; ++i) a(i, k) *= reciprocal;
        } else {
            for (int i = k + 1; i < 3; ++i) a(i, k) /= a(k, k);
        }
        for (int j = k + 1; j < 3; ++j)
            for (int i = k + 1; i < 3; ++i) a(i, j) -= a(i, k) * a(k, j);
    }

    // inverse of U, column after column; zeros are passed over and keep their sign
    a(0, 0) = 1.0 / a(0, 0);
    a(1, 1) = 1.0 / a(1, 1);
    if (a(0, 1) != 0.0) a(0, 1) *= a(0, 0);
    a(0, 1) *= -a(1, 1);
    a(2, 2) = 1.0 / a(2, 2);
    if (a(0, 2) != 0.0) a(0, 2) *= a(0, 0);
    if (a(1, 2) != 0.0) {
        a(0, 2) += a(1, 2) * a(0, 1);
        a(1, 2) *= a(1, 1);
    }
    a(0, 2) *= -a(2, 2);
    a(1, 2) *= -a(2, 2);

    // times the inverse of L, the columns then back in their order
    const double l21 = a(2, 1), l10 = a(1, 0), l20 = a(2, 0);
    a(2, 1) = a(1, 0) = a(2, 0) = 0.0;
    for (int i = 0; i < 3; ++i) a(i, 1) -= l21 * a(i, 2);
    for (int i = 0; i < 3; ++i) a(i, 0) = (a(i, 0) - l10 * a(i, 1)) - l20 * a(i, 2);
    for (int j = 1; j >= 0; --j)
        if (pivot[j] != j)
            for (int i = 0; i < 3; ++i) std::swap(a(i, j), a(i, pivot[j]));
}

}  // namespace USEDLAPACK
