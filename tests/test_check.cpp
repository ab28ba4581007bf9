// vq_check, held against the verdict of the library.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cfenv>
#include <cmath>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "findings.h"
#include "section_builder.h"
#include "tests/memory_limit.h"

namespace {

using Found = std::array<std::int32_t, 3>;  // table, row, reason: in this order findings ascend
using List = std::vector<Found>;

bool is_error(const Found& found) { return found[2] < VQ_LOOSE_PIECE; }

// What is found. The library refuses the tables if and only if it is an error, and leaves them as they were.
List found_in(const Host& host) {
    List list;
    for (const vq_finding& f : check(host)) {
        list.push_back({f.TABLE, f.ROW, f.REASON});
        EXPECT_EQ(f.SEVERITY, is_error(list.back()) ? VQ_ERROR : VQ_WARNING);
        EXPECT_EQ(is_error(list.back()), is_error(list[0]));
    }
    EXPECT_EQ(std::adjacent_find(list.begin(), list.end(), std::greater_equal<>()), list.end());
    Host called = host;
    call(called);
    EXPECT_EQ(called.STATUS == VQ_REFUSED, !list.empty() && is_error(list[0]));
    EXPECT_TRUE(called.STATUS != VQ_REFUSED || same_tables(called, host));
    return list;
}

// Two legs of two materials in squares of 2, six elements on 14 nodes, and two bars on nodes 15 and 16.
Section good() {
    Section s;
    add_rectangle(s, 0, 0, 6, 2, 3, 1, {200, 80, 0, 1, 1, 0, 1.2, 1.5, 3});
    add_rectangle(s, 0, 2, 2, 8, 1, 3, {100, 45, 0, 1, -2.5, 1, 1.4, 1.1, 5});
    add_bar(s, 1.3, 2.7, 4, 0.11, 2000, 700);
    add_bar(s, 0.9, 4.2, 5, 0.07, 1500, 600);
    return s;
}

template <class Change>
void expect(const List& list, Change change, double mode = VQ_PLASTIC) {
    Section s = good();
    change(s);
    EXPECT_EQ(found_in(host_of(s, mode)), list) << ::testing::PrintToString(list);
}

// The corner at (6, 2) of the third element.
void move_corner(Section& s, double y, double z) {
    const std::int32_t node = s.elements[2][2];
    s.y[node - 1] = y, s.z[node - 1] = z;
}

TEST(Check, NamesWhatIsRefused) {
    const auto one = [](std::int32_t table) {
        return [=](std::int32_t row, std::int32_t reason, auto change) { expect({{table, row, reason}}, change); };
    };
    const auto nodes = one(VQ_IN_NODES), elements = one(VQ_IN_ELEMENTS), props = one(VQ_IN_PROPS);
    const auto points = one(VQ_IN_POINTS);
    elements(3, VQ_NODE_OUTSIDE, [](Section& s) { s.elements[2][1] = 99; });
    elements(3, VQ_NODE_OUTSIDE, [](Section& s) { s.elements[2][3] = 0; });
    elements(2, VQ_NODE_TWICE, [](Section& s) { s.elements[1][2] = s.elements[1][0]; });
    elements(2, VQ_CLOCKWISE, [](Section& s) { std::swap(s.elements[1][1], s.elements[1][3]); });
    elements(3, VQ_EDGE_SHORT, [](Section& s) { move_corner(s, 6, 1e-6); });
    elements(3, VQ_CORNER_BAD, [](Section& s) { move_corner(s, 4.5, 0.4); });
    for (const double EMOD : {0, -100}) props(4, VQ_REFERENCE_BAD, [=](Section& s) { s.materials[3].EMOD = EMOD; });
    for (const double group : {0.0, 0.99, -0.99, 3.0, -3.0, 1e10, -1e300})
        props(5, VQ_GROUP_OUTSIDE, [=](Section& s) { s.materials[4].GROUP = group; });
    points(2, VQ_NODE_OUTSIDE, [=](Section& s) { s.bars[1].NODE = 17; });
    for (const std::int32_t e : {0, 7}) points(2, VQ_HOST_OUTSIDE, [=](Section& s) { s.bars[1].ELEMENT = e; });
    points(2, VQ_NODE_TAKEN, [](Section& s) { s.bars[0].NODE = s.bars[1].NODE; });
    points(1, VQ_NODE_TAKEN, [](Section& s) { s.bars[0].NODE = 3, s.bars[0].EMODUL = 2; });  // an element's
    points(1, VQ_NOT_FINITE, [](Section& s) { s.bars[0].EMODUL = INFINITY; });
    points(1, VQ_NODE_TWICE, [](Section& s) {  // in an element that only its modulus keeps from refusal
        s.bars[0].ELEMENT = 1, s.elements[0][1] = s.elements[0][0], s.materials[0].EMOD = 1e-9;
    });
    for (const double x : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        for (auto column : {&Material::EMOD, &Material::GMOD, &Material::COUPLING, &Material::GROUP, &Material::MATFLAG,
                            &Material::FNEG, &Material::FPOS, &Material::UNITWEIGHT})
            props(6, VQ_NOT_FINITE, [=](Section& s) { s.materials[5].*column = x; });
        for (auto member : {&VYZTUZE_INFO::AREA, &VYZTUZE_INFO::GMODUL, &VYZTUZE_INFO::BARWEIGHT})
            points(2, VQ_NOT_FINITE, [=](Section& s) { s.bars[1].*member = x; });
        for (auto y : {&Section::y, &Section::z}) {
            nodes(1, VQ_NOT_FINITE, [=](Section& s) { (s.*y)[0] = x, s.materials[0].EMOD = 1e-9; });
            nodes(16, VQ_NOT_FINITE, [=](Section& s) { (s.*y).back() = x; });  // a bar's
        }
    }
    // Everything that is wrong, and what hangs on it: without a reference no element is soft.
    expect({{VQ_IN_NODES, 16, VQ_NOT_FINITE},
            {VQ_IN_ELEMENTS, 2, VQ_CLOCKWISE},
            {VQ_IN_ELEMENTS, 4, VQ_NODE_OUTSIDE},
            {VQ_IN_PROPS, 0, VQ_NO_REFERENCE},
            {VQ_IN_PROPS, 2, VQ_NOT_FINITE},
            {VQ_IN_PROPS, 2, VQ_GROUP_OUTSIDE},
            {VQ_IN_POINTS, 2, VQ_NOT_FINITE},
            {VQ_IN_POINTS, 2, VQ_HOST_OUTSIDE}},
           [](Section& s) {
               for (Material& m : s.materials) m.MATFLAG = 0;
               std::swap(s.elements[1][1], s.elements[1][3]), s.elements[3][0] = -1;
               s.materials[1].EMOD = 1e-9, s.materials[1].GMOD = NAN, s.materials[1].GROUP = 9;
               s.y[15] = NAN, s.bars[1].AREA = NAN, s.bars[1].ELEMENT = -1;
           });
    List small;
    for (std::int32_t e = 1; e <= 6; ++e) small.push_back({VQ_IN_ELEMENTS, e, VQ_ELEMENT_SMALL});
    expect(small, [](Section& s) { s = scaled(s, 1e-9); });
}

TEST(Check, NamesCountsAndMissingTablesAndReadsNothingThen) {
    using Reasons = std::array<std::int32_t, 4>;
    const auto found = [](std::int32_t NGROUPS, std::int32_t n, const double* PROPS, std::int32_t NPOINTS) {
        const double none = 0;
        const std::int32_t node = 0;
        vq_finding f[3] = {};
        const std::int32_t count = vq_check(NGROUPS, &none, n, &node, n, PROPS, NPOINTS, nullptr, 1, 3, f);
        EXPECT_TRUE(f[0].TABLE == (n == 0 ? VQ_IN_PROPS : VQ_IN_CALL) && f[0].ROW == 0);
        return Reasons{count, f[0].REASON, f[1].REASON, f[2].REASON};
    };
    const double some = 0;
    EXPECT_EQ(found(1, 2, nullptr, 0), (Reasons{1, VQ_NULL_TABLE}));
    EXPECT_EQ(found(-1, 2, &some, 0), (Reasons{1, VQ_NEGATIVE_COUNT}));
    EXPECT_EQ(found(1, INT32_MAX, &some, 0), (Reasons{1, VQ_COUNT_TOO_LARGE}));
    EXPECT_EQ(found(1, INT32_MAX, &some, -1), (Reasons{3, VQ_NULL_TABLE, VQ_NEGATIVE_COUNT, VQ_COUNT_TOO_LARGE}));
    EXPECT_EQ(found(1, 0, &some, 0), (Reasons{1, VQ_NO_REFERENCE}));
}

TEST(Check, WarnsOfWhatIsSeldomMeant) {
    expect({}, [](Section&) {});
    expect({}, [](Section& s) { s = as_triangles(s); });
    expect({{VQ_IN_NODES, 17, VQ_LOOSE_PIECE}}, [](Section& s) { add_rectangle(s, 20, 0, 22, 2, 1, 1); });
    // Without shear modulus an element holds no node; without any it is not there.
    expect({{VQ_IN_NODES, 13, VQ_LOOSE_PIECE}, {VQ_IN_NODES, 14, VQ_LOOSE_PIECE}},
           [](Section& s) { s.bars.clear(), s.materials[5].GMOD = 0; });
    expect({}, [](Section& s) { s.bars.clear(), s.materials[5].EMOD = s.materials[5].GMOD = 0; });
    const auto props = [](std::int32_t row, std::int32_t reason, auto change) {
        expect({{VQ_IN_PROPS, row, reason}}, change);
        if (reason != VQ_COUPLING_ZERO) expect({}, change, VQ_ELASTIC);
    };
    props(4, VQ_COUPLING_ZERO, [](Section& s) {
        for (std::size_t e = 3; e < 6; ++e) s.materials[e].COUPLING = 0;
    });
    // The first row of each group in which it turns; GROUP 2.1 and -2.5 are one. Without slip factors decide nothing.
    const auto stiffer = [](Section& s) { s.materials[1].COUPLING = 1.2; };
    const auto slipping = [&](Section& s) {
        stiffer(s), s.materials[4].GROUP = 2.1;
        s.materials[4].COUPLING = s.materials[5].COUPLING = 0.5;
    };
    for (const double mode : {VQ_ELASTIC, VQ_PLASTIC}) {
        expect({{VQ_IN_PROPS, 2, VQ_COUPLING_UNLIKE}, {VQ_IN_PROPS, 5, VQ_COUPLING_UNLIKE}}, slipping, mode);
        expect({}, stiffer, mode);
    }
    expect({{VQ_IN_PROPS, 5, VQ_STRENGTH_MIXED}, {VQ_IN_PROPS, 5, VQ_COUPLING_UNLIKE}},
           [](Section& s) { s.materials[4].FPOS = 0, s.materials[4].COUPLING = 0.5; });
    props(5, VQ_STRENGTH_MIXED, [](Section& s) { s.materials[4].FPOS = 0; });
    props(6, VQ_STRENGTH_NEGATIVE, [](Section& s) { s.materials[5].FNEG = -1; });
    props(0, VQ_STRENGTH_MISSING, [](Section& s) {
        for (Material& m : s.materials) m.FPOS = m.MATFLAG == 1 ? 0 : 1;
    });
    expect({}, [](Section& s) {  // that take no part
        s.materials[0].FPOS = 0, s.materials[4].FPOS = -1, s.materials[4].EMOD = 1.05e-4;
    });

    // The triangle on the side at Y = 6 has its third corner in the line of the others, also where that is rounded.
    const auto with_flat = [](Section& s) {
        s.elements.push_back({s.elements[2][1], s.elements[2][2], node_at(s, 6, 5), 0});
        s.elements.back()[3] = s.elements.back()[2];
        s.materials.push_back(s.materials[2]);
    };
    expect({{VQ_IN_ELEMENTS, 7, VQ_FLAT_TRIANGLE}}, with_flat);
    expect({{VQ_IN_ELEMENTS, 7, VQ_FLAT_TRIANGLE}}, [&](Section& s) { with_flat(s), s = moved(s, 1e3, 7, 2); });
    expect({}, [&](Section& s) { with_flat(s), s.materials[6].EMOD = s.materials[6].GMOD = 0; });

    // Bars within and beyond 1e-6 of the edge at Y = 2, and beyond the longest of a triangle.
    expect({{VQ_IN_POINTS, 1, VQ_BAR_OUTSIDE}}, [](Section& s) { s.bars[0].ELEMENT = 5; });
    expect({}, [](Section& s) { s.y[14] = 2 + 1e-6; });
    expect({{VQ_IN_POINTS, 1, VQ_BAR_OUTSIDE}}, [](Section& s) { s.y[14] = 2 + 4e-6; });
    expect({{VQ_IN_POINTS, 1, VQ_BAR_OUTSIDE}}, [](Section& s) { s = as_triangles(s), s.y[14] = s.z[14] - 2 - 8e-6; });
}

// All nodes count, those of elements and bars at their places, others at the origin.
TEST(Check, WarnsWhereThePlasticSearchEndsAtOnce) {
    const List middle{{VQ_IN_NODES, 0, VQ_MIDDLE_AT_100}};
    const auto ends = [&](int slot, auto change) {
        expect(middle, change);
        expect({}, change, VQ_ELASTIC);
        Section s = good();
        change(s);
        EXPECT_EQ(run(s).slots[slot], 100);
    };
    ends(VQ_PLAXIS_Y, [](Section& s) { s = moved(s, 97, 0); });
    ends(VQ_PLAXIS_Z, [](Section& s) { s = moved(s, 0, 96); });
    ends(VQ_PLAXIS_Y, [](Section& s) { add_bar(s, 200, 1, 0, 1, 1.5); });  // takes no part
    ends(VQ_PLAXIS_Y, [](Section& s) { s = moved(s, 194, 0), s.y.push_back(NAN), s.z.push_back(NAN); });
    expect({}, [](Section& s) { s = moved(s, 97 + 1e-8, 0); });
    expect({}, [](Section& s) { s = moved(s, 97, 0), s.y.push_back(NAN), s.z.push_back(NAN); });
}

// A strip of 64 x 2 is warned of where its GJ, by the library, is wrong by more than 5 per cent.
TEST(Check, WarnsOfOblongsInThinWalls) {
    const double exact = 64 * 8 / 3.0 * (1 - 0.630249 * 2 / 64);
    int warned = 0;
    for (const int layers : {1, 2, 3, 4})
        for (const int along : {8, 16, 26, 32, 36, 64, 96, 128, 256}) {
            Section s;
            add_rectangle(s, 0, 0, 64, 2, along, layers);
            const bool wrong = std::fabs(run(s).slots[VQ_GJ] / exact - 1) > 0.05;
            const List list = found_in(host_of(moved(s, 3, 4, 0.5)));
            EXPECT_TRUE(list.size() == wrong && (!wrong || list[0][2] == VQ_OBLONG)) << along << " x " << layers;
            warned += wrong;
        }
    EXPECT_TRUE(warned > 10 && warned < 30) << warned;

    // Quadrilaterals among triangles are not taken for walls of their own: 4 layers of 1.2 : 1 are 3 per cent wrong.
    Section mixed;
    add_rectangle(mixed, 0, 0, 60, 2, 100, 4);
    for (std::size_t e = 0; e < 400; e += 3) {
        const std::vector<std::int32_t> node = mixed.elements[e];
        mixed.elements[e] = {node[0], node[1], node[2], node[2]};
        mixed.elements.push_back({node[0], node[2], node[3], node[3]});
        mixed.materials.emplace_back();
    }
    EXPECT_EQ(found_in(host_of(mixed)), List{});

    // The worst wall is named, whatever lies between the walls, and nothing in a block.
    Section walls, block;
    add_rectangle(walls, 0, 0, 64, 2, 64, 2);
    add_rectangle(walls, 31, 2, 33, 34, 2, 16);
    add_rectangle(walls, 0, 34, 64, 36, 16, 2);
    add_rectangle(walls, 0, 2, 28, 30, 28, 7, {1e-5, 1e-5});
    const std::int32_t meeting = node_at(walls, 32, 34);  // the one node in which web and coarse flange meet
    EXPECT_EQ(found_in(host_of(walls)),
              (List{{VQ_IN_NODES, meeting, VQ_HINGE}, {VQ_IN_ELEMENTS, 128 + 32 + 1, VQ_OBLONG}}));
    add_rectangle(block, 0, 0, 8, 8, 2, 16);
    EXPECT_EQ(found_in(host_of(block)), List{});

    // One wall of a channel makes GJ wrong by a quarter, and does little to the same walls in a box.
    Section box;
    add_rectangle(box, 0, 0, 40, 2, 40, 2);
    add_rectangle(box, 0, 2, 2, 38, 2, 36);
    add_rectangle(box, 38, 2, 40, 38, 2, 18);
    EXPECT_EQ(found_in(host_of(box)), (List{{VQ_IN_ELEMENTS, 80 + 72 + 1, VQ_OBLONG}}));
    add_rectangle(box, 0, 38, 40, 40, 40, 2);
    EXPECT_EQ(found_in(host_of(box)), List{});
}

// Elements spoiled at random, behind a good one: each row alone is refused if and only if it is named.
TEST(Check, NamesEveryElementThatTheLibraryRefuses) {
    meshes::Random random{7};
    int refused = 0, rows = 0;
    for (int n = 0; n < 300; ++n) {
        Section s;
        add_rectangle(s, 10, 0, 11, 1, 1, 1);
        add_rectangle(s, 0, 0, 2, 2, 2, 2);
        if (n % 2 == 0) s = as_triangles(s);
        for (std::size_t i = 4; i < s.y.size(); ++i) {
            if (below(random, 4) == 0) s.y[i] += uniform(random, -1.2, 1.2);
            if (below(random, 8) == 0) s.z[i] = std::round(s.z[i] / 2) + 2e-6;
        }
        for (std::size_t e = 2; e < s.elements.size(); ++e) {
            std::vector<std::int32_t>& node = s.elements[e];
            if (below(random, 6) == 0) node[below(random, 4)] = 4 + below(random, 11);  // 14 is none
            if (below(random, 12) == 0) std::swap(node[0], node[1]);
            if (below(random, 8) == 0) s.materials[e].EMOD = 1.009e-6;
        }
        std::set<std::int32_t> named;
        for (const Found& found : found_in(host_of(s)))
            if (is_error(found)) named.insert(found[1]);
        Section alone = s;
        for (std::size_t e = 2; e < s.elements.size(); ++e, ++rows) {
            alone.elements = {s.elements[0], s.elements[e]}, alone.materials = {s.materials[0], s.materials[e]};
            const bool bad = run(alone).status == VQ_REFUSED;
            ASSERT_EQ(bad, named.count(static_cast<std::int32_t>(e) + 1) == 1) << n << " " << e;
            refused += bad;
        }
    }
    EXPECT_TRUE(refused > rows / 10 && refused < rows * 9 / 10) << refused;
}

// Any value anywhere: found_in holds the verdict against the library's.
TEST(Check, RefusesRandomTablesAsTheLibraryDoes) {
    meshes::Random random{11};
    const double reals[] = {0, -0.0, 1, -1, 0.5, 2, 1e-9, 1e-300, 1e300, -1e300, 3e9, NAN, INFINITY, -INFINITY};
    const std::int32_t numbers[] = {0, 1, 2, 3, 6, 14, 15, 16, 17, -1, INT32_MAX, INT32_MIN};
    std::int32_t Host::*const counts[] = {&Host::NNODES, &Host::NELEMS, &Host::NPOINTS};
    const auto any = [&](const auto& values) { return values[below(random, std::size(values))]; };
    const auto row = [&](auto& table) -> auto& {
        return table[below(random, static_cast<std::int32_t>(table.size()))];
    };
    int refused = 0;
    for (int n = 0; n < 4000; ++n) {
        Host host = host_of(n % 2 == 0 ? good() : as_triangles(good()), any(reals));
        for (int changes = below(random, 4); changes >= 0; --changes) {
            VYZTUZE_INFO& bar = host.POINTS[GUARD + below(random, 2)];
            const int kind = below(random, 9);
            if (kind < 3) row(kind == 0 ? host.NODES : host.PROPS) = any(reals);
            if (kind == 3) row(host.ELEMENTS) = any(numbers);
            if (kind == 4) (below(random, 2) == 0 ? bar.NODE : bar.ELEMENT) = any(numbers);
            if (kind == 5) (below(random, 2) == 0 ? bar.EMODUL : bar.AREA) = any(reals);
            if (kind == 6) host.STATUS = any(numbers);
            if (kind == 7) --(host.*any(counts));
        }
        const List list = found_in(host);
        refused += !list.empty() && is_error(list[0]);
    }
    EXPECT_TRUE(refused > 1000 && refused < 3500) << refused;
}

// Memory that ends anywhere, any rounding, traps: the first findings or -1, nothing left, errno and modes as before.
TEST(Check, LeavesTheThreadAsItWas) {
    Section s = good();
    add_rectangle(s, 20, 0, 30, 2, 2, 1, s.materials[0]);  // apart, and oblong
    const Host host = host_of(moved(s, 0.1, 0.3, 0.7));
    const auto state = [] { return std::array{std::fegetround(), fegetexcept(), std::fetestexcept(FE_ALL_EXCEPT)}; };
    void (*const modes[])() = {[] {}, [] { std::fesetround(FE_UPWARD), std::feraiseexcept(FE_OVERFLOW); },
                               [] { feenableexcept(FE_ALL_EXCEPT); }};
    for (const auto enter : modes) {
        std::int32_t count = -1;
        long allocations = 0;
        for (vq_finding first[2] = {}; count < 0; ++allocations) {
            const long live = live_blocks();
            enter();
            const auto entered = state();
            errno = 77;
            limit_allocations(allocations);
            count = vq_check(host.STATUS, host.NODES.data(), host.NNODES, host.ELEMENTS.data(), host.NELEMS,
                             host.PROPS.data(), host.NPOINTS, &host.POINTS[GUARD], NAN, 1, first);
            limit_allocations(-1);
            const int error = errno;
            const auto left = state();
            std::fesetenv(FE_DFL_ENV);
            EXPECT_TRUE(error == 77 && left == entered && live_blocks() == live) << allocations;
            EXPECT_TRUE(count < 0 || (first[0].REASON == VQ_LOOSE_PIECE && first[1].REASON == 0));
        }
        EXPECT_EQ(count, 2);
        EXPECT_GT(allocations, 5);
    }
}

TEST(Check, EveryReasonHasItsSentence) {
    std::set<std::string> sentences;
    for (std::int32_t reason = 0; reason <= VQ_COUPLING_UNLIKE; ++reason) sentences.insert(vq_reason(reason));
    EXPECT_EQ(sentences.size(), VQ_COUPLING_UNLIKE + 1);
    EXPECT_EQ(sentences.count(vq_reason(INT32_MIN)), 1);
}

}  // namespace
