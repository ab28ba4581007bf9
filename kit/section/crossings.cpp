#include "kit/section/crossings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "kit/section/geometry.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

Piece piece_of(std::size_t outline, std::size_t number, const Point& from, const Edge& edge) {
    Piece piece;
    piece.outline = outline;
    piece.edge = number;
    piece.from = from;
    piece.to = edge.to;
    piece.low = {std::min(from.y, edge.to.y), std::min(from.z, edge.to.z)};
    piece.high = {std::max(from.y, edge.to.y), std::max(from.z, edge.to.z)};
    if (!edge.arc) return piece;
    const Circle circle = circle_of(from, edge);
    piece.arc = true;
    piece.left = cross(edge.to - from, edge.through - from) > 0;
    piece.centre = circle.centre;
    piece.radius = circle.radius;
    // The circle's outermost points, where they are of the arc.
    const auto on_arc = [&](double y, double z) {
        return (cross(edge.to - from, circle.centre + Point{y, z} - from) > 0) == piece.left;
    };
    const double r = circle.radius;
    if (on_arc(-r, 0)) piece.low.y = circle.centre.y - r;
    if (on_arc(0, -r)) piece.low.z = circle.centre.z - r;
    if (on_arc(r, 0)) piece.high.y = circle.centre.y + r;
    if (on_arc(0, r)) piece.high.z = circle.centre.z + r;
    return piece;
}

double distance(const Piece& piece, const Point& p) {
    const Point along = piece.to - piece.from, to_p = p - piece.from;
    if (!piece.arc) {
        const double share = dot(to_p, along) / dot(along, along);
        return length(to_p - std::clamp(share, 0.0, 1.0) * along);
    }
    const Point out = p - piece.centre;
    const double far = length(out);
    const Point nearest = far > 0 ? piece.centre + piece.radius / far * out : piece.from;
    if ((cross(along, nearest - piece.from) > 0) == piece.left) return std::abs(far - piece.radius);
    return std::min(length(to_p), distance(p, piece.to));
}

// A place where two edges may meet, `deep` where they change sides there.
struct Candidate {
    Point at;
    bool deep;
};

// Common points of the lines and circles that the edges are of, or where these come nearest to one another.
void meet_anywhere(const Piece& a, const Piece& b, double tolerance, std::vector<Candidate>& places) {
    if (!a.arc && !b.arc) {
        const Point u = a.to - a.from, v = b.to - b.from;
        const double sine = cross(u, v);
        if (sine != 0) places.push_back({a.from + cross(b.from - a.from, v) / sine * u, true});
        return;
    }
    if (a.arc && b.arc) {
        const double d = distance(a.centre, b.centre);
        if (d <= tolerance) return;  // about one centre: they have ends on one another, or nothing in common
        const Point n = 1 / d * (b.centre - a.centre);
        const double x = (d + (a.radius - b.radius) * (a.radius + b.radius) / d) / 2;
        const double depth = std::min(a.radius + b.radius - d, d - std::abs(a.radius - b.radius));
        if (depth <= tolerance) places.push_back({a.centre + std::copysign(a.radius, x) * n, false});
        const double h = std::sqrt(std::max(0.0, (a.radius - x) * (a.radius + x)));
        if (depth > 0)
            for (const double side : {-h, h})
                places.push_back({a.centre + x * n + side * left_of(n), depth > tolerance});
        return;
    }
    const Piece &line = a.arc ? b : a, &arc = a.arc ? a : b;
    const Point u = unit(line.to - line.from);
    const Point foot = line.from + dot(arc.centre - line.from, u) * u;
    const double d = distance(foot, arc.centre);
    if (arc.radius - d <= tolerance) places.push_back({foot, false});
    const double h = std::sqrt(std::max(0.0, (arc.radius - d) * (arc.radius + d)));
    if (arc.radius > d)
        for (const double side : {-h, h}) places.push_back({foot + side * u, arc.radius - d > tolerance});
}

// The second common point of two lines or circles that have this one.
void meet_again(const Piece& a, const Piece& b, const Point& shared, double tolerance, std::vector<Candidate>& places) {
    if (!a.arc && !b.arc) return;
    if (a.arc && b.arc) {
        if (distance(a.centre, b.centre) <= tolerance) return;
        const Point m = left_of(unit(b.centre - a.centre));
        places.push_back({shared - 2 * dot(shared - a.centre, m) * m, true});
        return;
    }
    const Piece &line = a.arc ? b : a, &arc = a.arc ? a : b;
    const Point u = unit(line.to - line.from);
    places.push_back({shared + 2 * dot(arc.centre - shared, u) * u, true});
}

Point direction(const Piece& piece, const Point& at) {
    if (!piece.arc) return unit(piece.to - piece.from);
    const Point out = unit(at - piece.centre);
    return piece.left ? -1 * left_of(out) : left_of(out);  // what bulges to the left turns right
}

bool both_on_one_side(const Piece& line, const Piece& other, double tolerance) {
    const Point u = line.to - line.from;
    const double one = cross(u, other.from - line.from), two = cross(u, other.to - line.from);
    if ((one > 0) != (two > 0)) return false;
    const double least = std::min(std::abs(one), std::abs(two));
    return least * least > tolerance * tolerance * dot(u, u);
}

// Where two edges meet; ends that they share as neighbours do not count.
std::optional<Crossing> meeting(const Piece& a, const Piece& b, bool b_follows, bool a_follows, double tolerance) {
    if (!a.arc && !b.arc && (both_on_one_side(a, b, tolerance) || both_on_one_side(b, a, tolerance))) return {};
    std::vector<Point> shared;
    for (const auto& [follows, one, next] : {std::tuple{b_follows, &a, &b}, std::tuple{a_follows, &b, &a}})
        if (follows) {
            shared.push_back(one->to);
            const Point before = direction(*one, one->to), after = direction(*next, one->to);
            if (dot(before, after) < 0 && std::abs(cross(before, after)) <= SAME_PLACE)
                return Crossing{a, b, Crossing::turns_back_on, one->to};
        }
    const auto apart = [&](const Point& p, const std::vector<Point>& from) {
        return std::all_of(from.begin(), from.end(), [&](const Point& q) { return distance(p, q) > 2 * tolerance; });
    };
    const auto on_both = [&](const Point& p) { return distance(a, p) <= tolerance && distance(b, p) <= tolerance; };

    std::vector<Point> ends;  // of one on the other
    for (const Point& p : {a.from, a.to, b.from, b.to})
        if (apart(p, shared) && apart(p, ends) && on_both(p)) ends.push_back(p);
    if (ends.size() > 1) {
        // The middle between them, of a line or of either way round a circle.
        std::vector<Point> middles = {0.5 * (ends[0] + ends[1])};
        if (a.arc) {
            const Point aside = a.radius * left_of(unit(ends[1] - ends[0]));
            middles = {a.centre + aside, a.centre - aside};
        }
        for (const Point& middle : middles)
            if (on_both(middle)) return Crossing{a, b, Crossing::runs_along, middle};
    }
    std::vector<Candidate> places;
    if (shared.empty()) meet_anywhere(a, b, tolerance, places);
    if (shared.size() == 1) meet_again(a, b, shared[0], tolerance, places);
    for (const Candidate& c : places)
        if (apart(c.at, shared) && on_both(c.at))
            return Crossing{a, b,
                            c.deep && apart(c.at, {a.from, a.to, b.from, b.to}) ? Crossing::crosses : Crossing::touches,
                            c.at};
    if (!ends.empty()) return Crossing{a, b, Crossing::touches, ends[0]};
    return {};
}

// 1 where p lies to the left of the line from a to b, else -1. What lies on a level line counts as above it, as it does
// for the ray; for what lies on another one both are right, as long as the ray and the arc are told the same.
int side(const Point& a, const Point& b, const Point& p) {
    const double s = cross(b - a, p - a);
    return s > 0 || (s == 0 && b.y > a.y) ? 1 : -1;
}

// Whether a ray to the right crosses the outlines an odd number of times; an arc counts as its chord, and all between
// the two lies on the other side of it.
template <class Wanted>
bool encloses(const Region& region, const Point& p, Wanted wanted) {
    bool odd = false;
    for (const Piece& e : region.pieces) {
        if (!wanted(e)) continue;
        const bool between = (e.from.z > p.z) != (e.to.z > p.z);
        if (!between && !e.arc) continue;
        const int s = side(e.from, e.to, p);
        if (between && (s > 0) == (e.to.z > e.from.z)) odd = !odd;
        if (e.arc && (s > 0) == e.left && distance(p, e.centre) < e.radius) odd = !odd;
    }
    return odd;
}

bool in_box(const Region& region, const Point& p, double margin) {
    return p.y >= region.low.y - margin && p.y <= region.high.y + margin && p.z >= region.low.z - margin &&
           p.z <= region.high.z + margin;
}

std::string text_at(const Point& p, double tolerance) {
    const auto shown = [&](double x) { return text_of(std::abs(x) <= tolerance ? 0 : x, 7); };
    return "(" + shown(p.y) + ", " + shown(p.z) + ")";
}

}  // namespace

Region region_of(const Face& face) {
    Region region;
    const auto take = [&](const Outline& outline, std::size_t number) {
        for (std::size_t i = 0; i < outline.edges.size(); ++i) {
            const Point& from = i > 0 ? outline.edges[i - 1].to : outline.edges.back().to;
            region.pieces.push_back(piece_of(number, i, from, outline.edges[i]));
        }
    };
    take(face.outer, 0);
    for (std::size_t k = 0; k < face.holes.size(); ++k) take(face.holes[k], k + 1);
    constexpr double FAR = std::numeric_limits<double>::infinity();
    region.low = {FAR, FAR};
    region.high = {-FAR, -FAR};
    for (const Piece& piece : region.pieces) {
        region.low = {std::min(region.low.y, piece.low.y), std::min(region.low.z, piece.low.z)};
        region.high = {std::max(region.high.y, piece.high.y), std::max(region.high.z, piece.high.z)};
    }
    region.tolerance = SAME_PLACE * std::max(region.high.y - region.low.y, region.high.z - region.low.z);
    return region;
}

std::optional<Crossing> crossing_of(const Region& region, bool but_touching) {
    const double tolerance = region.tolerance;
    std::vector<std::size_t> count;  // edges of each outline
    for (const Piece& piece : region.pieces) {
        count.resize(std::max(count.size(), piece.outline + 1));
        ++count[piece.outline];
    }
    std::vector<Piece> order = region.pieces;
    std::sort(order.begin(), order.end(), [](const Piece& a, const Piece& b) {
        return std::tuple(a.low.y, a.outline, a.edge) < std::tuple(b.low.y, b.outline, b.edge);
    });
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t j = i + 1; j < order.size() && order[j].low.y <= order[i].high.y + tolerance; ++j) {
            if (order[j].low.z > order[i].high.z + tolerance || order[j].high.z < order[i].low.z - tolerance) continue;
            const Piece *a = &order[i], *b = &order[j];
            if (std::pair(b->outline, b->edge) < std::pair(a->outline, a->edge)) std::swap(a, b);
            const bool same = a->outline == b->outline;
            const bool b_follows = same && b->edge == a->edge + 1;
            const bool a_follows = same && a->edge == 0 && b->edge + 1 == count[a->outline];
            if (const auto found = meeting(*a, *b, b_follows, a_follows, tolerance))
                if (!but_touching || found->way == Crossing::crosses) return found;
        }
    return {};
}

bool inside(const Region& region, const Point& p) {
    if (!in_box(region, p, region.tolerance)) return false;
    return encloses(region, p, [](const Piece&) { return true; }) ||
           distance_to_boundary(region, p) <= region.tolerance;
}

double distance_to_boundary(const Region& region, const Point& p) {
    double least = std::numeric_limits<double>::infinity();
    for (const Piece& piece : region.pieces) least = std::min(least, distance(piece, p));
    return least;
}

void check_crossings(const Face& face, const std::string& place) {
    const Region region = region_of(face);
    const auto hole = [](std::size_t outline) { return "holes[" + std::to_string(outline - 1) + "]"; };
    const auto name = [&](std::size_t outline) { return outline == 0 ? "outline" : hole(outline); };
    if (const auto found = crossing_of(region)) {
        // Between an outline and a hole, the hole is what lies wrong.
        const bool alike = found->edge.outline == found->other.outline;
        const Piece &edge = alike ? found->edge : found->other, &other = alike ? found->other : found->edge;
        const char* way = found->way == Crossing::crosses      ? "crosses"
                          : found->way == Crossing::touches    ? "touches"
                          : found->way == Crossing::runs_along ? "runs along"
                                                               : "turns back on";
        throw Error(place + "." + name(edge.outline) + "[" + std::to_string(edge.edge) + "]",
                    std::string(way) + " edge " + std::to_string(other.edge) +
                        (alike                ? ""
                         : other.outline == 0 ? " of the outline"
                                              : " of " + hole(other.outline)) +
                        " at " + text_at(found->at, region.tolerance),
                    alike                ? found->way == Crossing::crosses ? "outlines must not cross themselves"
                                                                           : "outlines must not touch themselves"
                    : other.outline == 0 ? "holes must lie inside the outline"
                                         : "holes must lie apart from one another");
    }
    // Nothing crosses: any point of a hole tells where the whole of it lies.
    const auto in_outline = [&](std::size_t number, const Point& p) {
        return encloses(region, p, [&](const Piece& e) { return e.outline == number; });
    };
    for (std::size_t k = 0; k < face.holes.size(); ++k)
        if (!in_outline(0, face.holes[k].edges[0].to))
            throw Error(place + "." + hole(k + 1), "lies outside of the outline", "holes must lie inside the outline");
    std::vector<Region> holes;
    for (const Outline& outline : face.holes) holes.push_back(region_of({outline, {}}));
    for (std::size_t k = 0; k < holes.size(); ++k)
        for (std::size_t m = 0; m < holes.size(); ++m) {
            const Point& p = face.holes[k].edges[0].to;
            if (k != m && in_box(holes[m], p, 0) && encloses(holes[m], p, [](const Piece&) { return true; }))
                throw Error(place + "." + hole(k + 1), "lies in " + hole(m + 1),
                            "holes must lie apart from one another");
        }
}

}  // namespace velquor
