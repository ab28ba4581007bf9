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

template <int n>
void invert_written_out(double* A) {
    const auto a = [A](int i, int j) -> double& { return A[i + n * j]; };
    int pivot[n];

    // L and U in place, L scaled with the reciprocal of its pivot.
    for (int k = 0; k < n; ++k) {
        int p = k;
        for (int i = k + 1; i < n; ++i)
            if (std::fabs(a(i, k)) > std::fabs(a(p, k))) p = i;
        pivot[k] = p;
        if (a(p, k) == 0.0) return fill_with_infinity(n, A);
        if (p != k)
            for (int j = 0; j < n; ++j) std::swap(a(k, j), a(p, j));
        if (std::fabs(a(k, k)) >= std::numeric_limits<double>::min()) {
            const double reciprocal = 1.0 / a(k, k);
            for (int i = k + 1; i < n; ++i) a(i, k) *= reciprocal;
        } else {
            for (int i = k + 1; i < n; ++i) a(i, k) /= a(k, k);
        }
        for (int j = k + 1; j < n; ++j)
            for (int i = k + 1; i < n; ++i) a(i, j) -= a(i, k) * a(k, j);
    }

    // inverse of U, column after column; zeros are passed over and keep their sign
    for (int j = 0; j < n; ++j) {
        a(j, j) = 1.0 / a(j, j);
        for (int k = 0; k < j; ++k) {
            if (a(k, j) == 0.0) continue;
            for (int i = 0; i < k; ++i) a(i, j) += a(k, j) * a(i, k);
            a(k, j) *= a(k, k);
        }
        for (int i = 0; i < j; ++i) a(i, j) *= -a(j, j);
    }

    // times the inverse of L, the columns then back in their order
    for (int j = n - 2; j >= 0; --j) {
        double l[n];
        for (int k = j + 1; k < n; ++k) {
            l[k] = a(k, j);
            a(k, j) = 0.0;
        }
        for (int k = j + 1; k < n; ++k)
            for (int i = 0; i < n; ++i) a(i, j) -= l[k] * a(i, k);
    }
    for (int j = n - 2; j >= 0; --j)
        if (pivot[j] != j)
            for (int i = 0; i < n; ++i) std::swap(a(i, j), a(i, pivot[j]));
}

template void invert_written_out<2>(double* A);
template void invert_written_out<3>(double* A);

}  // namespace USEDLAPACK
