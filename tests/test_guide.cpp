// What the host guide tells, by real calls: how pieces are found and what they do, and how section values hang
// together.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "findings.h"
#include "section_builder.h"

namespace {

// The first nodes of the pieces after the first.
std::vector<std::size_t> pieces_of(const Section& s) {
    std::vector<std::size_t> first;
    for (const vq_finding& f : check(host_of(s)))
        if (f.REASON == VQ_LOOSE_PIECE) first.push_back(static_cast<std::size_t>(f.ROW));
    return first;
}

double near(double x) { return 1e-9 * std::fabs(x); }

}  // namespace

// Two pieces leave the section without stiffness in one direction and the run in order; a soft tie brings the shear
// centre of a doubly symmetric pair back to its middle. A tie without shear modulus connects nothing, and its own nodes
// hang loose unless it has no EMOD either.
TEST(Pieces, AreFoundAndWhatTheyDoToTheResults) {
    using Pieces = std::vector<std::size_t>;
    Section s;
    add_rectangle(s, 0, 0, 2, 4, 8, 16);
    EXPECT_EQ(pieces_of(s), Pieces{});
    const std::size_t second = s.y.size();
    add_rectangle(s, 5, 0, 7, 4, 8, 16);
    Section tied = s;
    add_bar(s, 1, 1, 1, 0.01, 5);
    EXPECT_EQ(pieces_of(s), Pieces{second + 1});  // not the bar's node
    EXPECT_EQ(pieces_of(renumbered(s)).size(), 1);
    const Results two = run(tied);
    EXPECT_EQ(two.status, VQ_DONE);
    EXPECT_LT(std::fabs(two.slots[VQ_GAY]), 1e-9);

    const struct {
        double EMOD, GMOD;
        std::size_t loose;
    } ties[] = {{1e-8, 1e-8, 0}, {1e-8, 0, 1 + 11 * 17}, {0, 0, 1}};
    for (const auto& tie : ties) {
        Section all = tied;
        add_rectangle(all, 2, 0, 5, 4, 12, 16, {tie.EMOD, tie.GMOD, 0, 1, -1, 0});
        EXPECT_EQ(pieces_of(all).size(), tie.loose);
        if (tie.loose > 0) continue;
        const Results soft = run(all);
        EXPECT_NEAR(soft.slots[VQ_SCY], 3.5, 1e-6);
        EXPECT_NEAR(soft.slots[VQ_SCZ], 2, 1e-6);
        EXPECT_NEAR(soft.slots[VQ_IWS], soft.slots[VQ_IW], 1e-6 * soft.slots[VQ_IW]);
        EXPECT_NEAR(soft.slots[VQ_GAZ], two.slots[VQ_GAZ], 1e-6);
    }
}

// The energy of the shear stresses of unit forces is the inverse of the shear stiffness about u and v, and that about Y
// and Z is the same matrix turned. Legs of 10 by 100 and 50 by 10 of two materials, in triangles of half a square of
// 2.5, whose stresses are constant.
TEST(Guide, RelationsOfTheSectionValues) {
    Section s;
    add_rectangle(s, 0, 0, 10, 100, 4, 40, {210, 81});
    add_rectangle(s, 10, 0, 60, 10, 20, 4, {70, 30});
    s = as_triangles(s);
    const Results r = run(s);
    const auto& slot = r.slots;
    const double co = std::cos(slot[VQ_ALPHA]), si = std::sin(slot[VQ_ALPHA]);
    const double GAU = slot[VQ_GAU], GAV = slot[VQ_GAV], GAUV = slot[VQ_GAUV], det = GAU * GAV - GAUV * GAUV;
    EXPECT_GT(std::fabs(GAUV), 0.05 * GAU);
    EXPECT_NEAR(slot[VQ_SCU], co * slot[VQ_SCY] + si * slot[VQ_SCZ], 1e-12);
    double energy[3] = {};
    for (std::size_t e = 0; e < s.elements.size(); ++e) {
        const double *tau = &r.elemout[48 * e], weight = 2.5 * 2.5 / 2 / s.materials[e].GMOD;
        energy[0] += weight * (tau[2] * tau[2] + tau[3] * tau[3]);
        energy[1] += weight * (tau[2] * tau[4] + tau[3] * tau[5]);
        energy[2] += weight * (tau[4] * tau[4] + tau[5] * tau[5]);
    }
    EXPECT_NEAR(energy[0], GAV / det, near(GAV / det));
    EXPECT_NEAR(energy[1], -GAUV / det, near(GAUV / det));
    EXPECT_NEAR(energy[2], GAU / det, near(GAU / det));
    EXPECT_NEAR(slot[VQ_GAY], co * co * GAU - 2 * co * si * GAUV + si * si * GAV, near(GAU));
    EXPECT_NEAR(slot[VQ_GAZ], si * si * GAU + 2 * co * si * GAUV + co * co * GAV, near(GAU));
}
