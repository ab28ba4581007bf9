#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include "findings.h"
#include "section_builder.h"

namespace {

// An unsymmetric section of two materials in two groups with two bars.
Section sample() {
    Section s;
    add_rectangle(s, 0, 0, 6, 2, 3, 1, {200, 80, 0, 1, 1, 0, 1.2, 1.5, 3});
    add_rectangle(s, 0, 2, 2, 9, 1, 4, {100, 45, 0, 1, -2.5, 1, 1.4, 1.1, 5});
    add_bar(s, 1.3, 2.7, 4, 0.11, 2000, 700).BARWEIGHT = 8;
    add_bar(s, 0.9, 6.2, 6, 0.07, 1500, 600).BARWEIGHT = 9;
    return s;
}

bool is_plastic(int slot) { return slot >= VQ_PLAXIS_Y && slot <= VQ_PLMOM_U_NEG; }

}  // namespace

TEST(Entry, ModeSelectsThePlasticPasses) {
    const std::vector<double> four = run(sample(), 1).slots;
    for (const double mode : {1.0, 1.9, 11.0, 11.5, 21.0, 21.99, 0.0, 0.99, -1.0, 2.0, 10.99, 12.0, 22.0, 1e300, -1e300,
                              4294967297.0, 1.0 / 0.0, -1.0 / 0.0, std::nan("")}) {
        const bool all = mode >= 1 && mode < 2, two = (mode >= 11 && mode < 12) || (mode >= 21 && mode < 22);
        const Results r = run(sample(), mode);
        EXPECT_EQ(r.status, VQ_DONE);
        Section weak = sample();
        weak.materials[2].FNEG = NAN;
        EXPECT_EQ(run(weak, mode).status == VQ_REFUSED, all || two) << mode;
        for (int slot = 0; slot < VQ_NSLOTS; ++slot) {
            const bool left_out = is_plastic(slot) && !all && !(two && (slot - VQ_PLAXIS_Y) % 4 < 2);
            EXPECT_EQ(r.slots[slot], left_out ? 0 : four[slot]) << mode << " slot " << slot;
            EXPECT_TRUE(!is_plastic(slot) || four[slot] != 0);
        }
    }
}

// Their count is only a bound: no memory is spent on groups without an element.
TEST(Entry, GroupNumbersMayBeOfAnySize) {
    Section s = sample();
    s.materials[0].COUPLING = 0.5;
    const Results small = run(s);
    s.groups = INT32_MAX;
    for (Material& m : s.materials) m.GROUP = m.GROUP > 0 ? 7e8 : -2147483647.5;
    EXPECT_EQ(run(s).slots, small.slots);
}

TEST(Entry, ReferenceModuliComeFromTheFirstMarkedElement) {
    Section s = sample();
    s.materials[1].MATFLAG = std::nextafter(1.0, 2.0);
    s.materials[6].EMOD = 120;  // marked too, but later
    const Results r = run(s);
    EXPECT_TRUE(r.slots[VQ_EREF] == 100 && r.slots[VQ_GREF] == 45);
}

// What a run does not read may be any value and changes no bit: strengths without a plastic calculation, a RADIUS that
// reaches nothing or everything, a bar without a modulus, one that takes no part at a place that is none.
TEST(Entry, ValuesThatNothingReadsMayBeAny) {
    using Change = void (*)(Section&, double);
    const Change none = [](Section&, double) {};
    const Change left_out = [](Section& s, double) { s.bars[1].NODE = 0; };
    const Change reaches_all = [](Section& s, double x) { s.bars[1].RADIUS = x > 0 ? 1e6 : 0; };
    const struct {
        double mode;
        Change change, same;  // with any value x, and the section that it is the same as
    } cases[] = {
        {VQ_ELASTIC, [](Section& s, double x) { s.materials[2].FNEG = s.materials[5].FPOS = x; }, none},
        {VQ_PLASTIC, [](Section& s, double x) { s.materials[2].third = s.materials[3].tenth = x; }, none},
        {VQ_PLASTIC, [](Section& s, double x) { s.y.push_back(x), s.z.push_back(x); },
         [](Section& s, double) { s.y.push_back(0), s.z.push_back(0); }},
        {VQ_PLASTIC, [](Section& s, double x) { s.bars[1].RADIUS = x; }, reaches_all},
        {VQ_PLASTIC, [](Section& s, double x) { s.bars[1].AREA = x, s.bars[1].EMODUL = NAN; }, left_out},
        {VQ_PLASTIC, [](Section& s, double x) { s.bars[1].RADIUS = x, s.bars[1].EMODUL = NAN; }, left_out},
        {VQ_PLASTIC, [](Section& s, double x) { s.y.back() = x, s.bars[1].EMODUL = 1, s.bars[1].RADIUS = 5; },
         left_out},
        {VQ_PLASTIC, [](Section& s, double x) { s.z.back() = x, s.bars[1].EMODUL = 1, s.bars[1].RADIUS = 5; },
         left_out},
    };
    for (const auto& k : cases) {
        for (const double x : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
            SCOPED_TRACE(&k - cases);
            Section changed = sample(), same = sample();
            k.change(changed, x);
            k.same(same, x);
            const Results a = run(changed, k.mode), b = run(same, k.mode);
            EXPECT_TRUE(a.status == VQ_DONE && a.slots == b.slots && a.nodeout == b.nodeout && a.elemout == b.elemout)
                << x;
        }
    }
}

// A record that takes no part may hold anything and keeps it, one that does keeps the members that are not read.
TEST(Entry, PassesOverBarsThatTakeNoPart) {
    Section s = sample();
    const Results bare = run(s);
    std::memset(s.bars[0].not_read_1, 0x11, 8);
    std::memset(s.bars[0].not_read_2, 0x22, 24);
    s.bars[0].gap = 33;
    VYZTUZE_INFO off;
    std::memset(&off, 0xff, sizeof off);  // NODE -1, all reals NaN
    s.bars.push_back(off);
    for (const auto& [NODE, EMODUL] : {std::pair{0, 2000.0}, {99, 1.99}, {3, 1.99}}) {
        off.NODE = NODE, off.EMODUL = EMODUL;
        s.bars.push_back(off);
    }
    const Results r = run(s);
    EXPECT_TRUE(r.status == VQ_DONE && r.slots == bare.slots && r.nodeout == bare.nodeout && r.elemout == bare.elemout);
    for (std::size_t b = 2; b < 6; ++b) EXPECT_EQ(std::memcmp(&r.bars[b], &s.bars[b], sizeof off), 0);
    EXPECT_EQ(std::memcmp(&r.bars[0], &s.bars[0], offsetof(VYZTUZE_INFO, NELNODES)), 0);
    EXPECT_EQ(std::memcmp(&r.bars[0].gap, &s.bars[0].gap, offsetof(VYZTUZE_INFO, SHAPE) - 36), 0);
}

TEST(Entry, RefusesMissingTablesAndNegativeCounts) {
    const auto refuse = [](Host host, int missing) {
        const Host copy = host;
        call(host, missing);
        EXPECT_EQ(host.STATUS, missing == 1 ? copy.STATUS : VQ_REFUSED) << missing;
        EXPECT_TRUE(same_tables(host, copy)) << missing;
    };
    for (const int argument : {1, 2, 4, 6, 8, 9, 10, 11}) refuse(host_of(sample()), argument);
    for (std::int32_t Host::*count : {&Host::STATUS, &Host::NNODES, &Host::NELEMS, &Host::NPOINTS}) {
        for (const std::int32_t n : {-1, INT32_MIN, INT32_MAX}) {
            if (n > 0 && count == &Host::STATUS) continue;  // only a bound
            Host host = host_of(sample());
            host.*count = n;
            refuse(host, 0);
            EXPECT_EQ(check(host).at(0).TABLE, VQ_IN_CALL);
        }
    }
    Section s = sample();
    s.bars.clear();
    Host host = host_of(s);
    call(host, 8);  // no table is needed for no bars
    EXPECT_EQ(host.STATUS, VQ_DONE);
}
