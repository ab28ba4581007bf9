#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "section/angle.h"
#include "section/basicchar.h"
#include "section_builder.h"

using namespace BASICCHAR_MOD;
using namespace VQ_DATA_MOD;

namespace {

// Integrals over a polygon by Green's theorem, taken as positive for either sense.
struct Moments {
    double A = 0, Y = 0, Z = 0, YY = 0, ZZ = 0, YZ = 0;
};
Moments moments(const Real<4, 2>& C) {
    Moments m;
    for (int i = 1; i <= 4; ++i) {
        const int j = i % 4 + 1;
        const double y1 = C(i, 1), z1 = C(i, 2), y2 = C(j, 1), z2 = C(j, 2), w = y1 * z2 - y2 * z1;
        m.A += w / 2, m.Y += w * (y1 + y2) / 6, m.Z += w * (z1 + z2) / 6;
        m.YY += w * (y1 * y1 + y1 * y2 + y2 * y2) / 12, m.ZZ += w * (z1 * z1 + z1 * z2 + z2 * z2) / 12;
        m.YZ += w * (y1 * z2 + 2 * y1 * z1 + 2 * y2 * z2 + y2 * z1) / 24;
    }
    if (m.A < 0) m = {-m.A, -m.Y, -m.Z, -m.YY, -m.ZZ, -m.YZ};
    return m;
}

Moments moments(const Section& s, std::size_t e) {
    Real<4, 2> C;
    for (int i = 1; i <= 4; ++i) {
        C(i, 1) = s.y[s.elements[e][i - 1] - 1];
        C(i, 2) = s.z[s.elements[e][i - 1] - 1];
    }
    return moments(C);
}

// Three materials, the first of them the reference, in groups 1, 3 and 4; of the bars only the second and third count.
Section composed() {
    Section s;
    add_rectangle(s, 100, -40, 104, -39, 2, 1, {210, 80, 0, 1, 1.9, 1, 1, 1, 3});
    add_rectangle(s, 102, -39, 104, -34, 1, 3, {70, 30, 0, 1, -3.2, 1, 1, 1, 11});
    add_rectangle(s, 104, -35, 107, -34, 2, 1, {140, 50, 0, 1, 4, 1, 1, 1, 5});
    const double EMODUL[] = {2.0, std::nextafter(2.0, 3.0), 630, 630, 630};
    for (int b = 0; b < 5; ++b) {
        add_bar(s, 102.3 + 0.1 * b, -38.0 + b, 4, 0.02 + 0.01 * b, EMODUL[b]).BARWEIGHT = 8 + b;
        if (b > 2) s.bars[b].NODE = b == 3 ? 0 : -7;
    }
    return s;
}

// The records after SOLVEBASICCHAR.
struct Basic {
    VARIABLES_T VARS;
    VELQUOR_CHAR CHAR;
};
Basic solved(const Section& s) {
    Basic b;
    fill_records(s, b.VARS, b.CHAR);
    std::vector<VYZTUZE_INFO> bars = s.bars;
    SOLVEBASICCHAR(b.VARS, b.CHAR, POINTTABLE(bars.data(), bars.size()));
    return b;
}

void expect_near(const std::vector<double>& values, const std::vector<double>& expected, double tolerance = 1e-12) {
    for (std::size_t k = 0; k < values.size(); ++k)
        EXPECT_NEAR(values[k], expected[k], tolerance * std::fabs(expected[k])) << k;
}

}  // namespace

TEST(EdgeIntegrals, AreZeroForAnEdgeWithoutWidth) {
    constexpr double WIDTH = 9.999999974752427e-07;
    const auto counts = [](double X2, double Y1, double Y2) {
        double I = -1, P = -1;
        II(0, Y1, X2, Y2, I);
        DD(0, Y1, X2, Y2, P);
        EXPECT_TRUE((I > 0 && P > 0) || (I == 0 && P == 0));
        return I > 0;
    };
    EXPECT_TRUE(counts(WIDTH, 1, 1) && counts(-WIDTH, 1, 1) && counts(1, 0, 1e6) && counts(1, 1e6, 0));
    EXPECT_FALSE(counts(std::nextafter(WIDTH, 0), 1, 1) || counts(-std::nextafter(WIDTH, 0), 1, 1) || counts(0, 1, 2));
    EXPECT_FALSE(counts(1, 0, std::nextafter(1e6, 2e6)) || counts(1, std::nextafter(1e6, 2e6), 0));
}

// Any element, in either sense and from any corner on, equals Green's theorem about its centroid; also where its edges
// are so steep that a polynomial in powers of x would lose its digits.
TEST(EdgeIntegrals, OfAnElementEqualGreensTheorem) {
    double IY, IZ, DZY;
    for (const Real<4, 2>& shape :
         {Real<4, 2>{{0, 3, 3, 0, 0, 0, 1, 1}}, {{0.2, 2, 2.5, -0.5, 0, 0.3, 2, 1.1}}, {{0, 3, 1, 1, 0, 1, 4, 4}}}) {
        for (const double angle : {0.0, 1e-5, 0.4, 1.57, 2.9}) {
            const double c = std::cos(angle), s = std::sin(angle);
            for (int order = 0; order < 8; ++order) {
                Real<4, 2> C;
                for (int i = 1; i <= 4; ++i) {
                    const int k = (order + (order < 4 ? i : 3 * i)) % 4 + 1;
                    C(i, 1) = c * shape(k, 1) - s * shape(k, 2) - 6;
                    C(i, 2) = s * shape(k, 1) + c * shape(k, 2) + 9;
                }
                const Moments m = moments(C);
                IYIZDZY(m.A, m.Y / m.A, m.Z / m.A, C, IY, IZ, DZY);
                EXPECT_NEAR(IY, m.ZZ - m.Z * m.Z / m.A, 1e-10);  // the reference cancels: moments of some 500
                EXPECT_NEAR(IZ, m.YY - m.Y * m.Y / m.A, 1e-10);
                EXPECT_NEAR(DZY, m.YZ - m.Y * m.Z / m.A, 1e-10);
            }
        }
    }
}

// Elements by Green's theorem. A bar adds its excess in three ways: over EREF, over its host element, over the unit
// weight of element 1.
TEST(BasicChar, SumsOfElementsAndBars) {
    Section clockwise = composed();
    for (auto& nodes : clockwise.elements) std::swap(nodes[1], nodes[3]);
    for (const Section& s : {composed(), as_triangles(composed()), moved(composed(), 0, 0, 0.7), clockwise}) {
        double EA = 0, SY = 0, SZ = 0, YY = 0, ZZ = 0, YZ = 0, ANET = 0, WEIGHT = 0;
        for (std::size_t e = 0; e < s.elements.size(); ++e) {
            const Moments m = moments(s, e);
            const double E = s.materials[e].EMOD;
            EA += E * m.A, SY += E * m.Y, SZ += E * m.Z, YY += E * m.YY, ZZ += E * m.ZZ, YZ += E * m.YZ;
            if (s.materials[e].GROUP > 0) ANET += m.A, WEIGHT += m.A * s.materials[e].UNITWEIGHT;
        }
        const double COUP1 = SY / EA, COUP2 = SZ / EA;
        const auto y = [&](int b) { return s.y[s.bars[b].NODE - 1]; };
        const auto z = [&](int b) { return s.z[s.bars[b].NODE - 1]; };
        for (const int b : {1, 2}) {
            const double A = s.bars[b].AREA, F = (s.bars[b].EMODUL - 210) * A, H = (s.bars[b].EMODUL - 70) * A;
            EA += F, SY += F * y(b), SZ += F * z(b);
            YY += H * y(b) * y(b), ZZ += H * z(b) * z(b), YZ += H * y(b) * z(b);
            WEIGHT += (s.bars[b].BARWEIGHT - 3) * A;
        }
        const double YC = SY / EA, ZC = SZ / EA;
        const Basic b = solved(s);
        const VELQUOR_CHAR& CHAR = b.CHAR;
        expect_near({CHAR.EA, CHAR.YC, CHAR.ZC, CHAR.ANET, CHAR.WEIGHT}, {EA, YC, ZC, ANET, WEIGHT});
        expect_near({CHAR.COUP1, CHAR.COUP2, b.VARS.GROUPAREA(1), b.VARS.GROUPAREA(3)}, {COUP1, COUP2, 4, 10 / 3.0});
        // differences of far larger sums
        expect_near({CHAR.IYY, CHAR.IZZ, CHAR.DYZ}, {YY - EA * YC * YC, ZZ - EA * ZC * ZC, YZ - EA * YC * ZC}, 1e-7);
        EXPECT_TRUE(b.VARS.COUPLEDFLAG == 0 && b.VARS.GROUPAREA(2) == 0 && b.VARS.GROUPYC(1) == 0);
    }
}

// Two rectangles by hand, EREF 2: transformed areas 8 about (1, 2) and 12 about (5, 1), and a group without an element.
// A factor weights the common centre element by element, but a group's distance only with its last element's.
TEST(BasicChar, CoupledGroupsBendAboutTheirOwnCentres) {
    Section s;
    add_rectangle(s, 0, 0, 2, 4, 1, 1, {2, 1, 0, 1, -1});
    add_rectangle(s, 4, 0, 6, 2, 2, 1, {6, 1, 0, 0.5, 3});
    s.materials[2].COUPLING = 0.25;
    add_bar(s, 1, 3, 1, 0.5, 30).BARWEIGHT = 7;
    Basic b = solved(s);

    const double WC = 8 + 6 * 0.5 + 6 * 0.25, y = (8 * 1 + 6 * 0.5 * 4.5 + 6 * 0.25 * 5.5) / WC;
    const double z = (8 * 2 + 6 * 0.75 * 1) / WC, dy1 = 1 - y, dz1 = 2 - z, dy3 = 5 - y, dz3 = 1 - z;
    EXPECT_TRUE(b.VARS.COUPLEDFLAG == 1 && b.CHAR.YC == 0 && b.CHAR.ZC == 0 && b.VARS.GROUPYC(2) == 0);
    const double IYY = 2 * (8.0 / 3 + 4 + 8 * dy1 * dy1 + 3 * dy3 * dy3);
    const double IZZ = 2 * (32.0 / 3 + 4 + 8 * dz1 * dz1 + 3 * dz3 * dz3);
    const double RY = 16 * 1 * 5 + 12 * (4.5 * 21.25 + 5.5 * 31.25) + 15 * 1 * 10;
    const double RZ = 16 * 2 * 5 + 12 * (21.25 + 31.25) + 15 * 3 * 10;
    const VELQUOR_CHAR& CHAR = b.CHAR;
    expect_near({CHAR.IYY, CHAR.IZZ, CHAR.DYZ}, {IYY, IZZ, 2 * (8 * dy1 * dz1 + 3 * dy3 * dz3)});
    expect_near({CHAR.COUP1, CHAR.COUP2, CHAR.RY, CHAR.RZ}, {y, z, RY, RZ});
    expect_near({CHAR.EA, CHAR.WEIGHT, CHAR.ANET}, {40 + 28 * 0.5, 4 + 6 * 0.5, 4});
    expect_near({b.VARS.GROUPYC(3), b.VARS.GROUPZC(1), b.VARS.GROUPDY(3), b.VARS.GROUPDZ(1)}, {5, 2, dy3, dz1});
    for (Material& material : s.materials) material.COUPLING = 0;
    b = solved(s);
    EXPECT_TRUE(b.CHAR.COUP1 == 0 && b.VARS.GROUPDY(3) == 0);
    expect_near({b.CHAR.IYY}, {2 * (8.0 / 3 + 4)});
}

// Exact values by MPFR, rounded to nearest. Of the random arguments the C library rounds the first wrongly where it
// uses fused multiply-add, the second where it does not; the exact value of the third lies next to a midpoint.
TEST(Angle, RoundedToNearest) {
    struct {
        double y, x, angle;
    } const angles[] = {{-0x1.74637df6f462p-5, 0x1.24b2e108c91e2p-1, -0x1.4503b4a5fe3f7p-4},
                        {0x1.8b73386561ap-6, 0x1.8b6f9ce6b689cp-2, 0x1.ff5a6283216e9p-5},
                        {0x1.65907d632d43p-3, 0x1.b80d6ed785f76p-2, 0x1.8b2a65021838fp-2},
                        {3, -4, 0x1.3fc176b7a856p+1},
                        {-1, 1e-8, -0x1.921fb5194fb3cp+0},
                        {-1e-300, 1e5, -0x1.c16c5c5253575p-1014}};
    for (const auto& a : angles) {
        EXPECT_EQ(angle_of(a.y, a.x), a.angle) << a.y << " " << a.x;
        EXPECT_EQ(angle_of(-a.y, a.x), -a.angle);
        if (std::fabs(a.y) < 1e-10) continue;
        EXPECT_EQ(angle_of(a.y * 0x1p1020, a.x * 0x1p1020), a.angle);
        EXPECT_EQ(angle_of(a.y * 0x1p-950, a.x * 0x1p-950), a.angle);
    }
    struct {
        double angle, cosine, sine;
    } const directions[] = {{0x1.6ab2738b34a3cp+0, 0x1.3a2b3991c21dfp-3, 0x1.f9f0994e8745ep-1},
                            {0x1.61c856bae7fbcp+0, 0x1.806fa0e687215p-3, 0x1.f6e60e4a86eb3p-1},
                            {-0x1.26d323ad4661ap-2, 0x1.eaecd263c1638p-1, -0x1.22c4b39e4b7a4p-2},
                            {0x1.921fb54442d18p-1, 0x1.6a09e667f3bcdp-1, 0x1.6a09e667f3bccp-1},
                            {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54, 1},
                            {0x1.921fb54442d19p+0, -0x1.72cece675d1fdp-53, 1},
                            {0x1.921fb54442d18p+1, -1, 0x1.1a62633145c07p-53},
                            {1e-300, 1, 1e-300}};
    for (const auto& d : directions) {
        const Direction at = direction_of(d.angle), opposite = direction_of(-d.angle);
        EXPECT_TRUE(at.cosine == d.cosine && at.sine == d.sine) << d.angle;
        EXPECT_TRUE(opposite.cosine == d.cosine && opposite.sine == -d.sine) << d.angle;
    }
}

// As the C library has them, signs of zeros included.
TEST(Angle, ZerosInfinitiesAndNaN) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    const double values[] = {0.0, -0.0, 2, -2, 5e-324, inf, -inf};
    for (const double y : values) {
        for (const double x : values) {
            const double a = angle_of(y, x), expected = std::atan2(y, x);
            EXPECT_TRUE(a == expected && std::signbit(a) == std::signbit(expected)) << y << " " << x;
        }
        EXPECT_TRUE(std::isnan(angle_of(y, NAN)) && std::isnan(angle_of(NAN, y)));
    }
    EXPECT_TRUE(std::signbit(direction_of(-0.0).sine) && direction_of(-0.0).cosine == 1);
    for (const double outside : {inf, -3.2, 1e300, double(NAN)}) EXPECT_TRUE(std::isnan(direction_of(outside).sine));
}

TEST(PrincipalAxes, BranchOnTheProductMoment) {
    Real<2, 2> T;
    const auto axes = [&T](double IYY, double IZZ, double DYZ) {
        VARIABLES_T VARS;
        VELQUOR_CHAR CHAR{};
        CHAR.IYY = IYY, CHAR.IZZ = IZZ, CHAR.DYZ = DYZ;
        LOGICAL OK = LOGICAL_FALSE;
        SOLVEMAJORCOORDINATESYSTEM(OK, VARS, CHAR, T);
        EXPECT_EQ(OK, LOGICAL_TRUE);
        return CHAR;
    };
    for (const double DYZ : {0.0, 0.00018, -std::nextafter(0.0002, 0.0)}) {  // 0.0001 of the sum is not reached
        for (const bool upright : {true, false}) {
            const VELQUOR_CHAR a = upright ? axes(0.5, 1.5, DYZ) : axes(1.5, 0.5, DYZ);
            const double c = upright ? 1 : 0, s = 1 - c;
            EXPECT_TRUE(a.I1 == 1.5 && a.I2 == 0.5 && a.ALPHA == (upright ? 0 : 1.5707963267948966));
            EXPECT_TRUE(T(1, 1) == c && T(2, 1) == -s && T(1, 2) == s && T(2, 2) == c);
        }
    }
    EXPECT_NE(axes(1, 0.9999998807907104, 1e-16).ALPHA, 0);
    EXPECT_EQ(axes(1, std::nextafter(0.9999998807907104, 1), 1e-16).ALPHA, 0);
    EXPECT_TRUE(std::isnan(axes(1, NAN, 0).ALPHA));

    for (const auto& I : {Real<3>{{0.5, 1.5, 0.0002}}, {{1.5, 0.5, -0.0002}}, {{2, 2, 0.7}}, {{3, 1, -0.9}}}) {
        const VELQUOR_CHAR a = axes(I(1), I(2), I(3));
        const auto [c, s] = direction_of(a.ALPHA);
        EXPECT_TRUE(T(1, 1) == c && T(2, 1) == -s && T(1, 2) == s && T(2, 2) == c && s != 0 && a.I1 > a.I2);
        EXPECT_NEAR(s * s * I(1) - 2 * s * c * I(3) + c * c * I(2), a.I1, 1e-15);  // over v squared
        EXPECT_NEAR(c * c * I(1) + 2 * s * c * I(3) + s * s * I(2), a.I2, 1e-15);
        EXPECT_NEAR((c * c - s * s) * I(3) + s * c * (I(2) - I(1)), 0, 1e-12);
    }
}
