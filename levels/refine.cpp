// Every element in four.
#include <algorithm>
#include <new>

#include "levels/mesh.h"

namespace levels {
namespace {

// Numbers of the edges of a mesh by their two nodes: a table of open addressing, at most half full.
struct Edges {
    struct Entry {
        std::int32_t low = 0, high = 0;  // 0: free
        std::int32_t value = 0;
    };
    std::vector<Entry> entries;
    std::size_t mask;

    explicit Edges(std::size_t most) {
        std::size_t size = 16;
        while (size < 2 * most) size *= 2;
        entries.resize(size);
        mask = size - 1;
    }
    // The entry of edge a - b, with the value 0 if it was not there.
    Entry& at(std::int32_t a, std::int32_t b) {
        const std::int32_t low = std::min(a, b), high = std::max(a, b);
        std::uint64_t h =
            (static_cast<std::uint64_t>(low) << 32 | static_cast<std::uint32_t>(high)) * 0x9e3779b97f4a7c15u;
        for (std::size_t k = (h ^ h >> 32) & mask;; k = (k + 1) & mask) {
            Entry& e = entries[k];
            if (e.low == low && e.high == high) return e;
            if (e.low != 0) continue;
            e.low = low;
            e.high = high;
            return e;
        }
    }
};

bool same_properties(const Tables& mesh, std::size_t e, std::size_t f) {
    for (int column = 1; column <= VQ_NCOLUMNS; ++column)
        if (column != VQ_CARRIED && column != VQ_TENTH && mesh.property(e, column) != mesh.property(f, column))
            return false;
    return true;
}

// Numbers of the new nodes: middles of edges as they are met, element after element, and centres in between.
struct NewNodes {
    Edges middle;
    std::vector<std::int32_t> centre;  // (elements)  0 in triangles
    std::int32_t nodes;                // of the new mesh
};

NewNodes numbered(const Tables& mesh) {
    const std::size_t elements = static_cast<std::size_t>(mesh.NELEMS);
    NewNodes found{Edges(elements + static_cast<std::size_t>(mesh.NNODES) + 16), {}, mesh.NNODES};
    found.centre.resize(elements);
    const auto next = [&] {
        if (found.nodes >= INT32_MAX - 2) throw std::bad_alloc();
        return ++found.nodes;
    };
    std::size_t edges = 0;
    for (std::size_t e = 0; e < elements; ++e) {
        const int n = mesh.corners(e);
        for (int i = 0; i < n; ++i) {
            Edges::Entry& edge = found.middle.at(mesh.node(e, i), mesh.node(e, (i + 1) % n));
            if (edge.value != 0) continue;
            edge.value = next();
            // More edges than nodes and elements together: a mesh with many holes.
            if (2 * ++edges <= found.middle.mask) continue;
            Edges larger(2 * edges);
            for (const Edges::Entry& old : found.middle.entries)
                if (old.low != 0) larger.at(old.low, old.high).value = old.value;
            found.middle = std::move(larger);
        }
        if (n == 4) found.centre[e] = next();
    }
    return found;
}

// The two halves of each arc, and their common node on its true course.
void place_arcs(std::vector<Arc>& arcs, NewNodes& found, vq_place place, void* context, double* y, double* z) {
    std::vector<Arc> halves;
    halves.reserve(2 * arcs.size());
    for (const Arc& arc : arcs) {
        const std::int32_t m = found.middle.at(arc.a, arc.b).value;
        const double t = 0.5 * (arc.t0 + arc.t1);
        double YZ[2] = {y[m - 1], z[m - 1]};
        place(context, arc.A, arc.B, t, YZ);
        y[m - 1] = YZ[0];
        z[m - 1] = YZ[1];
        halves.push_back({arc.A, arc.B, arc.a, m, arc.t0, t});
        halves.push_back({arc.A, arc.B, m, arc.b, t, arc.t1});
    }
    arcs = std::move(halves);
}

}  // namespace

Tables Mesh::tables() const {
    return {nodes.data(), static_cast<std::int32_t>(nodes.size() / 2), elements.data(),
            static_cast<std::int32_t>(elements.size() / 4), props.data()};
}

std::vector<Arc> arcs_of(const Tables& mesh) {
    const std::size_t elements = static_cast<std::size_t>(mesh.NELEMS);
    Edges edges(4 * elements);  // the element that has it, counted from 1; negative where several alike have it
    std::vector<Arc> arcs;
    const auto each_edge = [&](const auto& visit) {
        for (std::size_t e = 0; e < elements; ++e)
            for (int n = mesh.corners(e), i = 0; i < n; ++i) {
                const std::int32_t a = mesh.node(e, i), b = mesh.node(e, (i + 1) % n);
                visit(static_cast<std::int32_t>(e + 1), a, b, edges.at(a, b).value);
            }
    };
    each_edge([&](std::int32_t e, std::int32_t, std::int32_t, std::int32_t& owner) {
        if (owner == 0)
            owner = e;
        else if (owner > 0 && same_properties(mesh, owner - 1, e - 1))
            owner = -owner;
    });
    each_edge([&](std::int32_t e, std::int32_t a, std::int32_t b, std::int32_t owner) {
        if (owner == e) arcs.push_back({a, b, a, b, 0, 1});
    });
    return arcs;
}

Mesh refined(const Tables& mesh, std::vector<Arc>& arcs, vq_place place, void* context) {
    const std::size_t elements = static_cast<std::size_t>(mesh.NELEMS), parts = 4 * elements;
    if (parts >= INT32_MAX) throw std::bad_alloc();
    NewNodes found = numbered(mesh);
    const std::size_t old = static_cast<std::size_t>(mesh.NNODES), nodes = static_cast<std::size_t>(found.nodes);

    Mesh finer;
    finer.nodes.resize(2 * nodes);
    double *y = finer.nodes.data(), *z = y + nodes;
    std::copy_n(mesh.NODES, old, y);
    std::copy_n(mesh.NODES + old, old, z);
    for (const Edges::Entry& edge : found.middle.entries) {
        if (edge.low == 0) continue;
        y[edge.value - 1] = 0.5 * (y[edge.low - 1] + y[edge.high - 1]);
        z[edge.value - 1] = 0.5 * (z[edge.low - 1] + z[edge.high - 1]);
    }
    if (place) place_arcs(arcs, found, place, context, y, z);

    finer.elements.resize(4 * parts);
    const auto set = [&](std::size_t part, const std::int32_t(&node)[4]) {
        for (std::size_t i = 0; i < 4; ++i) finer.elements[i * parts + part] = node[i];
    };
    for (std::size_t e = 0; e < elements; ++e) {
        const int n = mesh.corners(e);
        std::int32_t c[4], m[4];
        for (int i = 0; i < n; ++i) c[i] = mesh.node(e, i);
        for (int i = 0; i < n; ++i) m[i] = found.middle.at(c[i], c[(i + 1) % n]).value;
        if (n == 3) {
            set(4 * e, {c[0], m[0], m[2], m[2]});
            set(4 * e + 1, {m[0], c[1], m[1], m[1]});
            set(4 * e + 2, {m[2], m[1], c[2], c[2]});
            set(4 * e + 3, {m[1], m[2], m[0], m[0]});
            continue;
        }
        // A centre lies halfway between opposite sides, with half of what these were moved.
        const std::int32_t o = found.centre[e];
        const auto centre = [&](const double* x) {
            return 0.5 * (x[m[0] - 1] + x[m[1] - 1] + x[m[2] - 1] + x[m[3] - 1]) -
                   0.25 * (x[c[0] - 1] + x[c[1] - 1] + x[c[2] - 1] + x[c[3] - 1]);
        };
        y[o - 1] = centre(y);
        z[o - 1] = centre(z);
        set(4 * e, {c[0], m[0], o, m[3]});
        set(4 * e + 1, {m[0], c[1], m[1], o});
        set(4 * e + 2, {o, m[1], c[2], m[2]});
        set(4 * e + 3, {m[3], o, m[2], c[3]});
    }

    finer.props.resize(VQ_NCOLUMNS * parts);
    for (std::size_t k = 0; k < VQ_NCOLUMNS * elements; ++k) std::fill_n(&finer.props[4 * k], 4, mesh.PROPS[k]);
    return finer;
}

std::int32_t part_with(const Tables& finer, std::int32_t element, double y, double z) {
    std::int32_t nearest = 4 * (element - 1) + 1;
    double inside = 0;  // twice the area towards the edge that the bar is least inside of, or most outside
    for (int k = 0; k < 4; ++k) {
        const std::size_t part = 4 * static_cast<std::size_t>(element - 1) + static_cast<std::size_t>(k);
        const int n = finer.corners(part);
        double least = 0;
        for (int i = 0; i < n; ++i) {
            const std::int32_t a = finer.node(part, i), b = finer.node(part, (i + 1) % n);
            const double area =
                (finer.y(b) - finer.y(a)) * (z - finer.z(a)) - (finer.z(b) - finer.z(a)) * (y - finer.y(a));
            least = i == 0 ? area : std::min(least, area);
        }
        if (k > 0 && !(least > inside)) continue;
        inside = least;
        nearest = static_cast<std::int32_t>(part) + 1;
    }
    return nearest;
}

}  // namespace levels
