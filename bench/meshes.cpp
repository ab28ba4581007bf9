#include "bench/meshes.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace meshes {

std::uint64_t next(Random& random) {
    std::uint64_t z = random.state += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
}

double uniform(Random& random, double low, double high) {
    return low + (high - low) * (static_cast<double>(next(random) >> 11) * 0x1p-53);
}

std::int32_t below(Random& random, std::int32_t limit) {
    return static_cast<std::int32_t>(next(random) % static_cast<std::uint64_t>(limit));
}

namespace {

// A square lattice of m x m cells, of which the shape keeps some.
struct Lattice {
    Shape shape;
    std::int32_t m;
};

bool has_cell(const Lattice& l, std::int32_t i, std::int32_t j) {
    if (i < 0 || j < 0 || i >= l.m || j >= l.m) return false;
    const std::int32_t leg = std::max(l.m / 4, 1), wall = std::max(l.m / 8, 1);
    switch (l.shape) {
        case Shape::angle: return i < leg || j < leg;
        case Shape::hollow: return std::min(i, j) < wall || std::max(i, j) >= l.m - wall;
        case Shape::channel:
            return i < wall || j < std::max(l.m / 12, 1) || (j >= l.m - std::max(l.m / 16, 1) && i < l.m * 5 / 8);
        default: return true;
    }
}

bool has_node(const Lattice& l, std::int32_t i, std::int32_t j) {
    return has_cell(l, i, j) || has_cell(l, i - 1, j) || has_cell(l, i, j - 1) || has_cell(l, i - 1, j - 1);
}

Lattice lattice_of(const Plan& plan) {
    const double kept = plan.shape == Shape::square ? 1.0 : plan.shape == Shape::channel ? 11.0 / 48.0 : 7.0 / 16.0;
    const auto m = static_cast<std::int32_t>(std::lround(std::sqrt(plan.nodes / kept))) - 1;
    return {plan.shape, std::max<std::int32_t>(m, plan.shape == Shape::square ? 1 : 3)};
}

// Old node number -> new node number.
void renumber(Mesh& mesh, const std::vector<std::int32_t>& number) {
    Table<double, 2> XY;
    XY.allocate(mesh.NNODES, 2);
    for (std::int32_t i = 1; i <= mesh.NNODES; ++i) {
        XY(number[i], 1) = mesh.XY(i, 1);
        XY(number[i], 2) = mesh.XY(i, 2);
    }
    mesh.XY = std::move(XY);
    for (std::int32_t e = 1; e <= mesh.NELEMS; ++e)
        for (int c = 1; c <= 4; ++c) mesh.ELEMNODES(e, c) = number[mesh.ELEMNODES(e, c)];
    for (Bar& bar : mesh.bars) bar.NODE = number[bar.NODE];
}

void add_bars(const Plan& plan, Random& random, Mesh& mesh) {
    for (std::int32_t b = 0; b < plan.bars; ++b) {
        Bar bar{};
        bar.NODE = mesh.NNODES - plan.bars + 1 + b;
        bar.ELEMENT = static_cast<std::int32_t>(static_cast<std::int64_t>(b) * mesh.NELEMS / plan.bars) + 1;
        bar.AREA = 0.01;
        bar.EMODUL = 20;
        bar.GMODUL = 8;
        if (plan.triangles) {
            const double r = uniform(random, 0.05, 0.45), s = uniform(random, 0.05, 0.45);
            bar.SHAPE = {{1 - r - s, r, s, 0}};
        } else {
            const double r = uniform(random, -0.9, 0.9), s = uniform(random, -0.9, 0.9);
            bar.SHAPE = {{(1 - s) * (1 - r) * 0.25, (1 - s) * (1 + r) * 0.25, (1 + r) * (1 + s) * 0.25,
                          (1 - r) * (1 + s) * 0.25}};
        }
        for (int k = 1; k <= 2; ++k) {
            double x = 0;
            for (int c = 1; c <= 4; ++c) x += bar.SHAPE(c) * mesh.XY(mesh.ELEMNODES(bar.ELEMENT, c), k);
            mesh.XY(bar.NODE, k) = x;
        }
        mesh.bars.push_back(bar);
    }
}

}  // namespace

Mesh make_mesh(const Plan& plan) {
    const Lattice lattice = lattice_of(plan);
    const std::int32_t m = lattice.m, side = m + 1;
    Random random{plan.seed};

    // the lattice points that a cell of one piece uses, numbered row after row
    std::vector<std::int32_t> number(static_cast<std::size_t>(side) * side, 0);
    std::int32_t nodes = 0, cells = 0;
    for (std::int32_t j = 0; j < side; ++j)
        for (std::int32_t i = 0; i < side; ++i) {
            if (has_node(lattice, i, j)) number[static_cast<std::size_t>(j) * side + i] = ++nodes;
            if (has_cell(lattice, i, j)) ++cells;
        }

    Mesh mesh;
    mesh.NNODES = nodes * plan.pieces + plan.bars;
    mesh.NELEMS = cells * plan.pieces * (plan.triangles ? 2 : 1);
    mesh.XY.allocate(mesh.NNODES, 2);
    mesh.ELEMNODES.allocate(mesh.NELEMS, 4);
    mesh.EMOD.allocate(mesh.NELEMS);
    mesh.GMOD.allocate(mesh.NELEMS);
    for (std::int32_t e = 1; e <= mesh.NELEMS; ++e) {
        mesh.EMOD(e) = 2.6;
        mesh.GMOD(e) = 1;
    }

    const double dy = plan.aspect / m, dz = 1.0 / m;
    std::int32_t e = 0;
    for (std::int32_t piece = 0; piece < plan.pieces; ++piece) {
        const double y0 = 1.5 * plan.aspect * piece, z0 = 1.5 * (piece * piece % 11);
        const auto node = [&](std::int32_t i, std::int32_t j) {
            return number[static_cast<std::size_t>(j) * side + i] + piece * nodes;
        };
        for (std::int32_t j = 0; j < side; ++j)
            for (std::int32_t i = 0; i < side; ++i) {
                if (!has_node(lattice, i, j)) continue;
                mesh.XY(node(i, j), 1) = y0 + dy * (i + uniform(random, -plan.jitter, plan.jitter));
                mesh.XY(node(i, j), 2) = z0 + dz * (j + uniform(random, -plan.jitter, plan.jitter));
            }
        const auto add = [&](std::int32_t n1, std::int32_t n2, std::int32_t n3, std::int32_t n4) {
            ++e;
            mesh.ELEMNODES(e, 1) = n1;
            mesh.ELEMNODES(e, 2) = n2;
            mesh.ELEMNODES(e, 3) = n3;
            mesh.ELEMNODES(e, 4) = n4;
        };
        for (std::int32_t j = 0; j < m; ++j)
            for (std::int32_t i = 0; i < m; ++i) {
                if (!has_cell(lattice, i, j)) continue;
                const std::int32_t n1 = node(i, j), n2 = node(i + 1, j), n3 = node(i + 1, j + 1), n4 = node(i, j + 1);
                if (!plan.triangles) {
                    add(n1, n2, n3, n4);
                } else if (below(random, 2) == 0) {
                    add(n1, n2, n3, n3);
                    add(n1, n3, n4, n4);
                } else {
                    add(n1, n2, n4, n4);
                    add(n2, n3, n4, n4);
                }
            }
    }
    add_bars(plan, random, mesh);

    if (plan.shuffled) {
        std::vector<std::int32_t> drawn(static_cast<std::size_t>(mesh.NNODES) + 1);
        std::iota(drawn.begin(), drawn.end(), 0);
        for (std::int32_t i = mesh.NNODES; i > 1; --i) std::swap(drawn[i], drawn[1 + below(random, i)]);
        renumber(mesh, drawn);
    }
    return mesh;
}

std::vector<VYZTUZE_INFO> records_of(const std::vector<Bar>& bars, double RADIUS) {
    std::vector<VYZTUZE_INFO> records;
    for (const Bar& bar : bars) {
        VYZTUZE_INFO record{};
        record.NODE = bar.NODE;
        record.ELEMENT = bar.ELEMENT;
        record.AREA = bar.AREA;
        record.EMODUL = bar.EMODUL;
        record.GMODUL = bar.GMODUL;
        record.RADIUS = RADIUS;
        records.push_back(record);
    }
    return records;
}

}  // namespace meshes
