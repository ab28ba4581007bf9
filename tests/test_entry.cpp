#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include "section_builder.h"

namespace {

// An unsymmetric section of two materials in two groups with two bars; `equal` gives both sides one strength.
Section sample(bool equal = false) {
    Section s;
    s.groups = 2;
    add_rectangle(s, 0, 0, 6, 2, 3, 1, {200, 80, 0, 1, 1, 0, 1.2, equal ? 1.2 : 1.5, 3});
    add_rectangle(s, 0, 2, 2, 9, 1, 4, {100, 45, 0, 1, -2.5, 1, 1.4, equal ? 1.4 : 1.1, 5});
    add_bar(s, 1.3, 2.7, 4, 0.11, 2000, 700).BARWEIGHT = 8;
    add_bar(s, 0.9, 6.2, 6, 0.07, 1500, 600).BARWEIGHT = 9;
    return s;
}

bool is_plastic(int slot) { return slot >= VQ_PLAXIS_Y && slot <= VQ_PLMOM_U_NEG; }

// Slots that need no equation system, and the powers of length and modulus in them.
struct Slot {
    int slot, length, modulus;
};
std::vector<Slot> slots_of_this_part() {
    std::vector<Slot> slots = {{VQ_EA, 2, 1},     {VQ_IYY, 4, 1},   {VQ_IZZ, 4, 1}, {VQ_DYZ, 4, 1}, {VQ_YC, 1, 0},
                               {VQ_ZC, 1, 0},     {VQ_ALPHA, 0, 0}, {VQ_I1, 4, 1},  {VQ_I2, 4, 1},  {VQ_ANET, 2, 0},
                               {VQ_WEIGHT, 2, 0}, {VQ_EREF, 0, 1},  {VQ_GREF, 0, 1}};
    for (int slot = 0; slot < VQ_NSLOTS; ++slot)
        if (is_plastic(slot)) slots.push_back({slot, (slot - VQ_PLAXIS_Y) % 12 < 4 ? 1 : 3, 0});
    return slots;
}

void expect_refused(Host host, std::ptrdiff_t what, int missing = 0) {
    const Host copy = host;
    call(host, missing);
    if (missing != 1) {
        EXPECT_EQ(host.STATUS, VQ_REFUSED) << what;
    }
    EXPECT_TRUE(same_tables(host, copy)) << what;
}

}  // namespace

TEST(Entry, ModeSelectsThePlasticPasses) {
    const std::vector<double> four = run(sample(), 1).slots;
    for (const double mode : {1.0, 1.9, 11.0, 11.5, 21.0, 21.99, 0.0, 0.99, -1.0, 2.0, 10.99, 12.0, 22.0, 1e300, -1e300,
                              4294967297.0, 1.0 / 0.0, -1.0 / 0.0, std::nan("")}) {
        const bool all = mode >= 1 && mode < 2, two = (mode >= 11 && mode < 12) || (mode >= 21 && mode < 22);
        const Results r = run(sample(), mode);
        EXPECT_EQ(r.status, VQ_DONE);
        for (int slot = 0; slot < VQ_NSLOTS; ++slot) {
            const bool left_out = is_plastic(slot) && !all && !(two && (slot - VQ_PLAXIS_Y) % 4 < 2);
            EXPECT_EQ(r.slots[slot], left_out ? 0 : four[slot]) << mode << " slot " << slot;
            EXPECT_TRUE(!is_plastic(slot) || four[slot] != 0);
        }
    }
}

TEST(Entry, InvariantUnderRenumberingSplittingMovingAndScaling) {
    Section stiff = sample();
    for (Material& m : stiff.materials) m.EMOD *= 16, m.GMOD *= 16;
    for (VYZTUZE_INFO& bar : stiff.bars) bar.EMODUL *= 16, bar.GMODUL *= 16;
    const Results r = run(sample()), equal = run(sample(true)), again = run(sample()),
                  other = run(renumbered(sample())), split = run(as_triangles(sample(true))),
                  longer = run(scaled(sample(), 8)), stiffer = run(stiff), away = run(moved(sample(), 40, -300)),
                  turned = run(moved(sample(true), 0, 0, 1.9));
    EXPECT_TRUE(r.status == VQ_DONE && again.slots == r.slots);
    for (const Slot& k : slots_of_this_part()) {
        SCOPED_TRACE(k.slot);
        const double value = r.slots[k.slot], tolerance = 1e-7 * std::max(1.0, std::fabs(value));
        EXPECT_EQ(other.slots[k.slot], value);
        EXPECT_NEAR(split.slots[k.slot], equal.slots[k.slot], tolerance);
        EXPECT_NEAR(longer.slots[k.slot] / std::pow(8, k.length), value, tolerance);
        EXPECT_NEAR(stiffer.slots[k.slot] / std::pow(16, k.modulus), value, tolerance);
        const bool y = k.slot == VQ_YC || k.slot == VQ_PLAXIS_Y || k.slot == VQ_PLAXIS_Y_NEG;
        const bool z = k.slot == VQ_ZC || k.slot == VQ_PLAXIS_Z || k.slot == VQ_PLAXIS_Z_NEG;
        EXPECT_NEAR(away.slots[k.slot], value + (y ? 40 : z ? -300 : 0), tolerance);
    }
    // Principal values belong to the section, not to its turn; the sense of the axes may change.
    for (const int slot : {VQ_EA, VQ_I1, VQ_I2, VQ_PLMOD_U, VQ_PLMOD_V, VQ_PLMOM_U, VQ_PLMOM_V})
        EXPECT_NEAR(turned.slots[slot], equal.slots[slot], 1e-7 * equal.slots[slot]);
    EXPECT_NEAR(std::sin(turned.slots[VQ_ALPHA] - equal.slots[VQ_ALPHA] - 1.9), 0, 1e-12);
}

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
            EXPECT_EQ(a.status, VQ_DONE);
            EXPECT_TRUE(a.slots == b.slots && a.nodeout == b.nodeout && a.elemout == b.elemout) << x;
        }
    }
}

// A bar takes part from 2.0 on, in the sums above it; a record that does not take part may hold anything.
TEST(Entry, PassesOverBarsThatTakeNoPart) {
    const Results bare = [] {
        Section s = sample();
        s.bars.clear();
        return run(s);
    }();
    Section s = sample();
    s.bars[0].EMODUL = 2.0;
    s.bars[1].EMODUL = 1.99;
    s.bars[1].NODE = 99;
    VYZTUZE_INFO off;
    std::memset(&off, 0xff, sizeof off);  // NODE -1, all reals NaN
    s.bars.push_back(off);
    off.NODE = 0;
    off.EMODUL = 2000;
    s.bars.push_back(off);
    const Results r = run(s);
    ASSERT_EQ(r.status, VQ_DONE);
    for (const Slot& k : slots_of_this_part()) EXPECT_EQ(r.slots[k.slot], bare.slots[k.slot]);
    for (std::size_t b = 1; b < 4; ++b) EXPECT_EQ(std::memcmp(&r.bars[b], &s.bars[b], sizeof off), 0);

    // members that are not read keep their bytes in any bar
    s = sample();
    std::memset(s.bars[0].not_read_1, 0x11, 8);
    std::memset(s.bars[0].not_read_2, 0x22, 24);
    s.bars[0].gap = 33;
    s.materials[1].GROUP = 2.99;
    const Results all = run(s);
    EXPECT_TRUE(all.status == VQ_DONE && all.slots[VQ_EA] != bare.slots[VQ_EA]);
    EXPECT_EQ(std::memcmp(&all.bars[0], &s.bars[0], offsetof(VYZTUZE_INFO, NELNODES)), 0);
    EXPECT_EQ(std::memcmp(&all.bars[0].gap, &s.bars[0].gap, offsetof(VYZTUZE_INFO, SHAPE) - 36), 0);
}

TEST(Entry, RefusesSectionsAndLeavesEveryTableAsItWas) {
    std::vector<Section> refused;
    const auto refuse = [&refused](auto change) { change(refused.emplace_back(sample())); };
    refuse([](Section& s) { s.elements[2][1] = 99; });
    refuse([](Section& s) { s.elements[2][3] = 0; });
    refuse([](Section& s) { std::swap(s.elements[1][1], s.elements[1][3]); });
    refuse([](Section& s) { s.elements.clear(), s.materials.clear(), s.bars.clear(); });
    refuse([](Section& s) { s.materials.resize(3), s.elements.resize(3), s.bars.clear(); });  // no MATFLAG of 1.0
    refuse([](Section& s) { s.materials[3].EMOD = 0; });
    refuse([](Section& s) { s.materials[3].EMOD = -100; });
    refuse([](Section& s) { s.bars[1].NODE = static_cast<std::int32_t>(s.y.size()) + 1; });
    refuse([](Section& s) { s.bars[1].ELEMENT = 0; });
    refuse([](Section& s) { s.bars[1].ELEMENT = 8; });
    refuse([](Section& s) { s.bars[0].NODE = s.bars[1].NODE; });
    refuse([](Section& s) { s.bars[0].NODE = 3, s.bars[0].EMODUL = 2; });  // on an element's node
    refuse([](Section& s) { s.bars[0].EMODUL = INFINITY; });
    for (const double group : {0.0, 0.99, -0.99, 3.0, -3.0, 1e10, -1e300})
        refuse([=](Section& s) { s.materials[4].GROUP = group; });
    for (const double x : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        for (auto column : {&Material::EMOD, &Material::GMOD, &Material::COUPLING, &Material::GROUP, &Material::MATFLAG,
                            &Material::FNEG, &Material::FPOS, &Material::UNITWEIGHT})
            refuse([=](Section& s) { s.materials[6].*column = x; });
        using Bar = VYZTUZE_INFO;
        for (auto member : {&Bar::AREA, &Bar::GMODUL, &Bar::BARWEIGHT})
            refuse([=](Section& s) { s.bars[1].*member = x; });
        for (auto y : {&Section::y, &Section::z}) {
            refuse([=](Section& s) { (s.*y)[0] = x; });
            refuse([=](Section& s) { (s.*y)[0] = x, s.materials[0].EMOD = 1e-9; });  // of an unchecked element
            refuse([=](Section& s) { (s.*y).back() = x; });                          // of a bar
        }
    }
    for (const Section& s : refused) expect_refused(host_of(s), &s - refused.data());
}

TEST(Entry, RefusesMissingTablesAndNegativeCounts) {
    for (const int argument : {1, 2, 4, 6, 8, 9, 10, 11}) expect_refused(host_of(sample()), argument, argument);
    for (std::int32_t Host::*count : {&Host::STATUS, &Host::NNODES, &Host::NELEMS, &Host::NPOINTS}) {
        for (const std::int32_t n : {-1, INT32_MIN}) {
            Host host = host_of(sample());
            host.*count = n;
            expect_refused(host, n);
        }
    }
    for (const bool enough : {false, true}) {
        Section s = sample();
        s.bars.clear();
        s.groups = enough ? INT32_MAX : 1;  // only a bound: no memory is spent on groups without an element
        Host host = host_of(s);
        call(host, 8);  // no table is needed for no bars
        EXPECT_EQ(host.STATUS, enough ? VQ_DONE : VQ_REFUSED);
    }
}

// Elements that the mesh checks do not see: soft ones of any shape, also where they still count in the plastic sums,
// and triangles without area. Such a run comes back in order, whatever its status.
TEST(Entry, ComesBackFromSectionsTheMeshChecksLetThrough) {
    const std::vector<std::int32_t> shapes[] = {{1, 1, 1, 1}, {1, 2, 1, 2}, {1, 4, 3, 2}, {1, 3, 2, 4},
                                                {1, 2, 5, 5}, {1, 5, 3, 4}, {2, 2, 3, 4}};
    std::vector<Section> sections;
    for (const double size : {1e-300, 1e-150, 1e9, 1e100, 1e155, 1e300})
        sections.insert(sections.end(), {scaled(sample(), size), scaled(as_triangles(sample()), size)});
    for (const double EMOD : {0.0, 1e-3, 0.2105, -0.1, 210000.0}) {
        for (const auto& shape : shapes) {
            Section s;
            add_rectangle(s, 0, 0, 2, 4, 1, 1, {210000, 80000, 0, 1, 1, 1, 235, 200});
            s.y.push_back(1.5);
            s.z.push_back(0);
            s.elements.push_back(shape);
            s.materials.push_back({EMOD, 70, 0, 1, 1, 1, 100, 300});
            sections.insert(sections.end(), {s, moved(s, 0, 0, 0.5)});
        }
    }
    for (const Section& s : sections) {
        const Results r = run(s);
        EXPECT_TRUE(r.status == VQ_DONE ? r.slots[VQ_EREF] != before
                                        : r.status <= VQ_OUT_OF_MEMORY && r.slots[VQ_EA] == before);
    }
}
