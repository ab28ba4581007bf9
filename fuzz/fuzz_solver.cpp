// Fuzz target of the sparse solver: small symmetric matrices of four families, well formed or not.
#include <malloc.h>

#include <vector>

#include "fuzz/input.h"
#include "linalg/ldlt/ldlt.h"
#include "linalg/ondrel64.h"
#include "tests/solver_reference.h"

namespace {

using namespace fuzz;
using meshes::System;

constexpr std::int32_t INDEFINITE = -2, DEFINITE = 2, SOLVE = 13;
constexpr std::int32_t DONE = 0, INCONSISTENT = -1, NOT_SOLVED = -4;
constexpr std::int32_t MAXENTRIES = 2000;  // of a malformed matrix

// A number of moderate size, or sometimes any.
double coefficient(Input& in, bool wild) {
    const int b = byte(in);
    return wild && b % 8 == 7 ? real(in) : (b - 128) / 16.0;
}

// Entries anywhere.
reference::Entries arbitrary(Input& in, std::int32_t n, bool wild) {
    reference::Entries entries;
    const int count = byte(in);
    for (int k = 0; k < count && in.size > 0; ++k) {
        const std::int32_t i = 1 + below(in, n), j = 1 + below(in, n);
        entries[{std::min(i, j), std::max(i, j)}] = coefficient(in, wild);
    }
    return entries;
}

// A stiffness, as of springs between nodes, in a border: constraints over many nodes, ties that hang a node of their
// own on a few others, rows of zeros.
reference::Entries bordered(Input& in, std::int32_t n, bool wild) {
    reference::Entries entries;
    const std::int32_t border = below(in, n), nodes = n - border;
    const auto spring = [&](std::int32_t i, std::int32_t j, double k) {
        if (i == j) return;
        entries[{i, i}] += k;
        entries[{j, j}] += k;
        entries[{std::min(i, j), std::max(i, j)}] -= k;
    };
    const int chain = byte(in);  // bits: where the chain of nodes is broken
    for (std::int32_t i = 1; i < nodes; ++i)
        if ((chain >> i % 8 & 1) == 0) spring(i, i + 1, 1);
    for (int count = byte(in) % 32; count > 0; --count) {
        const std::int32_t i = 1 + below(in, nodes), j = 1 + below(in, nodes);
        spring(i, j, std::fabs(coefficient(in, wild)));
    }
    for (std::int32_t m = nodes + 1; m <= n; ++m) {
        const int kind = byte(in);
        if (kind % 4 == 0) {
            for (std::int32_t i = 1; i <= nodes; ++i) entries[{i, m}] = coefficient(in, wild);
        } else if (kind % 4 < 3) {
            for (int k = 0; k < 1 + kind / 4 % 5; ++k) entries[{1 + below(in, nodes), m}] = coefficient(in, wild);
            if (m > nodes + 1) entries[{1 + below(in, m - 1), m}] = -1;
        }
    }
    for (int count = byte(in) % 8; count > 0; --count) {
        const std::int32_t i = 1 + below(in, n), j = 1 + below(in, n);
        entries[{std::min(i, j), std::max(i, j)}] = coefficient(in, wild);
    }
    return entries;
}

// A dominant diagonal: positive definite unless it is edited.
reference::Entries dominant(Input& in, std::int32_t n, bool wild) {
    reference::Entries entries = arbitrary(in, n, wild);
    std::vector<double> sum(static_cast<std::size_t>(n) + 1, 1);
    for (const auto& [place, value] : entries)
        if (place.first != place.second) {
            sum[place.first] += std::fabs(value);
            sum[place.second] += std::fabs(value);
        }
    for (std::int32_t i = 1; i <= n; ++i) entries[{i, i}] = sum[i];
    if (byte(in) % 4 == 0) entries[{1 + below(in, n), n}] = coefficient(in, wild);
    return entries;
}

// Arguments of a call, arrays at the sizes that ia and n tell.
struct Arguments {
    std::int32_t mtype = INDEFINITE, phase = SOLVE, n = 0, nrhs = 0;
    Exact<double> a, b, x;
    Exact<std::int32_t> ia, ja;
};

Arguments arguments_of(const System& s) {
    const std::size_t n = s.M.N, count = s.M.JA.extent(1), nrhs = s.B.extent(2);
    Arguments g{INDEFINITE,
                SOLVE,
                s.M.N,
                static_cast<std::int32_t>(nrhs),
                Exact<double>(count),
                Exact<double>(n * nrhs),
                Exact<double>(n * nrhs),
                Exact<std::int32_t>(n + 1),
                Exact<std::int32_t>(count)};
    std::copy_n(s.M.A.memory(), count, g.a.begin());
    std::copy_n(s.M.JA.memory(), count, g.ja.begin());
    std::copy_n(s.M.IA.memory(), n + 1, g.ia.begin());
    std::copy_n(s.B.memory(), n * nrhs, g.b.begin());
    return g;
}

std::int32_t solve(const Arguments& given, Arguments& g) {
    std::int64_t handle[64] = {};
    const std::int32_t one = 1, zero = 0, iparm[64] = {};
    std::int32_t error = 77;
    OD_PARDISO2(handle, &one, &one, &g.mtype, &g.phase, &g.n, g.a.begin(), g.ia.begin(), g.ja.begin(), &zero, &g.nrhs,
                iparm, &zero, g.b.begin(), g.x.begin(), &error);
    expect(same_bits(g.a, given.a) && same_bits(g.ia, given.ia) && same_bits(g.ja, given.ja) && same_bits(g.b, given.b),
           "the matrix and b are not modified");
    return error;
}

// Rows follow each other, each with its diagonal first and its columns ascending.
bool well_formed(const Arguments& g) {
    if (g.ia[0] != 1) return false;
    for (std::int32_t i = 0; i < g.n; ++i)
        if (g.ia[i + 1] <= g.ia[i]) return false;
    for (std::int32_t i = 0; i < g.n; ++i) {
        std::int32_t last = i;
        for (std::int32_t at = g.ia[i] - 1; at < g.ia[i + 1] - 1; ++at) {
            if (at == g.ia[i] - 1 && g.ja[at] != i + 1) return false;
            if (g.ja[at] <= last || g.ja[at] > g.n) return false;
            last = g.ja[at];
        }
    }
    return true;
}

// Lists with some numbers replaced, ja and a as long as the last entry of ia tells.
void check_malformed(Input& in, const System& s) {
    Arguments g = arguments_of(s);
    for (int count = 1 + below(in, 4); count > 0; --count) {
        const int which = below(in, 8), place = byte(in);
        if (which < 4) g.ia[static_cast<std::size_t>(place) % g.ia.size] = integer(in);
        if (which >= 4 && which < 7 && g.ja.size > 0) g.ja[static_cast<std::size_t>(place) % g.ja.size] = integer(in);
        if (which == 7) (place % 2 ? g.n : g.nrhs) = -1 - byte(in);
    }
    std::int32_t& last = g.ia[g.ia.size - 1];
    if (last > MAXENTRIES) last = MAXENTRIES;
    Arguments exact{g.mtype,
                    g.phase,
                    g.n,
                    g.nrhs,
                    Exact<double>(last > 1 ? last - 1 : 0),
                    g.b,
                    g.x,
                    g.ia,
                    Exact<std::int32_t>(last > 1 ? last - 1 : 0)};
    std::copy_n(g.ja.begin(), std::min(g.ja.size, exact.ja.size), exact.ja.begin());
    std::copy_n(g.a.begin(), std::min(g.a.size, exact.a.size), exact.a.begin());
    const Arguments given = exact;
    const std::int32_t error = solve(given, exact);
    if (exact.n < 0 || exact.nrhs < 0)
        expect(error == INCONSISTENT, "negative sizes are refused");
    else if (exact.n > 0 && exact.nrhs > 0 && !well_formed(exact))
        expect(error == INCONSISTENT, "lists that are not well formed are refused");
}

// Least and largest eigenvalue in size, and the least with its sign, by cyclic Jacobi rotations.
struct Spectrum {
    double smallest, largest, lowest;
};
Spectrum spectrum(const System& s) {
    const std::size_t n = s.M.N;
    std::vector<std::vector<double>> W(n, std::vector<double>(n, 0));
    for (const auto& [place, value] : reference::entries_of(s))
        W[place.first - 1][place.second - 1] = W[place.second - 1][place.first - 1] = value;
    for (int sweep = 0; sweep < 12; ++sweep)
        for (std::size_t p = 0; p < n; ++p)
            for (std::size_t q = p + 1; q < n; ++q) {
                if (W[p][q] == 0) continue;
                const double theta = (W[q][q] - W[p][p]) / (2 * W[p][q]);
                const double t = (theta < 0 ? -1 : 1) / (std::fabs(theta) + std::hypot(theta, 1.0));
                const double c = 1 / std::hypot(t, 1.0), d = t * c;
                for (std::size_t k = 0; k < n; ++k) {
                    const double u = W[k][p], v = W[k][q];
                    W[k][p] = c * u - d * v;
                    W[k][q] = d * u + c * v;
                }
                for (std::size_t k = 0; k < n; ++k) {
                    const double u = W[p][k], v = W[q][k];
                    W[p][k] = c * u - d * v;
                    W[q][k] = d * u + c * v;
                }
            }
    Spectrum found{INFINITY, 0, INFINITY};
    for (std::size_t i = 0; i < n; ++i) {
        found.smallest = std::min(found.smallest, std::fabs(W[i][i]));
        found.largest = std::max(found.largest, std::fabs(W[i][i]));
        found.lowest = std::min(found.lowest, W[i][i]);
    }
    return found;
}

// A matrix of which all that follows can be asked: no entry far from the others, well conditioned.
constexpr double MINENTRY = 1e-3, MAXENTRY = 1e4, MAXCONDITION = 1e6;
constexpr long double MAXRESIDUAL = 1e-12L;
bool moderate(double value) {
    const double size = std::fabs(value);
    return size == 0 || (size >= MINENTRY && size <= MAXENTRY);
}
bool moderate(const System& s) {
    const double *a = s.M.A.memory(), *b = s.B.memory();
    return std::all_of(a, a + s.M.A.extent(1), [](double value) { return moderate(value); }) &&
           std::all_of(b, b + s.M.N * s.B.extent(2), [](double value) { return moderate(value); });
}

// The largest |b - A x| of a row, relative to sum |a| max |x| + |b|.
long double residual(const System& s, const Exact<double>& x) {
    const std::size_t n = s.M.N;
    const reference::Entries entries = reference::entries_of(s);
    long double worst = 0;
    for (std::size_t k = 0; k < x.size / n; ++k) {
        const double *u = x.begin() + k * n, *b = s.B.memory() + k * n;
        std::vector<long double> r(b, b + n), size(n, 0);
        long double largest = 0;
        for (std::size_t i = 0; i < n; ++i) largest = std::max<long double>(largest, std::fabs(u[i]));
        const auto take = [&](std::int32_t i, std::int32_t j, long double a) {
            r[i - 1] -= a * u[j - 1];
            size[i - 1] += std::fabs(a) * largest;
        };
        for (const auto& [place, a] : entries) {
            take(place.first, place.second, a);
            if (place.first != place.second) take(place.second, place.first, a);
        }
        for (std::size_t i = 0; i < n; ++i)
            if (r[i] != 0) worst = std::max(worst, std::fabs(r[i]) / (size[i] + std::fabs(b[i])));
    }
    return worst;
}

void check_accuracy(const System& s, const Arguments& g, std::int32_t error) {
    if (g.nrhs == 0 || !moderate(s)) return;
    const Spectrum of = spectrum(s);
    const bool conditioned = of.smallest * MAXCONDITION > of.largest;
    const bool definite = of.lowest > 0;
    if (g.mtype == DEFINITE && conditioned && !definite)
        expect(error == NOT_SOLVED, "what is not definite is refused where it has to be");
    if (!conditioned || (g.mtype == DEFINITE && !definite)) return;
    expect(error == DONE, "a well conditioned matrix is solved");
    expect(residual(s, g.x) <= MAXRESIDUAL, "a well conditioned matrix is solved accurately");
}

void check_solution(const System& s, std::int32_t mtype) {
    const Arguments given = arguments_of(s);
    Arguments first = given, second = given;
    first.mtype = second.mtype = mtype;
    // Memory from the heap begins with other bytes in each run, where no sanitizer stands before it.
    mallopt(M_PERTURB, 0x3f);
    const std::int32_t error = solve(given, first);
    mallopt(M_PERTURB, 0xc0);
    expect(error == DONE || error == NOT_SOLVED, "a small well formed matrix is solved or not");
    expect(solve(given, second) == error && (error != DONE || same_bits(first.x, second.x)),
           "a second run gives the same bits");
    check_accuracy(s, first, error);
    if (error != DONE) return;
    for (std::int32_t k = 0; k < given.nrhs; ++k) {
        const double *b = given.b.begin() + k * given.n, *x = first.x.begin() + k * given.n;
        const bool finite = LDLT::finite(b, given.n);
        for (std::int32_t i = 0; i < given.n; ++i)
            expect(finite ? std::isfinite(x[i]) : std::isnan(x[i]), "the solution of a finite load is finite");
        Arguments alone{mtype,    SOLVE,   given.n, 1, given.a, Exact<double>(given.n), Exact<double>(given.n),
                        given.ia, given.ja};
        std::copy_n(given.b.begin() + k * given.n, given.n, alone.b.begin());
        const Arguments kept = alone;
        expect(solve(kept, alone) == DONE &&
                   std::memcmp(alone.x.begin(), first.x.begin() + k * given.n, sizeof(double) * given.n) == 0,
               "a column has the same bits in every company");
    }
    for (const LDLT::Instructions set :
         {LDLT::Instructions::baseline, LDLT::Instructions::avx2, LDLT::Instructions::avx512}) {
        if (!LDLT::supported(set) || given.n == 0 || given.nrhs == 0) continue;
        LINALG::Memory memory;
        const LDLT::Matrix A{given.n, given.a.begin(), given.ia.begin(), given.ja.begin()};
        expect(
            LDLT::solve_symmetric(A, mtype == DEFINITE, given.nrhs, given.b.begin(), second.x.begin(), set, memory) &&
                same_bits(first.x, second.x),
            "all kernels give the same bits");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in{data, size};
    const int kind = byte(in);
    const std::int32_t n = 1 + below(in, 24), nrhs = below(in, 7);
    const bool wild = kind & 4;
    const reference::Entries entries = kind % 4 == 0   ? arbitrary(in, n, wild)
                                       : kind % 4 == 1 ? dominant(in, n, wild)
                                                       : bordered(in, n, wild);
    std::vector<std::vector<double>> columns(static_cast<std::size_t>(nrhs), std::vector<double>(n));
    for (std::vector<double>& column : columns)
        for (double& b : column) b = in.size > 0 ? coefficient(in, wild) : 1;
    const System s = reference::system_of(n, entries, columns);
    if (kind >= 224)
        check_malformed(in, s);
    else
        check_solution(s, kind & 8 ? DEFINITE : INDEFINITE);
    return 0;
}
