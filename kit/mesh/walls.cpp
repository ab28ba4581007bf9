#include "kit/mesh/walls.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr std::size_t MOST_CURVES = 2000;  // every pair is looked at; sections of more are meshed without walls
constexpr double TAPER = 0.2;              // sine of the largest angle between the sides of a straight wall
constexpr double SHORTEST = 0.8;           // length over thickness
constexpr double CUT_BACK = 1.0;           // from a sharp point, over thickness
constexpr double NEAR = 0.3;               // over thickness: ends that count as opposite to each other
constexpr double SNAP = 0.1;               // over thickness: a cut this near to a point goes through it
constexpr double STEP = 0.7;  // cosine between an edge and the line across, from which it bars the wall's end
constexpr double GAP = 0.1;   // between a wall's end and what lies beyond, over the thickness

// Two sides that run beside each other, seen along the wall: stations are lengths, growing along the first side.
struct Pair {
    Side a, b;
    Point origin, along;    // of a straight wall
    double radius = 0;      // of a bend: of its middle, by which angles become stations
    double a0, a1, b0, b1;  // stations of the ends of each; b runs from b1 to b0
    double lo, hi;          // what both have
    double thickness;
};

// A place on a curve where a wall ends: at an existing point, or at the share t of the curve.
struct Cut {
    int curve = -1;
    double t = 0;
    int point = -1;
};

struct Found {
    Pair pair;
    double lo, hi;
    std::array<int, 4> cuts;  // a at lo and hi, b at hi and lo
    std::vector<std::array<Point, 4>> quads;
};

double share_on_a(const Pair& p, double s) { return (s - p.a0) / (p.a1 - p.a0); }
double share_on_b(const Pair& p, double s) { return (p.b1 - s) / (p.b1 - p.b0); }

bool straight_pair(const Plane& plane, Side a, Side b, Pair& p) {
    const Point da = direction_at(plane, a, 0.5), db = direction_at(plane, b, 0.5);
    if (dot(da, db) >= 0 || std::abs(cross(da, db)) > TAPER) return false;
    p.a = a, p.b = b;
    p.along = unit(da - db);
    p.origin = plane.points[begin_of(plane, a)];
    const auto station = [&](int point) { return dot(plane.points[point] - p.origin, p.along); };
    p.a0 = station(begin_of(plane, a)), p.a1 = station(end_of(plane, a));
    p.b0 = station(end_of(plane, b)), p.b1 = station(begin_of(plane, b));
    p.lo = std::max(p.a0, p.b0), p.hi = std::min(p.a1, p.b1);
    if (p.hi <= p.lo) return false;
    const double middle = (p.lo + p.hi) / 2;
    const auto across = [&](double s) {
        return cross(p.along, point_at(plane, b, share_on_b(p, s)) - point_at(plane, a, share_on_a(p, s)));
    };
    p.thickness = across(middle);
    return std::min(across(p.lo), across(p.hi)) > 0.3 * p.thickness && p.hi - p.lo >= SHORTEST * p.thickness;
}

bool bent_pair(const Plane& plane, Side a, Side b, Pair& p) {
    const Curve &ca = plane.curves[curve_of(a)], &cb = plane.curves[curve_of(b)];
    const double sweep_a = sweep_of(plane, a), sweep_b = sweep_of(plane, b);
    const Point from = plane.points[begin_of(plane, a)] - ca.centre, to = plane.points[end_of(plane, b)] - ca.centre;
    const double ra = length(from), rb = length(to);
    if (sweep_a <= 0 || sweep_b >= 0 || rb >= ra || length(ca.centre - cb.centre) > 1e-6 * ra) return false;
    p.a = a, p.b = b;
    p.radius = (ra + rb) / 2;
    p.thickness = ra - rb;
    p.a0 = 0, p.a1 = sweep_a * p.radius;
    p.b0 = std::atan2(cross(from, to), dot(from, to)) * p.radius, p.b1 = p.b0 - sweep_b * p.radius;
    p.lo = std::max(p.a0, p.b0), p.hi = std::min(p.a1, p.b1);
    return p.hi - p.lo >= NEAR * p.thickness && p.hi - p.lo > 0.9 * (p.a1 - p.a0);
}

std::vector<std::array<Point, 4>> quads_of(const Plane& plane, const Pair& p, double lo, double hi) {
    const int n = p.radius > 0 ? 4 : 1;
    std::vector<std::array<Point, 4>> quads;
    for (int i = 0; i < n; ++i) {
        const double s0 = lo + (hi - lo) * i / n, s1 = lo + (hi - lo) * (i + 1) / n;
        std::array<Point, 4> q = {point_at(plane, p.a, share_on_a(p, s0)), point_at(plane, p.a, share_on_a(p, s1)),
                                  point_at(plane, p.b, share_on_b(p, s1)), point_at(plane, p.b, share_on_b(p, s0))};
        // Drawn in a little: what lies on the wall's own sides is not inside.
        const double in = p.radius > 0 ? 0.1 : 1e-6;
        const Point c = 0.25 * (q[0] + q[1] + q[2] + q[3]);
        for (Point& corner : q) corner = corner + in * (c - corner);
        quads.push_back(q);
    }
    return quads;
}

bool meets(const std::array<Point, 4>& quad, const Point& from, const Point& to) {
    double t0 = 0, t1 = 1;
    for (int i = 0; i < 4; ++i) {
        const Point side = quad[(i + 1) % 4] - quad[i];
        const double d0 = cross(side, from - quad[i]), d1 = cross(side, to - quad[i]);
        if (d0 < 0 && d1 < 0) return false;
        if (d0 < 0) t0 = std::max(t0, d0 / (d0 - d1));
        if (d1 < 0) t1 = std::min(t1, d0 / (d0 - d1));
    }
    return t0 < t1;
}

bool overlap(const std::array<Point, 4>& a, const std::array<Point, 4>& b) {
    for (int i = 0; i < 4; ++i)
        if (meets(a, b[i], b[(i + 1) % 4]) || meets(b, a[i], a[(i + 1) % 4])) return true;
    return false;
}

// No other curve lies between the two sides.
bool is_clear(const Plane& plane, const Pair& p, const std::vector<std::array<Point, 4>>& quads) {
    for (int k = 0; k < static_cast<int>(plane.curves.size()); ++k) {
        if (k == curve_of(p.a) || k == curve_of(p.b)) continue;
        const int n = plane.curves[k].sweep == 0 ? 1 : 6;
        for (int i = 0; i < n; ++i)
            for (const auto& quad : quads)
                if (meets(quad, point_at(plane, k + 1, static_cast<double>(i) / n),
                          point_at(plane, k + 1, static_cast<double>(i + 1) / n)))
                    return false;
    }
    return true;
}

// Whether a straight line between two points comes near to a third one, or to an arc: what lies between would be too
// narrow for a mesh.
bool passes_a_point(const Plane& plane, int from, int to) {
    const Point a = plane.points[from], way = plane.points[to] - a;
    const auto is_near = [&](const Point& p) {
        const double along = dot(p - a, way) / dot(way, way);
        return along > 0 && along < 1 && std::abs(cross(way, p - a)) <= GAP * dot(way, way);
    };
    for (const Curve& c : plane.curves) {
        const Side side = static_cast<Side>(&c - plane.curves.data()) + 1;
        for (const int k : {c.from, c.to})
            if (k != from && k != to && is_near(plane.points[k])) return true;
        if (c.sweep == 0 || c.from == from || c.from == to || c.to == from || c.to == to) continue;
        for (int i = 1; i < 8; ++i)
            if (is_near(point_at(plane, side, i / 8.0))) return true;
    }
    return false;
}

class Cuts {
public:
    explicit Cuts(Plane& p) : plane(p), of_curve(p.curves.size()) {}

    // The cut of a side at a share, or at an end or an earlier cut that is nearer than `near`.
    int at(Side side, double share, double near) {
        const int k = curve_of(side);
        const double t = side > 0 ? share : 1 - share, length = length_of(plane, side);
        const Curve& c = plane.curves[k];
        if (t * length <= near && t <= 0.5) return point(c.from);
        if ((1 - t) * length <= near) return point(c.to);
        for (const int cut : of_curve[k])
            if (std::abs(all[cut].t - t) * length <= near) return cut;
        all.push_back({k, t, -1});
        of_curve[k].push_back(static_cast<int>(all.size()) - 1);
        return of_curve[k].back();
    }
    int point(int p) {
        all.push_back({-1, 0, p});
        return static_cast<int>(all.size()) - 1;
    }
    int point_of(int cut) const { return all[cut].point; }

    void make() {
        for (std::size_t k = 0; k < of_curve.size(); ++k) {
            auto& cuts = of_curve[k];
            std::sort(cuts.begin(), cuts.end(), [&](int i, int j) { return all[i].t > all[j].t; });
            double rest = 1;  // the last piece is split off first
            for (const int cut : cuts) {
                all[cut].point = split(plane, static_cast<int>(k), all[cut].t / rest);
                rest = all[cut].t;
            }
        }
    }

private:
    Plane& plane;
    std::vector<std::vector<int>> of_curve;
    std::vector<Cut> all;
};

// The wall's end at one station of both sides: where it may lie, and whether it is an edge that stands there already.
struct End {
    double station;
    bool tip;
};

End end_of_wall(const Plane& plane, const Pair& p, const std::vector<bool>& sharp, bool low) {
    const int at_a = low ? begin_of(plane, p.a) : end_of(plane, p.a);
    const int at_b = low ? end_of(plane, p.b) : begin_of(plane, p.b);
    const double sa = low ? p.a0 : p.a1, sb = low ? p.b0 : p.b1, inwards = low ? 1 : -1;
    const double least = low ? p.lo : p.hi;
    const bool opposite = std::abs(sa - sb) <= NEAR * p.thickness;
    const bool a_here = std::abs(sa - least) <= NEAR * p.thickness, b_here = std::abs(sb - least) <= NEAR * p.thickness;
    bool tip = false, blocked = (a_here && sharp[at_a]) || (b_here && sharp[at_b]);
    const Point across = unit(point_at(plane, p.b, share_on_b(p, least)) - point_at(plane, p.a, share_on_a(p, least)));
    for (int k = 0; k < static_cast<int>(plane.curves.size()); ++k) {
        const Curve& c = plane.curves[k];
        if (c.from != at_a && c.to != at_a && c.from != at_b && c.to != at_b) continue;
        if (opposite && c.sweep == 0 && (c.from == at_a || c.to == at_a) && (c.from == at_b || c.to == at_b)) {
            tip = true;
            continue;
        }
        // A step: an edge that begins at the wall's end and runs across it.
        for (const Side s : {k + 1, -k - 1}) {
            const double out = dot(direction_at(plane, s, 0), across);
            if ((a_here && begin_of(plane, s) == at_a && out > STEP) ||
                (b_here && begin_of(plane, s) == at_b && out < -STEP))
                blocked = true;
        }
    }
    if (blocked) return {least + inwards * CUT_BACK * p.thickness, false};
    return {least, tip};
}

}  // namespace

std::vector<bool> sharp_points(const Plane& plane, const std::vector<int>& material_of_owner, double limit) {
    std::vector<std::vector<std::pair<double, Side>>> around(plane.points.size());
    for (std::size_t k = 0; k < plane.curves.size(); ++k)
        for (const Side s : {static_cast<Side>(k + 1), -static_cast<Side>(k + 1)}) {
            const Point d = direction_at(plane, s, 0);
            around[begin_of(plane, s)].push_back({std::atan2(d.z, d.y), s});
        }
    std::vector<bool> sharp(plane.points.size(), false);
    for (std::size_t i = 0; i < around.size(); ++i) {
        auto& sides = around[i];
        std::sort(sides.begin(), sides.end());
        double widest = 0;
        int outside = 0;
        bool mixed = false;
        int material = -1;
        for (std::size_t k = 0; k < sides.size(); ++k) {
            const double next = k + 1 < sides.size() ? sides[k + 1].first : sides[0].first + 2 * PI;
            const double angle = next - sides[k].first;
            const int owner = owner_of(plane, sides[k].second);
            if (owner == OUTSIDE) {
                ++outside;
                continue;
            }
            widest += angle;
            if (material >= 0 && material_of_owner[owner] != material) mixed = true;
            material = material_of_owner[owner];
        }
        if (outside > 0) sharp[i] = outside > 1 || widest > PI + limit;
        // Inside of the section: an interface of two materials that is not smooth.
        if (outside == 0 && mixed) {
            const bool two = sides.size() == 2;
            const double angle = two ? sides[1].first - sides[0].first : 0;
            sharp[i] = !two || std::abs(angle - PI) > limit;
        }
    }
    return sharp;
}

std::vector<Wall> cut_walls(Plane& plane, const std::vector<bool>& sharp) {
    const int n = static_cast<int>(plane.curves.size());
    if (plane.curves.size() > MOST_CURVES) return {};
    std::vector<Side> sides;
    for (int k = 0; k < n; ++k)
        for (const Side s : {k + 1, -k - 1})
            if (owner_of(plane, s) != OUTSIDE) sides.push_back(s);
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < sides.size(); ++i)
        for (std::size_t j = 0; j < sides.size(); ++j) {
            const Side a = sides[i], b = sides[j];
            if (curve_of(a) == curve_of(b) || owner_of(plane, a) != owner_of(plane, b)) continue;
            const bool straight = sweep_of(plane, a) == 0;
            if (straight != (sweep_of(plane, b) == 0) || (straight && i > j)) continue;
            Pair p;
            if (straight ? straight_pair(plane, a, b, p) : bent_pair(plane, a, b, p)) pairs.push_back(p);
        }
    const auto slender = [](const Pair& p) { return (p.hi - p.lo) / p.thickness; };
    std::stable_sort(pairs.begin(), pairs.end(), [&](const Pair& p, const Pair& q) {
        return std::make_pair(p.radius > 0, slender(p)) > std::make_pair(q.radius > 0, slender(q));
    });

    Cuts cuts(plane);
    std::vector<Found> found;
    for (const Pair& p : pairs) {
        const End lo = end_of_wall(plane, p, sharp, true), hi = end_of_wall(plane, p, sharp, false);
        if (hi.station - lo.station < (p.radius > 0 ? NEAR : SHORTEST) * p.thickness) continue;
        Found f = {p, lo.station, hi.station, {}, quads_of(plane, p, lo.station, hi.station)};
        bool free = is_clear(plane, p, f.quads);
        for (std::size_t k = 0; free && k < found.size(); ++k)
            for (const auto& mine : f.quads)
                for (const auto& other : found[k].quads) free = free && !overlap(mine, other);
        if (!free) continue;
        const double near = SNAP * p.thickness;
        f.cuts = {lo.tip ? cuts.point(begin_of(plane, p.a)) : cuts.at(p.a, share_on_a(p, lo.station), near),
                  hi.tip ? cuts.point(end_of(plane, p.a)) : cuts.at(p.a, share_on_a(p, hi.station), near),
                  hi.tip ? cuts.point(begin_of(plane, p.b)) : cuts.at(p.b, share_on_b(p, hi.station), near),
                  lo.tip ? cuts.point(end_of(plane, p.b)) : cuts.at(p.b, share_on_b(p, lo.station), near)};
        found.push_back(std::move(f));
    }
    cuts.make();

    // Sides by their ends. Where a side of a wall is cut by a wall of its neighbour, this one is given up.
    std::multimap<std::pair<int, int>, Side> between;
    const auto enter = [&](int k) {
        between.emplace(std::make_pair(plane.curves[k].from, plane.curves[k].to), k + 1);
        between.emplace(std::make_pair(plane.curves[k].to, plane.curves[k].from), -k - 1);
    };
    for (int k = 0; k < static_cast<int>(plane.curves.size()); ++k) enter(k);
    const auto side_between = [&](int from, int to, int owner, bool straight) {
        const auto [low, high] = between.equal_range({from, to});
        for (auto k = low; k != high; ++k)
            if (owner_of(plane, k->second) == owner && (sweep_of(plane, k->second) == 0) == straight) return k->second;
        return 0;
    };
    std::vector<Wall> walls;
    for (const Found& f : found) {
        std::array<int, 4> corner;
        for (int i = 0; i < 4; ++i) corner[i] = cuts.point_of(f.cuts[i]);
        const int owner = owner_of(plane, f.pair.a);
        const bool straight = f.pair.radius == 0;
        Wall wall = {{side_between(corner[0], corner[1], owner, straight), 0,
                      side_between(corner[2], corner[3], owner, straight), 0}};
        if (wall.sides[0] == 0 || wall.sides[2] == 0) continue;
        const bool tips = corner[1] == corner[2] || corner[3] == corner[0];
        if (tips) continue;
        for (const int i : {1, 3}) wall.sides[i] = side_between(corner[i], corner[(i + 1) % 4], owner, true);
        if ((wall.sides[1] == 0 && passes_a_point(plane, corner[1], corner[2])) ||
            (wall.sides[3] == 0 && passes_a_point(plane, corner[3], corner[0])))
            continue;
        for (const int i : {1, 3}) {
            const int from = corner[i], to = corner[(i + 1) % 4];
            if (wall.sides[i] != 0) continue;
            plane.curves.push_back({from, to, 0, {}, owner, owner});
            enter(static_cast<int>(plane.curves.size()) - 1);
            wall.sides[i] = static_cast<Side>(plane.curves.size());
        }
        walls.push_back(wall);
    }
    return walls;
}

}  // namespace velquor
