#include "levels/sharp.h"

#include <algorithm>
#include <cmath>

namespace levels {
namespace {

constexpr double PI = 3.14159265358979324;
// What the angle at a node may be beyond straight: arcs without a true course are polygons.
constexpr double STRAIGHT = 20 * PI / 180;

// The corner of an element at a node of the host: counter-clockwise from its edge to node `from` to that to node `to`.
struct Sector {
    std::int32_t node, from, to;
    double begin, angle, G;
};

bool follows(const Sector& a, const Sector& b) { return a.to == b.from; }

// Near the node u = r^k f(angle) solves div G grad u = 0 with free outer edges, and its gradient is infinite if the
// smallest k above 0 is below 1. For k = 1 (f, -f') = (cos p, sin p) with p growing by the angle in each sector, while
// G f' passes from one to the next; the solution of k has p = pi in the end (Sturm's oscillation theorem).
bool is_sharp_chain(const std::vector<const Sector*>& chain) {
    double p = 0, G = chain.front()->G;
    for (const Sector* sector : chain) {
        const double turns = std::nearbyint(p / PI);
        p = turns * PI + std::atan(std::tan(p - turns * PI) * G / sector->G) + sector->angle;
        G = sector->G;
    }
    return p > PI + STRAIGHT;
}

// All around a node stresses are finite where one material is, or where two meet in a straight line.
bool is_sharp_ring(const std::vector<const Sector*>& ring) {
    const std::size_t n = ring.size();
    std::size_t begin = 0;
    while (begin < n && ring[begin]->G == ring[(begin + n - 1) % n]->G) ++begin;
    if (begin == n) return false;
    std::vector<double> angles;
    for (std::size_t k = 0; k < n; ++k) {
        const Sector &sector = *ring[(begin + k) % n], &before = *ring[(begin + k + n - 1) % n];
        if (sector.G != before.G) angles.push_back(0);
        angles.back() += sector.angle;
    }
    return angles.size() > 2 ||
           std::any_of(angles.begin(), angles.end(), [](double angle) { return std::fabs(angle - PI) > STRAIGHT; });
}

// The sectors at one node, by the angles at which they begin.
bool is_sharp(const Sector* sectors, std::size_t n) {
    std::size_t begin = 0;
    while (begin < n && follows(sectors[(begin + n - 1) % n], sectors[begin])) ++begin;
    std::vector<const Sector*> chain;
    for (std::size_t k = 0; k < n; ++k) {
        chain.push_back(&sectors[(begin + k) % n]);
        if (begin < n && (k + 1 == n || !follows(*chain.back(), sectors[(begin + k + 1) % n]))) {
            if (is_sharp_chain(chain)) return true;
            chain.clear();
        }
    }
    return begin == n && is_sharp_ring(chain);
}

}  // namespace

std::vector<std::int8_t> sharp_nodes(const Tables& host, const Tables& finest, int level) {
    std::vector<Sector> sectors;
    sectors.reserve(4 * static_cast<std::size_t>(host.NELEMS));
    for (std::size_t e = 0; e < static_cast<std::size_t>(host.NELEMS); ++e) {
        const int n = host.corners(e);
        const double G = std::fabs(host.property(e, VQ_GMOD));
        for (int p = 0; p < n && G > 0; ++p) {
            const std::size_t part = part_at_corner(e, p, level);
            const std::int32_t at = finest.node(part, p), from = finest.node(part, (p + 1) % n),
                               to = finest.node(part, (p + n - 1) % n);
            const double ay = finest.y(from) - finest.y(at), az = finest.z(from) - finest.z(at);
            const double by = finest.y(to) - finest.y(at), bz = finest.z(to) - finest.z(at);
            sectors.push_back({at, from, to, std::atan2(az, ay), std::atan2(ay * bz - az * by, ay * by + az * bz), G});
        }
    }
    std::sort(sectors.begin(), sectors.end(), [](const Sector& a, const Sector& b) {
        return a.node != b.node ? a.node < b.node : a.begin != b.begin ? a.begin < b.begin : a.from < b.from;
    });
    std::vector<std::int8_t> sharp(static_cast<std::size_t>(host.NNODES));
    for (std::size_t k = 0, end; k < sectors.size(); k = end) {
        for (end = k; end < sectors.size() && sectors[end].node == sectors[k].node;) ++end;
        sharp[static_cast<std::size_t>(sectors[k].node) - 1] = is_sharp(&sectors[k], end - k) ? 1 : 0;
    }
    return sharp;
}

}  // namespace levels
