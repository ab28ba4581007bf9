#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "examples/check_tables.h"
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

// What the routine that hosts may copy finds. Its work table has no byte more than it asks for.
refusal refusal_of(const Host& host) {
    std::vector<unsigned char> taken(host.NODES.size() / 2 + 1, 0xff);
    const refusal fault =
        find_refusal(host.STATUS, host.NODES.data(), host.NNODES, host.ELEMENTS.data(), host.NELEMS, host.PROPS.data(),
                     host.NPOINTS, &host.POINTS[GUARD], host.RESULT[GUARD + VQ_MODE_SLOT], taken.data());
    EXPECT_EQ(taken.back(), 0xff);
    return fault;
}

// Whether the library refuses the section. A refusal leaves every table as it was, and is found before the call.
bool is_refused(const Section& s, double mode = VQ_PLASTIC) {
    const Host host = host_of(s, mode);
    Host called = host;
    call(called);
    const bool refused = called.STATUS == VQ_REFUSED;
    EXPECT_EQ(refusal_of(host).why != nullptr, refused);
    EXPECT_TRUE(!refused || same_tables(called, host));
    return refused;
}

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
        EXPECT_EQ(is_refused(weak, mode), all || two) << mode;
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
            EXPECT_FALSE(is_refused(changed, k.mode));
            EXPECT_TRUE(a.slots == b.slots && a.nodeout == b.nodeout && a.elemout == b.elemout) << x;
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
    EXPECT_FALSE(is_refused(s));
    EXPECT_TRUE(r.slots == bare.slots && r.nodeout == bare.nodeout && r.elemout == bare.elemout);
    for (std::size_t b = 2; b < 6; ++b) EXPECT_EQ(std::memcmp(&r.bars[b], &s.bars[b], sizeof off), 0);
    EXPECT_EQ(std::memcmp(&r.bars[0], &s.bars[0], offsetof(VYZTUZE_INFO, NELNODES)), 0);
    EXPECT_EQ(std::memcmp(&r.bars[0].gap, &s.bars[0].gap, offsetof(VYZTUZE_INFO, SHAPE) - 36), 0);
}

// Each fault is named with its table and row; row 0 is the table as a whole.
TEST(Entry, RefusesSectionsAndLeavesEveryTableAsItWas) {
    const auto nodes = static_cast<std::int32_t>(sample().y.size());
    const auto refuse = [](const char* table, std::int32_t row, auto change) {
        Section s = sample();
        change(s);
        const refusal fault = refusal_of(host_of(s));
        EXPECT_TRUE(is_refused(s) && fault.why && std::string(fault.table) == table && fault.row == row)
            << table << " " << row << (fault.why ? fault.why : " taken");
    };
    refuse("ELEMENTS", 3, [](Section& s) { s.elements[2][1] = 99; });
    refuse("ELEMENTS", 3, [](Section& s) { s.elements[2][3] = 0; });
    refuse("ELEMENTS", 2, [](Section& s) { std::swap(s.elements[1][1], s.elements[1][3]); });
    refuse("call", 0, [](Section& s) { s.elements.clear(), s.materials.clear(), s.bars.clear(); });
    refuse("PROPS", 0, [](Section& s) { s.materials.resize(3), s.elements.resize(3), s.bars.clear(); });  // no 1.0
    for (const double EMOD : {0, -100}) refuse("PROPS", 0, [=](Section& s) { s.materials[3].EMOD = EMOD; });
    for (const double group : {0.0, 0.99, -0.99, 3.0, -3.0, 1e10, -1e300})
        refuse("PROPS", 5, [=](Section& s) { s.materials[4].GROUP = group; });
    refuse("POINTS", 2, [=](Section& s) { s.bars[1].NODE = nodes + 1; });
    for (const std::int32_t e : {0, 8}) refuse("POINTS", 2, [=](Section& s) { s.bars[1].ELEMENT = e; });
    refuse("POINTS", 2, [](Section& s) { s.bars[0].NODE = s.bars[1].NODE; });
    refuse("POINTS", 1, [](Section& s) { s.bars[0].NODE = 3, s.bars[0].EMODUL = 2; });  // on an element's node
    refuse("POINTS", 1, [](Section& s) { s.bars[0].EMODUL = INFINITY; });
    refuse("POINTS", 1, [](Section& s) {  // in an element that only its modulus keeps from refusal
        s.bars[0].ELEMENT = 1, s.elements[0][1] = s.elements[0][0], s.materials[0].EMOD = 1e-9;
    });
    for (const double x : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        for (auto column : {&Material::EMOD, &Material::GMOD, &Material::COUPLING, &Material::GROUP, &Material::MATFLAG,
                            &Material::FNEG, &Material::FPOS, &Material::UNITWEIGHT})
            refuse("PROPS", 7, [=](Section& s) { s.materials[6].*column = x; });
        using Bar = VYZTUZE_INFO;
        for (auto member : {&Bar::AREA, &Bar::GMODUL, &Bar::BARWEIGHT})
            refuse("POINTS", 2, [=](Section& s) { s.bars[1].*member = x; });
        for (auto y : {&Section::y, &Section::z}) {
            refuse("NODES", 1, [=](Section& s) { (s.*y)[0] = x; });
            refuse("NODES", 1, [=](Section& s) { (s.*y)[0] = x, s.materials[0].EMOD = 1e-9; });  // not checked
            refuse("NODES", nodes, [=](Section& s) { (s.*y).back() = x; });                      // of a bar
        }
    }
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
            EXPECT_STREQ(refusal_of(host).table, "call");
        }
    }
    Section s = sample();
    s.bars.clear();
    Host host = host_of(s);
    call(host, 8);  // no table is needed for no bars
    EXPECT_EQ(host.STATUS, VQ_DONE);
}

// Five elements at random over a lattice of nodes, behind a good one. The library takes the table down to the row that
// is named, and no longer with it.
TEST(CheckTables, NamesTheElementThatTheLibraryRefuses) {
    meshes::Random random{7};
    int refused = 0;
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
        if (below(random, 30) == 0) s.y[5 + below(random, 8)] = NAN;

        const refusal fault = refusal_of(host_of(s));
        if (!is_refused(s)) continue;
        ++refused;
        if (std::string(fault.table) == "NODES") {
            EXPECT_TRUE(std::isnan(s.y[fault.row - 1])) << n;
            continue;
        }
        for (const bool with : {true, false}) {
            s.elements.resize(static_cast<std::size_t>(fault.row - !with));
            s.materials.resize(s.elements.size());
            ASSERT_EQ(is_refused(s), with) << n << fault.why;
        }
    }
    EXPECT_TRUE(refused > 500 && refused < 1400) << refused;
}
