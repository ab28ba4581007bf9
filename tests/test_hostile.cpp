// Sections that a mesher may well make and that are hard to calculate: long thin walls at any angle, weak filler, far
// from the origin, too small for a warping system. Whole runs, held against the same section turned, or against what
// is exact.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/section_builder.h"

namespace {

// Largest relative difference of the values that do not depend on how a section is turned.
double difference(const Results& a, const Results& b) {
    double largest = std::fabs((b.slots[VQ_GAY] + b.slots[VQ_GAZ]) / (a.slots[VQ_GAY] + a.slots[VQ_GAZ]) - 1);
    for (const int slot : {VQ_EA, VQ_I1, VQ_I2, VQ_GJ, VQ_IW, VQ_IWS, VQ_WT})
        largest = std::fmax(largest, std::fabs(b.slots[slot] / a.slots[slot] - 1));
    return largest;
}

void expect_the_same_at_any_angle(const std::string& name, const Section& section) {
    for (const bool triangles : {false, true}) {
        const Section s = triangles ? as_triangles(section) : section;
        const Results upright = run(s, VQ_ELASTIC);
        EXPECT_EQ(upright.status, VQ_DONE) << name;
        for (const double degrees : {10, 30, 45, 60, 101}) {
            const Results turned = run(moved(s, 0, 0, degrees * M_PI / 180), VQ_ELASTIC);
            EXPECT_EQ(turned.status, VQ_DONE) << name;
            EXPECT_LT(difference(upright, turned), 1e-5)
                << name << (triangles ? ", triangles, " : ", quadrilaterals, ") << degrees << " degrees";
        }
    }
}

// A strip of length L and thickness t in squares has the bending stiffnesses of the rectangle and, across a single
// layer, a shear stiffness of all its area.
TEST(Hostile, LongStrips) {
    struct {
        double L, t;
        int along, layers;
    } const strips[] = {{400, 1, 400, 1},     {650, 1, 1300, 2},   {1000, 1.5, 667, 1}, {500, 1, 500, 1},
                        {1000, 0.5, 2000, 1}, {1000, 0.5, 500, 1}, {2000, 1, 2000, 1}};
    for (const auto& strip : strips) {
        Section s;
        add_rectangle(s, 0, 0, strip.L, strip.t, strip.along, strip.layers);
        const std::string name = std::to_string(strip.L) + " x " + std::to_string(strip.t);
        expect_the_same_at_any_angle(name, s);
        const Results r = run(moved(s, 0, 0, M_PI / 4));
        const double along = r.slots[VQ_GAU] + r.slots[VQ_GAV] - strip.L * strip.t;  // 5/6 of the area
        EXPECT_NEAR(along / (strip.L * strip.t), 5.0 / 6, 1e-4) << name;
        EXPECT_NEAR(r.slots[VQ_IW] / (std::pow(strip.L * strip.t, 3) / 144), 1, 1e-3) << name;
    }
}

TEST(Hostile, ThinAnglesAndChannels) {
    for (const double t : {3.0, 1 / 3.0}) {
        const int n = static_cast<int>(100 / t);
        Section s;
        add_rectangle(s, 0, 0, 100, t, n, 1);
        add_rectangle(s, 0, t, t, 100, 1, n - 1);
        expect_the_same_at_any_angle("angle of " + std::to_string(t), s);
        add_rectangle(s, 0, 100, 70, 100 + t, n, 1);
        expect_the_same_at_any_angle("channel of " + std::to_string(t), s);
    }
}

// Stiff parts in opposite corners, in rows, or in a pattern, held together by what hardly holds.
TEST(Hostile, WeakFiller) {
    const auto field = [](int n, double weak, bool (*stiff)(int, int)) {
        Section s;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                const double E = stiff(i, j) ? 1 : weak;
                add_rectangle(s, i, j, i + 1, j + 1, 1, 1, {E, E});
            }
        return s;
    };
    for (const double weak : {1e-5, 1e-7, 1e-9}) {
        const std::string name = "filler " + std::to_string(std::log10(weak));
        expect_the_same_at_any_angle(name, field(2, weak, [](int i, int j) { return i == j; }));
        expect_the_same_at_any_angle(
            name, field(20, weak, [](int i, int j) { return (i < 2 && j < 2) || (i > 17 && j > 17); }));
        expect_the_same_at_any_angle(name, field(12, weak, [](int i, int j) { return i % 4 < 2 && j % 4 < 2; }));
    }
}

// Shear moduli below 0 lead to the general path, and a bar to a secondary system that is singular.
TEST(Hostile, BarAmongShearModuliBelowZero) {
    for (const double G : {-0.1, -0.3}) {
        Section s;
        add_rectangle(s, 0, 0, 2, 3, 2, 3, {2.6, G});
        s.materials[0].GMOD = 1;
        add_bar(s, 1.1, 0.2, 2, 0.01, 4);
        const Results upright = run(s, VQ_ELASTIC);
        EXPECT_EQ(upright.status, VQ_DONE);
        for (const double degrees : {30, 45, 101}) {
            const Results turned = run(moved(s, 0, 0, degrees * M_PI / 180), VQ_ELASTIC);
            EXPECT_EQ(turned.status, VQ_DONE);
            for (const int slot : {VQ_GJ, VQ_IW}) EXPECT_NEAR(turned.slots[slot] / upright.slots[slot], 1, 1e-9);
        }
    }
}

// In the coupled form the mesh is not moved to its centroid, so the columns of the constraints are nearly parallel.
TEST(Hostile, CoupledSlabFarFromTheOrigin) {
    const double G = 81000;
    Section s;
    add_rectangle(s, 0, 0, 4, 0.1, 40, 1, {210000, G, 0, 0.5});
    const Results here = run(s, VQ_ELASTIC);
    EXPECT_NEAR(here.slots[VQ_GAZ] / (0.4 * G), 1, 1e-9);
    for (const double distance : {100.0, 300.0, 1000.0})
        for (const auto& [y, z] : {std::pair(distance, 0.0), {0.0, distance}, {distance, -distance}})
            for (const double degrees : {0, 30, 45}) {
                const Results r = run(moved(moved(s, 0, 0, degrees * M_PI / 180), y, z), VQ_ELASTIC);
                for (const int slot : {VQ_EA, VQ_GJ, VQ_IW, VQ_WT})
                    EXPECT_NEAR(r.slots[slot] / here.slots[slot], 1, 1e-5) << slot << " at " << distance;
                EXPECT_NEAR((r.slots[VQ_GAY] + r.slots[VQ_GAZ]) / (here.slots[VQ_GAY] + here.slots[VQ_GAZ]), 1, 1e-5);
            }
}

// Meshes that do not warp by their own rules, or that have no stiffness in shear, anywhere and at any angle: what does
// not depend on the warping is right, whatever the rest is.
TEST(Hostile, TooSmallForAWarpingSystem) {
    Section triangle, halves, quarters, soft;
    triangle.y = {0, 3, 1}, triangle.z = {0, 0.5, 2.5};
    triangle.elements = {{1, 2, 3, 3}};
    triangle.materials.resize(1);
    add_rectangle(halves, 0, 0, 3, 2, 1, 1);
    add_rectangle(quarters, 0, 0, 2, 2, 2, 2);
    add_rectangle(soft, 0, 0, 4, 1, 8, 2, {1, 0});
    const struct {
        Section section;
        double EA, I1, PLMOD;  // the larger one; 0 where the axes may lie anywhere, or where no figure is at hand
    } cases[] = {
        {triangle, 3.5, 0, 0}, {as_triangles(halves), 6, 4.5, 4.5}, {quarters, 4, 4 / 3.0, 0}, {soft, 4, 16 / 3.0, 4}};
    for (const auto& c : cases)
        for (int k = 0; k < 40; ++k) {
            const Results r = run(moved(c.section, 10 * std::sin(k), 10 * std::cos(3 * k), 0.7 * k));
            ASSERT_EQ(r.status, VQ_DONE) << "place " << k;
            EXPECT_NEAR(r.slots[VQ_EA], c.EA, 1e-12);
            const double PLMOD = std::fmax(r.slots[VQ_PLMOD_U], r.slots[VQ_PLMOD_V]);
            EXPECT_TRUE(c.I1 == 0 || std::fabs(r.slots[VQ_I1] - c.I1) < 1e-11) << r.slots[VQ_I1];
            EXPECT_TRUE(c.PLMOD == 0 || std::fabs(PLMOD - c.PLMOD) < 1e-8) << PLMOD;
        }
}

}  // namespace
