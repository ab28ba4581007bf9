// What an access through the table layer costs in a release build: the same loops over tables that count from 1 and
// over raw memory, in turn within one process. The least of many times counts.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

#include "data/table.h"

namespace {

constexpr std::ptrdiff_t N = 200000, COLUMNS = 4;

double cpu_seconds() {
    std::timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Column after column, and row after row with a gather: the two ways in which the stages walk over tables.
[[gnu::noinline]] double walk_table(const Table<double, 2>& A, const Table<std::int32_t, 1>& row) {
    double sum = 0.0;
    for (int k = 1; k <= COLUMNS; ++k)
        for (std::int32_t i = 1; i <= N; ++i) sum += A(i, k);
    for (std::int32_t i = 1; i <= N; ++i)
        for (int k = 1; k <= COLUMNS; ++k) sum += A(row(i), k) * k;
    return sum;
}
[[gnu::noinline]] double walk_raw(const std::vector<double>& A, const std::vector<std::int32_t>& row) {
    double sum = 0.0;
    for (std::ptrdiff_t k = 0; k < COLUMNS; ++k)
        for (std::ptrdiff_t i = 0; i < N; ++i) sum += A[i + k * N];
    for (std::ptrdiff_t i = 0; i < N; ++i)
        for (std::ptrdiff_t k = 0; k < COLUMNS; ++k) sum += A[row[i] - 1 + k * N] * static_cast<double>(k + 1);
    return sum;
}

// A small dense product, as in the element arrays.
[[gnu::noinline]] double blocks_table(double x) {
    Real<4, 4> K{};
    const Real<4> b{{x, 2 * x, 3 * x, 4 * x}};
    for (int p = 1; p <= 4; ++p)
        for (int j = 1; j <= 4; ++j)
            for (int i = 1; i <= 4; ++i) K(i, j) += b(i) * b(j) * p;
    return K(1, 4) + K(3, 2);
}
[[gnu::noinline]] double blocks_raw(double x) {
    double K[16] = {};
    const double b[4] = {x, 2 * x, 3 * x, 4 * x};
    for (int p = 1; p <= 4; ++p)
        for (int j = 0; j < 4; ++j)
            for (int i = 0; i < 4; ++i) K[i + 4 * j] += b[i] * b[j] * p;
    return K[12] + K[6];
}

template <class F>
double seconds_of(F f, double& result) {
    const double start = cpu_seconds();
    result += f();
    return cpu_seconds() - start;
}

template <class F, class G>
void compare(const char* name, F table, G raw) {
    double least_table = 1e30, least_raw = 1e30, sum_table = 0, sum_raw = 0;
    for (int r = 0; r < 200; ++r) {
        least_table = std::min(least_table, seconds_of(table, sum_table));
        least_raw = std::min(least_raw, seconds_of(raw, sum_raw));
    }
    std::printf("%-28s table %8.3f ms   raw %8.3f ms   ratio %.2f   %s\n", name, 1e3 * least_table, 1e3 * least_raw,
                least_table / least_raw, sum_table == sum_raw ? "same sums" : "SUMS DIFFER");
}

}  // namespace

int main() {
    Table<double, 2> A;
    A.allocate(N, COLUMNS);
    Table<std::int32_t, 1> row;
    row.allocate(N);
    std::vector<double> raw(N * COLUMNS);
    std::vector<std::int32_t> raw_row(N);
    for (std::int32_t i = 1; i <= N; ++i) {
        row(i) = raw_row[i - 1] = static_cast<std::int32_t>((i * 7919LL) % N) + 1;
        for (int k = 1; k <= COLUMNS; ++k) A(i, k) = raw[i - 1 + (k - 1) * N] = 1.0 / (i + k);
    }
    compare(
        "columns and gathered rows", [&] { return walk_table(A, row); }, [&] { return walk_raw(raw, raw_row); });
    compare(
        "small fixed blocks",
        [] {
            double sum = 0;
            for (int r = 0; r < 100000; ++r) sum += blocks_table(r);
            return sum;
        },
        [] {
            double sum = 0;
            for (int r = 0; r < 100000; ++r) sum += blocks_raw(r);
            return sum;
        });
    return 0;
}
