// The sparse solver: what comes out of the systems of a run, of what may go wrong in them, and of any other symmetric
// matrix. It is held to residuals in long double, row by row, and to properties of the solution, never to itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "linalg/ldlt/steps.h"
#include "linalg/ondrel64.h"
#include "tests/solver_reference.h"

namespace {

using namespace meshes;
using namespace reference;

struct Answer {
    std::int32_t error = 0;
    Columns X;
};

Answer solve(const SPARSEMATRIX& M, const Columns& B, bool definite = false) {
    Answer answer;
    answer.X.allocate(M.N, B.extent(2));
    Integer<2> ERR{{7, 7}};
    if (definite)
        SPARSEMATRIX_FCN::SOLVESYSTEMEQUATIONSYM(ERR, M, B, answer.X);
    else
        SPARSEMATRIX_FCN::SOLVESYSTEMEQUATIONSYM_NPD(ERR, M, B, answer.X);
    EXPECT_EQ(ERR(2), 0);
    answer.error = ERR(1);
    return answer;
}

Answer solve(const System& s, bool definite = false) { return solve(s.M, s.B, definite); }

// The largest residual of a row above n; of all rows by default. Infinite where X is not finite.
long double residual(const System& s, const Columns& X, std::int32_t n = 0) {
    const std::vector<long double> each = residuals(s, X);
    return *std::max_element(each.begin() + n + 1, each.end());
}

// The systems of a run ----------------------------------------------------------------------

// Bars without stiffness (GMODUL or AREA 0), several in one element, more than nodes: the constraints hold in all of
// them.
TEST(Solver, BaseSystems) {
    struct {
        Plan plan;
        double AREA, GMODUL;
    } const cases[] = {{{Shape::square, 4, 1}, 0.01, 8},
                       {{Shape::square, 25, 60}, 0.01, 8},
                       {{Shape::square, 25, 60, true, true}, 0.01, 0},
                       {{Shape::angle, 300, 12, false, true}, 0, 8},
                       {{Shape::hollow, 300, 40, true}, 0.01, 8},
                       {{Shape::hollow, 2500, 30, false, true}, 0.01, 0},
                       {{Shape::square, 3000, 2000}, 0.01, 8},
                       {{Shape::square, 3000, 2000, true, true}, 0.01, 8},
                       {{Shape::square, 3000, 4000, false, true}, 0.01, 8},
                       {{Shape::angle, 5000, 0, true, true}, 0, 0}};
    for (const auto& c : cases) {
        Mesh mesh = make_mesh(c.plan);
        for (Bar& bar : mesh.bars) bar.AREA = c.AREA, bar.GMODUL = c.GMODUL;
        for (int e = 1; e <= mesh.NELEMS; ++e) {  // steel and timber, in N and m
            mesh.EMOD(e) = e % 3 == 0 ? 2.1e11 : 1.1e10;
            mesh.GMOD(e) = e % 3 == 0 ? 8.1e10 : 6.9e8;
        }
        SCOPED_TRACE(std::to_string(mesh.NNODES) + " nodes, " + std::to_string(mesh.bars.size()) + " bars");
        const System s = base_system(mesh);
        const Answer answer = solve(s);
        ASSERT_EQ(answer.error, 0);
        EXPECT_LE(residual(s, answer.X), 1e-14);
        // the constraint rows by themselves, whose terms all have the size of the warping
        EXPECT_LE(residual(s, answer.X, mesh.NNODES), 2e-15);
    }
}

// Slivers down to the least angle that a mesh may have, moduli of 1e-6 beside 1e6, any units, unconnected pieces that
// the constraints still hold: as accurate as the data allow.
TEST(Solver, BaseSystemsOfPoorElements) {
    for (const double unit : {1e-3, 1.0, 1e11})
        for (const bool shuffled : {false, true})
            for (const double aspect : {1.0, 11.0})
                for (const Shape shape : {Shape::square, Shape::angle, Shape::hollow})
                    for (const std::int32_t pieces : {1, 2, 3})
                        for (const double contrast : {1.0, 1e6}) {
                            const bool triangles = shuffled != (pieces == 2);
                            Mesh mesh = make_mesh({shape, 36 / pieces, 5, triangles, shuffled, 0.15, aspect, pieces});
                            for (int e = 1; e <= mesh.NELEMS; ++e) {
                                mesh.EMOD(e) = 2.6 * unit;
                                mesh.GMOD(e) = unit * (e % 3 == 0 ? contrast : e % 3 == 1 ? 1 : 1 / contrast);
                            }
                            for (Bar& bar : mesh.bars) bar.EMODUL *= unit, bar.GMODUL *= unit;
                            const System s = base_system(mesh);
                            const Answer answer = solve(s);
                            ASSERT_EQ(answer.error, 0);
                            EXPECT_LE(residual(s, answer.X), 1e-14) << mesh.NNODES << " nodes, unit " << unit;
                        }
}

// With bars the second system is singular: a bar's row asks for a multiplier of 0, the load of the mesh for another.
// The mesh prevails: its rows and the constraint hold as if the bars were not there, and the bars' unknowns are 0.
TEST(Solver, SecondSystemLeavesTheBarsOut) {
    struct {
        Plan plan;
        double AREA;  // of a bar; with 50 it is stiffer than all of the mesh
    } const cases[] = {
        {Plan{Shape::angle, 60, 1}, 0.01},           {Plan{Shape::angle, 60, 1}, 50},
        {Plan{Shape::angle, 60, 7, true, true}, 50}, {Plan{Shape::square, 60, 90, false, true}, 0.01},
        {Plan{Shape::hollow, 3000, 50}, 0.01},       {Plan{Shape::angle, 3000, 800, true, true}, 0.01},
    };
    for (const auto& c : cases) {
        Mesh mesh = make_mesh(c.plan);
        for (Bar& bar : mesh.bars) bar.AREA = c.AREA;
        SCOPED_TRACE(std::to_string(mesh.NNODES) + " nodes, " + std::to_string(mesh.bars.size()) + " bars");
        const Answer base = solve(base_system(mesh));
        const System s = second_system(mesh, base.X.column(1));
        const Answer answer = solve(s);
        ASSERT_EQ(answer.error, 0);
        std::vector<bool> bar(static_cast<std::size_t>(s.M.N) + 1, false);
        for (const Bar& b : mesh.bars) {
            bar[b.NODE] = true;
            EXPECT_EQ(answer.X(b.NODE, 1), 0);
            EXPECT_EQ(answer.X(b.NODE, 2), 0);
        }
        const std::vector<long double> each = residuals(s, answer.X);
        for (std::int32_t i = 1; i <= s.M.N; ++i) EXPECT_TRUE(bar[i] || each[i] <= 1e-14L);

        // the load of column 1 does not sum to zero over the mesh, and the multiplier spreads all of it
        long double load = 0, weight = 0;
        for (std::int32_t i = 1; i <= mesh.NNODES; ++i) {
            load += s.B(i, 1);
            weight += bar[i] ? 0 : s.M.A(s.M.IA(i + 1) - 1);
        }
        EXPECT_GT(std::fabs(load / weight), 1e-9);
        EXPECT_NEAR(answer.X(s.M.N, 1) / (load / weight), 1, 1e-9);
    }
}

// More pieces than the three constraints can hold: each piece's load sums to zero, so all rows can still be met, but
// for those in which a null pivot ended.
TEST(Solver, UnconnectedPieces) {
    for (const std::int32_t pieces : {2, 3, 5, 1000})
        for (const std::int32_t bars : {0, 3}) {
            SCOPED_TRACE(std::to_string(pieces) + " pieces, " + std::to_string(bars) + " bars");
            const System s = base_system(make_mesh({Shape::square, 9, bars, false, true, 0.15, 1, pieces}));
            const Answer answer = solve(s);
            ASSERT_EQ(answer.error, 0);
            const std::vector<long double> each = residuals(s, answer.X);
            EXPECT_LE(std::count_if(each.begin(), each.end(), [](long double r) { return r > 1e-13L; }),
                      std::max(pieces - 3, 0));
            EXPECT_LT(residual(s, answer.X), INFINITY);
        }
}

// Half of the section without shear modulus, with bars in it: nothing determines its nodes, all other rows hold. For
// one element of negative modulus or for the number of bars the general path has to take it: such nodes cannot be
// pivots anywhere there, and must not pile up in the fronts up to the root.
TEST(Solver, RegionWithoutShearModulus) {
    struct {
        std::int32_t nodes, bars;
        double E, G;  // in the region, of the last element
    } const cases[] = {
        {400, 30, 0, 1}, {400, 30, 2.6, 1}, {3000, 0, 2.6, -0.5}, {3000, 40, 2.6, -0.5}, {3000, 2000, 2.6, 1}};
    for (const auto& c : cases) {
        const bool general = c.nodes > 1000;
        Mesh mesh = make_mesh({Shape::square, c.nodes, c.bars, false, c.E > 0});
        for (std::int32_t e = 1; e <= mesh.NELEMS / 2; ++e) mesh.EMOD(e) = c.E, mesh.GMOD(e) = 0;
        mesh.GMOD(mesh.NELEMS) = c.G;
        const System s = base_system(mesh);
        SCOPED_TRACE(std::to_string(c.nodes) + " nodes, " + std::to_string(c.bars) + " bars");
        const Answer answer = solve(s);
        ASSERT_EQ(answer.error, 0);
        const std::vector<long double> each = residuals(s, answer.X);
        // A row in which a null pivot ended gathers the rounding of all others.
        for (std::int32_t i = 1; i <= s.M.N; ++i)
            EXPECT_TRUE(s.M.A(s.M.IA(i)) == 0 || each[i] <= (general ? 1e-12L : 1e-13L)) << "row " << i;
        EXPECT_LT(residual(s, answer.X), INFINITY);
        if (!general) continue;
        EXPECT_LT(residual(s, answer.X, mesh.NNODES), 1e-13L);  // constraints and bars
        LINALG::Memory memory;
        LDLT::System system;
        system.memory = &memory;
        LDLT::factorise_indefinite({s.M.N, s.M.A.memory(), s.M.IA.memory(), s.M.JA.memory()}, system);
        for (const LDLT::IndefiniteFront& front : system.fronts) EXPECT_LT(front.rows.size(), 500u);
    }
}

// Any other matrix --------------------------------------------------------------------------

enum class Diagonal { mixed, some_zero, some_tiny };

// Diagonals of either sign between 0.5 and 1, and `degree` other entries in a row on average. Where every other
// diagonal is 0 or tiny, an entry of order 1 stands beside it. Rows and columns are scaled by up to 10^decades either
// way.
System random_system(std::int32_t n, double degree, Diagonal diagonal, double decades, std::uint64_t seed) {
    Random random{seed};
    std::vector<double> b(n), scale(static_cast<std::size_t>(n) + 1);
    for (double& d : scale) d = std::pow(10.0, uniform(random, -decades, decades));
    Entries entries;
    for (std::int32_t k = 0; k < n * degree / 2; ++k) {
        const std::int32_t i = 1 + below(random, n), j = 1 + below(random, n);
        entries[std::minmax(i, j)] = uniform(random, -1, 1);
    }
    for (std::int32_t i = 1; i <= n; ++i) {
        double& d = entries[{i, i}] = uniform(random, 0.5, 1) * (below(random, 2) == 0 ? 1 : -1);
        if (diagonal != Diagonal::mixed && i % 2 == 1 && i < n) {
            d *= diagonal == Diagonal::some_zero ? 0 : 1e-20;
            entries[{i, i + 1}] = uniform(random, 1, 2);
        }
        b[i - 1] = uniform(random, -1, 1) * scale[i];
    }
    for (auto& [place, value] : entries) value *= scale[place.first] * scale[place.second];
    return system_of(n, entries, {b});
}

TEST(Solver, RandomIndefiniteMatrices) {
    for (const Diagonal diagonal : {Diagonal::mixed, Diagonal::some_zero, Diagonal::some_tiny}) {
        for (const double decades : {0.0, 3.0})
            for (std::int32_t n = 1; n <= 40; ++n)
                for (std::uint64_t seed = 1; seed <= 3; ++seed) {
                    SCOPED_TRACE("order " + std::to_string(n) + " seed " + std::to_string(seed));
                    const System s = random_system(n, 3, diagonal, decades, seed);
                    const Answer answer = solve(s);
                    ASSERT_EQ(answer.error, 0);
                    EXPECT_LE(residual(s, answer.X), 4e-16);  // two roundings
                }
        for (const std::int32_t n : {300, 3000}) {
            const System s = random_system(n, n == 300 ? 6 : 2.2, diagonal, 0, 1);
            const Answer answer = solve(s);
            ASSERT_EQ(answer.error, 0);
            EXPECT_LE(residual(s, answer.X), 1e-14);
        }
    }
}

// What is refused ---------------------------------------------------------------------------

TEST(Solver, ValuesThatAreNotFinite) {
    System s = base_system(make_mesh({Shape::square, 100, 4, false, true}));
    const Answer right = solve(s);
    const auto spoiled = [](double& value, auto check) {
        for (const double wrong : {std::nan(""), -HUGE_VAL}) {
            const double was = std::exchange(value, wrong);
            check();
            value = was;
        }
    };
    for (double* value : {&s.M.A(1), &s.M.A(2), &s.M.A(s.M.IA(51)), &s.M.A(s.M.IA(s.M.N + 1) - 1)})
        spoiled(*value, [&] { EXPECT_TRUE(solve(s).error == -4 && solve(s, true).error == -4); });
    for (double* value : {&s.B(1, 2), &s.B(60, 2), &s.B(s.M.N, 2)})
        spoiled(*value, [&] {  // has no solution, and the others do not notice
            const Answer answer = solve(s);
            EXPECT_EQ(answer.error, 0);
            for (std::int32_t i = 1; i <= s.M.N; ++i)
                EXPECT_TRUE(std::isnan(answer.X(i, 2)) && answer.X(i, 1) == right.X(i, 1) &&
                            answer.X(i, 3) == right.X(i, 3));
        });
    EXPECT_NE(solve(system_of(2, {{{1, 1}, 1e-300}, {{2, 2}, 1}}, {{1e300, 1}})).error, 0);  // X is beyond all reals
    EXPECT_NE(solve(system_of(2, {{{1, 2}, 1e-300}}, {{1e300, 1}})).error, 0);
}

// More border rows than a block of lanes, which touch each other too.
TEST(Solver, ManyConstraintsThatTouchEachOther) {
    const System base = base_system(make_mesh({Shape::angle, 60, 0, true, true}));
    Entries entries = entries_of(base);
    Random random{11};
    const std::int32_t n = base.M.N, more = 6;
    for (std::int32_t k = 1; k <= more; ++k) {
        for (std::int32_t i = 1; i <= n - 3; ++i) entries[{i, n + k}] = uniform(random, -1, 1);
        for (std::int32_t l = k % 3; l < k; ++l) entries[{n - 2 + l, n + k}] = uniform(random, -1, 1);
    }
    System s = system_of(n + more, entries, {});
    s.B.allocate(n + more, 1);
    for (std::int32_t i = 1; i <= n + more; ++i) s.B(i, 1) = uniform(random, -1, 1);
    const Answer answer = solve(s);
    ASSERT_EQ(answer.error, 0);
    EXPECT_LE(residual(s, answer.X), 1e-14);
}

// A constraint that contradicts another is dropped by the elimination, and found unmet: no solution is one.
TEST(Solver, ConstraintsThatContradictEachOther) {
    System s = base_system(make_mesh({Shape::square, 100, 0}));
    Entries entries = entries_of(s);
    const std::int32_t n = s.M.N + 1;
    for (std::int32_t i = 1; i <= n - 4; ++i) entries[{i, n}] = 2 * entries[{i, n - 3}];
    for (const double load : {2.0, 2.5}) {
        System twice = system_of(n, entries, {});
        twice.B.allocate(n, 1);
        twice.B(n - 3, 1) = 1;
        twice.B(n, 1) = load;
        EXPECT_EQ(solve(twice).error, load == 2 ? 0 : -4);
    }
}

// KG alone has a constant as null vector. One node held by a spring makes it positive definite.
TEST(Solver, MatricesThatAreNotPositiveDefinite) {
    const System bordered = base_system(make_mesh({Shape::angle, 300, 0, true, true}));
    const std::int32_t n = bordered.M.N - 3;
    const std::vector<double> load(bordered.B.column(1), bordered.B.column(1) + n);
    Entries KG;
    for (const auto& [place, value] : entries_of(bordered))
        if (place.second <= n) KG[place] = value;
    EXPECT_EQ(solve(bordered, true).error, -4);
    EXPECT_EQ(solve(system_of(n, KG, {load}), true).error, -4);
    KG[{7, 7}] *= 1.5;
    const System held = system_of(n, KG, {load});
    const Answer answer = solve(held, true);
    EXPECT_EQ(answer.error, 0);
    EXPECT_LE(residual(held, answer.X), 1e-14);
    std::vector<double> longer = load;
    longer.push_back(0);
    EXPECT_EQ(solve(system_of(n + 1, KG, {longer}), true).error, -4);  // a row of zeros
    KG[{n, n}] *= 0.5;
    EXPECT_EQ(solve(system_of(n, KG, {load}), true).error, -4);  // indefinite
    KG[{n, n}] *= -1;
    EXPECT_EQ(solve(system_of(n, KG, {load}), true).error, -4);
}

TEST(Solver, IndicesThatAreNoUpperTriangle) {
    struct Indices {
        std::int32_t n, ia[4], ja[6], nrhs;
    };
    const auto error = [](Indices at) {
        const double a[6] = {2, 1, 2, 1, 2, 2};
        double b[3] = {1, 2, 3}, x[3] = {};
        std::int64_t handle[64] = {};
        std::int32_t iparm[64] = {1};
        const std::int32_t one = 1, mtype = -2, phase = 13, none = 0;
        std::int32_t result = 7;
        OD_PARDISO2(handle, &one, &one, &mtype, &phase, &at.n, a, at.ia, at.ja, &none, &at.nrhs, iparm, &none, b, x,
                    &result);
        return result;
    };
    EXPECT_EQ(error({3, {1, 3, 5, 6}, {1, 2, 2, 3, 3}, 1}), 0);
    const Indices wrong[] = {
        {3, {2, 4, 6, 7}, {7, 1, 2, 2, 3, 3}, 1},  // does not begin at 1
        {3, {1, 3, 5, 5}, {1, 2, 2, 3, 3}, 1},     // a row without entries
        {3, {1, 3, 2, 6}, {1, 2, 2, 3, 3}, 1},     // starts that descend
        {3, {1, 3000, 5, 6}, {1, 2, 2, 3, 3}, 1},  // a row longer than the matrix
        {3, {1, 3, 5, 6}, {2, 3, 2, 3, 3}, 1},     // no diagonal
        {3, {1, 3, 5, 6}, {1, 2, 2, 1, 3}, 1},     // below the diagonal
        {3, {1, 3, 5, 6}, {1, 1, 2, 3, 3}, 1},     // the same column twice
        {3, {1, 4, 6, 7}, {1, 3, 2, 2, 3, 3}, 1},  // columns that descend
        {3, {1, 3, 5, 6}, {1, 4, 2, 3, 3}, 1},     // beyond the last column
        {3, {1, 3, 5, 6}, {1, 2, 2, -3, 3}, 1},    // negative
        {-1, {1, 3, 5, 6}, {1, 2, 2, 3, 3}, 1},   {3, {1, 3, 5, 6}, {1, 2, 2, 3, 3}, -1},
    };
    for (const Indices& at : wrong) EXPECT_EQ(error(at), -1) << "case " << &at - wrong;

    const System s = system_of(2, {{{1, 2}, 1}}, {{3, 4}});
    Columns X;
    Integer<2> ERR{};
    X.allocate(2, 2);  // more columns than B
    EXPECT_THROW(SPARSEMATRIX_FCN::SOLVESYSTEMEQUATIONSYM_NPD(ERR, s.M, s.B, X), std::logic_error);
}

// The same bits -----------------------------------------------------------------------------

// Systems that go every way through the solver.
std::vector<System> various_systems() {
    std::vector<System> systems;
    for (const Plan& p : {Plan{Shape::square, 25, 3}, Plan{Shape::angle, 150, 5, true, true},
                          Plan{Shape::hollow, 60, 20, false, true}}) {
        const Mesh mesh = make_mesh(p);
        systems.push_back(base_system(mesh));
        systems.push_back(second_system(mesh, solve(systems.back()).X.column(1)));
    }
    Mesh mixed = make_mesh({Shape::angle, 200, 5, true, true, 0.2, 11});
    for (int e = 1; e <= mixed.NELEMS; ++e) mixed.GMOD(e) = std::pow(10.0, e % 13 - 6);
    systems.push_back(base_system(mixed));
    systems.push_back(random_system(60, 3, Diagonal::some_zero, 2, 5));
    systems.push_back(random_system(90, 3, Diagonal::mixed, 0, 6));
    return systems;
}

bool same_bits(const double* a, const double* b, std::ptrdiff_t count) {
    return std::memcmp(a, b, static_cast<std::size_t>(count) * sizeof(double)) == 0;
}

TEST(Solver, ColumnsDoNotDependOnTheirCompany) {
    std::vector<System> systems = various_systems();
    systems.push_back(base_system(make_mesh({Shape::square, 3000, 20, true, true})));
    for (const System& s : systems) {
        const std::int32_t n = s.M.N;
        Random random{3};
        Columns B, copy, some;
        B.allocate(n, 9);
        copy.allocate(n, 9);
        for (int k = 1; k <= 9; ++k)
            for (std::int32_t i = 1; i <= n; ++i)
                copy(i, k) = B(i, k) = k == 1 ? s.B(i, 1) : s.B(i, 1) * uniform(random, -1, 1) * std::pow(10.0, k - 5);
        const std::vector<double> A(s.M.A.memory(), s.M.A.memory() + s.M.A.extent(1));
        const Answer all = solve(s.M, B);
        ASSERT_EQ(all.error, 0);
        EXPECT_TRUE(same_bits(A.data(), s.M.A.memory(), s.M.A.extent(1)));
        EXPECT_TRUE(same_bits(copy.memory(), B.memory(), 9 * n));
        for (const int columns : {1, 2, 3})
            for (int first = 1; first + columns <= 10; ++first) {
                some.allocate(n, columns);
                std::copy_n(B.column(first), columns * n, some.memory());
                EXPECT_TRUE(same_bits(all.X.column(first), solve(s.M, some).X.memory(), columns * n))
                    << "order " << n << ", " << columns << " columns from " << first;
            }
    }
}

TEST(Solver, KernelsOfAllInstructionSetsAgree) {
    std::vector<System> systems = various_systems();
    for (const bool triangles : {false, true})
        for (const std::int32_t nodes : {400, 3000, 10000})
            systems.push_back(base_system(make_mesh({Shape::square, nodes, 20, triangles, triangles})));
    for (const System& s : systems) {
        const LDLT::Matrix A{s.M.N, s.M.A.memory(), s.M.IA.memory(), s.M.JA.memory()};
        const auto nrhs = static_cast<std::int32_t>(s.B.extent(2));
        Columns X[3];
        for (const auto set : {LDLT::Instructions::baseline, LDLT::Instructions::avx2, LDLT::Instructions::avx512}) {
            if (!LDLT::supported(set)) continue;
            LINALG::Memory memory;
            Columns& of_set = X[static_cast<int>(set)];
            of_set.allocate(s.M.N, nrhs);
            EXPECT_TRUE(LDLT::solve_symmetric(A, false, nrhs, s.B.memory(), of_set.memory(), set, memory));
            EXPECT_TRUE(same_bits(of_set.memory(), X[0].memory(), s.M.N * nrhs)) << "order " << s.M.N;
        }
    }
}

}  // namespace
