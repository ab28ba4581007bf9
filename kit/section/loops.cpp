#include "kit/section/loops.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "kit/section/geometry.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double ROUNDING = 1e-9;       // of a gap
constexpr double WORTH_CLOSING = 0.05;  // of the extent: a gap that a message offers to close
constexpr std::size_t MOST_LOOKS = 60;  // at points of an outline

struct Box {
    Point low, high;
};

Box box_of(const Run& run) {
    Box box = {run.from, run.from};
    for (const Edge& edge : run.edges)
        for (const Point& p : {edge.to, edge.arc ? edge.through : edge.to}) {
            box.low = {std::min(box.low.y, p.y), std::min(box.low.z, p.z)};
            box.high = {std::max(box.high.y, p.y), std::max(box.high.z, p.z)};
        }
    return box;
}

double extent_of(const std::vector<Run>& runs) {
    if (runs.empty()) return 0;
    Box all = box_of(runs[0]);
    for (const Run& run : runs) {
        const Box box = box_of(run);
        all.low = {std::min(all.low.y, box.low.y), std::min(all.low.z, box.low.z)};
        all.high = {std::max(all.high.y, box.high.y), std::max(all.high.z, box.high.z)};
    }
    return std::max(all.high.y - all.low.y, all.high.z - all.low.z);
}

const Point& end_of(const Run& run) { return run.edges.back().to; }

bool near(const Point& a, const Point& b, double apart) { return distance(a, b) <= apart; }

// Whether b is drawn where a is, in the same sense and from the same point on.
bool same_way(const Run& a, const Run& b, std::size_t shift, double apart) {
    const std::size_t n = a.edges.size();
    if (!a.closed && !near(a.from, b.from, apart)) return false;
    for (std::size_t i = 0; i < n; ++i) {
        const Edge &one = a.edges[i], &other = b.edges[(i + shift) % n];
        if (one.arc != other.arc || !near(one.to, other.to, apart)) return false;
        if (one.arc && !near(one.through, other.through, apart)) return false;
    }
    return true;
}

bool same(const Run& a, const Run& b, double apart) {
    if (a.edges.size() != b.edges.size() || a.closed != b.closed) return false;
    const Run back = reversed(b);
    for (std::size_t shift = 0; shift < (a.closed ? a.edges.size() : 1); ++shift)
        if (same_way(a, b, shift, apart) || same_way(a, back, shift, apart)) return true;
    return false;
}

// Leaves out what stands there already; how many those were.
std::size_t drop_twins(std::vector<Run>& runs, double apart) {
    struct Placed {
        Box box;
        std::size_t run;
    };
    std::vector<Placed> order;
    for (std::size_t i = 0; i < runs.size(); ++i) order.push_back({box_of(runs[i]), i});
    std::stable_sort(order.begin(), order.end(),
                     [](const Placed& a, const Placed& b) { return a.box.low.y < b.box.low.y; });
    std::vector<bool> twin(runs.size(), false);
    for (std::size_t a = 0; a < order.size(); ++a)
        for (std::size_t b = a + 1; b < order.size() && order[b].box.low.y <= order[a].box.low.y + apart; ++b) {
            const auto [first, second] = std::minmax(order[a].run, order[b].run);
            if (!twin[first] && !twin[second] && near(order[a].box.low, order[b].box.low, 2 * apart) &&
                near(order[a].box.high, order[b].box.high, 2 * apart) && same(runs[first], runs[second], apart))
                twin[second] = true;
        }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < runs.size(); ++i)
        if (!twin[i]) {
            if (kept != i) runs[kept] = std::move(runs[i]);
            ++kept;
        }
    const std::size_t dropped = runs.size() - kept;
    runs.resize(kept);
    return dropped;
}

// Without edges that lead nowhere.
void drop_points(Run& run, double apart) {
    Point from = run.from;
    std::vector<Edge> kept;
    for (const Edge& edge : run.edges)
        if (!near(from, edge.to, apart) || (edge.arc && !near(from, edge.through, apart))) {
            kept.push_back(edge);
            from = edge.to;
        } else if (!kept.empty()) {
            kept.back().to = from = edge.to;
        }
    if (run.closed && !kept.empty()) kept.back().to = run.from;
    run.edges = kept;
}

// The two ends of a run: 2 i and 2 i + 1.
struct Ends {
    std::vector<Point> at;
    std::vector<std::size_t> group;  // that an end belongs to: the first of its ends

    std::size_t group_of(std::size_t end) {
        while (group[end] != end) end = group[end] = group[group[end]];
        return end;
    }
};

Ends ends_of(const std::vector<Run>& runs, double gap) {
    Ends ends;
    for (const Run& run : runs) {
        ends.at.push_back(run.from);
        ends.at.push_back(end_of(run));
    }
    std::vector<std::size_t> order(ends.at.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    ends.group = order;
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return ends.at[a].y < ends.at[b].y; });
    for (std::size_t a = 0; a < order.size(); ++a)
        for (std::size_t b = a + 1; b < order.size() && ends.at[order[b]].y - ends.at[order[a]].y <= gap; ++b)
            if (near(ends.at[order[a]], ends.at[order[b]], gap)) {
                const auto [first, second] = std::minmax({ends.group_of(order[a]), ends.group_of(order[b])});
                ends.group[second] = first;
            }
    return ends;
}

[[noreturn]] void refuse_open(const Ends& ends, const std::vector<std::size_t>& open, double extent,
                              const std::string& layer, const std::string& unit) {
    std::size_t next = open[0];
    for (const std::size_t end : open)
        if (end != open[0] &&
            (next == open[0] || distance(ends.at[end], ends.at[open[0]]) < distance(ends.at[next], ends.at[open[0]])))
            next = end;
    const Point &a = ends.at[open[0]], &b = ends.at[next];
    const std::string apart = text_of(distance(a, b), 4) + " " + unit;
    // Rounded up: the gap that is offered must be enough.
    const double d = distance(a, b), digit = std::pow(10, std::floor(std::log10(d)) - 3);
    const std::string enough = text_of(std::ceil(d / digit - 1e-7) * digit, 4);
    throw Error(named_layer(layer),
                next == open[0]
                    ? "open at " + text_at(a)
                    : "open at " + text_at(a) + ", " + apart + " to the next end at " + text_at(b) +
                          (open.size() > 2 ? ", and " + std::to_string(open.size() - 2) + " more ends" : ""),
                next != open[0] && distance(a, b) < WORTH_CLOSING * extent
                    ? "close it, or allow a gap of " + enough
                    : "draw what is missing, or name the layers that are to be read");
}

}  // namespace

Run reversed(const Run& run) {
    Run back;
    back.closed = run.closed;
    back.from = run.edges.empty() ? run.from : end_of(run);
    for (std::size_t i = run.edges.size(); i-- > 0;) {
        back.edges.push_back(run.edges[i]);
        back.edges.back().to = i > 0 ? run.edges[i - 1].to : run.from;
    }
    return back;
}

std::vector<Outline> joined(std::vector<Run> runs, double gap, const std::string& layer, const std::string& unit,
                            std::vector<std::string>& notes) {
    const double extent = extent_of(runs), apart = SAME_END * extent;
    const auto note = [&](std::size_t count, const char* one, const char* many, const std::string& then) {
        if (count > 0)
            notes.push_back(named_layer(layer) + ": " + std::to_string(count) + (count == 1 ? one : many) + then);
    };
    if (gap > 0.1 * extent)
        throw Error(named_layer(layer),
                    "a gap of " + text_of(gap) + " " + unit + " may be closed, and all of it is " + text_of(extent, 4) +
                        " wide",
                    "allow less than a tenth of that");
    gap = std::max(gap * (1 + ROUNDING), apart);

    const std::size_t drawn = runs.size();
    for (Run& run : runs) drop_points(run, apart);
    runs.erase(std::remove_if(runs.begin(), runs.end(), [](const Run& run) { return run.edges.empty(); }), runs.end());
    note(drawn - runs.size(), " entity without length left out", " entities without length left out", "");
    std::size_t twins = drop_twins(runs, apart);

    std::vector<Run> closed, open;
    for (Run& run : runs) (run.closed ? closed : open).push_back(std::move(run));
    // What is shorter than a gap is a part of it.
    Ends ends = ends_of(open, gap);
    std::vector<Run> longer;
    for (std::size_t i = 0; i < open.size(); ++i) {
        const Box box = box_of(open[i]);
        if (ends.group_of(2 * i) != ends.group_of(2 * i + 1) || distance(box.low, box.high) > gap)
            longer.push_back(std::move(open[i]));
    }
    note(open.size() - longer.size(), " line shorter than the gap that may be closed left out",
         " lines shorter than the gap that may be closed left out", "");
    open = std::move(longer);

    ends = ends_of(open, gap);
    std::map<std::size_t, std::vector<std::size_t>> meetings;
    for (std::size_t end = 0; end < ends.at.size(); ++end) meetings[ends.group_of(end)].push_back(end);
    std::vector<std::size_t> lonely;
    std::size_t gaps = 0;
    double widest = 0;
    Point where;
    for (const auto& [group, members] : meetings) {
        if (members.size() == 1) lonely.push_back(members[0]);
        if (members.size() > 2)
            throw Error(named_layer(layer),
                        std::to_string(members.size()) + " ends of lines meet at " + text_at(ends.at[members[0]]),
                        gap > apart ? "allow a narrower gap, or draw each face by itself, as a closed polyline"
                                    : "draw each face by itself, as a closed polyline");
        if (members.size() != 2) continue;
        const double between = distance(ends.at[members[0]], ends.at[members[1]]);
        gaps += between > apart ? 1 : 0;
        if (between > widest) {
            widest = between;
            where = ends.at[members[0]];
        }
    }
    if (!lonely.empty()) refuse_open(ends, lonely, extent, layer, unit);
    note(gaps, " gap closed, ", " gaps closed, the widest ",
         "of " + text_of(widest, 4) + " " + unit + " at " + text_at(where));

    // From each run that is left to the one that its end meets, and on until it comes back.
    std::vector<bool> taken(open.size(), false);
    for (std::size_t first = 0; first < open.size(); ++first) {
        if (taken[first]) continue;
        Run whole;
        whole.closed = true;
        for (std::size_t end = 2 * first; !taken[end / 2];) {  // the end that a run is entered by
            taken[end / 2] = true;
            const Run run = end % 2 == 0 ? open[end / 2] : reversed(open[end / 2]);
            const std::size_t last = end ^ 1;
            const std::vector<std::size_t>& meeting = meetings[ends.group_of(last)];
            const std::size_t next = meeting[0] == last ? meeting[1] : meeting[0];
            whole.edges.insert(whole.edges.end(), run.edges.begin(), run.edges.end());
            whole.edges.back().to =
                distance(ends.at[last], ends.at[next]) > 0 ? 0.5 * (ends.at[last] + ends.at[next]) : ends.at[last];
            end = next;
        }
        whole.from = end_of(whole);
        closed.push_back(std::move(whole));
    }
    twins += drop_twins(closed, apart);
    note(twins, " line or outline that is drawn twice taken once", " lines or outlines that are drawn twice taken once",
         "");

    std::vector<Outline> outlines;
    for (Run& run : closed) {
        const bool arcs = std::any_of(run.edges.begin(), run.edges.end(), [](const Edge& e) { return e.arc; });
        if (run.edges.size() < (arcs ? 2u : 3u))
            throw Error(named_layer(layer),
                        "what closes at " + text_at(run.from) + " has " + std::to_string(run.edges.size()) + " edges",
                        "three enclose something, or two with an arc");
        outlines.push_back({std::move(run.edges)});
    }
    return outlines;
}

Lies lies_in(const Region& inner, const Region& outer) {
    Lies lies;
    if (inner.high.y < outer.low.y || inner.low.y > outer.high.y || inner.high.z < outer.low.z ||
        inner.low.z > outer.high.z)
        return lies;
    bool in = false, out = false;
    const std::size_t step = 1 + inner.pieces.size() / MOST_LOOKS;
    for (std::size_t i = 0; i < inner.pieces.size(); i += step) {
        const Piece& piece = inner.pieces[i];
        const Point middle = 0.5 * (piece.from + piece.to);
        const Point aside = piece.left ? left_of(piece.to - piece.from) : left_of(piece.from - piece.to);
        for (const Point& p : {piece.to, piece.arc ? piece.centre + piece.radius * unit(aside) : middle}) {
            if (distance_to_boundary(outer, p) <= 10 * outer.tolerance) continue;
            const bool here = inside(outer, p);
            if ((here ? out : in) && !lies.across) {
                lies.across = true;
                lies.at = p;
            }
            (here ? in : out) = true;
        }
    }
    lies.inside = !out;
    return lies;
}

std::vector<Face> nested(const std::vector<Outline>& outlines, const std::string& layer) {
    if (outlines.empty()) return {};
    const auto refuse = [&](const Crossing& found) {
        throw Error(named_layer(layer),
                    std::string("lines ") +
                        (found.way == Crossing::crosses      ? "cross"
                         : found.way == Crossing::runs_along ? "run along one another"
                         : found.way == Crossing::touches    ? "touch"
                                                             : "turn back on one another") +
                        " at " + text_at(found.at),
                    "the outline of a face must not cross or touch itself or its holes");
    };
    const Face all = {outlines[0], {outlines.begin() + 1, outlines.end()}};
    if (const auto found = crossing_of(region_of(all), true)) refuse(*found);

    const std::size_t n = outlines.size();
    std::vector<double> area(n);
    std::vector<std::size_t> depth(n, 0), around(n, n);  // the least of those that it lies in
    std::vector<Region> regions;
    for (std::size_t i = 0; i < n; ++i) {
        area[i] = std::abs(area_of(outlines[i]));
        regions.push_back(region_of({outlines[i], {}}));
    }
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t k = 0; k < n; ++k) {
            if (i == k || area[k] < area[i] || (area[k] == area[i] && k > i)) continue;
            const Lies lies = lies_in(regions[i], regions[k]);
            if (lies.across)
                throw Error(named_layer(layer), "outlines overlap at " + text_at(lies.at),
                            "those of one layer must lie in one another, or apart");
            if (!lies.inside) continue;
            ++depth[i];
            if (around[i] == n || area[k] < area[around[i]]) around[i] = k;
        }
    std::vector<Face> faces;
    std::vector<std::size_t> face(n, n);
    for (std::size_t i = 0; i < n; ++i)
        if (depth[i] % 2 == 0) {
            face[i] = faces.size();
            faces.push_back({outlines[i], {}});
        }
    for (std::size_t i = 0; i < n; ++i)
        if (depth[i] % 2 != 0) {
            if (face[around[i]] == n)
                throw Error(named_layer(layer), "outlines overlap at " + text_at(outlines[i].edges[0].to),
                            "those of one layer must lie in one another, or apart");
            faces[face[around[i]]].holes.push_back(outlines[i]);
        }
    for (const Face& each : faces)
        if (const auto found = crossing_of(region_of(each))) refuse(*found);
    return faces;
}

std::string named_layer(std::string_view name) {
    const std::string quoted = in_quotes(name);
    return "layer " + quoted.substr(1, quoted.size() - 2);
}

std::string text_at(const Point& p) {
    const auto shown = [](double x) { return text_of(std::abs(x) < 1e-9 ? 0 : x, 7); };
    return "(" + shown(p.y) + ", " + shown(p.z) + ")";
}

}  // namespace velquor
