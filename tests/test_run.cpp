#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "element/suportbase.h"
#include "section_builder.h"

using namespace SUPORTBASE;

namespace {

// An angle of three materials on a warped mesh of quadrilaterals and triangles, without any symmetry. With `coupled`
// its two legs are groups that share a part of the bending about the common centre.
Section angle_section(bool coupled = false) {
    Section s;
    const double share = coupled ? 0.4 : 1;
    add_rectangle(s, 0, 0, 2, 6, 3, 10, {30, 12, 0, share, 1, 1, 1, 1, 3});
    add_rectangle(s, 2, 0, 7, 1.2, 7, 2, {50, 9, 0, coupled ? 0.7 : 1, -2, 0});
    for (std::size_t e = 20; e < 30; ++e) s.materials[e].EMOD = 10, s.materials[e].GMOD = 7;
    for (std::size_t i = 0; i < s.y.size(); ++i) {
        const double y = s.y[i], z = s.z[i];
        s.y[i] += 0.1 * std::sin(2 * z + y) + 0.02 * std::sin(40.0 * i) + 5;
        s.z[i] += 0.1 * std::cos(y) + 0.02 * std::cos(50.0 * i) - 3;
    }
    for (std::size_t e = 0; e < 44; e += 3) {
        const auto n = s.elements[e];
        s.elements[e] = {n[1], n[2], n[3], n[3]};
        s.elements.push_back({n[0], n[1], n[3], n[3]});
        s.materials.push_back(s.materials[e]);
    }
    return s;
}

// The same with two bars in quadrilaterals and one in a triangle, about the middle of their hosts.
Section reinforced_angle() {
    Section s = angle_section();
    for (const std::int32_t host : {2, 7, 15}) {
        const auto n = s.elements[host - 1];
        const auto middle = [&](const std::vector<double>& x) { return (x[n[0] - 1] + x[n[1] - 1] + x[n[2] - 1]) / 3; };
        add_bar(s, middle(s.y), middle(s.z), host, 0.05, host == 2 ? 2.0 : 200, 40);
    }
    return s;
}

// Points of the system's own integrals: in a quadrilateral stress and determinant are taken diagonally opposite the
// position, a triangle has its centroid. `exact`: of a rule that integrates any product of two linear fields.
struct Point {
    std::size_t e;
    Real<4> N, NS;  // weights of the corners in a nodal field, in the field of corner stresses
    double y, z, weight;
};
std::vector<Point> points(const Section& s, bool exact) {
    std::vector<Point> all;
    for (std::size_t e = 0; e < s.elements.size(); ++e) {
        const auto& n = s.elements[e];
        const bool triangle = n[2] == n[3];
        Real<4, 2> XYE;
        for (int i = 1; i <= 4; ++i) XYE(i, 1) = s.y[n[i - 1] - 1], XYE(i, 2) = s.z[n[i - 1] - 1];
        for (int p = 1; p <= (!triangle ? 4 : exact ? 3 : 1); ++p) {
            Point at{e, {}, {}, 0, 0, 0};
            Real<4> dNdy, dNdz;
            Real<2, 2> INVJ;
            const double r = GAUSSR(p), t = GAUSSS(p), side = exact ? -1 : 1;
            GETBASEN(r, t, at.N);
            GETBASEN(-r, -t, at.NS);
            BILINGEOM(XYE, side * r, side * t, dNdy, dNdz, at.weight, INVJ);
            if (triangle) {
                at.NS = at.N = {{1 / 3.0, 1 / 3.0, 1 / 3.0, 0}};
                if (exact) at.N = {{p == 1 ? 0 : 0.5, p == 2 ? 0 : 0.5, p == 3 ? 0 : 0.5, 0}};
                at.weight = TRIANGLEAREA({{XYE(1, 1), XYE(2, 1), XYE(3, 1), XYE(1, 2), XYE(2, 2), XYE(3, 2)}});
                if (exact) at.weight /= 3;
            }
            at.y = inner(at.N, XYE, 1), at.z = inner(at.N, XYE, 2);
            all.push_back(at);
        }
    }
    return all;
}

// Column k of NODEOUT at a node and at a point; one of the twelve values of a corner in ELEMOUT.
double field(const Section& s, const Results& r, std::int32_t node, int k) {
    return r.nodeout[(k - 1) * s.y.size() + node - 1];
}
double field(const Section& s, const Results& r, const Point& at, int k) {
    double w = 0;
    for (int i = 0; i < 4; ++i) w += at.N.data[i] * field(s, r, s.elements[at.e][i], k);
    return w;
}
double stress(const Results& r, const Point& at, const Real<4>& N, int position) {
    double t = 0;
    for (int c = 0; c < 4; ++c) t += N.data[c] * r.elemout[48 * at.e + 12 * c + position];
    return t;
}

Section channel() {
    Section s;
    add_rectangle(s, 0, 0, 0.5, 10.5, 2, 42);
    add_rectangle(s, 0.5, 0, 5.25, 0.5, 19, 2);
    add_rectangle(s, 0.5, 10, 5.25, 10.5, 19, 2);
    return s;
}

void expect_slots(const Results& r, const std::vector<int>& slots, double tolerance,
                  const std::vector<double>& figures) {
    EXPECT_EQ(r.status, VQ_DONE);
    for (std::size_t k = 0; k < slots.size(); ++k) EXPECT_NEAR(r.slots[slots[k]], figures[k], tolerance) << slots[k];
}

}  // namespace

// Tolerances are a little more than half a unit of the last digit given.
TEST(Run, FiguresOfChannelAndRectangles) {
    expect_slots(run(channel()), {VQ_YC, VQ_ZC, VQ_SCY, VQ_SCZ, VQ_GJ, VQ_GAY, VQ_GAZ, VQ_IW, VQ_IWS}, 0.6e-6,
                 {1.496875, 5.25, -1.605084, 5.25, 0.837302, 3.253781, 4.285097, 460.911546, 2068.612147});
    Section oblong, one;
    add_rectangle(oblong, -2, -1, 2, 1, 8, 8);
    // Position and gradient taken at one point would give 7.42351. About two axes of symmetry IWS is IW.
    expect_slots(run(oblong), {VQ_GJ, VQ_IW, VQ_IWS}, 0.6e-5, {7.65249, 1.24006, 1.24006});
    add_rectangle(one, -1, -0.5, 1, 0.5, 1, 1, {3, 2});
    const Results r = run(one);
    expect_slots(r, {VQ_GJ, VQ_GAY, VQ_GAZ, VQ_GAU, VQ_GAV, VQ_GAUV, VQ_WT, VQ_IW, VQ_SCY, VQ_SCZ}, 1e-14,
                 {16 / 15.0, 4, 4, 4, 4, 0, 1 / std::sqrt(2.8125), 0.06, 0, 0});
    const double tau[] = {-1.5, 0.75, -1.5, -0.75, 1.5, -0.75, 1.5, 0.75}, forces[] = {0, 0.5, -0.5, 0};  // u, v: z, -y
    for (int c = 0; c < 4; ++c) {
        for (int k = 0; k < 2; ++k) EXPECT_NEAR(r.elemout[12 * c + k], tau[2 * c + k], 1e-14);
        for (int k = 0; k < 4; ++k) EXPECT_NEAR(r.elemout[12 * c + 2 + k], forces[k], 1e-14);
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(r.nodeout[4 * k + c], k > 0 ? 0 : c % 2 == 0 ? 0.3 : -0.3, 1e-14);
    }
}

// Stresses of unit loads have the unit loads as resultants, whatever the mesh.
TEST(Run, StressesBalanceTheUnitLoads) {
    for (const bool coupled : {false, true}) {
        const Section s = angle_section(coupled);
        const Results r = run(s);
        const double co = std::cos(r.slots[VQ_ALPHA]), si = std::sin(r.slots[VQ_ALPHA]);
        double shear[4][3] = {}, axial[3][3] = {}, bimoment = 0;  // load case; torque or N, along or about u, v
        for (const Point& at : points(s, false)) {
            const double y = at.y - r.slots[VQ_SCY], z = at.z - r.slots[VQ_SCZ];
            for (int q = 0; q < 4; ++q) {
                const double ty = at.weight * stress(r, at, at.NS, 2 * q),
                             tz = at.weight * stress(r, at, at.NS, 2 * q + 1);
                shear[q][0] += y * tz - z * ty;
                shear[q][1] += co * ty + si * tz;
                shear[q][2] += co * tz - si * ty;
            }
            bimoment += at.weight * field(s, r, at, 1) * stress(r, at, at.N, 11);
        }
        for (const Point& at : points(s, true)) {
            const double y = at.y - r.slots[VQ_YC], z = at.z - r.slots[VQ_ZC];
            for (int q = 0; q < 3; ++q) {
                const double sigma = at.weight * stress(r, at, at.N, 8 + q);
                axial[q][0] += sigma;
                axial[q][1] += sigma * (co * z - si * y);
                axial[q][2] -= sigma * (co * y + si * z);
            }
        }
        for (int k = 0; k < 3; ++k) {
            for (int q = 0; q < 4; ++q) EXPECT_NEAR(shear[q][k], q % 3 == k, 1e-10) << coupled << q << k;
            for (int q = 0; q < 3; ++q)  // the normal force of a coupled section acts in the groups' centres
                EXPECT_TRUE((coupled && q == 0) || std::fabs(axial[q][k] - (q == k)) < 1e-10) << coupled << q << k;
        }
        EXPECT_NEAR(axial[0][0], 1, 1e-10);
        EXPECT_NEAR(bimoment, 1, 1e-12);
        for (std::size_t e = 0; e < s.elements.size(); ++e)  // a triangle's fourth corner is its third
            for (int k = 0; k < 12 && s.elements[e][2] == s.elements[e][3]; ++k)
                EXPECT_EQ(r.elemout[48 * e + 36 + k], r.elemout[48 * e + 24 + k]);
    }
}

// IW, WR1 and WR2 from the fields that the host receives.
TEST(Run, WarpingSumsOverElementsAndBars) {
    for (const Section& s : {angle_section(true), reinforced_angle()}) {
        const Results r = run(s);
        const double YC = r.slots[VQ_YC], ZC = r.slots[VQ_ZC], s1 = ZC - r.slots[VQ_SCZ], s2 = r.slots[VQ_SCY] - YC;
        const double co = std::cos(r.slots[VQ_ALPHA]), si = std::sin(r.slots[VQ_ALPHA]);
        double IW = 0, S1 = 0, S2 = 0;
        const auto add_skew = [&](double w, std::int32_t node) {  // S1 from before the twist was moved by two shears
            const double wu = field(s, r, node, 2), wv = field(s, r, node, 3);
            S1 += w * (field(s, r, node, 1) + s1 * (co * wu - si * wv) + s2 * (si * wu + co * wv));
            S2 += w * field(s, r, node, 1);
        };
        for (const Point& at : points(s, false))
            IW += at.weight * s.materials[at.e].EMOD * std::pow(field(s, r, at, 1), 2);
        std::vector<double> A(s.elements.size()), Y(A.size()), Z(A.size());
        for (const Point& at : points(s, true))
            A[at.e] += at.weight, Y[at.e] += at.weight * (at.y - YC), Z[at.e] += at.weight * (at.z - ZC);
        for (std::size_t e = 0; e < A.size(); ++e) {
            const int n = s.elements[e][2] == s.elements[e][3] ? 3 : 4;
            const double mean = n == 3 ? 0.33333f : 0.25;  // 1/3 would be 1e-5 off
            for (int i = 0; i < n; ++i)
                add_skew(mean * s.materials[e].EMOD * (Y[e] * Y[e] + Z[e] * Z[e]) / A[e], s.elements[e][i]);
        }
        for (const VYZTUZE_INFO& bar : r.bars) {
            const double y = s.y[bar.NODE - 1] - YC, z = s.z[bar.NODE - 1] - ZC, w = bar.AREA * bar.EMODUL;
            IW += w * std::pow(field(s, r, bar.NODE, 1), 2);
            add_skew(w * (y * y + z * z), bar.NODE);
        }
        EXPECT_NEAR(r.slots[VQ_IW], IW, 1e-12 * IW);
        EXPECT_NEAR(r.slots[VQ_WR1], S1 / IW, 1e-9 * std::fabs(S1 / IW));
        EXPECT_NEAR(r.slots[VQ_WR2] * r.slots[VQ_IWS], S2, 1e-9 * std::fabs(S2));
    }
}

// The same section in other tables. Nothing here knows the frame: 1e-9 is for sums in another order.
TEST(Run, FrameAndNumberingPlayNoPart) {
    const Section s = angle_section();
    const auto reordered = [&](std::vector<int> quad, std::vector<int> triangle) {
        Section other = s;
        for (std::size_t e = 0; e < s.elements.size(); ++e)
            for (int i = 0; i < 4; ++i)
                other.elements[e][i] = s.elements[e][s.elements[e][2] == s.elements[e][3] ? triangle[i] : quad[i]];
        return other;
    };
    Section mirrored = reordered({0, 3, 2, 1}, {0, 2, 1, 1});
    for (double& y : mirrored.y) y = -y;
    const struct {
        Section section;
        double angle, dy, dz, sign;
    } others[] = {{renumbered(s), 0, 0, 0, 1},
                  {reordered({1, 2, 3, 0}, {1, 2, 0, 0}), 0, 0, 0, 1},
                  {mirrored, 0, 0, 0, -1},
                  {moved(s, 300, -70), 0, 300, -70, 1},
                  {moved(s, 3, 4, 0.4), 0.4, 3, 4, 1}};
    const Results a = run(s);
    for (const auto& other : others) {
        const Results b = run(other.section);
        const double c = std::cos(other.angle), n = std::sin(other.angle);
        for (const auto& [Y, Z] : {std::pair{VQ_SCY, VQ_SCZ}, {VQ_YC, VQ_ZC}}) {
            const double y = other.sign * a.slots[Y], z = a.slots[Z];
            expect_slots(b, {Y, Z}, 1e-9, {c * y - n * z + other.dy, n * y + c * z + other.dz});
        }
        EXPECT_NEAR(b.slots[VQ_WR2], other.sign * a.slots[VQ_WR2], 1e-9);
        EXPECT_NEAR(std::sin(b.slots[VQ_ALPHA] - other.sign * a.slots[VQ_ALPHA] - other.angle), 0, 1e-9);
        for (const int slot : {VQ_EA, VQ_I1, VQ_I2, VQ_GJ, VQ_IW, VQ_IWS, VQ_GAU, VQ_GAV, VQ_GAUV, VQ_WT, VQ_RU, VQ_RV,
                               VQ_WR1, VQ_PLMOD_U, VQ_PLMOD_V, VQ_PLMOM_U, VQ_PLMOM_V_NEG})
            EXPECT_NEAR(std::fabs(b.slots[slot]), std::fabs(a.slots[slot]), 1e-9 * std::fabs(a.slots[slot])) << slot;
        EXPECT_NEAR(b.slots[VQ_GAY] + b.slots[VQ_GAZ], a.slots[VQ_GAY] + a.slots[VQ_GAZ], 1e-9 * a.slots[VQ_GAY]);
    }
}

// Lengths by 4, E by 3, G by 5: the exponents of the three in each result.
TEST(Run, ScalingLaws) {
    Section s = angle_section();
    for (Material& m : s.materials) m.FPOS = 1.5;
    Section larger = scaled(s, 4);
    for (Material& m : larger.materials) m.EMOD *= 3, m.GMOD *= 5;
    const Results a = run(s), b = run(larger);
    const auto expect_scaled = [](double x, double y, int length, int E, int G, double rounding = 1e-13) {
        EXPECT_NEAR(y, x * std::pow(4, length) * std::pow(3, E) * std::pow(5, G), 1e-9 * std::fabs(y) + rounding);
    };
    const int laws[][4] = {
        {VQ_ALPHA, 0, 0, 0},       {VQ_WR1, 0, 0, 0},      {VQ_WR2, 0, 0, 0},          {VQ_EREF, 0, 1, 0},
        {VQ_GREF, 0, 0, 1},        {VQ_YC, 1, 0, 0},       {VQ_SCY, 1, 0, 0},          {VQ_SCU, 1, 0, 0},
        {VQ_RU, 1, 0, 0},          {VQ_RV, 1, 0, 0},       {VQ_RY, 1, 0, 0},           {VQ_RZ, 1, 0, 0},
        {VQ_COUP1, 1, 0, 0},       {VQ_PLAXIS_Z, 1, 0, 0}, {VQ_PLAXIS_U_NEG, 1, 0, 0}, {VQ_ANET, 2, 0, 0},
        {VQ_WEIGHT, 2, 0, 0},      {VQ_EA, 2, 1, 0},       {VQ_GAY, 2, 0, 1},          {VQ_GAZ, 2, 0, 1},
        {VQ_GAUV, 2, 0, 1},        {VQ_WT, 3, 0, 0},       {VQ_PLMOD_Z, 3, 0, 0},      {VQ_PLMOD_V_NEG, 3, 0, 0},
        {VQ_PLMOM_Y_NEG, 3, 0, 0}, {VQ_PLMOM_U, 3, 0, 0},  {VQ_IYY, 4, 1, 0},          {VQ_IZZ, 4, 1, 0},
        {VQ_DYZ, 4, 1, 0},         {VQ_I1, 4, 1, 0},       {VQ_I2, 4, 1, 0},           {VQ_GJ, 4, 0, 1},
        {VQ_IW, 6, 1, 0},          {VQ_IWS, 6, 1, 0}};
    for (const auto& [slot, length, E, G] : laws) {
        const bool searched = slot >= VQ_PLAXIS_Y && slot <= VQ_PLMOM_U_NEG;  // lines are found to some 1e-9
        EXPECT_NE(a.slots[slot], 0) << slot;
        expect_scaled(a.slots[slot], b.slots[slot], length, E, G, searched ? 1e-8 : 1e-13);
    }
    const int lengths[] = {-3, -3, -2, -2, -2, -2, -3, -3, -2, -3, -3, -4};  // cases of TAU in pairs, then of SIGMA
    for (std::size_t k = 0; k < a.elemout.size(); ++k) expect_scaled(a.elemout[k], b.elemout[k], lengths[k % 12], 0, 0);
    for (std::size_t i = 0; i < a.nodeout.size(); ++i)
        expect_scaled(a.nodeout[i], b.nodeout[i], i < s.y.size() ? 2 : 1, 0, 0);
}

// Below 0.0001 the sum of the warping about the shear centre counts as none.
TEST(Run, SkewCoefficientsOfWarpingVanishBelowTheLimit) {
    Section s = angle_section();
    const Results r = run(s);
    const double S2 = r.slots[VQ_WR2] * r.slots[VQ_IWS];
    for (const double share : {1.01, 0.99}) {
        Section weak = s;
        for (Material& m : weak.materials) m.EMOD *= share * 1e-4 / std::fabs(S2);
        const Results w = run(weak);
        EXPECT_NEAR(w.slots[VQ_WR1], share > 1 ? r.slots[VQ_WR1] : 0, 1e-9);
        EXPECT_NEAR(w.slots[VQ_WR2], share > 1 ? r.slots[VQ_WR2] : 0, 1e-9);
    }
}
