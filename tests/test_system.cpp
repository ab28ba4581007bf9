#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "section_builder.h"
#include "system/vq_system_mod.h"

using namespace VQ_DATA_MOD;
using namespace VQ_SYSTEM_MOD;

namespace {

using Numbers = std::vector<std::int32_t>;

// A section on its way through the stages, in the host's coordinates.
struct Stages {
    VARIABLES_T VARS;
    VELQUOR_CHAR CHAR;
    SYSTEM_VARIABLES_T SYSVARS;
    std::vector<VYZTUZE_INFO> bars;
    std::vector<double> elemout;
    LOGICAL OK = 1;
    POINTTABLE POINTS() { return POINTTABLE(bars.data(), bars.size()); }
};
Stages structured(const Section& section) {
    Stages s;
    fill_records(section, s.VARS, s.CHAR);
    s.bars = section.bars;
    s.elemout.resize(48 * section.elements.size());
    SYSTEM_VARIABLES::place_stresses(s.elemout.data(), s.VARS.NELEMS, s.SYSVARS);
    CREATESTRUCTUTREOFSYSTEM(s.VARS, s.SYSVARS);
    return s;
}
Stages assembled(const Section& section) {
    Stages s = structured(section);
    FILLMATRIXANDRIGHTSIDE(LOGICAL_FALSE, s.VARS, s.SYSVARS, s.POINTS());
    return s;
}
Stages solved(const Section& section) {
    Stages s = assembled(section);
    SOLVEBASEWARPING(s.OK, s.VARS, s.SYSVARS, s.POINTS());
    EXPECT_EQ(s.OK, LOGICAL_TRUE);
    return s;
}

template <class T>
std::vector<T> list(const Table<T, 1>& table) {
    return {table.memory(), table.memory() + table.extent(1)};
}

// Row i of KG times column k of a nodal table.
double times_KG(const Stages& s, std::int32_t i, const Table<double, 2>& u, int k) {
    const SPARSEMATRIX& KG = s.SYSVARS.KG;
    double sum = 0;
    for (std::int32_t row = 1; row <= KG.N; ++row) {
        for (std::int32_t q = KG.IA(row); q < KG.IA(row + 1); ++q) {
            if (row == i) sum += KG.A(q) * u(KG.JA(q), k);
            if (row != i && KG.JA(q) == i) sum += KG.A(q) * u(row, k);
        }
    }
    return sum;
}

double largest(const Table<double, 2>& table, int column) {
    double m = 0;
    for (std::ptrdiff_t i = 1; i <= table.extent(1); ++i) m = std::max(m, std::fabs(table(i, column)));
    return m;
}

// One rectangle of 2 by 1 about the origin.
Section rectangle() {
    Section s;
    add_rectangle(s, -1, -0.5, 1, 0.5, 1, 1, {3, 2});
    return s;
}

// Six parallelograms in two materials, some of them split in triangles, and three bars, one of them in a triangle.
Section reinforced() {
    Section s;
    add_rectangle(s, 0, 0, 6, 2, 3, 1, {3, 2});
    add_rectangle(s, 0, 2, 6, 3, 3, 1, {30, 7});
    for (std::size_t i = 0; i < s.y.size(); ++i) s.y[i] += 0.3 * s.z[i];
    s.elements[0] = {1, 2, 3, 3};
    s.elements.push_back({1, 3, 4, 4});
    s.materials.push_back({3, 2});
    add_bar(s, 1.9, 0.9, 1, 0.3, 50, 11);
    add_bar(s, 3.1, 2.3, 5, 0.2, 2.0, 5);
    add_bar(s, 5.9, 0.4, 3, 0.1, 40, 9);
    return s;
}

}  // namespace

// Of KE(i,j) and KE(j,i) the one whose row is the smaller node number.
TEST(Assembly, ElementMatrixGoesToUpperTriangle) {
    Section s;
    s.y = {0, 1, 0, 5}, s.z = {0, 0, 1, 5};
    s.elements = {{3, 1, 2, 2}};
    s.materials.resize(1);
    SPARSEMATRIX KG = std::move(structured(s).SYSVARS.KG);
    const Real<3, 3> KE{{11, 21, 31, 12, 22, 32, 13, 23, 33}};
    ADDSTIFF2KG(KE, {{3, 1, 2}}, KG);
    EXPECT_EQ(list(KG.A), (std::vector<double>{22, 23, 21, 33, 31, 11, 0}));
    EXPECT_THROW(ADDSTIFF2KG(KE, {{3, 1, 4}}, KG), std::logic_error);  // no entry for the pair (1, 4)
}

TEST(Assembly, NaturalCoordinatesOfAPoint) {
    const auto expect = [](int dimension, int count, const Real<4>& y, const Real<4>& z, Real<3> point,
                           Real<3> expected, double tolerance = 1e-14, int expected_steps = 0) {
        Real<3> rst;
        std::int32_t steps;
        RST_ITER(dimension, count, point, y, z, Real<4>{}, 1e-6, rst, steps);
        for (int k = 1; k <= 3; ++k) EXPECT_NEAR(rst(k), expected(k), tolerance);
        EXPECT_EQ(steps, expected_steps);
    };
    expect(2, 4, {{0, 3, 4, 1}}, {{0, 0.5, 2.5, 2}}, {{2.1, 0.625, 0}}, {{0.3, -0.7, 0}});  // a parallelogram: exact
    const Real<4> y{{0, 3, 4, -1}}, z{{0, 0.5, 2, 3}}, yt{{0, 3, 1}}, zt{{0.2, 0.5, 2.5}};
    expect(2, 4, y, z, {{1, 1, 0}}, {{-3 / 19.0, -9 / 19.0, 0}});    // affine in the half with node 1
    expect(2, 4, y, z, {{3.5, 1.25, 0}}, {{1, 0, 0}});               // and in the half with node 3
    expect(2, 4, y, z, {{1, 1.7, 0}}, {{-1 / 95.0, -3 / 95.0, 0}});  // close to the diagonal
    expect(2, 4, y, z, {{10, 10, 0}}, {{1, 1, 0}});                  // outside: onto the boundary
    expect(2, 4, y, z, {{-5, 1, 0}}, {{-1, 3 / 19.0, 0}});
    expect(2, 4, y, z, {{-2, 3, 0}}, {{-1, 13 / 17.0, 0}});
    expect(2, 4, y, z, {{-0.5, 3.75, 0}}, {{-10 / 19.0, 1, 0}});
    expect(2, 4, {{0, 4, 3, 0}}, {{0, -1, 2, 1}}, {{5.5, -1.25, 0}}, {{1, -0.75, 0}});
    expect(2, 4, {{0, 4, 3, 0}}, {{0, -1, 2, 1}}, {{0.25, -2.25, 0}}, {{-1, -1, 0}});
    expect(2, 3, yt, zt, {{1, 1, 0}}, {{5 / 22.0, 7 / 22.0, 0}});
    expect(2, 3, yt, zt, {{-1, -1, 0}}, {{0, 0, 0}});
    expect(2, 3, yt, zt, {{5, 5, 0}}, {{0.5, 0.5, 0}});
    expect(3, 4, y, z, {{1, 1, 0}}, {{-3 / 11.0, -1 / 3.0, 0}}, 1e-6, 21);
    expect(2, 5, y, z, {{1, 1, 0}}, {{0, 0, 0}});
}

TEST(Assembly, BarsInterpolateFromTheirHosts) {
    Section section = reinforced();
    for (VYZTUZE_INFO& bar : section.bars) bar.ELNODES[3] = -5;
    const Stages s = assembled(section);
    for (const VYZTUZE_INFO& bar : s.bars) {
        double y = -section.y[bar.NODE - 1], z = -section.z[bar.NODE - 1], sum = -1;
        ASSERT_EQ(bar.NELNODES, &bar == &s.bars[0] ? 3 : 4);
        for (int i = 0; i < bar.NELNODES; ++i) {
            EXPECT_EQ(bar.ELNODES[i], section.elements[bar.ELEMENT - 1][i]);
            sum += bar.SHAPE[i];
            y += bar.SHAPE[i] * section.y[bar.ELNODES[i] - 1];
            z += bar.SHAPE[i] * section.z[bar.ELNODES[i] - 1];
        }
        for (const double difference : {sum, y, z}) EXPECT_NEAR(difference, 0, 1e-13);
    }
    const VYZTUZE_INFO& first = s.bars[0];  // in a triangle
    EXPECT_TRUE(first.ELNODES[3] == -5 && first.SHAPE[3] == 0);
    EXPECT_TRUE(first.RS[0] == first.SHAPE[1] && first.RS[1] == first.SHAPE[2]);
}

// In the second pass the rows of the bars are assigned anew and meet element rows that are normalised already.
TEST(Assembly, ConstraintsAreNormalisedTwice) {
    Section section = rectangle();
    section.materials[0].EMOD = 12;  // element rows before: 6; 2 by sign; 1 by sign
    add_bar(section, 0.25, 0.125, 1, 1, 2);
    Stages s = assembled(section);
    const auto expect_rows = [&](int row, double c1, double c2, double c3) {
        const double expected[] = {c1, c2, c3};
        for (int k = 1; k <= 3; ++k) EXPECT_NEAR(s.SYSVARS.CONSTRAINT(row, k), expected[k - 1], 1e-15);
    };
    expect_rows(3, 1, 1, 1);
    expect_rows(5, 2 / 6.0, 0.5 / 2, 0.25 / 1);
    const std::vector<double> A = list(s.SYSVARS.KG.A);
    const double F = s.SYSVARS.RIGHTSIDE(1, 1);
    s.SYSVARS.NODEFIELD.allocate(s.VARS.NNODES, 3);
    FILLMATRIXANDRIGHTSIDE(LOGICAL_TRUE, s.VARS, s.SYSVARS, s.POINTS());
    EXPECT_EQ(list(s.SYSVARS.KG.A), A);
    EXPECT_EQ(s.SYSVARS.RIGHTSIDE(1, 1), F);
    expect_rows(3, 0.5, 1, 1);
    expect_rows(5, 1, 0.5, 0.25);
    // A column without entries stays so: one triangle about its own centroid.
    section = {{-1, 2, -1}, {-1, 0, 1}, {{1, 2, 3, 3}}, {Material{}}, {}};
    s = assembled(section);
    expect_rows(2, 1, 0, 0);
}

// The three fields in the weak form, tested with one another: bars enter by 0.9 of their shear stiffness.
TEST(BaseWarping, FieldsSolveTheBorderedSystem) {
    Stages s = solved(reinforced());
    const Table<double, 2>&u = s.SYSVARS.NODEFIELD, &f = s.SYSVARS.RIGHTSIDE, &C = s.SYSVARS.CONSTRAINT;
    for (int j = 1; j <= 3; ++j) {
        for (int k = 1; k <= 3; ++k) {
            double residual = 0, scale = 0, constraint = 0;
            for (std::int32_t i = 1; i <= s.VARS.NNODES; ++i) {
                residual += u(i, j) * (times_KG(s, i, u, k) - f(i, k));
                scale += std::fabs(u(i, j) * f(i, k));
                constraint += C(i, j) * u(i, k);
            }
            for (const VYZTUZE_INFO& bar : s.bars) {
                residual += bar.GMODUL * 0.9 * bar.AREA * u(bar.NODE, j) * u(bar.NODE, k);
                double host = 0;
                for (int i = 0; i < bar.NELNODES; ++i) host += bar.SHAPE[i] * u(bar.ELNODES[i], k);
                EXPECT_NEAR(u(bar.NODE, k), host, 1e-12 * largest(u, k));
            }
            EXPECT_NEAR(residual, 0, 1e-10 * scale);
            EXPECT_NEAR(constraint, 0, 1e-10 * largest(u, k));
        }
    }
}

// A bar's node value stands in both stress components, so that the section matrix K is not symmetric and every
// transposed factor shows. K here is that of the rectangle, diagonal but for a torque of 0.1 in motion 2,
// and a (y - z, 1, 1) G w(k) of the bar.
TEST(Shear, UnsymmetricSectionMatrixOfABar) {
    Section section = rectangle();
    add_bar(section, 0.5, 0.25, 1, 0.2, 2.0, 5);
    add_bar(section, 0.1, 0.4, 1, 7, 1.99, 5);
    add_bar(section, 0.1, 0.3, 1, 7, 50, 5).NODE = 0;
    Stages s = structured(section);
    Table<double, 2>& w = s.SYSVARS.NODEFIELD;
    w.allocate(7, 3);
    for (int i = 1; i <= 4; ++i) w(i, 1) = i % 2 == 1 ? 0.3 : -0.3, w(i, 2) = w(i, 1) / -6;
    for (int k = 1; k <= 3; ++k) w(5, k) = 0.1 * k, w(6, k) = 9;
    VELQUOR_CHAR& CHAR = s.CHAR;
    CHAR.YC = 10, CHAR.ZC = 20, CHAR.IYY = 7, CHAR.IZZ = 11, CHAR.I1 = 13, CHAR.I2 = 3;
    CHAR.RY = 2, CHAR.RZ = 5, CHAR.COUP1 = 0.3, CHAR.COUP2 = 0.7;
    s.VARS.GROUPYC(1) = 1, s.VARS.GROUPZC(1) = 2, s.VARS.GROUPDY(1) = 3, s.VARS.GROUPDZ(1) = -1;
    SHEARCENTERANDELEMENT(s.VARS, CHAR, s.SYSVARS, {{0.8, -0.6, 0.6, 0.8}}, s.POINTS());
    s.SYSVARS.SECFIELD.allocate(7, 2);
    SECUNDARYSHEAROVERELEMENT(s.VARS, s.SYSVARS, s.POINTS());

    // Twist -s1 times shear y, -s2 times shear z has no forces.
    const double K[3][3] = {{16 / 15.0 + 0.025, 0.1, 0.1}, {0.15, 4.2, 0.2}, {0.075, 0.3, 4.3}};
    const double s1 = 20 - CHAR.SCZ, s2 = CHAR.SCY - 10, C[3][3] = {{1, 0, 0}, {-s1, 1, 0}, {-s2, 0, 1}};
    double R[3][3] = {};
    for (int k = 0; k < 81; ++k)
        R[k % 3][k / 3 % 3] += C[k / 9 % 3][k % 3] * K[k / 9 % 3][k / 27] * C[k / 27][k / 3 % 3];
    const double SCU = 20 + 0.8 * s2 - 0.6 * s1, SCV = 10 - 0.6 * s2 - 0.8 * s1, w1 = 0.1 - 0.2 * s1 - 0.3 * s2;
    const auto expect_each = [](const std::vector<double>& values, const std::vector<double>& expected) {
        for (std::size_t k = 0; k < values.size(); ++k) EXPECT_NEAR(values[k], expected[k], 1e-13) << k;
    };
    expect_each({R[1][0], R[2][0], CHAR.GJ, CHAR.SCU, CHAR.SCV, w(5, 1)}, {0, 0, R[0][0], SCU, SCV, w1});
    expect_each({CHAR.GAY, CHAR.GAZ, CHAR.GAU, CHAR.GAV, CHAR.GAUV}, {4.2, 4.3, 4.476, 4.024, 0.068});
    expect_each({CHAR.RY, CHAR.RZ, CHAR.RU, CHAR.RV}, {2 / 7.0, 5 / 11.0, 4.6 / 3, 2.8 / 13});
    expect_each({CHAR.COUP1, CHAR.COUP2, w(5, 2), w(5, 3)}, {-0.18, 0.74, 0.34, 0.12});
    expect_each({s.VARS.GROUPYC(1), s.VARS.GROUPZC(1), s.VARS.GROUPDY(1), s.VARS.GROUPDZ(1)}, {2, 1, 1.8, -2.6});

    // Amplitudes M of the motions in unit load q, read off corners where the stresses of the motions are known; those
    // of the two forces turned back to y and z.
    const auto tau = [&](const auto& TAU, int c, int q) {
        const double u = TAU(1, c, 2), v = TAU(1, c, 3);
        return q == 0 ? TAU(1, c, 1) : q == 1 ? 0.8 * u - 0.6 * v : 0.6 * u + 0.8 * v;
    };
    double tmax = 0;
    for (int q = 0; q < 3; ++q) {
        const double ty1 = tau(s.SYSVARS.TAUY, 1, q), ty3 = tau(s.SYSVARS.TAUY, 3, q);
        const double tz1 = tau(s.SYSVARS.TAUZ, 1, q), tz2 = tau(s.SYSVARS.TAUZ, 2, q);
        const double shear = (ty1 + ty3) / 4, twist = (tz1 - tz2 - 0.4 * shear) / 1.6;
        const double F[] = {twist, shear + s1 * twist, (tz1 + tz2) / 4 + s2 * twist};
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(R[i][0] * F[0] + R[i][1] * F[1] + R[i][2] * F[2], i == q, 1e-13);
    }
    for (int c = 1; c <= 4; ++c) tmax = std::max(tmax, std::hypot(s.SYSVARS.TAUY(1, c, 1), s.SYSVARS.TAUZ(1, c, 1)));
    EXPECT_NEAR(s.SYSVARS.largest_torsional_shear, tmax, 1e-14 * tmax);
}

TEST(Solves, FailureLeavesNoFields) {
    Stages s = solved(reinforced());
    s.CHAR.IW = 1;
    s.SYSVARS.KG.A(1) = std::nan("");
    SOLVESECUNDRYSHEARANDIWT(s.OK, s.VARS, s.CHAR, s.SYSVARS, s.POINTS());
    EXPECT_EQ(s.OK, LOGICAL_FALSE);
    EXPECT_FALSE(s.SYSVARS.SECFIELD.allocated());
    EXPECT_EQ(s.CHAR.IWS, 0);
}

// Corners nearer to a bar than its radius, not at it, take its modulus, the last of the table wins, passive bars count
// too. Positions and radii in eighths put many corners at exactly a radius or just inside.
TEST(AxialStress, CornersTakeTheLastModulusInReach) {
    Section section;
    add_rectangle(section, 0, 0, 3, 2, 12, 8);
    const std::size_t nodes = section.y.size();
    for (int b = 0; b < 200; ++b)
        add_bar(section, b * 37 % 25 / 8.0, b * 23 % 17 / 8.0, 1, 1, b / 10.0).RADIUS =
            (b % 7 - 2) / 8.0 + (b % 3 == 0 ? 1e-6 : 0);
    section.bars[199].NODE = 0;
    Stages s = structured(section);
    s.CHAR.EA = 1;
    s.SYSVARS.NODEFIELD.allocate(s.VARS.NNODES, 3);
    find_bars_near_nodes(s.VARS, s.SYSVARS, s.POINTS());
    SOLVEAXIALSTRESS(s.VARS, s.CHAR, s.SYSVARS, {{1, 0, 0, 1}}, s.POINTS());
    for (std::size_t k = 0; k < 4 * section.elements.size(); ++k) {
        const std::int32_t node = section.elements[k / 4][k % 4];
        const double y = section.y[node - 1], z = section.z[node - 1];
        double E = 1;
        for (std::size_t b = 0; b < 199; ++b)
            if (std::hypot(section.y[nodes + b] - y, section.z[nodes + b] - z) < section.bars[b].RADIUS)
                E = section.bars[b].EMODUL;
        EXPECT_EQ(s.SYSVARS.SIGMA(k / 4 + 1, k % 4 + 1, 1), E);
    }
    for (int b = 0; b < 200; ++b) EXPECT_EQ(s.bars[b].STRESS[0], b < 20 || b == 199 ? 0 : b / 10.0);
}
