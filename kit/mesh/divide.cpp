#include "kit/mesh/divide.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double LAYERS = 2;   // of elements through the thickness, at least
constexpr double COMPACT = 8;  // elements along the side of a square of the section's area, at least
// Length over width of a wall's elements, away from its ends. Oblongs make the torsional stiffness of the library wrong
// by the square of their length over that of the wall's thickness: little where the wall is one of a closed cell.
constexpr double STRETCH = 1, STRETCH_OF_CELL = 4;
constexpr double GROWTH = 0.5;           // of the size, over the distance
constexpr double AT_SHARP = 0.15;        // size at a sharp point, over the size that it has without
constexpr double MOST_TURN = PI / 4;     // of an arc in one element
constexpr double FILLET_TURN = PI / 12;  // of one that the material lies outside of, where stresses are wanted
constexpr int MANY = 500;                // curves, from which the thickness at the middle of short ones is enough
constexpr int MOST_CURVES = 4000;        // that can be meshed in seconds
constexpr double THINNEST = 5e-7;        // over the length of all curves: thinner pieces are beyond the mesher
constexpr double MOST_ALONG = 4000;      // elements along all curves, up to which sizes may go down
constexpr double MOST_ACROSS = 300;      // elements along the side of the same square, up to which they are wished for

struct Source {
    Point at;
    double size;
};

double size_at(const std::vector<Source>& sources, const Point& p) {
    double size = std::numeric_limits<double>::infinity();
    for (const Source& s : sources) size = std::min(size, s.size + GROWTH * length(p - s.at));
    return size;
}

// Where a ray from p along the unit vector d meets a curve first, further away than `least`.
double distance_to(const Plane& plane, int curve, const Point& p, const Point& d, double least) {
    const Curve& c = plane.curves[curve];
    const Point from = plane.points[c.from], to = plane.points[c.to];
    double nearest = std::numeric_limits<double>::infinity();
    if (c.sweep == 0) {
        const double det = cross(d, to - from);
        const double s = cross(from - p, to - from) / det, t = cross(from - p, d) / det;
        if (det != 0 && t >= 0 && t <= 1 && s > least) nearest = s;
        return nearest;
    }
    const Point m = p - c.centre, r = from - c.centre;
    const double half = dot(m, d), root = std::sqrt(half * half - dot(m, m) + dot(r, r));
    for (const double s : {-half - root, -half + root}) {  // not numbers where the ray passes by
        const Point q = m + s * d;
        double angle = std::atan2(cross(r, q), dot(r, q));
        if (angle * c.sweep < 0 && std::abs(angle) > PI / 2) angle += c.sweep > 0 ? 2 * PI : -2 * PI;
        if (s > least && angle / c.sweep >= 0 && angle / c.sweep <= 1) nearest = std::min(nearest, s);
    }
    return nearest;
}

// From a point of a side along its inward normal to the next curve of its owner.
double thickness_at(const Plane& plane, const Point& p, const Point& inwards, int owner, double least) {
    double nearest = std::numeric_limits<double>::infinity();
    for (int k = 0; k < static_cast<int>(plane.curves.size()); ++k)
        if (plane.curves[k].left == owner || plane.curves[k].right == owner)
            nearest = std::min(nearest, distance_to(plane, k, p, inwards, least));
    return nearest;
}

// Shares of the nodes along a side whose elements have these sizes, at least n of them.
template <class Size>
std::vector<double> shares_along(const Plane& plane, Side side, int n, Size size) {
    const double total = length_of(plane, side);
    std::vector<double> where = {0}, count = {0};
    while (where.back() < total) {
        const double s = where.back(), h = size(s / total);
        const double step = std::min(0.3 * h, total - s);
        const double middle = size((s + step / 2) / total);
        where.push_back(total - (s + step) < 1e-9 * total ? total : s + step);
        count.push_back(count.back() + step / middle);
    }
    n = std::max(n, static_cast<int>(std::ceil(count.back() - 0.2)));
    std::vector<double> shares;
    std::size_t k = 1;
    for (int i = 1; i < n; ++i) {
        const double wanted = count.back() * i / n;
        while (count[k] < wanted) ++k;
        const double part = (wanted - count[k - 1]) / (count[k] - count[k - 1]);
        shares.push_back((where[k - 1] + part * (where[k] - where[k - 1])) / total);
    }
    return shares;
}

// Curves that must have the same shares, as opposite sides of walls; each with its direction in its class.
struct Classes {
    std::vector<Side> parent;  // of a curve, counted from 1: the side of another that corresponds to it

    explicit Classes(std::size_t n) : parent(n) {
        for (std::size_t k = 0; k < n; ++k) parent[k] = static_cast<Side>(k + 1);
    }
    Side root(Side s) const {
        while (true) {
            const Side up = s > 0 ? parent[s - 1] : -parent[-s - 1];
            if (up == s) return s;
            s = up;
        }
    }
    void join(Side a, Side b) {
        const Side ra = root(a), rb = root(b);
        if (std::abs(ra) == std::abs(rb)) return;
        parent[std::abs(rb) - 1] = rb > 0 ? ra : -ra;
    }
};

std::vector<double> reversed(std::vector<double> shares) {
    std::reverse(shares.begin(), shares.end());
    for (double& t : shares) t = 1 - t;
    return shares;
}

int turns(const Plane& plane, Side side, bool for_stresses) {
    const Curve& c = plane.curves[curve_of(side)];
    const bool fillet = (c.left == OUTSIDE) != (c.right == OUTSIDE) && (c.sweep < 0) == (c.right == OUTSIDE);
    const double most = for_stresses && fillet ? FILLET_TURN : MOST_TURN;
    return std::max(1, static_cast<int>(std::ceil(std::abs(c.sweep) / most - 1e-6)));
}

// Of every point on the outline the number of its closed line, so that the two sides of a cell's wall differ.
std::vector<int> outlines_of(const Plane& plane) {
    std::vector<int> line(plane.points.size());
    std::iota(line.begin(), line.end(), 0);
    const auto root = [&](int p) {
        while (line[p] != p) p = line[p] = line[line[p]];
        return p;
    };
    for (const Curve& c : plane.curves)
        if (c.left == OUTSIDE || c.right == OUTSIDE) line[root(c.from)] = root(c.to);
    for (std::size_t p = 0; p < line.size(); ++p) line[p] = root(static_cast<int>(p));
    return line;
}

double area_of(const Plane& plane) {
    double area = 0;
    for (const Curve& c : plane.curves) {
        if ((c.left == OUTSIDE) == (c.right == OUTSIDE)) continue;
        const Point a = plane.points[c.from] - plane.points[0], b = plane.points[c.to] - plane.points[0];
        const double r = c.sweep == 0 ? 0 : length(plane.points[c.from] - c.centre);
        const double below = cross(a, b) / 2 + r * r / 2 * (c.sweep - std::sin(c.sweep));
        area += c.left != OUTSIDE ? below : -below;
    }
    return area;
}

}  // namespace

std::vector<std::vector<double>> divide(const Plane& plane, const std::vector<Wall>& walls,
                                        const std::vector<bool>& sharp, double size, double fineness,
                                        bool for_stresses) {
    const int n = static_cast<int>(plane.curves.size());
    const double side = std::sqrt(area_of(plane));
    if (n > MOST_CURVES)
        throw Failed{std::max(plane.curves.back().left, plane.curves.back().right),
                     "all outlines have " + std::to_string(n) + " edges, and at most " + std::to_string(MOST_CURVES) +
                         " can be meshed"};
    double perimeter = 0;
    for (int k = 0; k < n; ++k) perimeter += length_of(plane, k + 1);
    const double finest = perimeter / MOST_ALONG / fineness;
    const double least = std::max(perimeter / MOST_ALONG, side / MOST_ACROSS);
    if (size > 0 && size < least)
        throw Error("wishes.size", text_of(size) + " makes too many elements",
                    "must be 0, or at least " + text_of(least, 3) + " here");
    const double wanted = side / COMPACT;
    const double coarsest = std::max(finest, (size > 0 ? std::min(wanted, size) : wanted) / fineness);

    // The sides of walls are done by wall; all others by the thickness that is found behind them.
    std::vector<bool> of_wall(2 * n, false);
    const auto index = [](Side s) { return 2 * static_cast<std::size_t>(curve_of(s)) + (s < 0); };
    std::vector<Source> sources;
    std::vector<double> width(walls.size());
    for (std::size_t w = 0; w < walls.size(); ++w) {
        const auto& s = walls[w].sides;
        const double thickness = std::max(length_of(plane, s[1]), length_of(plane, s[3]));
        width[w] = thickness / std::max(std::ceil(LAYERS * fineness - 1e-9), std::ceil(thickness / coarsest - 1e-9));
        for (const Side k : s) of_wall[index(k)] = true;
        for (const int end : {1, 3})
            for (const double t : {0.0, 0.5, 1.0})
                sources.push_back({point_at(plane, s[end], t), std::max(finest, width[w])});
    }
    for (int k = 0; k < n; ++k)
        for (const Side s : {k + 1, -k - 1}) {
            if (owner_of(plane, s) == OUTSIDE || of_wall[index(s)]) continue;
            const double total = length_of(plane, s);
            const int samples = static_cast<int>(std::clamp(20 * total / side, n > MANY ? 1.0 : 3.0, 40.0));
            for (int i = 0; i < samples; ++i) {
                const double t = (i + 0.5) / samples;
                const Point p = point_at(plane, s, t), inwards = left_of(direction_at(plane, s, t));
                const double deep = thickness_at(plane, p, inwards, owner_of(plane, s), 1e-6 * side);
                if (deep < THINNEST * perimeter)
                    throw Failed{owner_of(plane, s), "is thinner than 5e-7 of the length of all its lines at (" +
                                                         text_of(p.y) + ", " + text_of(p.z) + ")"};
                sources.push_back({p, std::clamp(deep / LAYERS / fineness, finest, coarsest)});
            }
        }
    const std::vector<Source> smooth = sources;
    for (std::size_t p = 0; p < sharp.size(); ++p)
        if (sharp[p])
            sources.push_back({plane.points[p], std::max(finest, AT_SHARP * size_at(smooth, plane.points[p]))});

    Classes classes(n);
    for (const Wall& w : walls) {
        classes.join(w.sides[0], -w.sides[2]);
        classes.join(w.sides[1], -w.sides[3]);
    }
    std::vector<std::vector<double>> shares(n);
    const auto offer = [&](Side s, const std::vector<double>& offered) {
        const Side root = classes.root(s);
        auto& kept = shares[curve_of(root)];
        if (offered.size() > kept.size()) kept = root > 0 ? offered : reversed(offered);
    };
    const std::vector<int> lines = outlines_of(plane);
    for (std::size_t w = 0; w < walls.size(); ++w) {
        const auto& s = walls[w].sides;
        const int layers = static_cast<int>(std::max(length_of(plane, s[1]), length_of(plane, s[3])) / width[w] + 0.5);
        std::vector<double> across;
        for (int i = 1; i < layers; ++i) across.push_back(static_cast<double>(i) / layers);
        offer(s[1], across);
        const auto is_outline = [&](Side k) { return owner_of(plane, -k) == OUTSIDE; };
        const bool of_cell =
            is_outline(s[0]) && is_outline(s[2]) && lines[begin_of(plane, s[0])] != lines[begin_of(plane, s[2])];
        const double longest = std::clamp((of_cell ? STRETCH_OF_CELL : STRETCH) * width[w], finest, coarsest);
        for (const Side along : {s[0], s[2]})
            offer(along, shares_along(plane, along, turns(plane, along, for_stresses), [&](double t) {
                      return std::min(longest, size_at(sources, point_at(plane, along, t)));
                  }));
    }
    for (int k = 0; k < n; ++k)
        if (!of_wall[2 * k] && !of_wall[2 * k + 1])
            shares[k] = shares_along(plane, k + 1, turns(plane, k + 1, for_stresses), [&](double t) {
                return std::min(coarsest, size_at(sources, point_at(plane, k + 1, t)));
            });
    for (int k = 0; k < n; ++k) {
        const Side root = classes.root(k + 1);
        if (curve_of(root) != k) shares[k] = root > 0 ? shares[curve_of(root)] : reversed(shares[curve_of(root)]);
    }
    return shares;
}

}  // namespace velquor
