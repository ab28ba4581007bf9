#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <set>
#include <utility>
#include <vector>

#include "section/basicchar.h"
#include "section_builder.h"

using namespace BASICCHAR_MOD;
using namespace VQ_DATA_MOD;

namespace {

struct Form {
    int DIRECTION, STAGE, PLAXIS, PLMOD, PLMOM;
};
constexpr Form FORMS[] = {{2, 0, 30, 33, 37}, {1, 0, 29, 34, 38}, {-2, 0, 32, 35, 39}, {-1, 0, 31, 36, 40},
                          {2, 1, 42, 45, 49}, {1, 1, 41, 46, 50}, {-2, 1, 44, 47, 51}, {-1, 1, 43, 48, 52}};

struct Point {
    double p, q;
};

// The part of a polygon on one side of p = L: its area and the first moment of |p - L|.
struct Part {
    double area = 0, moment = 0;
};
Part part_of(const std::vector<Point>& polygon, double L, double side) {
    std::vector<Point> kept;  // p from the line on
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        const double da = side * (a.p - L), db = side * (b.p - L);
        if (da >= 0) kept.push_back({da, a.q});
        if ((da < 0) != (db < 0)) kept.push_back({0, a.q + da / (da - db) * (b.q - a.q)});
    }
    Part part;
    for (std::size_t i = 2; i < kept.size(); ++i) {
        const Point &a = kept[0], &b = kept[i - 1], &c = kept[i];
        const double area = std::fabs((b.p - a.p) * (c.q - a.q) - (c.p - a.p) * (b.q - a.q)) / 2;
        part.area += area;
        part.moment += area * (a.p + b.p + c.p) / 3;
    }
    return part;
}

struct Sums {
    double FUP = 0, FDOWN = 0, W = 0, M = 0;
};

// The section clipped as polygons. `seen` collects the number of corners and which of them lie above, of cut elements.
Sums clipped(const Section& s, double angle, double YC, double ZC, int DIRECTION, double L,
             std::set<std::pair<std::size_t, int>>& seen) {
    const double c = std::cos(angle), sn = std::sin(angle);
    Sums sums;
    for (std::size_t e = 0; e < s.elements.size(); ++e) {
        const Material& m = s.materials[e];
        if (m.MATFLAG < 0.5) continue;
        std::vector<Point> polygon;
        int pattern = 0, NUP = 0;
        const std::size_t n = s.elements[e][2] == s.elements[e][3] ? 3 : 4;
        for (std::size_t i = 0; i < n; ++i) {
            const double y = s.y[s.elements[e][i] - 1] - YC, z = s.z[s.elements[e][i] - 1] - ZC;
            const double u = c * y + sn * z, v = -sn * y + c * z;
            polygon.push_back(std::abs(DIRECTION) == 1 ? Point{u, v} : Point{v, u});
            if (polygon.back().p > L) pattern |= 1 << i, ++NUP;
        }
        const double FABOVE = DIRECTION > 0 ? m.FPOS : m.FNEG, FBELOW = DIRECTION > 0 ? m.FNEG : m.FPOS;
        const Part up = part_of(polygon, L, 1), down = part_of(polygon, L, -1);
        sums.FUP += up.area * FABOVE;
        sums.FDOWN += down.area * FBELOW;
        sums.W += up.moment + down.moment;
        // which strength takes the whole moment of an element
        const double strengths[2][5] = {{FBELOW, FBELOW, FABOVE, FABOVE, 0}, {FBELOW, FABOVE, m.FPOS, FABOVE, FABOVE}};
        sums.M += (up.moment + down.moment) * strengths[n - 3][NUP];
        if (NUP > 0 && NUP < static_cast<int>(n)) seen.insert({n, pattern});
    }
    return sums;
}

// An L of three materials and an idle part, sheared and tapered so that no two sides are equal or parallel.
Section oblique() {
    Section s;
    add_rectangle(s, 0, 0, 6, 1, 4, 1, {200, 1, 0, 1, 1, 1, 2, 3});
    add_rectangle(s, 0, 1, 1, 8, 1, 5, {100, 1, 0, 1, 1, 1, 4, 1});
    add_rectangle(s, 1, 6, 4, 8, 2, 1, {100, 1, 0, 1, 1, 1, 1.5, 2.5});
    add_rectangle(s, 4, 6, 5, 8, 1, 1, {100, 1, 0, 1, 1, 0.49, 50, 50});
    for (std::size_t i = 0; i < s.y.size(); ++i) {
        s.y[i] += 0.17 * s.z[i];
        s.z[i] *= 1 + 0.05 * s.y[i];
    }
    return s;
}

// SOLVEPLASTNO in the host's axes on a mesh as it stands, without the mesh checks.
Real<3> plastic(const Section& s, int DIRECTION) {
    VARIABLES_T VARS;
    VELQUOR_CHAR CHAR;
    fill_records(s, VARS, CHAR);
    std::vector<VYZTUZE_INFO> bars = s.bars;
    SOLVEBASICCHAR(VARS, CHAR, POINTTABLE(bars.data(), bars.size()));
    SOLVEPLASTNO(VARS, CHAR, DIRECTION, 0);
    const int at = 3 - std::abs(DIRECTION) + (DIRECTION < 0 ? 2 : 0);  // direction 2 first
    const int axis = std::abs(DIRECTION) + (DIRECTION < 0 ? 2 : 0);
    const PLASTIC_SLOTS& slots = CHAR.PLASTIC(1);
    return {{slots.PLAXIS(axis), slots.PLMOD(at), slots.PLMOM(at)}};
}

Section block(double y0, double z0, double y1, double z1, double FPOS = 1, double FNEG = 1) {
    Section s;
    add_rectangle(s, y0, z0, y1, z1, 1, 1, {1, 1, 0, 1, 1, 1, FNEG, FPOS});
    return s;
}

// A node of a bar that takes no part: nothing but the bounds of the search feels it.
void add_idle_node(Section& s, double y, double z) { add_bar(s, y, z, 1, 0, 0); }

}  // namespace

// All eight call forms against polygon clipping at the line that they report, and the balance at that line.
TEST(Plastic, EqualsPolygonClippingInEveryPatternOfCorners) {
    std::set<std::pair<std::size_t, int>> seen;
    for (const Section& mesh : {oblique(), as_triangles(oblique())}) {
        for (const double angle : {0.0, 0.35, 0.9, 1.6, 2.4, 3.5, 4.4, 5.5}) {
            const Section s = moved(mesh, 20, -30, angle);
            const Results r = run(s);
            ASSERT_EQ(r.status, VQ_DONE);
            for (const Form& f : FORMS) {
                SCOPED_TRACE(testing::Message()
                             << "direction " << f.DIRECTION << " stage " << f.STAGE << " angle " << angle);
                const double frame = f.STAGE == 0 ? 0 : 1, L = r.slots[f.PLAXIS];
                const auto at = [&](double line) {
                    return clipped(s, frame * r.slots[VQ_ALPHA], frame * r.slots[VQ_YC], frame * r.slots[VQ_ZC],
                                   f.DIRECTION, line, seen);
                };
                const Sums sums = at(L), lower = at(L - 1e-7), upper = at(L + 1e-7);
                EXPECT_GT(lower.FUP, lower.FDOWN);
                EXPECT_LT(upper.FUP, upper.FDOWN);
                EXPECT_NEAR(r.slots[f.PLMOD], sums.W, 1e-9 * sums.W);
                EXPECT_NEAR(r.slots[f.PLMOM], sums.M, 1e-9 * sums.M);
            }
        }
    }
    EXPECT_EQ(seen.size(), 6 + 12);  // one or two of three above; one, two neighbours or three of four
}

// Directions -1 and -2 are searched for only where a strength of what takes part differs by its sign, and hold the bits
// of a search either way.
TEST(Plastic, MirrorsEqualStrengthsAlone) {
    for (const bool equal : {true, false}) {
        Section s = oblique();
        for (Material& m : s.materials)
            if (m.MATFLAG == 1) m.FPOS = m.FNEG;
        s.materials.back().FPOS = 60;  // idle
        if (!equal) s.materials[3].FPOS = std::nextafter(s.materials[3].FNEG, 5);
        const Results r = run(s);
        for (const Form& f : {FORMS[2], FORMS[3]}) {
            const Real<3> searched = plastic(s, f.DIRECTION);
            EXPECT_TRUE(searched(1) == r.slots[f.PLAXIS] && searched(2) == r.slots[f.PLMOD] &&
                        searched(3) == r.slots[f.PLMOM]);
        }
        VARIABLES_T VARS;
        VELQUOR_CHAR CHAR;
        fill_records(s, VARS, CHAR);
        EXPECT_EQ(mirror_plastic(VARS, CHAR, 1), equal);
        for (int k : {41, 42, 45, 46, 49, 50}) EXPECT_TRUE(!equal || r.slots[k] == r.slots[k + 2]) << k;
    }
}

// What takes part: MATFLAG from 0.5, EMOD from (EREF + 10) / 1e6 on. The rest only widens the interval.
TEST(Plastic, LeavesOutIdleElements) {
    Section s = block(0, 0, 1, 4);
    add_rectangle(s, 0, 4, 1, 6, 1, 1, s.materials[0]);
    for (const auto& [MATFLAG, EMOD] : {std::pair{0.5, 11.0 / 1000000.0}, {0.5, 1.0999e-5}, {0.49, 1.0}}) {
        s.materials[1].MATFLAG = MATFLAG;
        s.materials[1].EMOD = EMOD;
        const bool counts = MATFLAG == 0.5 && EMOD > 1.0999e-5;
        EXPECT_NEAR(plastic(s, 2)(1), counts ? 3 : 2, 1e-8);
        EXPECT_NEAR(plastic(s, 2)(2), counts ? 9 : 4, 1e-7);
    }
    s.materials[0].MATFLAG = 0;
    add_idle_node(s, 0, -3);
    const Real<3> r = plastic(s, -2);
    EXPECT_TRUE(r(1) == 1.5 && r(2) == 0 && r(3) == 0);
    EXPECT_EQ(plastic(Section{}, 1)(1), 0);  // no node, no element: the middle of the starting bounds
}

// A corner within 1e-12 of the line is on it, and counts as above where the line cuts the element elsewhere. A cut
// shows: it takes another strength than the whole element. The idle node makes the first line, 0, the balanced one.
TEST(Plastic, DoesNotCutWhatTheLineTouches) {
    for (const double out : {0.0, 9e-13, 2e-12, 1e-9}) {
        Section s = block(0, -1, 1, 0, 1, 2);
        add_rectangle(s, 0, 0, 1, 2, 1, 1, s.materials[0]);
        add_idle_node(s, 0, -2);
        s.z[2] = out;  // a corner of the lower element above the line
        const Real<3> lower = plastic(s, 2);
        EXPECT_TRUE(lower(1) == 0 && std::fabs(lower(2) - 2.5) < 1e-8);
        EXPECT_NEAR(lower(3), out < 1e-12 ? 3 : 2.5, 1e-8);

        s = block(0, -2, 1, 0, 1, 2);
        add_rectangle(s, 0, 0, 1, 1, 1, 1, s.materials[0]);
        add_idle_node(s, 0, 2);
        s.z[2] = s.z[3] = -out;  // two corners of the upper element below it
        EXPECT_NEAR(plastic(s, -2)(3), out < 1e-12 ? 3 : 2.5, 1e-8);

        s = Section{{0, 1, 0}, {-1, -out, 2}, {{1, 2, 3, 3}}, {{1, 1, 0, 1, 1, 1, 2, 1}}, {}, 1};
        add_idle_node(s, 0, -2);  // the second corner of this triangle is on the line, the others on its two sides
        EXPECT_NEAR(plastic(s, 2)(3), out < 1e-12 ? 5.0 / 6 : 5.0 / 3, 1e-8);
    }
}

// Slivers below flat corners, of any breadth down to rounding: too small to matter, and never a spoiled sum.
TEST(Plastic, BearsSlivers) {
    for (double out = 1e-13; out < 1e-6; out *= 1.3) {
        for (const double q : {-0.7, -0.1, 0.0, 0.3, 0.9}) {
            Section s = block(-0.5, -2, 0.5, 0);
            s.y.insert(s.y.end(), {-1, q, 1, 0.2});
            s.z.insert(s.z.end(), {0, -out, 0, 2});
            s.materials.resize(2);
            s.elements.push_back({5, 6, 7, 8});
            for (const Section& mesh : {s, as_triangles(s)}) {
                const Real<3> r = plastic(mesh, 2);
                EXPECT_NEAR(r(1), 0, 2e-6);
                for (const double moment : {r(2), r(3)}) EXPECT_NEAR(moment, 10.0 / 3, 1e-5);
            }
        }
    }
    // nothing of the upper elements is left below the line in 64 bits
    for (const double h : {1e4, 1e5, 3e5, 1e6, 7e6}) {
        Section s = block(0, -h, h, 0, 1e-12, 1e-12);
        add_rectangle(s, 0, 0, h, h, 1, 1, s.materials[0]);
        s.z[2] = s.z[3] = -2e-12;
        for (const Section& mesh : {s, as_triangles(s)}) EXPECT_NEAR(plastic(mesh, 2)(2), h * h * h, 1e-9 * h * h * h);
    }
    // below 1e-12 a triangle's part is dropped, but for its own moment
    const Section s{{0, 1e-6, 0}, {0, 0, 1e-6}, {{1, 2, 3, 3}}, {{}}, {}, 1};
    EXPECT_NEAR(plastic(s, 2)(2), 5e-18 / 48, 1e-27);
}

// The tolerance of the search comes from |FNEG| of element 1 alone, whatever that element is. The forces here stay
// below 1e-4, so the wide tolerance takes the first line, the middle of the bounds.
TEST(Plastic, ToleranceAndFirstLine) {
    for (const double FNEG : {9.99, 10.0, -10.0}) {
        Section s = block(0, 0, 1e-3, 1e-3, 50, FNEG);
        s.materials[0].MATFLAG = 0;
        add_rectangle(s, 0, 1, 1e-3, 1.001, 1, 1, {1, 1, 0, 1, 1, 1, 20, 20});
        EXPECT_NEAR(plastic(s, 2)(1), FNEG == 9.99 ? 1.0005 : 0.5005, 1e-6);
    }
    // The previous line starts at 100: a first middle within 1e-9 of it ends the search, whatever the forces.
    EXPECT_NEAR(plastic(block(0, 50, 1, 150 + 1e-9, 1, 3), 2)(1), 100, 1e-9);
    EXPECT_NEAR(plastic(block(0, 50, 1, 150 + 4e-9, 1, 3), 2)(1), 75, 1e-7);
    EXPECT_EQ(plastic(block(0, -2, 1, 2 + 1e-12), 2)(1), 0);  // a line below 1e-12 is exactly 0
}

// No input keeps the search from its end: bounds of 1e9, intervals that cannot shrink, sums that overflow.
TEST(Plastic, EndsForAnyCoordinates) {
    for (const double at : {1e8, 2e9, -2e9, 3e12, -3e12}) {
        Section s = block(0, at, 2, at + 4096, 1, 3);
        add_rectangle(s, 2, at, 3, at + 4096, 1, 1, s.materials[0]);
        EXPECT_NEAR(plastic(s, 2)(1), at + 1024, 1e-9 * std::fabs(at));
    }
    EXPECT_NEAR(plastic(block(0, 1.69e308, 1, 1.7e308), 2)(1), 1.69e308, 1e306);  // the ends' sum overflows
    for (const double size : {1e12, 1e100, 1e200, 1e300, 8e307, 1.7e308}) {
        for (const double low : {-1.0, 0.0, 0.9}) {
            for (const int DIRECTION : {1, 2, -1, -2}) {
                plastic(block(low * size, low * size, size, size, 1, 3), DIRECTION);
                plastic(as_triangles(block(low * size, 0, size, 1, 3, 1)), DIRECTION);
            }
        }
    }
}
