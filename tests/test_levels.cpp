// Values from nested meshes: against exact ones, at the host's own nodes and corners, with and without a limit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <tuple>

#include "section_builder.h"

namespace {

constexpr double PI = 3.14159265358979324;

struct Levels {
    std::int32_t status, reached;
    std::vector<double> slots, bounds, nodeout, elemout;
    std::vector<std::int32_t> sharp;
    std::vector<VYZTUZE_INFO> bars;
};

template <class T>
std::vector<T> inner(const std::vector<T>& table) {
    return {table.begin() + GUARD, table.end() - GUARD};
}

Levels run_levels(const Section& section, std::int32_t levels, double mode = VQ_PLASTIC, vq_place place = nullptr,
                  void* context = nullptr) {
    Host host = host_of(section, mode, levels);
    host.place = place;
    host.context = context;
    call(host);
    EXPECT_TRUE(guards_intact(host));
    return {host.STATUS,         host.REACHED,        inner(host.RESULT), inner(host.BOUNDS),
            inner(host.NODEOUT), inner(host.ELEMOUT), inner(host.SHARP),  inner(host.POINTS)};
}

// Torsion of a rectangle 2 a by 2 b, a >= b, by Saint-Venant's series: torsion constant, largest stress of a unit
// torque.
std::pair<double, double> rectangle_torsion(double a, double b) {
    double J = 16.0 / 3, tau = 2;
    for (int n = 1; n < 60; n += 2) {
        const double x = n * PI * a / (2 * b);
        J -= 1024 * b / a / std::pow(n * PI, 5) * std::tanh(x);
        tau -= 16 / std::pow(n * PI, 2) / std::cosh(x);
    }
    J *= a * b * b * b;
    return {J, tau * b / J};
}

// An ellipse of half axes a, b on a square net, its boundary nodes on the curve.
struct Ellipse {
    double a, b;
    const Section* section;
};
Section ellipse(double a, double b, int n) {
    Section s;
    add_rectangle(s, -1, -1, 1, 1, n, n);
    for (std::size_t i = 0; i < s.y.size(); ++i) {
        const double y = s.y[i], z = s.z[i];
        s.y[i] = a * y * std::sqrt(1 - z * z / 2);
        s.z[i] = b * z * std::sqrt(1 - y * y / 2);
    }
    return s;
}
void place_on_ellipse(void* context, std::int32_t, std::int32_t, double, double* YZ) {
    const Ellipse& e = *static_cast<const Ellipse*>(context);
    const double r = std::hypot(YZ[0] / e.a, YZ[1] / e.b);
    YZ[0] /= r;
    YZ[1] /= r;
}

Section angle_section() {
    Section s;
    add_rectangle(s, 0, 0, 60, 10, 12, 2);
    add_rectangle(s, 0, 10, 10, 100, 2, 18);
    return s;
}

double largest_tau(const Levels& of, int pair) {
    double largest = 0;
    for (std::size_t c = 0; c < of.elemout.size(); c += 12)
        largest = std::max(largest, std::hypot(of.elemout[c + 2 * pair], of.elemout[c + 2 * pair + 1]));
    return largest;
}

const int warping_slots[] = {VQ_SCY, VQ_SCZ, VQ_SCU,  VQ_SCV, VQ_GJ, VQ_GAY, VQ_GAZ, VQ_IW,
                             VQ_GAU, VQ_GAV, VQ_GAUV, VQ_IWS, VQ_WT, VQ_WR1, VQ_WR2};

}  // namespace

TEST(Levels, OneLevelIsThePlainCallAndItsBoundsAreUnknown) {
    Section s = angle_section();
    add_bar(s, 3, 4, 1, 20, 9, 2);
    const Results plain = run(s);
    const Levels one = run_levels(s, 1);
    ASSERT_EQ(one.status, VQ_DONE);
    EXPECT_EQ(one.reached, 1);
    EXPECT_EQ(one.slots, plain.slots);
    EXPECT_EQ(one.nodeout, plain.nodeout);
    EXPECT_EQ(one.elemout, plain.elemout);
    EXPECT_EQ(std::memcmp(one.bars.data(), plain.bars.data(), sizeof(VYZTUZE_INFO)), 0);
    for (const double bound : one.bounds) EXPECT_TRUE(std::isnan(bound));
}

TEST(Levels, ValuesOfARectangleAreExactWithinTheirBounds) {
    for (const bool triangles : {false, true})
        for (const double length : {2.0, 5.0, 40.0}) {
            Section s;
            add_rectangle(s, 0, 0, length, 1, static_cast<int>(2 * length), 2);
            if (triangles) s = as_triangles(s);
            s = moved(s, 7, -3, 0.4);
            const Levels three = run_levels(s, 3);
            ASSERT_EQ(three.status, VQ_DONE);
            const auto [J, tau] = rectangle_torsion(length / 2, 0.5);
            const std::tuple<int, double, double> expected[] = {{VQ_EA, length, 1e-12},
                                                                {VQ_I1, length * length * length / 12, 1e-10},
                                                                {VQ_GJ, J, 1e-3},
                                                                {VQ_WT, 1 / tau, 1e-2},
                                                                {VQ_GAU, length * 5 / 6, triangles ? 5e-3 : 1e-3},
                                                                {VQ_GAV, length * 5 / 6, triangles ? 5e-3 : 1e-3}};
            for (const auto& [slot, value, share] : expected) {
                SCOPED_TRACE(slot);
                EXPECT_NEAR(three.slots[slot], value, share * value);
                EXPECT_NEAR(three.slots[slot], value, three.bounds[slot]);
                EXPECT_LT(three.bounds[slot], 0.3 * value);  // the corner stress of a coarse mesh
                EXPECT_GT(three.bounds[slot], 0);
            }
            EXPECT_NEAR(largest_tau(three, 0), tau, 0.03 * tau);
        }
}

TEST(Levels, NewNodesGoWhereTheHostPlacesThem) {
    const Section s = ellipse(3, 2, 4);
    Ellipse on{3, 2, &s};
    for (const bool triangles : {false, true}) {
        const Levels three = run_levels(triangles ? as_triangles(s) : s, 3, VQ_PLASTIC, place_on_ellipse, &on);
        ASSERT_EQ(three.status, VQ_DONE);
        const double A = PI * 6, J = PI * 27 * 8 / 13;
        const std::tuple<int, double> expected[] = {
            {VQ_EA, A}, {VQ_I1, A * 9 / 4}, {VQ_I2, A * 4 / 4}, {VQ_GJ, J}, {VQ_PLMOD_Z, 4.0 / 3 * 3 * 4}};
        for (const auto& [slot, value] : expected) {
            SCOPED_TRACE(slot);
            EXPECT_NEAR(three.slots[slot], value, 1e-3 * value);
            EXPECT_NEAR(three.slots[slot], value, three.bounds[slot]);
        }
        EXPECT_EQ(std::count(three.sharp.begin(), three.sharp.end(), 1), 0);
    }

    // every free edge and every one between materials, each share once, from a straight place
    Section two;
    add_rectangle(two, 0, 0, 2, 1, 2, 1);
    add_rectangle(two, 0, 1, 2, 2, 2, 1, {2, 2});
    struct Calls {
        const Section* section;
        std::set<std::tuple<std::int32_t, std::int32_t, double>> seen;
        int count = 0;
    } calls{&two, {}, 0};
    const auto note = [](void* context, std::int32_t A, std::int32_t B, double t, double* YZ) {
        Calls& c = *static_cast<Calls*>(context);
        const auto along = [&](const std::vector<double>& x) { return x[A - 1] + t * (x[B - 1] - x[A - 1]); };
        EXPECT_DOUBLE_EQ(YZ[0], along(c.section->y));
        EXPECT_DOUBLE_EQ(YZ[1], along(c.section->z));
        c.seen.insert({A, B, t});
        ++c.count;
    };
    EXPECT_EQ(run_levels(two, 3, VQ_PLASTIC, note, &calls).status, VQ_DONE);
    EXPECT_EQ(calls.count, (8 + 2) * 3);
    EXPECT_EQ(calls.seen.size(), 30u);
}

TEST(Levels, FieldsAreThoseOfAFinerMeshAtTheHostsNodesAndCorners) {
    for (const bool triangles : {false, true}) {
        Section s;
        add_rectangle(s, 0, 0, 4, 1, 8, 2);
        for (std::size_t i = 0; i < s.y.size(); ++i) s.y[i] *= 1 - 0.3 * s.z[i];
        if (triangles) s = as_triangles(s);
        s = moved(s, 1, 2, 0.3);
        const Results plain = run(s);
        const Levels three = run_levels(s, 3), reference = run_levels(s, 5);
        const auto distance = [](const std::vector<double>& a, const std::vector<double>& b, std::size_t first,
                                 std::size_t step) {
            double difference = 0, size = 0;
            for (std::size_t i = first; i < a.size(); i += step) {
                difference += (a[i] - b[i]) * (a[i] - b[i]);
                size += b[i] * b[i];
            }
            return std::sqrt(difference / size);
        };
        EXPECT_LT(distance(three.nodeout, reference.nodeout, 0, 1), 0.02);
        EXPECT_LT(distance(three.nodeout, reference.nodeout, 0, 1),
                  0.2 * distance(plain.nodeout, reference.nodeout, 0, 1));
        for (const std::size_t entry : {0, 1, 4, 5, 6, 7, 8, 9, 10, 11}) {
            SCOPED_TRACE(entry);
            const double error = distance(three.elemout, reference.elemout, entry, 12);
            EXPECT_LT(error, 0.1);
            EXPECT_LE(error, 0.3 * distance(plain.elemout, reference.elemout, entry, 12) + 1e-12);
        }
    }

    Section triangle;  // whose first level has no numbers, in line with its principal axes
    triangle.y = {-1, 1, 0}, triangle.z = {0, 0, 3};
    triangle.elements = {{1, 2, 3, 3}}, triangle.materials = {{}};
    for (const double bound : run_levels(triangle, 2).bounds) EXPECT_GE(bound, 0);
    // a mesh that cannot warp, as the first level here, divides by a warping constant of 0
    Section square;
    add_rectangle(square, 0, 0, 2, 2, 2, 2);
    for (const double stress : run_levels(square, 3).elemout) EXPECT_LT(std::fabs(stress), 10);
}

// What does not depend on the axes must not depend on the angle, nor the rest on axes that change between levels.
TEST(Levels, ValuesFollowTheSectionWhenItTurns) {
    Section square;
    add_rectangle(square, -1, -1, 1, 1, 3, 3);
    for (const Section& section : {angle_section(), square}) {
        const Levels straight = run_levels(section, 3);
        for (const double angle : {0.2, PI / 4, 1.3, PI / 2}) {
            SCOPED_TRACE(angle);
            const Levels turned = run_levels(moved(section, 0, 0, angle), 3);
            for (const int slot : {VQ_EA, VQ_I1, VQ_I2, VQ_GJ, VQ_IW, VQ_IWS, VQ_WR1})
                EXPECT_NEAR(turned.slots[slot], straight.slots[slot], 1e-8 * std::fabs(straight.slots[slot]) + 1e-9)
                    << slot;
            const double c = std::cos(angle), s = std::sin(angle);
            EXPECT_NEAR(turned.slots[VQ_SCY], c * straight.slots[VQ_SCY] - s * straight.slots[VQ_SCZ], 1e-3);
            EXPECT_NEAR(turned.slots[VQ_GAY] + turned.slots[VQ_GAZ], straight.slots[VQ_GAY] + straight.slots[VQ_GAZ],
                        1e-3 * straight.slots[VQ_GAY]);
            // the tensor in its two frames, and vectors in theirs
            const double cos = std::cos(turned.slots[VQ_ALPHA]), sin = std::sin(turned.slots[VQ_ALPHA]);
            const std::vector<double>& r = turned.slots;
            EXPECT_NEAR(r[VQ_GAY], cos * cos * r[VQ_GAU] + sin * sin * r[VQ_GAV] - 2 * cos * sin * r[VQ_GAUV],
                        1e-9 * r[VQ_GAY]);
            EXPECT_NEAR(r[VQ_SCU], cos * r[VQ_SCY] + sin * r[VQ_SCZ], 1e-9);
            EXPECT_NEAR(r[VQ_RU] * r[VQ_I2], cos * r[VQ_RY] * r[VQ_IYY] + sin * r[VQ_RZ] * r[VQ_IZZ], 1e-8 * r[VQ_I1]);
            EXPECT_NEAR(r[VQ_RV] * r[VQ_I1], cos * r[VQ_RZ] * r[VQ_IZZ] - sin * r[VQ_RY] * r[VQ_IYY], 1e-8 * r[VQ_I1]);
            EXPECT_NEAR(r[VQ_COUP1], cos * r[VQ_YC] - sin * r[VQ_ZC], 1e-9);
        }
    }
}

TEST(Levels, BarsFindTheirPlaceAndWhatHasNoLimitIsSaidToHaveNone) {
    Section s;
    add_rectangle(s, 0, 0, 300, 500, 3, 5, {30, 12.5});
    s = as_triangles(s);
    add_bar(s, 40, 45, 1, 314, 200).RADIUS = 70;
    add_bar(s, 260, 460, static_cast<std::int32_t>(s.elements.size()), 314, 200);
    add_bar(s, 150, 250, 3, 1, 1).STRESS[2] = 17;  // takes no part
    const Results plain = run(s, VQ_ELASTIC);
    const Levels three = run_levels(s, 3, VQ_ELASTIC), five = run_levels(s, 5, VQ_ELASTIC);
    ASSERT_EQ(three.status, VQ_DONE);
    EXPECT_EQ(std::memcmp(&three.bars[2], &s.bars[2], sizeof(VYZTUZE_INFO)), 0);
    for (const int slot : {VQ_EA, VQ_IYY, VQ_IZZ, VQ_DYZ, VQ_YC, VQ_ZC, VQ_RY})
        EXPECT_NEAR(three.slots[slot], plain.slots[slot], 0.02 * std::fabs(plain.slots[slot])) << slot;
    for (int slot = 0; slot < VQ_NSLOTS; ++slot)
        EXPECT_EQ(std::isinf(three.bounds[slot]),
                  slot == VQ_GAY || slot == VQ_GAZ || (slot >= VQ_GAU && slot <= VQ_GAUV))
            << slot;
    for (std::size_t b = 0; b < 2; ++b) {
        EXPECT_EQ(three.bars[b].ELEMENT, s.bars[b].ELEMENT);
        EXPECT_EQ(std::memcmp(three.bars[b].ELNODES, plain.bars[b].ELNODES, sizeof three.bars[b].ELNODES), 0);
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(three.bars[b].STRESS[k], plain.bars[b].STRESS[k], 1e-12);
        EXPECT_NEAR(three.bars[b].STRESS[3], five.bars[b].STRESS[3], 0.12 * std::fabs(five.bars[b].STRESS[3]));
    }
    s.bars[0].GMODUL = 80;
    for (const int slot : warping_slots) EXPECT_TRUE(std::isinf(run_levels(s, 3, VQ_ELASTIC).bounds[slot])) << slot;

    // two pieces, and an element that is too thin to be split twice
    Section pieces;
    add_rectangle(pieces, 0, 0, 1, 1, 2, 2);
    add_rectangle(pieces, 2, 0, 3, 1, 2, 2);
    const Levels loose = run_levels(pieces, 3);
    EXPECT_EQ(loose.status, VQ_DONE);
    for (int slot = 0; slot < VQ_NSLOTS; ++slot)
        EXPECT_EQ(std::isinf(loose.bounds[slot]),
                  std::count(std::begin(warping_slots), std::end(warping_slots), slot) == 1)
            << slot;
}

TEST(Levels, StressesAreInfiniteAtSharpCornersAlone) {
    const auto sharp_places = [](const Section& s, const Levels& of) {
        std::set<std::pair<double, double>> places;
        for (std::size_t i = 0; i < of.sharp.size(); ++i)
            if (of.sharp[i] == 1) places.insert({std::round(s.y[i]), std::round(s.z[i])});
        return places;
    };
    using Places = std::set<std::pair<double, double>>;
    const Section angle = angle_section();
    const Levels three = run_levels(angle, 3);
    EXPECT_EQ(sharp_places(angle, three), (Places{{10, 10}}));
    EXPECT_TRUE(std::isinf(three.bounds[VQ_WT]));
    // the largest elsewhere hardly grows with the levels
    EXPECT_NEAR(three.slots[VQ_WT], run_levels(angle, 5).slots[VQ_WT], 0.05 * three.slots[VQ_WT]);

    Section layers;  // an interface that ends square at a free edge is no corner
    add_rectangle(layers, 0, 0, 4, 2, 4, 2);
    add_rectangle(layers, 0, 2, 4, 4, 4, 2, {5, 5});
    EXPECT_EQ(sharp_places(layers, run_levels(layers, 2)), Places{});
    Section core;  // a core of another material, in one corner of a square: its inner corner
    add_rectangle(core, 0, 0, 2, 2, 2, 2, {5, 5});
    add_rectangle(core, 2, 0, 4, 2, 2, 2);
    add_rectangle(core, 0, 2, 4, 4, 4, 2);
    EXPECT_EQ(sharp_places(core, run_levels(core, 2)), (Places{{2, 2}}));
    Section inclined;  // an interface at 45 degrees: where the stiffer part has the sharp angle
    inclined.y = {0, 2, 6, 0, 4, 6};
    inclined.z = {0, 0, 0, 2, 2, 2};
    inclined.elements = {{1, 2, 5, 4}, {2, 3, 6, 5}};
    inclined.materials = {{}, {10, 10}};
    EXPECT_EQ(sharp_places(inclined, run_levels(inclined, 2)), (Places{{2, 0}}));
    Section notch;  // an element without shear modulus is a hole
    add_rectangle(notch, 0, 0, 3, 1, 3, 1);
    notch.materials[1].GMOD = 0;
    add_rectangle(notch, 0, 1, 3, 3, 3, 2);
    EXPECT_EQ(sharp_places(notch, run_levels(notch, 2)), (Places{{1, 1}, {2, 1}}));
}

TEST(Levels, PlasticSearchesDoNotBeginWhereTheyWouldEnd) {
    Section s;
    add_rectangle(s, 0, 0, 10, 180, 1, 18, {1, 1, 0, 1, 1, 1, 235, 235});
    add_rectangle(s, -50, 180, 60, 200, 11, 2, {1, 1, 0, 1, 1, 1, 235, 235});
    ASSERT_EQ(run(s).slots[VQ_PLAXIS_Z], 100);
    const Levels at_100 = run_levels(s, 2), elsewhere = run_levels(moved(s, 0, -77), 2);
    EXPECT_NEAR(at_100.slots[VQ_PLAXIS_Z], 180 + 20.0 / 11, 1e-6);
    for (int slot = VQ_PLMOD_Z; slot <= VQ_PLMOM_Y_NEG; ++slot)
        EXPECT_NEAR(at_100.slots[slot], elsewhere.slots[slot], 1e-6 * elsewhere.slots[slot]) << slot;
    EXPECT_EQ(at_100.nodeout.size(), 3 * s.y.size());
    // beyond a bar outside, along Z and along a principal axis that is turned
    add_bar(s, 5, 400, 1, 1, 0);
    s = moved(s, 0, -100);
    ASSERT_EQ(run(s).slots[VQ_PLAXIS_Z], 100);
    EXPECT_NEAR(run_levels(s, 2).slots[VQ_PLAXIS_Z], 80 + 20.0 / 11, 1e-6);
    const double centroid = run(s).slots[VQ_ZC];
    s.z.back() = 300 + 2 * centroid;
    s = moved(s, 0, 0, PI / 4);
    ASSERT_NEAR(run(s).slots[VQ_PLAXIS_V], 100, 1e-9);
    EXPECT_NEAR(run_levels(s, 2).slots[VQ_PLAXIS_V], 80 + 20.0 / 11 - centroid, 1e-6);
}

// A rectangle 2 by 3 of other strength above than below the line, which no edge of its elements follows.
TEST(Levels, PlasticMomentsGiveEachPartItsOwnStrength) {
    const auto moment = [](double width, double height, double above, double below) {
        const double a = height * below / (above + below), b = height - a;
        return width / 2 * (above * a * a + below * b * b);
    };
    for (const bool triangles : {false, true})
        for (const double angle : {0.0, 0.5}) {
            Section s;
            add_rectangle(s, -1, -1.5, 1, 1.5, 2, 1, {1, 1, 0, 1, 1, 1, 100, 250});
            if (triangles) s = as_triangles(s);
            s = moved(s, angle == 0 ? 4 : 0, 0, angle);
            const Levels two = run_levels(s, 2), pair = run_levels(s, 2, VQ_PLASTIC_TWO);
            ASSERT_EQ(two.status, VQ_DONE);
            const double Z = moment(2, 3, 250, 100), Y = moment(3, 2, 250, 100);  // both signs alike by symmetry
            for (const int slot : {VQ_PLMOM_V, VQ_PLMOM_V_NEG}) EXPECT_NEAR(two.slots[slot], Z, 1e-6 * Z);
            for (const int slot : {VQ_PLMOM_U, VQ_PLMOM_U_NEG}) EXPECT_NEAR(two.slots[slot], Y, 1e-6 * Y);
            EXPECT_NEAR(two.slots[VQ_PLMOM_Z], angle == 0 ? Z : two.slots[VQ_PLMOM_Z_NEG], 1e-6 * Z);
            EXPECT_NEAR(two.slots[VQ_PLMOM_Y_NEG], angle == 0 ? Y : two.slots[VQ_PLMOM_Y], 1e-6 * Z);
            EXPECT_EQ(pair.slots[VQ_PLMOM_U], two.slots[VQ_PLMOM_U]);
            EXPECT_EQ(pair.slots[VQ_PLMOM_U_NEG], 0);
        }
    Section layers;  // unsymmetric: the line in the upper layer, its signs apart
    add_rectangle(layers, 0, 0, 2, 2, 1, 1, {1, 1, 0, 1, 1, 1, 100, 250});
    add_rectangle(layers, 0, 2, 2, 4, 1, 1, {1, 1, 0, 1, 1, 1, 300, 300});
    const Levels two = run_levels(layers, 2);
    const double L = 4 - (2 * 300 + 2 * 100) / 600.0;  // 300 (4 - L) = 300 (L - 2) + 100 2
    EXPECT_NEAR(two.slots[VQ_PLAXIS_Z], L, 1e-6);
    EXPECT_NEAR(two.slots[VQ_PLMOM_Z], 300 * ((4 - L) * (4 - L) + (L - 2) * (L - 2)) + 100 * 4 * (L - 1), 1e-3);
}

// Nearly a circle, on a net that is turned against its axes: these are other ones on each level.
TEST(Levels, AxesMayChangeFromLevelToLevel) {
    Section s = ellipse(2, 2, 2);
    s.y[0] = -2 * std::cos(0.5), s.z[0] = -2 * std::sin(0.5);  // a corner of the net moved along the circle
    s = moved(s, 0, 0, 0.6);
    for (double& y : s.y) y *= 1.01;
    Ellipse on{2.02, 2, &s};
    const Results plain = run(s);
    const Levels three = run_levels(s, 3, VQ_PLASTIC, place_on_ellipse, &on);
    ASSERT_EQ(three.status, VQ_DONE);
    const double ALPHA = three.slots[VQ_ALPHA], c = std::cos(ALPHA), sine = std::sin(ALPHA);
    EXPECT_GT(std::fabs(std::sin(plain.slots[VQ_ALPHA] - ALPHA)), 0.02);
    for (std::size_t e = 0; e < s.elements.size(); ++e)
        for (std::size_t p = 0; p < 4; ++p) {
            const std::size_t node = static_cast<std::size_t>(s.elements[e][p]) - 1;
            const double u = c * s.y[node] + sine * s.z[node], v = c * s.z[node] - sine * s.y[node];
            const double* corner = &three.elemout[48 * e + 12 * p];
            EXPECT_NEAR(corner[9], v / three.slots[VQ_I1], 4e-3 * 2 / three.slots[VQ_I1]);
            EXPECT_NEAR(corner[10], -u / three.slots[VQ_I2], 4e-3 * 2 / three.slots[VQ_I2]);
        }
}

TEST(Levels, TwoLevelsAndMeshesThatCannotWarp) {
    Section s;
    add_rectangle(s, 0, 0, 5, 1, 10, 2);
    const Levels two = run_levels(s, 2);
    const double J = rectangle_torsion(2.5, 0.5).first;
    EXPECT_NEAR(two.slots[VQ_GJ], J, two.bounds[VQ_GJ]);
    EXPECT_GT(two.bounds[VQ_GJ], std::fabs(run(s).slots[VQ_GJ] - J) / 2);
    Section one;  // of one element, whose warping constant is 0
    add_rectangle(one, 0, 0, 2, 1, 1, 1);
    const Levels alike = run_levels(one, 2);  // too coarse to show that shear stiffness depends on the mesh
    EXPECT_NEAR(alike.slots[VQ_GAY], 2 * 5 / 6.0, alike.bounds[VQ_GAY]);
    Section limp = one;
    limp.materials[0].GMOD = 0;
    EXPECT_TRUE(std::isinf(run_levels(limp, 3).bounds[VQ_WT]));
    const Levels four = run_levels(as_triangles(one), 4);
    EXPECT_NEAR(four.slots[VQ_GJ], rectangle_torsion(1, 0.5).first, four.bounds[VQ_GJ]);
    for (const double bound : four.bounds) EXPECT_TRUE(std::isfinite(bound));
}

TEST(Levels, WhatIsRefusedLeavesTheTables) {
    const Section s = angle_section();
    const auto expect_untouched = [](const Host& given, int missing, std::int32_t status, std::int32_t reached) {
        Host called = given;
        call(called, missing);
        EXPECT_EQ(called.STATUS, status);
        EXPECT_EQ(called.REACHED, reached);
        EXPECT_TRUE(same_tables(called, given));
    };
    for (const std::int32_t levels : {-1, 7, std::numeric_limits<std::int32_t>::max()})
        expect_untouched(host_of(s, 1, levels), 0, VQ_REFUSED, 0);
    for (const int missing : {2, 4, 6, 9, 10, 11, 13}) expect_untouched(host_of(s, 1, 2), missing, VQ_REFUSED, 0);
    Host uncounted = host_of(s, 1, 2);
    uncounted.NELEMS = -1;
    expect_untouched(uncounted, 0, VQ_REFUSED, 0);
    Host no_sharp = host_of(s, 1, 2);
    call(no_sharp, 14);
    EXPECT_EQ(no_sharp.STATUS, VQ_DONE);

    // edges of 1e-8 and more, split until they are shorter
    Section tiny;
    add_rectangle(tiny, 0, 0, 3e-8, 3e-8, 1, 1);
    tiny.y = {0, 3e-8, 3e-8, 0};
    tiny.z = {0, 0, 3e-8, 3e-8};
    tiny.elements = {{1, 2, 3, 4}};
    const Levels two = run_levels(tiny, 4, VQ_ELASTIC);
    EXPECT_EQ(two.status, VQ_DONE);
    EXPECT_EQ(two.reached, 2);
    EXPECT_EQ(two.slots, run_levels(tiny, 2, VQ_ELASTIC).slots);
    for (double& y : tiny.y) y /= 2;
    for (double& z : tiny.z) z /= 2;
    expect_untouched(host_of(tiny, 0, 3), 0, VQ_REFUSED, 1);
    // a host that loses its way
    const auto nowhere = [](void*, std::int32_t, std::int32_t, double, double* YZ) { YZ[0] = std::nan(""); };
    Host lost = host_of(s, 1, 3);
    lost.place = nowhere;
    expect_untouched(lost, 0, VQ_REFUSED, 1);
}
