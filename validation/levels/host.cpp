#include "host.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace {

constexpr double PI = 3.14159265358979324;

double angle_at(const Curve& c, point p) {
    const double y = p.y - c.centre.y, z = p.z - c.centre.z;
    return std::atan2((z * std::cos(c.turn) - y * std::sin(c.turn)) / c.b,
                      (y * std::cos(c.turn) + z * std::sin(c.turn)) / c.a);
}

point on_curve(const Curve& c, double angle) {
    const double u = c.a * std::cos(angle), v = c.b * std::sin(angle);
    return {c.centre.y + u * std::cos(c.turn) - v * std::sin(c.turn),
            c.centre.z + u * std::sin(c.turn) + v * std::cos(c.turn)};
}

point node(const Host& host, int32_t n) { return {host.nodes[n - 1], host.nodes[host.nnodes + n - 1]}; }

// Off the curve by no more than a share of the radius, and within the arc's angles.
bool lies_on(const Arc& arc, point p, double share) {
    const double angle = angle_at(arc.curve, p), half = (arc.to - arc.from) / 2;
    const point foot = on_curve(arc.curve, angle), c = arc.curve.centre;
    const double off = std::hypot(p.y - c.y, p.z - c.z) / std::hypot(foot.y - c.y, foot.z - c.z) - 1;
    return std::fabs(off) < share && std::fabs(std::remainder(angle - arc.from - half, 2 * PI)) < half + 1e-6;
}

}  // namespace

void follow(Host& host, const std::vector<Arc>& arcs, double share) {
    struct Sides {
        int count = 0;
        double E = 0, G = 0;
        bool differ = false;
    };
    std::map<std::pair<int32_t, int32_t>, Sides> edges;
    for (int32_t e = 0; e < host.nelems; ++e) {
        for (int c = 0; c < 4; ++c) {
            const int32_t a = host.elements[c * host.nelems + e], b = host.elements[(c + 1) % 4 * host.nelems + e];
            if (a == b) continue;
            Sides& sides = edges[{std::min(a, b), std::max(a, b)}];
            const double E = host.props[e], G = host.props[host.nelems + e];
            sides.differ = sides.differ || (sides.count > 0 && (E != sides.E || G != sides.G));
            ++sides.count, sides.E = E, sides.G = G;
        }
    }
    for (const auto& [ends, sides] : edges) {
        if (sides.count > 1 && !sides.differ) continue;
        for (const Arc& arc : arcs) {
            const point a = node(host, ends.first), b = node(host, ends.second);
            if (!lies_on(arc, a, share) || !lies_on(arc, b, share)) continue;
            const double from = angle_at(arc.curve, a);
            const double to = from + std::remainder(angle_at(arc.curve, b) - from, 2 * PI);
            if (std::fabs(to - from) < 1e-6) continue;  // runs across
            host.curved.push_back({ends.first, ends.second, arc.curve, from, to});
            break;
        }
    }
    for (const CurvedEdge& edge : host.curved) {  // all were found on the nodes as they were
        const point a = on_curve(edge.curve, edge.from), b = on_curve(edge.curve, edge.to);
        host.nodes[edge.A - 1] = a.y, host.nodes[host.nnodes + edge.A - 1] = a.z;
        host.nodes[edge.B - 1] = b.y, host.nodes[host.nnodes + edge.B - 1] = b.z;
    }
}

void turn_and_shift(Host& host, double radians, point by) {
    const double c = std::cos(radians), s = std::sin(radians);
    const auto moved = [&](point p) { return point{c * p.y - s * p.z + by.y, s * p.y + c * p.z + by.z}; };
    for (int32_t n = 1; n <= host.nnodes; ++n) {
        const point p = moved(node(host, n));
        host.nodes[n - 1] = p.y, host.nodes[host.nnodes + n - 1] = p.z;
    }
    for (CurvedEdge& edge : host.curved) edge.curve.centre = moved(edge.curve.centre), edge.curve.turn += radians;
}

void place_on_curve(void* host, int32_t A, int32_t B, double t, double* YZ) {
    const auto& curved = static_cast<const Host*>(host)->curved;
    const std::pair<int32_t, int32_t> ends = std::minmax(A, B);
    const auto edge = std::lower_bound(
        curved.begin(), curved.end(), ends,
        [](const CurvedEdge& e, const std::pair<int32_t, int32_t>& key) { return std::make_pair(e.A, e.B) < key; });
    if (edge == curved.end() || edge->A != ends.first || edge->B != ends.second) return;
    const point p = on_curve(edge->curve, edge->from + (A < B ? t : 1 - t) * (edge->to - edge->from));
    YZ[0] = p.y, YZ[1] = p.z;
}
