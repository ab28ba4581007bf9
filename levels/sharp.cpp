#include "levels/sharp.h"

#include <algorithm>
#include <cmath>

namespace levels {
namespace {

constexpr double PI = 3.14159265358979324;
constexpr int REGULAR = 64;
constexpr double FLAT = 1e-9;  // angle of an element without area, up to rounding

// The corner of an element at a node of the host: counter-clockwise from its edge to node `from` to that to node `to`.
struct Sector {
    std::int32_t node, from, to;
    double begin, angle, G;
};

bool follows(const Sector& a, const Sector& b) { return a.to == b.from; }

// Near a node u = r^k f(angle) solves div G grad u = 0: f'' = -k^2 f in each sector, while f and G f' pass from one to
// the next.

// Between free edges, where G f' = 0: f = cos p, f' = -k sin p, where p begins with 0 and grows by k times the angle.
// It ends with pi for the smallest k above 0 (Sturm's oscillation theorem). Returns whether k is above that.
bool is_above(const std::vector<const Sector*>& chain, double k) {
    double p = 0, G = chain.front()->G;
    for (const Sector* sector : chain) {
        const double turns = std::nearbyint(p / PI);
        p = turns * PI + std::atan(std::tan(p - turns * PI) * G / sector->G) + k * sector->angle;
        G = sector->G;
    }
    return p > PI;
}

// All around, f must come back to itself: the trace of what takes (f, G f' / k) once around is 2, as it is for k = 0,
// and above 2 just beyond the smallest k above 0.
bool is_above_closed(const std::vector<const Sector*>& ring, double k) {
    double a = 1, b = 0, c = 0, d = 1;
    for (const Sector* sector : ring) {
        const double cosine = std::cos(k * sector->angle), sine = std::sin(k * sector->angle), G = sector->G;
        const double a_before = a, b_before = b;
        a = cosine * a + sine / G * c;
        b = cosine * b + sine / G * d;
        c = cosine * c - G * sine * a_before;
        d = cosine * d - G * sine * b_before;
    }
    return a + d > 2 + 1e-9;
}

// The smallest k above 0 in 64ths, as far as it is below 1: is_above(sectors, k) for that and all others up to 1.
template <class Test>
int smallest(const std::vector<const Sector*>& sectors, Test is_above_at) {
    const auto passed = [&](int k) { return is_above_at(sectors, (k + 0.5) / REGULAR); };
    int below = 0, above = REGULAR;
    if (!passed(REGULAR - 1)) return REGULAR;
    while (above - below > 1) {
        const int k = (below + above) / 2;
        (passed(k) ? above : below) = k;
    }
    return above;
}

bool has_one_material(const std::vector<const Sector*>& sectors) {
    return std::all_of(sectors.begin(), sectors.end(), [&](const Sector* s) { return s->G == sectors[0]->G; });
}

// The sectors at one node, by the angles at which they begin: chains from free edge to free edge, or all around.
int exponent(const Sector* sectors, std::size_t n) {
    std::size_t begin = 0;
    while (begin < n && follows(sectors[(begin + n - 1) % n], sectors[begin])) ++begin;
    int least = REGULAR, chains = 0;
    std::vector<const Sector*> chain;
    for (std::size_t k = 0; k < n; ++k) {
        chain.push_back(&sectors[(begin + k) % n]);
        if (begin == n || (k + 1 < n && follows(*chain.back(), sectors[(begin + k + 1) % n]))) continue;
        if (++chains > 1) return HINGE;
        least = std::min(least, smallest(chain, is_above));
        chain.clear();
    }
    return begin == n && !has_one_material(chain) ? smallest(chain, is_above_closed) : least;
}

}  // namespace

std::vector<std::int8_t> exponents(const Tables& host, const Tables& finest, int level) {
    std::vector<Sector> sectors;
    sectors.reserve(4 * static_cast<std::size_t>(host.NELEMS));
    for (std::size_t e = 0; e < static_cast<std::size_t>(host.NELEMS); ++e) {
        const int n = host.corners(e);
        const double G = std::fabs(host.property(e, VQ_GMOD));
        const std::size_t before = sectors.size();
        bool flat = false;  // without area, as a triangle may be: its corners belong to no fan
        for (int p = 0; p < n && G > 0; ++p) {
            const std::size_t part = part_at_corner(e, p, level);
            const std::int32_t at = finest.node(part, p), from = finest.node(part, (p + 1) % n),
                               to = finest.node(part, (p + n - 1) % n);
            const double ay = finest.y(from) - finest.y(at), az = finest.z(from) - finest.z(at);
            const double by = finest.y(to) - finest.y(at), bz = finest.z(to) - finest.z(at);
            const double angle = std::atan2(ay * bz - az * by, ay * by + az * bz);
            flat = flat || !(angle > FLAT);
            sectors.push_back({at, from, to, std::atan2(az, ay), angle, G});
        }
        if (flat) sectors.resize(before);
    }
    std::sort(sectors.begin(), sectors.end(), [](const Sector& a, const Sector& b) {
        return a.node != b.node ? a.node < b.node : a.begin != b.begin ? a.begin < b.begin : a.from < b.from;
    });
    std::vector<std::int8_t> found(static_cast<std::size_t>(host.NNODES), REGULAR);
    for (std::size_t k = 0, end; k < sectors.size(); k = end) {
        for (end = k; end < sectors.size() && sectors[end].node == sectors[k].node;) ++end;
        found[static_cast<std::size_t>(sectors[k].node) - 1] = static_cast<std::int8_t>(exponent(&sectors[k], end - k));
    }
    return found;
}

}  // namespace levels
