#include "kit/section/dxf.h"

#include <dl_creationadapter.h>
#include <dl_dxf.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <sstream>

#include "kit/section/ellipse.h"
#include "kit/section/loops.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double STRAIGHT = 4e-6;      // bulge, the tangent of a quarter of an arc's angle, below which it is a line
constexpr double OUT_OF_PLANE = 1e-6;  // of a drawing's extent
constexpr double FLAT = 1e-9;          // of a normal of length 1, off the drawing's
constexpr double ROUND = 1e-4;         // degrees: 2 pi may be written with seven digits
constexpr int DEEPEST = 16;            // blocks in blocks
constexpr std::size_t MOST_STEPS = 100000;  // entities and copies, blocks put in their places

// Where the origin and the points (1, 0) and (0, 1) of a block go.
struct Map {
    Point origin, right = {1, 0}, up = {0, 1};
    Point turned(const Point& p) const { return p.y * right + p.z * up; }
    Point operator()(const Point& p) const { return origin + turned(p); }
};

Map after(const Map& outer, const Map& inner) {
    return {outer(inner.origin), outer.turned(inner.right), outer.turned(inner.up)};
}

struct Curve {
    Point from, to;
    bool arc = false;
    Arc way;  // of an arc, in its own sense, which may be from `to` to `from`
    bool backwards = false;
};

struct Entity {
    std::string kind, layer;
    double low = 0, high = 0;  // out of the plane
    bool tilted = false;
    std::vector<Curve> curves;
    bool closed = false;
    std::string block;    // of an INSERT
    Map map;              // its first copy
    Point across, along;  // from one column, and one row, to the next
    int columns = 1, rows = 1;
};

struct Block {
    Point base;
    bool elsewhere = false;  // in another drawing
    std::vector<Entity> entities;
    std::vector<Other> others;
};

Curve line_to(const Point& from, const Point& to) { return {from, to, false, {}, false}; }

Curve arc_about(const Arc& way) { return {at(way, way.begin), at(way, way.end), true, way, false}; }

// The arc between two points of a polyline; the bulge is positive where it turns left.
Curve bulged(const Point& from, const Point& to, double bulge) {
    const Point chord = to - from;
    if (std::abs(bulge) < STRAIGHT || length(chord) == 0) return line_to(from, to);
    const double b = std::abs(bulge), towards = (1 - b * b) / (4 * b);  // from the chord's middle to the centre
    const Point centre = 0.5 * (from + to) + (bulge > 0 ? towards : -towards) * left_of(chord);
    const double radius = length(chord) * (1 + b * b) / (4 * b);
    const Point first = (bulge > 0 ? from : to) - centre;
    const double begin = std::atan2(first.z, first.y) * 180 / PI, sweep = 4 * std::atan(b) * 180 / PI;
    return {from, to, true, {centre, {radius, 0}, {0, radius}, begin, begin + sweep}, bulge < 0};
}

// From one angle on to another, above 0 and at most 360.
double sweep_of(double begin, double end) {
    double sweep = std::fmod(end - begin, 360);
    if (sweep < 0) sweep += 360;
    return sweep < ROUND || sweep > 360 - ROUND ? 360 : sweep;
}

// Takes down what dxflib reads.
struct Taker : DL_CreationAdapter {
    std::map<std::string, Block> blocks;  // the drawing itself under an empty name
    std::string block;
    std::vector<Layer> layers;
    int unit = 0;

    struct Vertex {
        Point at;
        double bulge;
    };
    Entity polyline;
    bool spatial = false;  // its vertices have heights of their own
    std::vector<Vertex> vertices;

    Entity entity(const char* kind, double low, double high) const {
        Entity e;
        e.kind = kind;
        e.layer = attributes.getLayer().empty() ? "0" : attributes.getLayer();
        e.low = std::min(low, high);
        e.high = std::max(low, high);
        return e;
    }

    // Entities of a plane of their own may look at the drawing from behind: their x then runs to the left.
    Map own_plane(Entity& e) const {
        double n[3];
        extrusion->getDirection(n);
        e.tilted = std::hypot(n[0], n[1]) > FLAT * std::abs(n[2]) || n[2] == 0;
        if (n[2] > 0) return {};
        std::swap(e.low, e.high);
        e.low = -e.low;
        e.high = -e.high;
        return {{}, {-1, 0}, {0, 1}};
    }

    void put(Entity e) { blocks[block].entities.push_back(std::move(e)); }

    void put_arc(Entity e, Arc way) {
        const Map map = own_plane(e);
        way.centre = map(way.centre);
        way.right = map.turned(way.right);
        way.up = map.turned(way.up);
        e.curves = {arc_about(way)};
        e.closed = way.end - way.begin >= 360;
        put(std::move(e));
    }

    void setVariableInt(const std::string& key, int value, int) override {
        if (key == "$INSUNITS") unit = value;
    }

    void addLayer(const DL_LayerData& data) override {
        Layer layer;
        layer.name = data.name;
        layer.hidden = (data.flags & 1) != 0 || attributes.getColor() < 0;
        layers.push_back(layer);
    }

    void addBlock(const DL_BlockData& data) override {
        block = folded(data.name);
        blocks[block].base = {data.bpx, data.bpy};
        blocks[block].elsewhere = (data.flags & 4) != 0;
    }
    void endBlock() override { block.clear(); }

    void addLine(const DL_LineData& data) override {
        Entity e = entity("LINE", data.z1, data.z2);
        e.curves = {line_to({data.x1, data.y1}, {data.x2, data.y2})};
        put(std::move(e));
    }

    void addArc(const DL_ArcData& data) override {
        const double r = std::max(0.0, data.radius);
        put_arc(entity("ARC", data.cz, data.cz),
                {{data.cx, data.cy}, {r, 0}, {0, r}, data.angle1, data.angle1 + sweep_of(data.angle1, data.angle2)});
    }

    void addCircle(const DL_CircleData& data) override {
        const double r = std::max(0.0, data.radius);
        put_arc(entity("CIRCLE", data.cz, data.cz), {{data.cx, data.cy}, {r, 0}, {0, r}, 0, 360});
    }

    void addEllipse(const DL_EllipseData& data) override {
        Entity e = entity("ELLIPSE", data.cz, data.cz + data.mz);
        Entity turned = e;
        const bool behind = own_plane(turned).right.y < 0;  // its centre is in the drawing's plane all the same
        e.tilted = turned.tilted;
        const double ratio = std::max(0.0, data.ratio), begin = data.angle1 * 180 / PI, end = data.angle2 * 180 / PI;
        Arc way = {{data.cx, data.cy}, {data.mx, data.my}, {}, begin, begin + sweep_of(begin, end)};
        way.up = (behind ? -ratio : ratio) * left_of(way.right);
        e.curves = {arc_about(way)};
        e.closed = way.end - way.begin >= 360;
        put(std::move(e));
    }

    void addPolyline(const DL_PolylineData& data) override {
        const double z = extrusion->getElevation();
        polyline = entity("POLYLINE", z, z);
        polyline.closed = (data.flags & 1) != 0;
        if ((data.flags & 4) != 0) polyline.kind = "POLYLINE fitted by a spline";
        if ((data.flags & (16 | 64)) != 0) polyline.kind = "POLYLINE of a mesh";
        spatial = (data.flags & 8) != 0;
        vertices.clear();
    }

    void addVertex(const DL_VertexData& data) override {
        if (spatial) {
            polyline.low = vertices.empty() ? data.z : std::min(polyline.low, data.z);
            polyline.high = vertices.empty() ? data.z : std::max(polyline.high, data.z);
        }
        vertices.push_back({{data.x, data.y}, data.bulge});
    }

    void endEntity() override {
        Entity e = std::move(polyline);
        polyline = {};
        if (vertices.empty()) return;
        const Map map = own_plane(e);
        const std::size_t count = vertices.size() - (e.closed ? 0 : 1);
        for (std::size_t i = 0; i < count; ++i) {
            const Vertex &a = vertices[i], &b = vertices[(i + 1) % vertices.size()];
            e.curves.push_back(bulged(map(a.at), map(b.at), map.right.y < 0 ? -a.bulge : a.bulge));
        }
        if (e.curves.empty()) e.curves = {line_to(map(vertices[0].at), map(vertices[0].at))};
        vertices.clear();
        put(std::move(e));
    }

    void addInsert(const DL_InsertData& data) override {
        Entity e = entity("INSERT", data.ipz, data.ipz);
        const Map plane = own_plane(e);
        e.block = folded(data.name);
        const Point right = on_circle({}, 1, data.angle), up = left_of(right);
        e.map = after(plane, {{data.ipx, data.ipy}, data.sx * right, data.sy * up});
        e.columns = std::max(1, data.cols);
        e.rows = std::max(1, data.rows);
        e.across = plane.turned(data.colSp * right);
        e.along = plane.turned(data.rowSp * up);
        put(std::move(e));
    }
};

const char* unit_of(int code) {
    switch (code) {
        case 0: return "";
        case 1: return "in";
        case 2: return "ft";
        case 4: return "mm";
        case 5: return "cm";
        case 6: return "m";
        case 14: return "dm";
        default: return nullptr;
    }
}

std::string counted(const std::map<std::string, std::size_t>& counts) {
    std::string text;
    for (const auto& [name, count] : counts) text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + name;
    return text;
}

// Puts the blocks in their places, and the entities on their layers.
struct Placer {
    Taker& taken;
    const std::vector<std::string>& wanted;
    Drawn drawn = {};
    std::map<std::string, std::size_t> numbers = {};  // of layers, by folded names
    std::map<std::string, std::size_t> passed_over = {};
    std::size_t hidden = 0, steps = 0, edges = 0;
    bool any = false;
    double level = 0;  // out of the plane, of the first entity
    double extent = 0;

    Layer& layer(const std::string& name) {
        const auto [at, fresh] = numbers.emplace(folded(name), drawn.layers.size());
        if (fresh) {
            drawn.layers.emplace_back();
            drawn.layers.back().name = name;
        }
        return drawn.layers[at->second];
    }

    bool is_wanted(const Layer& layer) const {
        return wanted.empty() || std::any_of(wanted.begin(), wanted.end(), [&](const std::string& name) {
                   return folded(name) == folded(layer.name);
               });
    }

    [[noreturn]] static void refuse(const std::string& kind, const std::string& layer, const Point& at,
                                    const std::string& fault, const std::string& remedy) {
        throw Error("",
                    in_quotes(kind).substr(1, in_quotes(kind).size() - 2) + " on " + named_layer(layer) + " at " +
                        text_at(at) + ": " + fault,
                    remedy);
    }

    void count_step() {
        if (++steps > MOST_STEPS)
            throw Error("", "more than " + std::to_string(MOST_STEPS) + " entities, blocks put in their places",
                        "leave out of the drawing what is no section");
    }

    // What stands on layer 0 of a block is on the layer that the block is put on.
    static const std::string& layer_in(const std::string& own, const std::string& outer) {
        return own == "0" && !outer.empty() ? outer : own;
    }

    void take(const std::string& name, const Map& map, const std::string& outer, double lift, int depth) {
        const Block& block = taken.blocks[name];
        for (const Other& other : block.others) {
            count_step();
            Layer& on = layer(layer_in(other.layer, outer));
            ++on.entities;
            if (on.hidden || !is_wanted(on)) continue;
            if (other.hidden)
                ++hidden;
            else if (other.passed_over)
                ++passed_over[other.kind];
            else
                refuse(other.kind, on.name, map(other.at), "not read",
                       other.kind == "SPLINE" || other.kind == "HELIX" ? "convert it to arcs or a polyline"
                                                                       : "draw lines, arcs or polylines in its place");
        }
        for (const Entity& e : block.entities) {
            count_step();
            const std::string own = layer_in(e.layer, outer);
            if (e.kind == "INSERT")
                take_copies(e, map, own, lift, depth);
            else
                take(e, map, own, lift);
        }
    }

    void take_copies(const Entity& e, const Map& map, const std::string& own, double lift, int depth) {
        if (layer(own).hidden) return;
        const Point at = map(e.map.origin);
        const auto known = taken.blocks.find(e.block);
        if (known == taken.blocks.end() || e.block.empty() || known->second.elsewhere)
            refuse("INSERT", own, at, "block " + in_quotes(e.block) + " is not in the file",
                   "write it into the drawing as its own block");
        if (e.tilted) refuse("INSERT", own, at, "lies out of the plane", "draw the section in the plane of x and y");
        if (cross(e.map.right, e.map.up) == 0) refuse("INSERT", own, at, "scaled by 0", "give the block another scale");
        if (depth == DEEPEST)
            refuse("INSERT", own, at, "blocks nested deeper than " + std::to_string(DEEPEST),
                   "a block must not hold itself");
        for (int row = 0; row < e.rows; ++row)
            for (int column = 0; column < e.columns; ++column) {
                count_step();
                Map copy = e.map;
                copy.origin = copy.origin + column * e.across + row * e.along - copy.turned(known->second.base);
                take(e.block, after(map, copy), own, lift + e.low, depth + 1);
            }
    }

    void take(const Entity& e, const Map& map, const std::string& own, double lift) {
        Layer& on = layer(own);
        ++on.entities;
        if (on.hidden || !is_wanted(on)) return;
        const Point from = map(e.curves[0].from);
        if (e.kind != "POLYLINE" && e.kind.find(' ') != std::string::npos)
            refuse(e.kind, own, from, "not read", "convert it to a polyline of lines and arcs");
        for (const Curve& curve : e.curves)
            extent = std::max({extent, length(curve.from - e.curves[0].from), length(curve.way.right)});
        const double slack = OUT_OF_PLANE * extent;
        if (e.tilted || e.high - e.low > slack)
            refuse(e.kind, own, from, "leaves the plane of x and y", "draw the section in that plane");
        if (!any) level = lift + e.low;
        if (std::abs(lift + e.low - level) > slack)
            refuse(e.kind, own, from,
                   "lies " + text_of(std::abs(lift + e.low - level), 6) + " above or below what else is drawn",
                   "draw all of the section in one plane");
        any = true;

        Run run;
        run.from = from;
        run.closed = e.closed;
        for (const Curve& curve : e.curves) add(curve, map, e, own, run);
        edges += run.edges.size();
        if (edges > MOST_EDGES)
            throw Error("", "more than " + std::to_string(MOST_EDGES) + " lines and arcs",
                        "name the layers that are to be read");
        on.runs.push_back(std::move(run));
    }

    void add(const Curve& curve, const Map& map, const Entity& e, const std::string& own, Run& run) {
        const Point from = map(curve.from);
        if (!curve.arc) {
            run.edges.push_back({map(curve.to), false, {}});
            return;
        }
        Arc way = curve.way;
        way.centre = map(way.centre);
        way.right = map.turned(way.right);
        way.up = map.turned(way.up);
        if (!(std::abs(cross(way.right, way.up)) > 0))
            refuse(e.kind, own, from, "a radius of 0", "leave it out, or give it a size");
        Arcs found;
        if (!arcs_of(way, found))
            refuse(e.kind, own, from, "too flat for an ellipse of arcs", "convert it to lines and arcs");
        if (found.off > 0) {
            ++drawn.ellipses;
            drawn.arcs += found.edges.size();
            drawn.off = std::max(drawn.off, found.off);
        }
        if (curve.backwards) found.edges = reversed({from, found.edges, false}).edges;
        found.edges.back().to = map(curve.to);  // as it is drawn, not as it comes out of the angles
        run.edges.insert(run.edges.end(), found.edges.begin(), found.edges.end());
    }
};

}  // namespace

std::string folded(std::string_view name) {
    std::string result(name);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

Drawn drawn_in(std::string_view dxf, const std::vector<std::string>& wanted, std::vector<std::string>& notes) {
    const Looked looked = looked_through(dxf);
    Taker taken;
    {
        // dxflib counts lines in a variable that all its readers share.
        static std::mutex one_at_a_time;
        const std::lock_guard<std::mutex> lock(one_at_a_time);
        std::istringstream text(looked.text);
        DL_Dxf().in(text, &taken);
    }
    const char* unit = unit_of(taken.unit);
    for (const Other& other : looked.others) taken.blocks[other.block].others.push_back(other);

    Placer placer{taken, wanted};
    placer.drawn.unit = unit ? unit : "$INSUNITS " + std::to_string(taken.unit);
    for (const Layer& layer : taken.layers)
        if (placer.numbers.emplace(folded(layer.name), placer.drawn.layers.size()).second)
            placer.drawn.layers.push_back(layer);
    placer.take("", {}, "", 0, 0);

    std::string off, others;
    for (const Layer& layer : placer.drawn.layers) {
        if (layer.entities == 0 || (!layer.hidden && placer.is_wanted(layer))) continue;
        std::string& list = layer.hidden ? off : others;
        list += (list.empty() ? "" : ", ") + layer.name;
    }
    const std::size_t hidden = placer.hidden + looked.hidden;
    if (!placer.passed_over.empty()) notes.push_back("passed over: " + counted(placer.passed_over));
    if (hidden > 0) notes.push_back("passed over: " + std::to_string(hidden) + " in paper space, or invisible");
    if (!off.empty()) notes.push_back("passed over, for they are off or frozen: layers " + off);
    if (!others.empty()) notes.push_back("passed over, for no material is given for them: layers " + others);
    return placer.drawn;
}

}  // namespace velquor
