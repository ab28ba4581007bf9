// What the host guide tells, by real calls: the routines that it gives to hosts, signs, frames and relations of
// results.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "bench/meshes.h"
#include "examples/check_tables.h"
#include "section_builder.h"

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

refusal refusal_of(const Section& s, double mode = VQ_PLASTIC) {
    const Host host = host_of(s);  // the bars between guards
    std::vector<unsigned char> taken(s.y.size() + 1, 0xff);
    const refusal fault = find_refusal(host.STATUS, host.NODES.data(), host.NNODES, host.ELEMENTS.data(), host.NELEMS,
                                       host.PROPS.data(), host.NPOINTS, &host.POINTS[GUARD], mode, taken.data());
    EXPECT_EQ(taken.back(), 0xff);
    return fault;
}

int pieces_of(const Section& s, std::vector<std::int32_t>& piece) {
    piece.assign(s.y.size(), -1);
    return find_pieces(static_cast<std::int32_t>(s.y.size()), element_table(s).data(),
                       static_cast<std::int32_t>(s.elements.size()), property_table(s).data(), piece.data());
}

bool is_refused(const Section& s, double mode = VQ_PLASTIC) { return run(s, mode).status == VQ_REFUSED; }

// Legs of 10 by 100 and 50 by 10 of two materials, squares of 2.5 split in triangles: sums over them need no rule.
Section unequal_angle() {
    Section s;
    add_rectangle(s, 0, 0, 10, 100, 4, 40, {210, 81, 0, 1, 1, 1, 1, 1});
    add_rectangle(s, 10, 0, 60, 10, 20, 4, {70, 30, 0, 1, 1, 0, 1, 1});
    return as_triangles(s);
}

// Area, centroid and node numbers of a triangle.
struct Triangle {
    std::size_t e;
    double A, y, z;
    std::vector<std::size_t> node;  // counted from 0
};
std::vector<Triangle> triangles(const Section& s) {
    std::vector<Triangle> all;
    for (std::size_t e = 0; e < s.elements.size(); ++e) {
        Triangle t{e, 0, 0, 0, {}};
        for (int i = 0; i < 3; ++i) t.node.push_back(static_cast<std::size_t>(s.elements[e][i] - 1));
        const auto& [a, b, c] = std::array<std::size_t, 3>{t.node[0], t.node[1], t.node[2]};
        t.A = ((s.y[b] - s.y[a]) * (s.z[c] - s.z[a]) - (s.y[c] - s.y[a]) * (s.z[b] - s.z[a])) / 2;
        t.y = (s.y[a] + s.y[b] + s.y[c]) / 3, t.z = (s.z[a] + s.z[b] + s.z[c]) / 3;
        all.push_back(t);
    }
    return all;
}

// The twelve values at the corner of `s` nearest to (y, z), of the first element that has it.
const double* values_at(const Section& s, const Results& r, double y, double z) {
    for (std::size_t e = 0; e < s.elements.size(); ++e)
        for (std::size_t p = 0; p < 4; ++p) {
            const std::size_t n = s.elements[e][p] - 1;
            if (std::hypot(s.y[n] - y, s.z[n] - z) < 1e-6) return &r.elemout[48 * e + 12 * p];
        }
    ADD_FAILURE() << "no node at " << y << ", " << z;
    return nullptr;
}

double near(double x) { return 1e-9 * std::fabs(x); }

}  // namespace

// Five elements at random over a lattice of nodes. The row that is named is the first one that the library refuses when
// it stands alone beside a good element; and some of them are good.
TEST(CheckTables, NamesTheElementThatTheLibraryRefuses) {
    meshes::Random random{7};
    int refused = 0, bad_rows = 0;
    for (int n = 0; n < 1500; ++n) {
        Section s;
        add_rectangle(s, 10, 0, 11, 1, 1, 1);
        for (int i = 0; i < 9; ++i) {
            s.y.push_back(i % 3 + (below(random, 4) == 0 ? uniform(random, -1.2, 1.2) : 0));
            s.z.push_back(i / 3 + (below(random, 8) == 0 ? 2e-6 : 0));
        }
        for (int e = 0; e < 5; ++e) {
            const std::int32_t a = 5 + below(random, 2) + 3 * below(random, 2);  // lower left node of a cell
            std::vector<std::int32_t> node{a, a + 1, a + 4, a + 3};
            if (below(random, 3) == 0) node[2] = node[3];
            if (below(random, 6) == 0) node[below(random, 4)] = 5 + below(random, 9);
            if (below(random, 12) == 0) std::swap(node[0], node[1]);
            if (below(random, 60) == 0) node[below(random, 4)] = below(random, 2) == 0 ? 0 : 14;
            s.elements.push_back(node);
            s.materials.push_back({below(random, 8) == 0 ? 1.009e-6 : 1.0});
        }
        if (below(random, 30) == 0) s.y[5 + below(random, 8)] = NaN;

        std::int32_t first = 0;
        for (std::size_t e = 1; e <= 5; ++e) {
            Section alone = s;
            alone.elements = {s.elements[0], s.elements[e]};
            alone.materials = {s.materials[0], s.materials[e]};
            if (!is_refused(alone)) continue;
            ++bad_rows;
            if (first == 0) first = static_cast<std::int32_t>(e) + 1;
        }
        const refusal fault = refusal_of(s);
        ASSERT_EQ(fault.why != nullptr, first != 0) << n;
        ASSERT_EQ(fault.why != nullptr, is_refused(s)) << n;
        if (first == 0) continue;
        ++refused;
        if (std::string(fault.table) == "NODES") {
            EXPECT_TRUE(std::isnan(s.y[fault.row - 1]));
        } else {
            ASSERT_EQ(fault.row, first) << n << fault.why;
        }
    }
    EXPECT_GT(refused, 500);
    EXPECT_LT(refused, 1400);
    EXPECT_GT(bad_rows, 1000);
}

// Just inside and just outside of each limit of shape, for both kinds of elements.
TEST(CheckTables, DrawsTheLimitsWhereTheLibraryDoes) {
    const auto is_taken = [](double width, double height, double angle, bool triangle) {
        Section s;
        add_rectangle(s, 10, 0, 11, 1, 1, 1);
        const double dy = height * std::cos(angle), dz = height * std::sin(angle);
        s.y.insert(s.y.end(), {0, width, width + dy, dy});
        s.z.insert(s.z.end(), {0, 0, dz, dz});
        s.elements.push_back({5, 6, triangle ? 8 : 7, 8});
        s.materials.push_back({});
        const bool taken = refusal_of(s).why == nullptr;
        EXPECT_EQ(taken, !is_refused(s)) << width << " " << height << " " << angle;
        return taken;
    };
    const double right = std::acos(0);
    EXPECT_TRUE(is_taken(1, 1, std::asin(0.0801), false) && is_taken(1, 1, 2 * right - std::asin(0.0801), false));
    EXPECT_FALSE(is_taken(1, 1, std::asin(0.0799), false) || is_taken(1, 1, 2 * right - std::asin(0.0799), false));
    EXPECT_TRUE(is_taken(1, 1, 0.01, true));  // a triangle may be as sharp as its edges allow
    for (const bool triangle : {false, true}) {
        EXPECT_TRUE(is_taken(1, 1.001e-5, right, triangle) && is_taken(1.001e-8, 1.001e-8, right, triangle));
        EXPECT_FALSE(is_taken(1, 0.999e-5, right, triangle) || is_taken(0.7e-8, 0.7e-8, right, triangle));
        EXPECT_FALSE(is_taken(1, 1, -right, triangle));
    }
}

TEST(CheckTables, NamesPropertiesAndBars) {
    const auto expect = [](const char* table, std::int32_t row, const std::function<void(Section&)>& spoil) {
        Section s;
        add_rectangle(s, 0, 0, 2, 2, 2, 2);
        for (const double z : {0.3, 0.6, 1.5}) add_bar(s, 0.5, z, z < 1 ? 1 : 3, 0.01, 5);
        s.groups = 2;
        spoil(s);
        const refusal fault = refusal_of(s);
        EXPECT_EQ(is_refused(s), table != nullptr) << row;
        ASSERT_EQ(fault.why != nullptr, table != nullptr) << row << (fault.why ? fault.why : "");
        if (!table) return;
        EXPECT_STREQ(fault.table, table) << fault.why;
        EXPECT_EQ(fault.row, row) << fault.why;
    };
    expect(nullptr, 0, [](Section&) {});
    expect(nullptr, 1, [](Section& s) { s.materials[2].tenth = s.materials[2].third = NaN; });
    expect(nullptr, 2, [](Section& s) { s.materials[2].GROUP = -2.9; });
    expect("PROPS", 3, [](Section& s) { s.materials[2].GROUP = 3; });
    expect("PROPS", 3, [](Section& s) { s.materials[2].GROUP = -0.9; });
    expect("PROPS", 4, [](Section& s) { s.materials[3].FPOS = NaN; });
    expect("PROPS", 0, [](Section& s) { s.materials[0].EMOD = 0; });
    expect("PROPS", 0, [](Section& s) {
        for (Material& m : s.materials) m.MATFLAG = 0.5;
    });
    expect("POINTS", 2, [](Section& s) { s.bars[1].NODE = s.bars[0].NODE; });
    expect("POINTS", 3, [](Section& s) { s.bars[2].NODE = 1; });
    expect("POINTS", 3, [](Section& s) { s.bars[2].NODE = 13; });
    expect("POINTS", 1, [](Section& s) { s.bars[0].ELEMENT = 5; });
    expect("POINTS", 1, [](Section& s) { s.bars[0].EMODUL = 1 / 0.0; });
    expect("POINTS", 2, [](Section& s) { s.bars[1].GMODUL = NaN; });
    expect("POINTS", 1, [](Section& s) {
        s.elements[0][1] = s.elements[0][0], s.materials[0].EMOD = 1e-9, s.materials[1].EMOD = 5;
        s.materials[0].MATFLAG = 0;
    });
    expect("NODES", 11, [](Section& s) { s.z[10] = NaN; });
    // A bar that takes no part may hold anything and stand anywhere.
    expect(nullptr, 3, [](Section& s) { s.bars[1].EMODUL = 1.9, s.bars[1].NODE = 1, s.bars[1].AREA = NaN; });
    expect(nullptr, 4, [](Section& s) { s.bars[1].EMODUL = 1.9, s.bars[1].NODE = 99; });
    expect(nullptr, 5, [](Section& s) { s.bars[1].EMODUL = NaN, s.bars[1].RADIUS = 9, s.z[10] = NaN; });
    // Strengths are read by the modes that need them.
    Section s;
    add_rectangle(s, 0, 0, 1, 1, 1, 1);
    s.materials[0].FNEG = NaN;
    for (const double mode : {0.0, 0.9, 1.0, 1.9, 2.0, 10.9, 11.5, 12.0, 21.9, 22.0, -1.0, NaN}) {
        EXPECT_EQ(refusal_of(s, mode).why != nullptr, is_refused(s, mode)) << mode;
        EXPECT_EQ(is_refused(s, mode), mode == 1 || mode == 1.9 || mode == 11.5 || mode == 21.9) << mode;
    }
}

// Two pieces leave the section without stiffness in one direction and the run in order; a soft tie brings the shear
// centre of a doubly symmetric pair back to its middle.
TEST(Pieces, AreFoundAndWhatTheyDoToTheResults) {
    std::vector<std::int32_t> piece;
    Section s;
    add_rectangle(s, 0, 0, 2, 4, 8, 16);
    EXPECT_EQ(pieces_of(s, piece), 1);
    const std::int32_t first_of_second = static_cast<std::int32_t>(s.y.size()) + 1;
    add_rectangle(s, 5, 0, 7, 4, 8, 16);
    add_bar(s, 1, 1, 1, 0.01, 5);
    EXPECT_EQ(pieces_of(s, piece), 2);
    EXPECT_EQ(piece[0], 1);
    EXPECT_EQ(piece[first_of_second - 1], first_of_second);
    EXPECT_EQ(piece.back(), 0);  // the bar's node
    EXPECT_EQ(pieces_of(renumbered(s), piece), 2);
    s.bars.clear();
    const Results two = run(s);
    EXPECT_EQ(two.status, VQ_DONE);
    EXPECT_LT(std::fabs(two.slots[VQ_GAY]), 1e-9);

    Section tied = s;
    add_rectangle(tied, 2, 0, 5, 4, 12, 16, {1e-8, 1e-8, 0, 1, -1, 0});
    EXPECT_EQ(pieces_of(tied, piece), 1);
    const Results soft = run(tied);
    EXPECT_NEAR(soft.slots[VQ_SCY], 3.5, 1e-6);
    EXPECT_NEAR(soft.slots[VQ_SCZ], 2, 1e-6);
    EXPECT_NEAR(soft.slots[VQ_IWS], soft.slots[VQ_IW], 1e-6 * soft.slots[VQ_IW]);
    EXPECT_NEAR(soft.slots[VQ_GAZ], two.slots[VQ_GAZ], 1e-6);
    // A tie without shear modulus connects nothing, and its own nodes hang loose unless it has no EMOD either.
    for (Material& m : tied.materials)
        if (m.GROUP < 0) m.GMOD = 0;
    EXPECT_EQ(pieces_of(tied, piece), 2 + 11 * 17);
    for (Material& m : tied.materials)
        if (m.GROUP < 0) m.EMOD = 0;
    EXPECT_EQ(pieces_of(tied, piece), 2);
}

// Tension at +v is the unit moment about u, compression at +u that about v; torque runs counter-clockwise, so down at
// the left face of the leg along Z. The energy of the shear stresses of unit forces is the inverse of the shear
// stiffness about u and v, and that about Y and Z is the same matrix turned. Warping shear is a torque of 1. Warping
// about the centroid follows from that about the shear centre.
TEST(Guide, RelationsOfTheSectionValues) {
    const Section s = unequal_angle();
    const Results r = run(s);
    const auto& slot = r.slots;
    const double co = std::cos(slot[VQ_ALPHA]), si = std::sin(slot[VQ_ALPHA]);
    const double GAU = slot[VQ_GAU], GAV = slot[VQ_GAV], GAUV = slot[VQ_GAUV], det = GAU * GAV - GAUV * GAUV;
    EXPECT_GT(std::fabs(GAUV), 0.05 * GAU);
    EXPECT_GT(values_at(s, r, 0, 100)[9], 0);
    EXPECT_LT(values_at(s, r, 60, 0)[10], 0);
    EXPECT_LT(values_at(s, r, 0, 50)[1], 0);
    EXPECT_NEAR(slot[VQ_SCU], co * slot[VQ_SCY] + si * slot[VQ_SCZ], 1e-12);
    double energy[2][2] = {}, torque = 0, force = 0, RU = 0;
    for (const Triangle& t : triangles(s)) {
        const double* tau = &r.elemout[48 * t.e];
        const double G = s.materials[t.e].GMOD, E = s.materials[t.e].EMOD;
        for (int a = 0; a < 2; ++a)
            for (int b = 0; b < 2; ++b)
                energy[a][b] += t.A * (tau[2 + 2 * a] * tau[2 + 2 * b] + tau[3 + 2 * a] * tau[3 + 2 * b]) / G;
        torque += t.A * ((t.y - slot[VQ_SCY]) * tau[7] - (t.z - slot[VQ_SCZ]) * tau[6]);
        force += t.A * (tau[6] + tau[7]);
        const double dy = t.y - slot[VQ_YC], dz = t.z - slot[VQ_ZC];
        RU += E * t.A * (dy * dy + dz * dz) * (co * dy + si * dz) / slot[VQ_I2];
    }
    EXPECT_NEAR(energy[0][0], GAV / det, near(GAV / det));
    EXPECT_NEAR(energy[1][1], GAU / det, near(GAU / det));
    EXPECT_NEAR(energy[0][1], -GAUV / det, near(GAUV / det));
    EXPECT_NEAR(slot[VQ_GAY], co * co * GAU - 2 * co * si * GAUV + si * si * GAV, near(GAU));
    EXPECT_NEAR(slot[VQ_GAZ], si * si * GAU + 2 * co * si * GAUV + co * co * GAV, near(GAU));
    EXPECT_NEAR(torque, 1, 1e-9);
    EXPECT_NEAR(force, 0, 1e-9);
    EXPECT_NEAR(RU, slot[VQ_RU], near(RU));

    // Squares integrate the warping exactly enough for the parallel-axis rule; by the mean of a triangle it is near.
    Section squares;
    add_rectangle(squares, 0, 0, 10, 100, 4, 40, {210, 81});
    add_rectangle(squares, 10, 0, 60, 10, 20, 4, {70, 30});
    const auto about = run(squares).slots;
    const double ys = about[VQ_SCY] - about[VQ_YC], zs = about[VQ_SCZ] - about[VQ_ZC];
    const double IWS = about[VQ_IW] + zs * zs * about[VQ_IYY] + ys * ys * about[VQ_IZZ] - 2 * ys * zs * about[VQ_DYZ];
    EXPECT_NEAR(about[VQ_IWS], IWS, 2e-3 * IWS);
}

// Warping is minus the sectorial coordinate about the shear centre, which a path from the middle of the web gathers
// counter-clockwise; tension of a positive bimoment stands where the warping is positive. Channel of h = 10 between
// the middles of its flanges, 5 from the middle of the web to their tips, walls of 0.5.
TEST(Guide, WarpingAndBimomentOfAChannel) {
    Section s;
    add_rectangle(s, -0.25, -5.25, 0.25, 5.25, 2, 42);
    add_rectangle(s, 0.25, -5.25, 5, -4.75, 19, 2);
    add_rectangle(s, 0.25, 4.75, 5, 5.25, 19, 2);
    const Results r = run(s);
    const double e = -r.slots[VQ_SCY];  // the shear centre lies on the far side of the web
    EXPECT_GT(e, 1.5);
    const double omega = e * 5 - 5 * 5;  // up the web + e h / 2, out along the flange - h b / 2
    const std::int32_t tip = node_at(s, 5, 5);
    EXPECT_NEAR(r.nodeout[tip - 1], -omega, 0.02 * std::fabs(omega));
    EXPECT_NEAR(values_at(s, r, 5, 5)[11], r.nodeout[tip - 1] / r.slots[VQ_IW], 1e-12);
    EXPECT_GT(values_at(s, r, 5, 5)[11], 0);
}

// Two squares of 2 upon each other as two groups: their own moments plus the share of their distance, the stress of a
// unit moment likewise. Torsion, shear and the shear centre know no groups.
TEST(Guide, CoupledGroups) {
    for (const double share : {0.0, 0.25}) {
        Section s;
        s.groups = 2;
        add_rectangle(s, 0, 0, 2, 2, 4, 4, {1, 1, 0, share, 1});
        add_rectangle(s, 0, 2, 2, 4, 4, 4, {1, 1, 0, share, 2});
        const Results r = run(s);
        const double IZZ = 2 * (2 * 8 / 12.0) + share * 2 * 4 * 1;
        EXPECT_NEAR(r.slots[VQ_IZZ], IZZ, 1e-12);
        EXPECT_NEAR(values_at(s, r, 0, 4)[9], (1 + share) / IZZ, 1e-12);
        EXPECT_NEAR(values_at(s, r, 0, 0)[9], -(1 + share) / IZZ, 1e-12);
        EXPECT_NEAR(values_at(s, r, 0, 2)[9], (1 - share) / IZZ, 1e-12);  // joint, of the lower group

        Section whole = s;
        for (Material& m : whole.materials) m.COUPLING = 1;
        const Results w = run(whole);
        for (const int k : {VQ_EA, VQ_SCY, VQ_SCZ, VQ_GJ, VQ_GAY, VQ_GAZ, VQ_IW, VQ_WT})
            EXPECT_NEAR(r.slots[k], w.slots[k], 1e-9) << k;
    }
}

// With a GMODUL of the bars the torsional stiffness depends on the unit of length; without one it is that of the
// section without bars.
TEST(Guide, BarsAndTheirShearModulus) {
    const auto beam = [](double length, double GMODUL, bool bars) {
        Section s;
        const double f2 = length * length;
        add_rectangle(s, -150, -250, 150, 250, 12, 20, {30e3 / f2, 12.5e3 / f2});
        for (int k = 0; k < 4 && bars; ++k) {
            const double y = k % 2 ? 100 : -100, z = k / 2 ? 200 : -200;
            const std::int32_t host = (z < 0 ? 2 : 18) * 12 + (y < 0 ? 3 : 11);
            add_bar(s, y, z, host, 314, 200e3 / f2, GMODUL / f2);
        }
        return run(scaled(s, length)).slots;
    };
    const auto none = beam(1, 0, false), bare = beam(1, 0, true), metres = beam(0.001, 0, true);
    EXPECT_NEAR(bare[VQ_GJ] / none[VQ_GJ], 1, 1e-12);
    EXPECT_NEAR(metres[VQ_GJ] * 1e6 / none[VQ_GJ], 1, 1e-9);
    EXPECT_NEAR(metres[VQ_IW] * 1e12 / bare[VQ_IW], 1, 1e-9);
    const auto sheared = beam(1, 81e3, true), sheared_metres = beam(0.001, 81e3, true);
    EXPECT_GT(sheared[VQ_GJ] / none[VQ_GJ], 1.05);
    EXPECT_LT(sheared_metres[VQ_GJ] * 1e6 / none[VQ_GJ], 1.01);
    EXPECT_LT(sheared[VQ_IW] / none[VQ_IW], 0.5);
}
