#include "random_mesh.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "bench/meshes.h"

namespace {

constexpr double PI = 3.14159265358979324;

using meshes::next;
using meshes::Random;
using meshes::uniform;

int between(Random& random, int low, int high) {  // both may come
    return low + static_cast<int>(next(random) % static_cast<std::uint64_t>(high - low + 1));
}
bool one_in(Random& random, int n) { return between(random, 1, n) == 1; }

enum Kind { rectangle, trapezoid, I, L, C, T, Z, box, lattice, ring, tube, polygon, KINDS };
const char* const NAMES[KINDS] = {"rectangle", "trapezoid", "I",       "L",    "C",    "T",
                                  "Z",         "box",       "lattice", "ring", "tube", "polygon"};

// Lines across, and the cells between them that belong to the section: 0 none, otherwise their material.
struct Grid {
    std::vector<double> u{0}, v{0};
    std::vector<std::vector<int>> cells;  // (v, u)
    bool closed = false;                  // the last line v is the first
};

struct Strip {
    double width;
    int cells;
};

// A wall of one to three layers, or a length of it whose cells are up to four times as long as a layer.
Strip wall(Random& random) { return {uniform(random, 0.7, 1.5), between(random, 1, 3)}; }
Strip length(Random& random, const Strip& of) {
    const int cells = between(random, 2, 6);
    return {cells * of.width / of.cells * uniform(random, 1, 4), cells};
}

// Whether the strips i along u and j along v have material.
bool solid(Kind kind, int i, int j) {
    switch (kind) {
        case I: return i == 1 || j != 1;
        case L: return i == 0 || j == 0;
        case C: return i == 0 || j != 1;
        case T: return i == 1 || j == 1;
        case Z: return i == 1 || (j == 0 && i == 2) || (j == 2 && i == 0);
        case box: return i != 1 || j != 1;
        case lattice: return i % 2 == 0 || j % 2 == 0;
        default: return true;
    }
}

// Walls (1) and lengths between them (0), along u and along v.
std::array<std::vector<int>, 2> plan_of(Random& random, Kind kind) {
    switch (kind) {
        case I:
        case Z: return {{{0, 1, 0}, {1, 0, 1}}};
        case L: return {{{1, 0}, {1, 0}}};
        case C: return {{{1, 0}, {1, 0, 1}}};
        case T: return {{{0, 1, 0}, {0, 1}}};
        case box: return {{{1, 0, 1}, {1, 0, 1}}};
        case lattice:
            return {{{1, 0, 1, 0, 1}, one_in(random, 2) ? std::vector<int>{1, 0, 1} : std::vector<int>{1, 0, 1, 0, 1}}};
        default: return {{{1, 0}, {1, 0}}};
    }
}

Grid grid_of(Random& random, Kind kind) {
    Grid grid;
    const auto plan = plan_of(random, kind);
    const int two = one_in(random, 3) ? between(random, 1, 2) : 0;  // materials differ along u, along v, or not at all
    const int first = between(random, 1, 2);                        // strip of the second material
    std::array<std::vector<int>, 2> strip_of;                       // of the cells
    for (int k = 0; k < 2; ++k) {
        const Strip thin = wall(random);
        std::vector<double>& lines = k == 0 ? grid.u : grid.v;
        for (size_t i = 0; i < plan[k].size(); ++i) {
            Strip strip = plan[k][i] ? (one_in(random, 2) ? thin : wall(random)) : length(random, thin);
            if (kind == tube && k == 1) strip.cells += 5;
            for (int c = 0; c < strip.cells; ++c) {
                lines.push_back(lines.back() + strip.width / strip.cells);
                strip_of[k].push_back(static_cast<int>(i));
            }
        }
    }
    for (const int j : strip_of[1]) {
        grid.cells.emplace_back();
        for (const int i : strip_of[0])
            grid.cells.back().push_back(!solid(kind, i, j) ? 0 : two > 0 && (two == 1 ? i : j) >= first ? 2 : 1);
    }
    grid.closed = kind == tube;
    if (kind == ring || kind == tube) {  // equal angles
        const double cells = static_cast<double>(grid.v.size() - 1), last = grid.v.back();
        for (size_t j = 0; j < grid.v.size(); ++j) grid.v[j] = last * static_cast<double>(j) / cells;
    }
    return grid;
}

struct Draft {
    std::vector<point> nodes;
    std::vector<std::array<int32_t, 4>> elements;  // from 1
    std::vector<int> materials;
};

// Material of a cell, 0 outside.
int cell(const Grid& grid, int i, int j) {
    const int nu = static_cast<int>(grid.u.size()) - 1, nv = static_cast<int>(grid.v.size()) - 1;
    if (grid.closed) j = (j + nv) % nv;
    return i < 0 || j < 0 || i >= nu || j >= nv ? 0 : grid.cells[j][i];
}

// Nodes of the grid, moved by up to a share of the cells beside them: along a straight outline or interface, or freely
// where all four cells are alike. A ragged mesh moves all.
Draft draft_of(Random& random, const Grid& grid, double jitter, bool ragged) {
    const int nu = static_cast<int>(grid.u.size()) - 1, nv = static_cast<int>(grid.v.size()) - 1;
    const int rows = grid.closed ? nv : nv + 1;
    Draft draft;
    std::vector<int32_t> number(static_cast<size_t>(nu + 1) * rows, 0);
    for (int j = 0; j < rows; ++j) {
        for (int i = 0; i <= nu; ++i) {
            const int a = cell(grid, i - 1, j - 1), b = cell(grid, i, j - 1), c = cell(grid, i, j),
                      d = cell(grid, i - 1, j);
            if (a + b + c + d == 0) continue;
            const double left = i > 0 ? grid.u[i] - grid.u[i - 1] : 1e9,
                         right = i < nu ? grid.u[i + 1] - grid.u[i] : 1e9;
            const double low = j > 0 ? grid.v[j] - grid.v[j - 1] : 1e9, high = j < nv ? grid.v[j + 1] - grid.v[j] : 1e9;
            const double du = uniform(random, -jitter, jitter) * std::min(left, right);
            const double dv = uniform(random, -jitter, jitter) * std::min(low, high);
            const bool along_u = ragged || (a == b && c == d), along_v = ragged || (a == d && b == c);
            draft.nodes.push_back(
                {grid.u[i] + (along_u ? du : 0), grid.v[j] + (along_v && !(grid.closed && j == 0) ? dv : 0)});
            number[static_cast<size_t>(j) * (nu + 1) + i] = static_cast<int32_t>(draft.nodes.size());
        }
    }
    const auto at = [&](int i, int j) { return number[static_cast<size_t>(j % rows) * (nu + 1) + i]; };
    for (int j = 0; j < nv; ++j) {
        for (int i = 0; i < nu; ++i) {
            if (grid.cells[j][i] == 0) continue;
            draft.elements.push_back({at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
            draft.materials.push_back(grid.cells[j][i]);
        }
    }
    return draft;
}

// A convex polygon on an ellipse, of parts with four sides around its middle.
Draft polygon_of(Random& random) {
    const int corners = between(random, 3, 7), n = between(random, 1, 4);
    const double flat = uniform(random, 0.4, 1), share = uniform(random, 0, 0.25);
    std::vector<point> outline;
    for (int k = 0; k < corners; ++k) {
        const double angle = 2 * PI * (k + uniform(random, -share, share)) / corners;
        outline.push_back({2 * std::cos(angle), 2 * flat * std::sin(angle)});
    }
    const bool two = one_in(random, 3);
    mesh m = begin_mesh(1, 1);
    for (int k = 0; k < corners; ++k) {
        const point p = outline[k], before = outline[(k + corners - 1) % corners], after = outline[(k + 1) % corners];
        const point patch[4] = {
            {0, 0}, {(p.y + before.y) / 2, (p.z + before.z) / 2}, p, {(p.y + after.y) / 2, (p.z + after.z) / 2}};
        const double straight[4] = {0};
        m.material = two && 2 * k < corners ? 2 : 1;
        add_patch(&m, patch, straight, n, n);
    }
    join_nodes(&m, 0);
    Draft draft;
    draft.nodes.assign(m.nodes, m.nodes + m.nnodes);
    for (int32_t e = 0; e < m.nelems; ++e) {
        const int32_t* c = m.elements[e];
        draft.elements.push_back({c[0] + 1, c[1] + 1, c[2] + 1, c[3] + 1});
    }
    draft.materials.assign(m.materials, m.materials + m.nelems);
    release_mesh(&m);
    return draft;
}

// Splits none, all or half of the quadrilaterals, along either diagonal.
void split(Random& random, Draft& draft) {
    const int share = between(random, 0, 2);
    const size_t count = draft.elements.size();
    for (size_t e = 0; e < count; ++e) {
        if (share == 0 || (share == 1 && one_in(random, 2))) continue;
        std::array<int32_t, 4> c = draft.elements[e];
        if (one_in(random, 2)) std::rotate(c.begin(), c.begin() + 1, c.end());
        draft.elements[e] = {c[0], c[1], c[2], c[2]};
        draft.elements.push_back({c[0], c[2], c[3], c[3]});
        draft.materials.push_back(draft.materials[e]);
    }
}

Host host_of(const Draft& draft, double E2, double G2) {
    Host host;
    host.nnodes = static_cast<int32_t>(draft.nodes.size()), host.nelems = static_cast<int32_t>(draft.elements.size());
    for (const point& p : draft.nodes) host.nodes.push_back(p.y);
    for (const point& p : draft.nodes) host.nodes.push_back(p.z);
    for (int c = 0; c < 4; ++c)
        for (const auto& corners : draft.elements) host.elements.push_back(corners[c]);
    for (int k = 1; k <= VQ_NCOLUMNS; ++k) {
        for (const int material : draft.materials) {
            double value = k == VQ_CARRIED || k == VQ_TENTH ? 0 : 1;
            if (k == VQ_EMOD) value = material == 2 ? E2 : 2.6;
            if (k == VQ_GMOD) value = material == 2 ? G2 : 1;
            if (k == VQ_FPOS) value = 1.25;
            host.props.push_back(value);
        }
    }
    return host;
}

}  // namespace

Host random_mesh(std::uint64_t seed, int fewest_elements, int most_elements) {
    Random random = {seed};
    next(random);
    const Kind kind = static_cast<Kind>(between(random, 0, KINDS - 1));
    const bool round = kind == ring || kind == tube, ragged = !round && one_in(random, 10);
    const double jitter = one_in(random, 3) ? 0 : uniform(random, 0.05, 0.3);
    for (;;) {
        Draft draft;
        std::vector<Arc> arcs;
        if (kind == polygon) {
            draft = polygon_of(random);
        } else {
            const Grid grid = grid_of(random, kind);
            draft = draft_of(random, grid, jitter, ragged);
            const double U = grid.u.back(), V = grid.v.back();
            if (round) {  // u becomes the radius, v the angle; chords stay within an eighth of a layer of their arcs
                double layer = U;
                for (size_t i = 1; i < grid.u.size(); ++i) layer = std::min(layer, grid.u[i] - grid.u[i - 1]);
                const double cells = static_cast<double>(grid.v.size() - 1), widest = 2 * PI / cells;
                double inner = uniform(random, 0.3, 2) * U;
                if (kind == tube) inner = std::min(inner, layer / (widest * widest) - U);
                if (inner < 0.3 * U) continue;
                const double angle = kind == tube ? 2 * PI : std::min(1.9 * PI, cells * std::sqrt(layer / (inner + U)));
                for (point& p : draft.nodes) {
                    const double r = inner + p.y, phi = angle * p.z / V;
                    p = {r * std::cos(phi), r * std::sin(phi)};
                }
                for (const double u : grid.u) arcs.push_back({{{0, 0}, inner + u, inner + u, 0}, 0, angle});
            }
            const double taper = kind == trapezoid ? uniform(random, -0.6, 0.6) : 0;
            const double skew = round || one_in(random, 2) ? 0 : uniform(random, -0.5, 0.5);
            for (point& p : draft.nodes) p.y = p.y * (1 + taper * p.z / V) + skew * p.z;
        }
        split(random, draft);
        const int count = static_cast<int>(draft.elements.size());
        if (count < fewest_elements || count > most_elements) continue;

        const double G2 = std::pow(10.0, uniform(random, -1, 1));
        Host host = host_of(draft, G2 * uniform(random, 2, 3), G2);
        host.name = std::string(NAMES[kind]) + (ragged ? ", ragged" : "");
        host.mode = seed % 4 == 0 ? VQ_PLASTIC : VQ_ELASTIC;
        if (round && one_in(random, 2)) follow(host, arcs, 1e-9);
        const double scale = std::pow(10.0, uniform(random, -1, 2));
        for (double& coordinate : host.nodes) coordinate *= scale;
        for (CurvedEdge& edge : host.curved) edge.curve.a *= scale, edge.curve.b *= scale;
        if (one_in(random, 2))
            turn_and_shift(host, uniform(random, -PI, PI),
                           {scale * uniform(random, -20, 20), scale * uniform(random, -20, 20)});
        return host;
    }
}
