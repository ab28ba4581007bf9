// Fuzz target of the whole call, of the look at its tables, and of the call on several levels. An input is a small
// recipe: a structured mesh, then edits to it, of which each takes a few bytes. Most recipes stay near to a mesh that
// is accepted, so that all stages of a run are reached.
#include <malloc.h>

#include <array>
#include <vector>

#include "api/velquor.h"
#include "fuzz/input.h"
#include "levels/velquor_levels.h"

namespace {

using namespace fuzz;

constexpr std::size_t MAXNODES = 150, MAXELEMS = 120, MAXBARS = 40;
constexpr int MAXEDITS = 100;

struct Section {
    std::vector<double> y, z;
    std::vector<std::array<std::int32_t, 4>> elements;
    std::vector<std::array<double, VQ_NCOLUMNS>> properties;
    std::vector<VYZTUZE_INFO> bars;
    std::int32_t groups = 1;
    double mode = VQ_PLASTIC;
    // What the call is told besides: counts in place of the tables' own, null pointers.
    bool other_counts = false;
    std::int32_t counts[4] = {};  // NNODES, NELEMS, NPOINTS, NGROUPS
    int missing = 0;              // bits 0 to 6: NODES, ELEMENTS, PROPS, POINTS, RESULT, NODEOUT, ELEMOUT
    std::int32_t levels = 1;
    bool placed = false;  // new nodes of the outline are moved
};

// Everything that one call is handed.
struct Tables {
    std::int32_t STATUS, NNODES, NELEMS, NPOINTS;
    Exact<double> NODES, PROPS, RESULT, NODEOUT, ELEMOUT;
    Exact<std::int32_t> ELEMENTS;
    Exact<VYZTUZE_INFO> POINTS;
    // of vq_levels
    Exact<double> BOUNDS;
    Exact<std::int32_t> SHARP;
    std::int32_t LEVELS;
};

std::int32_t add_node(Section& s, double y, double z) {
    s.y.push_back(y);
    s.z.push_back(z);
    return static_cast<std::int32_t>(s.y.size());
}

void add_element(Section& s, std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, double stiffness,
                 double group) {
    s.elements.push_back({a, b, c, d});
    s.properties.push_back({2.6 * stiffness, stiffness, 0, 1, group, 1, 1, 1, 1, 0});
}

// A grid of quadrilaterals or triangles, on nodes of its own or on those that stand at its places already.
void add_patch(Section& s, Input& in) {
    const int ny = 1 + below(in, 5), nz = 1 + below(in, 5), style = byte(in);
    const double y0 = static_cast<std::int8_t>(byte(in)) * 0.5, z0 = static_cast<std::int8_t>(byte(in)) * 0.5;
    const double dy = (1 + below(in, 64)) * 0.125, dz = (1 + below(in, 64)) * 0.125;
    const bool shared = style & 1, pierced = style & 2;
    const int split = style >> 2 & 3;  // no cell, all along one diagonal, all along the other, every other cell
    const double group = 1 + (style >> 4 & 3), stiffness = 1 << (style >> 6);
    s.groups = std::max(s.groups, static_cast<std::int32_t>(group));
    if (s.y.size() + (ny + 1) * (nz + 1) > MAXNODES || s.elements.size() + 2 * ny * nz > MAXELEMS) return;
    std::vector<std::int32_t> node;
    for (int j = 0; j <= nz; ++j)
        for (int i = 0; i <= ny; ++i) {
            const double y = y0 + i * dy, z = z0 + j * dz;
            std::size_t k = shared ? 0 : s.y.size();
            while (k < s.y.size() && !(s.y[k] == y && s.z[k] == z)) ++k;
            node.push_back(k < s.y.size() ? static_cast<std::int32_t>(k + 1) : add_node(s, y, z));
        }
    for (int j = 0; j < nz; ++j)
        for (int i = 0; i < ny; ++i) {
            if (pierced && i % 2 == 1 && j % 2 == 1) continue;
            const std::int32_t* low = &node[static_cast<std::size_t>(j * (ny + 1) + i)];
            const std::int32_t a = low[0], b = low[1], c = low[ny + 2], d = low[ny + 1];
            if (split == 0 || (split == 3 && (i + j) % 2 == 0)) {
                add_element(s, a, b, c, d, stiffness, group);
            } else if (split == 1) {
                add_element(s, a, b, c, c, stiffness, group);
                add_element(s, a, c, d, d, stiffness, group);
            } else {
                add_element(s, a, b, d, d, stiffness, group);
                add_element(s, b, c, d, d, stiffness, group);
            }
        }
}

// A bar on a node of its own, inside the element it names as its host or beside it.
void add_bar(Section& s, Input& in) {
    if (s.elements.empty() || s.bars.size() >= MAXBARS || s.y.size() >= MAXNODES) return;
    const std::size_t e = byte(in) % s.elements.size();
    const double r = static_cast<std::int8_t>(byte(in)) / 120.0, t = static_cast<std::int8_t>(byte(in)) / 120.0;
    const double N[] = {(1 - r) * (1 - t) / 4, (1 + r) * (1 - t) / 4, (1 + r) * (1 + t) / 4, (1 - r) * (1 + t) / 4};
    double y = 0, z = 0;
    for (int i = 0; i < 4; ++i) {
        const std::size_t node = static_cast<std::size_t>(s.elements[e][i]) - 1;
        if (node >= s.y.size()) return;
        y += N[i] * s.y[node];
        z += N[i] * s.z[node];
    }
    VYZTUZE_INFO bar;
    std::memset(&bar, 0xa5, sizeof bar);
    bar.NODE = add_node(s, y, z);
    bar.ELEMENT = static_cast<std::int32_t>(e + 1);
    bar.AREA = byte(in) / 256.0;
    bar.EMODUL = 1.5 + byte(in) * 0.5;
    bar.GMODUL = bar.EMODUL / 2.6;
    bar.RADIUS = below(in, 16) * 0.25;
    bar.BARWEIGHT = 1;
    s.bars.push_back(bar);
}

void edit_bar(VYZTUZE_INFO& bar, Input& in) {
    const int field = below(in, 8);
    double* const reals[] = {&bar.AREA, &bar.EMODUL, &bar.GMODUL, &bar.RADIUS, &bar.BARWEIGHT, &bar.SHAPE[1]};
    if (field == 0)
        bar.NODE = integer(in);
    else if (field == 1)
        bar.ELEMENT = integer(in);
    else
        *reals[field - 2] = real(in);
}

void edit_counts(Section& s, Input& in) {
    constexpr std::int32_t HIGHEST = std::numeric_limits<std::int32_t>::max();
    s.other_counts = true;
    for (std::int32_t& count : s.counts) count = integer(in);
    // These tables are smaller than the call is told, so it has to refuse before it reads them.
    const int bad = below(in, 4);
    s.counts[bad] = bad < 3 && byte(in) % 2 ? HIGHEST : -1 - below(in, 8);
}

void edit(Section& s, Input& in) {
    const auto some_node = [&] { return byte(in) % s.y.size(); };
    const auto some_element = [&] { return byte(in) % s.elements.size(); };
    const int kind = below(in, 24);
    // What needs no mesh
    switch (kind) {
        case 0: add_patch(s, in); return;
        case 1: s.mode = real(in); return;
        case 2: s.groups = integer(in); return;
        case 3:
            if (s.y.size() < MAXNODES) {
                const double y = real(in), z = real(in);
                add_node(s, y, z);
            }
            return;
        case 4:
            if (byte(in) % 4 == 0) edit_counts(s, in);
            return;
        case 5:
            if (byte(in) % 4 == 0) s.missing = byte(in);
            return;
        default: break;
    }
    if (s.y.empty()) return;
    switch (kind) {
        case 6: (byte(in) % 2 ? s.y : s.z)[some_node()] = real(in); return;
        case 7: {  // moved by a share of a unit
            const std::size_t i = some_node();
            s.y[i] += static_cast<std::int8_t>(byte(in)) / 64.0;
            s.z[i] += static_cast<std::int8_t>(byte(in)) / 64.0;
            return;
        }
        case 8: {  // onto another node, or nearly so
            const std::size_t i = some_node(), j = some_node();
            const double apart = byte(in) % 2 ? real(in) : 0;
            s.y[i] = s.y[j] + apart;
            s.z[i] = s.z[j];
            return;
        }
        case 9: {  // two nodes exchanged: bow-ties
            const std::size_t i = some_node(), j = some_node();
            std::swap(s.y[i], s.y[j]);
            std::swap(s.z[i], s.z[j]);
            return;
        }
        case 10: {  // other units, another origin
            const double factor = real(in);
            const int which = byte(in);
            for (std::size_t i = 0; i < s.y.size(); ++i) {
                if (which & 1) s.y[i] = which & 4 ? s.y[i] + factor : s.y[i] * factor;
                if (which & 2) s.z[i] = which & 4 ? s.z[i] + factor : s.z[i] * factor;
            }
            return;
        }
        default: break;
    }
    if (kind == 11 && s.elements.size() < MAXELEMS) {
        s.elements.push_back({integer(in), integer(in), integer(in), integer(in)});
        s.properties.push_back({real(in), real(in), real(in), real(in), real(in), real(in), real(in), real(in)});
        return;
    }
    if (s.elements.empty()) return;
    switch (kind) {
        case 12: {
            const std::size_t e = some_element();
            const int corner = below(in, 4);
            s.elements[e][corner] = byte(in) % 2 ? integer(in) : static_cast<std::int32_t>(some_node() + 1);
            return;
        }
        case 13: {  // clockwise, or begun at another corner
            auto& nodes = s.elements[some_element()];
            if (byte(in) % 2)
                std::reverse(nodes.begin(), nodes.end());
            else
                std::rotate(nodes.begin(), nodes.begin() + 1, nodes.end());
            return;
        }
        case 14: {
            auto& nodes = s.elements[some_element()];
            nodes[3] = nodes[2];
            return;
        }
        case 15: {
            const std::size_t e = some_element();
            s.elements.erase(s.elements.begin() + static_cast<std::ptrdiff_t>(e));
            s.properties.erase(s.properties.begin() + static_cast<std::ptrdiff_t>(e));
            return;
        }
        case 16: {
            const std::size_t e = some_element();
            s.properties[e][below(in, VQ_NCOLUMNS)] = real(in);
            return;
        }
        case 17: {  // a column of all elements, or of every other one
            const int column = below(in, VQ_NCOLUMNS);
            const double value = real(in);
            const std::size_t step = 1 + byte(in) % 3;
            for (std::size_t e = 0; e < s.elements.size(); e += step) s.properties[e][column] = value;
            return;
        }
        case 18: {  // elements in another order
            const std::size_t e = some_element(), f = some_element();
            std::swap(s.elements[e], s.elements[f]);
            std::swap(s.properties[e], s.properties[f]);
            return;
        }
        case 19:
        case 20: add_bar(s, in); return;
        default: break;
    }
    if (s.bars.empty()) return;
    VYZTUZE_INFO& bar = s.bars[byte(in) % s.bars.size()];
    if (kind == 21 || kind == 22) {
        edit_bar(bar, in);
    } else if (kind == 23 && s.bars.size() < MAXBARS) {  // doubled, on the same node or on a new one
        VYZTUZE_INFO twin = bar;
        const std::size_t node = static_cast<std::size_t>(bar.NODE) - 1;
        if (byte(in) % 2 && s.y.size() < MAXNODES && node < s.y.size()) twin.NODE = add_node(s, s.y[node], s.z[node]);
        s.bars.push_back(twin);
    }
}

Section decode(Input in) {
    Section s;
    if (byte(in) != 0) add_patch(s, in);
    for (int k = 0; k < MAXEDITS && in.size > 0; ++k) edit(s, in);
    return s;
}

// Outputs begin as numbers that no calculation makes, another one in each run.
Tables tables_of(const Section& s, int run) {
    const std::size_t nodes = s.y.size(), elements = s.elements.size();
    Tables t{s.groups,
             static_cast<std::int32_t>(nodes),
             static_cast<std::int32_t>(elements),
             static_cast<std::int32_t>(s.bars.size()),
             Exact<double>(2 * nodes),
             Exact<double>(VQ_NCOLUMNS * elements),
             Exact<double>(VQ_NSLOTS),
             Exact<double>(3 * nodes),
             Exact<double>(48 * elements),
             Exact<std::int32_t>(4 * elements),
             Exact<VYZTUZE_INFO>(s.bars.size()),
             Exact<double>(VQ_NSLOTS),
             Exact<std::int32_t>(nodes),
             s.levels};
    if (s.other_counts) {
        t.NNODES = s.counts[0];
        t.NELEMS = s.counts[1];
        t.NPOINTS = s.counts[2];
        t.STATUS = s.counts[3];
    }
    for (std::size_t i = 0; i < nodes; ++i) {
        t.NODES[i] = s.y[i];
        t.NODES[nodes + i] = s.z[i];
    }
    for (std::size_t e = 0; e < elements; ++e) {
        for (std::size_t k = 0; k < 4; ++k) t.ELEMENTS[k * elements + e] = s.elements[e][k];
        for (std::size_t k = 0; k < VQ_NCOLUMNS; ++k) t.PROPS[k * elements + e] = s.properties[e][k];
    }
    std::copy(s.bars.begin(), s.bars.end(), t.POINTS.begin());
    const std::uint64_t bits = 0x7ffc0de000000001u + static_cast<unsigned>(run);
    double unwritten;
    std::memcpy(&unwritten, &bits, sizeof unwritten);
    for (Exact<double>* output : {&t.RESULT, &t.NODEOUT, &t.ELEMOUT, &t.BOUNDS})
        std::fill_n(output->begin(), output->size, unwritten);
    t.RESULT[VQ_MODE_SLOT] = s.mode;
    return t;
}

bool takes_part(const VYZTUZE_INFO& bar) { return bar.NODE >= 1 && bar.EMODUL >= 2.0; }

bool is_read(int column, double mode) {
    if (column == VQ_FNEG || column == VQ_FPOS)
        return std::floor(mode) == VQ_PLASTIC || std::floor(mode) == VQ_PLASTIC_TWO ||
               std::floor(mode) == VQ_PLASTIC_TWO_21;
    return column != VQ_CARRIED && column != VQ_TENTH;
}

// The rules of the tables that can be told without geometry, as a host reads them in the header.
bool must_refuse(const Section& s) {
    if (s.other_counts || s.groups < 0 || (s.missing & 0x77) != 0) return true;
    if ((s.missing & 8) != 0 && !s.bars.empty()) return true;
    double EREF = 0;
    for (std::size_t e = s.elements.size(); e-- > 0;) {
        const auto& p = s.properties[e];
        for (int column = 1; column <= VQ_UNITWEIGHT; ++column)
            if (is_read(column, s.mode) && !std::isfinite(p[column - 1])) return true;
        const double group = std::fabs(p[VQ_GROUP - 1]);
        if (group < 1 || std::floor(group) > s.groups) return true;
        if (p[VQ_MATFLAG - 1] == 1.0) EREF = p[VQ_EMOD - 1];
        for (const std::int32_t node : s.elements[e]) {
            if (node < 1 || static_cast<std::size_t>(node) > s.y.size()) return true;
            if (!std::isfinite(s.y[node - 1]) || !std::isfinite(s.z[node - 1])) return true;
        }
    }
    if (!(EREF > 0)) return true;
    std::vector<int> bars_on(s.y.size());
    for (const VYZTUZE_INFO& bar : s.bars) {
        if (!takes_part(bar)) continue;
        if (static_cast<std::size_t>(bar.NODE) > s.y.size() || ++bars_on[bar.NODE - 1] > 1) return true;
        if (bar.ELEMENT < 1 || static_cast<std::size_t>(bar.ELEMENT) > s.elements.size()) return true;
        for (const double value : {bar.AREA, bar.EMODUL, bar.GMODUL, bar.BARWEIGHT})
            if (!std::isfinite(value)) return true;
    }
    return false;
}

void call(const Section& s, Tables& t) {
    const auto given = [&](int table, auto* memory) { return s.missing >> table & 1 ? nullptr : memory; };
    vq_velquor(&t.STATUS, given(0, t.NODES.begin()), t.NNODES, given(1, t.ELEMENTS.begin()), t.NELEMS,
               given(2, t.PROPS.begin()), t.NPOINTS, given(3, t.POINTS.begin()), given(4, t.RESULT.begin()),
               given(5, t.NODEOUT.begin()), given(6, t.ELEMOUT.begin()));
}

void move_outwards(void*, std::int32_t A, std::int32_t, double t, double* YZ) {
    const double factor = 1 + (A % 3 - 1) * 0.1 * t * (1 - t);
    YZ[0] *= factor;
    YZ[1] *= factor;
}

void call_levels(const Section& s, Tables& t) {
    const auto given = [&](int table, auto* memory) { return s.missing >> table & 1 ? nullptr : memory; };
    vq_levels(&t.STATUS, given(0, t.NODES.begin()), t.NNODES, given(1, t.ELEMENTS.begin()), t.NELEMS,
              given(2, t.PROPS.begin()), t.NPOINTS, given(3, t.POINTS.begin()), given(4, t.RESULT.begin()),
              given(5, t.NODEOUT.begin()), given(6, t.ELEMOUT.begin()), &t.LEVELS, t.BOUNDS.begin(), t.SHARP.begin(),
              s.placed ? move_outwards : nullptr, nullptr);
}

// Errors where and only where the call is refused, whatever part of the findings is asked for.
void check_findings(const Section& s, const Tables& t, std::int32_t STATUS) {
    const auto given = [&](int table, const auto* memory) { return s.missing >> table & 1 ? nullptr : memory; };
    const auto look = [&](std::int32_t CAPACITY, vq_finding* list) {
        return vq_check(t.STATUS, given(0, t.NODES.begin()), t.NNODES, given(1, t.ELEMENTS.begin()), t.NELEMS,
                        given(2, t.PROPS.begin()), t.NPOINTS, given(3, t.POINTS.begin()), s.mode, CAPACITY, list);
    };
    const std::int32_t count = look(0, nullptr);
    expect(count >= 0, "a small section's tables can be looked at");
    Exact<vq_finding> all(static_cast<std::size_t>(count)), half(static_cast<std::size_t>(count / 2));
    expect(look(count, all.begin()) == count && look(count / 2, half.begin()) == count &&
               std::memcmp(all.begin(), half.begin(), half.size * sizeof(vq_finding)) == 0,
           "findings are the same in every list");
    bool refused = false;
    for (std::size_t k = 0; k < all.size; ++k) {
        refused = refused || all[k].SEVERITY == VQ_ERROR;
        expect(vq_reason(all[k].REASON)[0] != 0 && all[k].ROW >= 0, "a finding has a row and a reason");
        expect(k == 0 || all[k - 1].TABLE < all[k].TABLE ||
                   (all[k - 1].TABLE == all[k].TABLE && all[k - 1].ROW <= all[k].ROW),
               "findings are in the order of the tables");
    }
    if ((s.missing & 0x70) == 0) expect(refused == (STATUS == VQ_REFUSED), "errors are found where a call is refused");
}

// Of a bar that takes part only the output fields may differ, of a triangle not the fourth node; of any other nothing.
void check_bar(const VYZTUZE_INFO& before, const VYZTUZE_INFO& after) {
    VYZTUZE_INFO expected = before;
    if (takes_part(before)) {
        expected.NELNODES = after.NELNODES;
        std::copy_n(after.ELNODES, after.NELNODES == 3 ? 3 : 4, expected.ELNODES);
        std::copy_n(after.SHAPE, 4, expected.SHAPE);
        std::copy_n(after.RS, 2, expected.RS);
        std::copy_n(after.STRESS, 4, expected.STRESS);
    }
    expect(std::memcmp(&expected, &after, sizeof after) == 0, "a bar keeps what is not an output field");
}

void check_written(const Exact<double>& before, const Exact<double>& after) {
    for (std::size_t k = 0; k < after.size; ++k)
        expect(std::memcmp(&before[k], &after[k], sizeof(double)) != 0, "every output is written with status 0");
}

void check(const Section& s, const Tables& before, const Tables& after) {
    expect(after.STATUS >= VQ_DONE && after.STATUS <= VQ_NOT_SOLVED, "a small section ends with status 0, 1 or 2");
    expect(same_bits(before.NODES, after.NODES) && same_bits(before.PROPS, after.PROPS) &&
               same_bits(before.ELEMENTS, after.ELEMENTS),
           "input tables are not modified");
    if (must_refuse(s)) expect(after.STATUS == VQ_REFUSED, "tables against the rules are refused");
    if (after.STATUS == VQ_DONE) {
        check_written(before.NODEOUT, after.NODEOUT);
        check_written(before.ELEMOUT, after.ELEMOUT);
    } else {
        expect(same_bits(before.RESULT, after.RESULT) && same_bits(before.NODEOUT, after.NODEOUT) &&
                   same_bits(before.ELEMOUT, after.ELEMOUT),
               "outputs are untouched without status 0");
    }
    if (after.STATUS == VQ_REFUSED) expect(same_bits(before.POINTS, after.POINTS), "a refusal leaves the bars alone");
    for (std::size_t b = 0; b < after.POINTS.size; ++b) check_bar(before.POINTS[b], after.POINTS[b]);
}

// Twice with other bytes in the memory and in the outputs: the same answer. Returns the first.
Tables check_call(const Section& s, void (*make)(const Section&, Tables&),
                  void (*judge)(const Section&, const Tables&, const Tables&)) {
    Tables first = tables_of(s, 1), second = tables_of(s, 2);
    const Tables before = first, before_second = second;
    // Memory from the heap begins with other bytes in each run, where no sanitizer stands before it.
    mallopt(M_PERTURB, 0x3f);
    make(s, first);
    judge(s, before, first);
    mallopt(M_PERTURB, 0xc0);
    make(s, second);
    judge(s, before_second, second);
    expect(first.STATUS == second.STATUS && first.LEVELS == second.LEVELS && same_bits(first.POINTS, second.POINTS) &&
               same_bits(first.SHARP, second.SHARP),
           "a second run gives the same bits");
    if (first.STATUS == VQ_DONE)
        expect(same_bits(first.RESULT, second.RESULT) && same_bits(first.NODEOUT, second.NODEOUT) &&
                   same_bits(first.ELEMOUT, second.ELEMOUT),
               "a second run gives the same bits");
    return first;
}

// What a call on several levels leaves: bars and input as a plain one, fields and bounds written or untouched.
void check_levels(const Section& s, const Tables& before, const Tables& after) {
    if (after.STATUS == VQ_NOT_SOLVED)
        expect(same_bits(before.POINTS, after.POINTS), "bars are untouched without status 0");
    check(s, before, after);
    if (after.STATUS == VQ_DONE) {
        expect(after.LEVELS == s.levels || after.LEVELS >= 2, "one level is enough only where one was wanted");
        check_written(before.BOUNDS, after.BOUNDS);
        for (std::size_t k = 0; k < after.BOUNDS.size; ++k) expect(!(after.BOUNDS[k] < 0), "no bound is negative");
    } else {
        expect(same_bits(before.BOUNDS, after.BOUNDS) && same_bits(before.SHARP, after.SHARP) && after.LEVELS < 2,
               "bounds are untouched without status 0");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Section s = decode({data, size});
    const Tables plain = check_call(s, call, check);
    check_findings(s, tables_of(s, 1), plain.STATUS);
    s.levels = 1 + static_cast<std::int32_t>(size % 3);
    s.placed = size % 2 == 1;
    const Tables levels = check_call(s, call_levels, check_levels);
    if (s.levels == 1)
        expect(levels.STATUS == plain.STATUS && same_bits(levels.RESULT, plain.RESULT) &&
                   same_bits(levels.NODEOUT, plain.NODEOUT) && same_bits(levels.ELEMOUT, plain.ELEMOUT),
               "one level is the plain call");
    return 0;
}
