// From parts and bars to the plane: who covers whom, and where they touch.
#include <gmsh.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "kit/mesh/gmsh_session.h"
#include "kit/mesh/plane.h"
#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double QUARTER = PI / 2 * (1 + 1e-9);  // the largest piece of an arc
constexpr double SAME = 1e-9;                    // of the section's extent: points that are one
constexpr const char* NOT_JOINED = "could not be joined with the others";
constexpr std::size_t MOST_EDGES = 5000;  // of all outlines, that can be joined in some ten seconds
constexpr double TOUCHING = 1e-7;         // the same: what is this near to each other is joined
constexpr double EXTENT = 1000;           // to which the section is scaled for the Boolean operations

struct Owned {
    Face face;
    int owner;
};

struct Box {
    double y0 = std::numeric_limits<double>::infinity(), y1 = -y0, z0 = y0, z1 = -y0;
    void take(const Point& p) {
        y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
        z0 = std::min(z0, p.z), z1 = std::max(z1, p.z);
    }
    double extent() const { return std::max(y1 - y0, z1 - z0); }
};

// A closed line in pieces of less than half a circle, counter-clockwise: corner, and the arc that leads to the next
// one.
struct Piece {
    Point at;
    double sweep;
    Point centre;
};

std::vector<Piece> pieces_of(const Outline& outline) {
    std::vector<Piece> pieces;
    Point from = outline.edges.back().to;
    for (const Edge& edge : outline.edges) {
        if (edge.arc) {
            const Point c = circle_of(from, edge).centre;
            const double sweep = sweep_of(from, edge);
            const int n = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / QUARTER)));
            for (int i = 0; i < n; ++i) {
                const Point at = i > 0 ? c + turned(from - c, sweep * i / n) : from;
                pieces.push_back({at, sweep / n, c});
            }
        } else {
            pieces.push_back({from, 0, {}});
        }
        from = edge.to;
    }
    if (area_of(outline) > 0) return pieces;
    std::vector<Piece> turned_round;
    for (std::size_t i = pieces.size(); i-- > 0;)
        turned_round.push_back({pieces[(i + 1) % pieces.size()].at, -pieces[i].sweep, pieces[i].centre});
    return turned_round;
}

Box box_of(const Face& face) {
    Box box;
    Point from = face.outer.edges.back().to;
    for (const Edge& edge : face.outer.edges) {
        if (edge.arc) {
            const Circle c = circle_of(from, edge);
            box.take({c.centre.y - c.radius, c.centre.z - c.radius});
            box.take({c.centre.y + c.radius, c.centre.z + c.radius});
        }
        box.take(edge.to);
        from = edge.to;
    }
    return box;
}

std::vector<Owned> faces_of(const Section& section) {
    std::vector<Owned> faces;
    for (std::size_t i = 0; i < section.parts.size(); ++i)
        for (Face& face : faces_of(section, section.parts[i], place_of_owner(section, i)))
            faces.push_back({std::move(face), static_cast<int>(i)});
    for (std::size_t i = 0; i < section.bars.size(); ++i)
        if (!section.bars[i].as_point)
            faces.push_back({{circle_at(section.bars[i].at, std::sqrt(section.bars[i].area / PI)), {}},
                             static_cast<int>(section.parts.size() + i)});
    return faces;
}

void draw(Plane& plane, const Outline& outline, int owner, bool hole) {
    const std::vector<Piece> pieces = pieces_of(outline);
    const int n = static_cast<int>(pieces.size()), first = static_cast<int>(plane.points.size());
    for (int i = 0; i < n; ++i) {
        plane.points.push_back(pieces[i].at);
        plane.curves.push_back({first + i, first + (i + 1) % n, pieces[i].sweep, pieces[i].centre,
                                hole ? OUTSIDE : owner, hole ? owner : OUTSIDE});
    }
}

// Faces that do not come near each other: their outlines as they are.
bool drawn_apart(Plane& plane, const std::vector<Owned>& faces, double same) {
    std::vector<Box> boxes;
    for (const Owned& f : faces) boxes.push_back(box_of(f.face));
    if (faces.size() > 100) return false;
    for (std::size_t i = 0; i < boxes.size(); ++i)
        for (std::size_t j = 0; j < i; ++j) {
            const Box &a = boxes[i], &b = boxes[j];
            if (a.y0 <= b.y1 + same && b.y0 <= a.y1 + same && a.z0 <= b.z1 + same && b.z0 <= a.z1 + same) return false;
        }
    for (const Owned& f : faces) {
        draw(plane, f.face.outer, f.owner, false);
        for (const Outline& hole : f.face.holes) draw(plane, hole, f.owner, true);
    }
    return true;
}

// Coordinates for the Boolean operations and back. Points and circles that were drawn come back as they were drawn.
struct Scale {
    Point middle;
    double factor, same;
    std::multimap<double, Point> points, centres;  // by y

    Point to(const Point& p) const { return factor * (p - middle); }
    Point back(double y, double z, const std::multimap<double, Point>& drawn) const {
        const Point p = middle + 1 / factor * Point{y, z};
        for (auto k = drawn.lower_bound(p.y - same); k != drawn.end() && k->first <= p.y + same; ++k)
            if (length(k->second - p) <= same) return k->second;
        return p;
    }
};

int loop_in(const Outline& outline, Scale& scale) {
    std::vector<int> points, curves;
    const std::vector<Piece> pieces = pieces_of(outline);
    for (const Piece& piece : pieces) {
        const Point p = scale.to(piece.at);
        points.push_back(gmsh::model::occ::addPoint(p.y, p.z, 0));
        scale.points.emplace(piece.at.y, piece.at);
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const int from = points[i], to = points[(i + 1) % points.size()];
        if (pieces[i].sweep == 0) {
            curves.push_back(gmsh::model::occ::addLine(from, to));
            continue;
        }
        const Point c = scale.to(pieces[i].centre);
        scale.centres.emplace(pieces[i].centre.y, pieces[i].centre);
        const int centre = gmsh::model::occ::addPoint(c.y, c.z, 0);
        curves.push_back(gmsh::model::occ::addCircleArc(from, centre, to));
    }
    return gmsh::model::occ::addCurveLoop(curves);
}

// How often the ray from a point along y, or along z, meets a curve: an end counts where the other one lies higher.
int meetings(const Plane& plane, const Curve& c, const Point& p, bool along_y) {
    const auto ahead = [&](const Point& q) { return along_y ? q.y - p.y : q.z - p.z; };
    const auto aside = [&](const Point& q) { return along_y ? q.z - p.z : q.y - p.y; };
    const Point &from = plane.points[c.from], &to = plane.points[c.to];
    if (c.sweep == 0) {
        if ((aside(from) > 0) == (aside(to) > 0)) return 0;
        return ahead(from) - aside(from) / (aside(to) - aside(from)) * (ahead(to) - ahead(from)) > 0;
    }
    // Both halves of the circle, before its centre and behind it: an arc of a quarter is on each of them once at most.
    const double r = length(from - c.centre), u = ahead(c.centre), v = aside(c.centre);
    const double half = v * v < r * r ? std::sqrt(r * r - v * v) : 0;
    int count = 0;
    for (const double side : {-1.0, 1.0}) {
        const auto on_side = [&](const Point& q) { return side * (ahead(q) - u) > 0; };
        if (!on_side(from) && !on_side(to)) continue;
        // What lies on the other half begins at the top or at the bottom of this one.
        const double pole = v + (v < 0.5 * (aside(from) + aside(to)) ? r : -r);
        const double v0 = on_side(from) ? aside(from) : pole, v1 = on_side(to) ? aside(to) : pole;
        if ((v0 > 0) != (v1 > 0) && u + side * half > 0) ++count;
    }
    return count;
}

// Gives a face to its owner: on which side of each of its curves it lies. From the middle of a curve, a ray that leaves
// it steeply does not meet it again, and meets the others an odd number of times where it begins in the face.
void set_owner(Plane& plane, const std::vector<int>& curves, int owner) {
    for (const int k : curves) {
        const Point p = point_at(plane, k + 1, 0.5), d = direction_at(plane, k + 1, 0.5);
        const bool along_y = std::abs(d.z) > std::abs(d.y), is_left = along_y ? d.z < 0 : d.y > 0;
        int count = 0;
        for (const int other : curves)
            if (other != k) count += meetings(plane, plane.curves[other], p, along_y);
        ((count % 2 == 1) == is_left ? plane.curves[k].left : plane.curves[k].right) = owner;
    }
}

Plane read_back(const std::map<int, int>& owners, const Scale& scale) {
    Plane plane;
    std::map<int, int> points, curves;  // by Gmsh's numbers
    const auto point = [&](int tag) {
        const auto [at, fresh] = points.emplace(tag, static_cast<int>(plane.points.size()));
        if (fresh) {
            std::vector<double> xyz;
            gmsh::model::getValue(0, tag, {}, xyz);
            plane.points.push_back(scale.back(xyz[0], xyz[1], scale.points));
        }
        return at->second;
    };
    const auto curve = [&](int tag, int owner) {
        const auto [at, fresh] = curves.emplace(tag, static_cast<int>(plane.curves.size()));
        if (!fresh) return at->second;
        gmsh::vectorpair ends;
        gmsh::model::getBoundary({{1, tag}}, ends, false, false);
        if (ends.size() != 2) throw Failed{owner, NOT_JOINED};
        Curve c;
        c.from = point(ends[0].second), c.to = point(ends[1].second);
        std::string type;
        gmsh::model::getType(1, tag, type);
        if (type == "Circle") {
            std::vector<double> low, high, xyz;
            gmsh::model::getParametrizationBounds(1, tag, low, high);
            gmsh::model::getValue(1, tag, {(low[0] + high[0]) / 2}, xyz);
            const Point from = plane.points[c.from], to = plane.points[c.to];
            const Edge edge = {to, true, scale.middle + 1 / scale.factor * Point{xyz[0], xyz[1]}};
            if (length(edge.through - 0.5 * (from + to)) > scale.same) {  // what rises less is as good as straight
                const Point found = scale.to(circle_of(from, edge).centre);
                c.centre = scale.back(found.y, found.z, scale.centres);
                c.sweep = std::atan2(cross(from - c.centre, to - c.centre), dot(from - c.centre, to - c.centre));
            }
        } else if (type != "Line") {
            throw Failed{owner, NOT_JOINED};
        }
        plane.curves.push_back(c);
        return at->second;
    };
    for (const auto& [surface, owner] : owners) {
        gmsh::vectorpair boundary;
        gmsh::model::getBoundary({{2, surface}}, boundary, false, true);
        std::vector<int> of_surface;
        for (const auto& [dim, tag] : boundary) of_surface.push_back(curve(std::abs(tag), owner));
        set_owner(plane, of_surface, owner);
    }
    return plane;
}

// Faces that touch or overlap: Boolean operations, then the pieces by their last owner.
Plane joined(const std::vector<Owned>& faces, const Box& box) {
    std::size_t edges = 0;
    for (const Owned& f : faces) {
        edges += pieces_of(f.face.outer).size();
        for (const Outline& hole : f.face.holes) edges += pieces_of(hole).size();
    }
    if (edges > MOST_EDGES)
        throw Failed{faces.back().owner, "all outlines have " + std::to_string(edges) + " edges, and at most " +
                                             std::to_string(MOST_EDGES) + " can be joined"};
    const MeshSession session;
    gmsh::option::setNumber("Geometry.ToleranceBoolean", TOUCHING * EXTENT);
    Scale scale = {{(box.y0 + box.y1) / 2, (box.z0 + box.z1) / 2}, EXTENT / box.extent(), SAME * box.extent(), {}, {}};
    gmsh::vectorpair surfaces, pieces;
    for (const Owned& f : faces) {
        std::vector<int> loops = {loop_in(f.face.outer, scale)};
        for (const Outline& hole : f.face.holes) loops.push_back(loop_in(hole, scale));
        surfaces.push_back({2, gmsh::model::occ::addPlaneSurface(loops)});
        if (surfaces.back().second < 0) throw Failed{f.owner, NOT_JOINED};
    }
    std::vector<gmsh::vectorpair> of_input;
    gmsh::model::occ::fragment({surfaces.front()}, {surfaces.begin() + 1, surfaces.end()}, pieces, of_input);
    gmsh::model::occ::synchronize();
    of_input.resize(faces.size());  // empty where Gmsh gave up
    std::map<int, int> owners;
    for (std::size_t i = 0; i < faces.size(); ++i) {
        if (of_input[i].empty()) throw Failed{faces[i].owner, NOT_JOINED};
        for (const auto& [dim, tag] : of_input[i])
            if (dim == 2) owners[tag] = faces[i].owner;
    }
    return read_back(owners, scale);
}

// Removes curves with the same owner on both sides, then points between two pieces of one line or circle.
void tidy(Plane& plane, double same) {
    auto& curves = plane.curves;
    curves.erase(std::remove_if(curves.begin(), curves.end(), [](const Curve& c) { return c.left == c.right; }),
                 curves.end());
    std::vector<std::vector<Side>> out(plane.points.size());  // sides that begin at a point
    for (std::size_t k = 0; k < curves.size(); ++k) {
        const Side s = static_cast<Side>(k + 1);
        out[curves[k].from].push_back(s);
        out[curves[k].to].push_back(-s);
    }
    std::vector<bool> gone(curves.size(), false);
    for (std::size_t p = 0; p < out.size(); ++p) {
        if (out[p].size() != 2) continue;
        const Side in = -out[p][0], on = out[p][1];
        Curve &a = curves[curve_of(in)], &b = curves[curve_of(on)];
        if (curve_of(in) == curve_of(on) || end_of(plane, on) == begin_of(plane, in)) continue;
        const double turn = std::abs(cross(direction_at(plane, in, 1), direction_at(plane, on, 0)));
        const bool arcs = a.sweep != 0 && b.sweep != 0, lines = a.sweep == 0 && b.sweep == 0;
        const double sweep = sweep_of(plane, in) + sweep_of(plane, on);
        if (turn > 1e-7 || dot(direction_at(plane, in, 1), direction_at(plane, on, 0)) < 0) continue;
        if (!lines && !(arcs && length(a.centre - b.centre) <= same && std::abs(sweep) <= QUARTER)) continue;
        // The first takes both, in its own direction.
        const int end = end_of(plane, on);
        (in > 0 ? a.to : a.from) = end;
        a.sweep = in > 0 ? sweep : -sweep;
        gone[curve_of(on)] = true;
        for (Side& s : out[end])
            if (s == -on) s = -in;
    }
    std::size_t kept = 0;
    for (std::size_t k = 0; k < curves.size(); ++k)
        if (!gone[k]) curves[kept++] = curves[k];
    curves.resize(kept);
}

}  // namespace

Plane plane_of(const Section& section) {
    const std::vector<Owned> faces = faces_of(section);
    Box box;
    for (const Owned& f : faces) {
        const Box b = box_of(f.face);
        box.take({b.y0, b.z0}), box.take({b.y1, b.z1});
    }
    Plane plane;
    const double same = SAME * box.extent();
    try {
        if (!drawn_apart(plane, faces, same)) plane = joined(faces, box);
    } catch (const Failed& failed) {
        throw error_of(section, failed);
    }
    tidy(plane, same);
    plane.owners = static_cast<int>(section.parts.size() + section.bars.size());

    std::vector<bool> seen(plane.owners, false);
    for (const Curve& c : plane.curves)
        for (const int owner : {c.left, c.right})
            if (owner != OUTSIDE) seen[owner] = true;
    for (const Owned& f : faces)
        if (!seen[f.owner])
            throw Error(place_of_owner(section, f.owner), "later ones cover it whole",
                        "leave it out, or put it behind them");
    return plane;
}

}  // namespace velquor
