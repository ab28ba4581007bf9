#include "kit/section/dxf_entities.h"

#include <dl_creationadapter.h>
#include <dl_dxf.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <sstream>

namespace velquor {

namespace {

constexpr double STRAIGHT = 4e-6;  // bulge, the tangent of a quarter of an arc's angle, below which it is a line
constexpr double FLAT = 1e-9;      // of a normal of length 1, off the drawing's
constexpr double ROUND = 1e-4;     // degrees: 2 pi may be written with seven digits

DxfCurve line_to(const Point& from, const Point& to) { return {from, to, false, {}, false}; }

DxfCurve arc_about(const Arc& way) { return {at(way, way.begin), at(way, way.end), true, way, false}; }

// The arc between two points of a polyline; the bulge is positive where it turns left.
DxfCurve bulged(const Point& from, const Point& to, double bulge) {
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
    DxfEntities found;
    std::string block;  // that is being read

    struct Vertex {
        Point at;
        double bulge;
    };
    DxfEntity polyline;
    bool spatial = false;  // its vertices have heights of their own
    std::vector<Vertex> vertices;

    DxfEntity entity(const char* kind, double low, double high) const {
        DxfEntity e;
        e.kind = kind;
        e.layer = attributes.getLayer().empty() ? "0" : attributes.getLayer();
        e.low = std::min(low, high);
        e.high = std::max(low, high);
        return e;
    }

    // Entities of a plane of their own may look at the drawing from behind: their x then runs to the left.
    BlockMap own_plane(DxfEntity& e) const {
        double n[3];
        extrusion->getDirection(n);
        e.tilted = std::hypot(n[0], n[1]) > FLAT * std::abs(n[2]) || n[2] == 0;
        if (n[2] > 0) return {};
        std::swap(e.low, e.high);
        e.low = -e.low;
        e.high = -e.high;
        return {{}, {-1, 0}, {0, 1}};
    }

    void put(DxfEntity e) { found.blocks[block].entities.push_back(std::move(e)); }

    void put_arc(DxfEntity e, Arc way) {
        const BlockMap map = own_plane(e);
        way.centre = map(way.centre);
        way.right = map.turned(way.right);
        way.up = map.turned(way.up);
        e.curves = {arc_about(way)};
        e.closed = way.end - way.begin >= 360;
        put(std::move(e));
    }

    void setVariableInt(const std::string& key, int value, int) override {
        if (key == "$INSUNITS") found.unit = value;
    }

    void addLayer(const DL_LayerData& data) override {
        Layer layer;
        layer.name = data.name;
        layer.hidden = (data.flags & 1) != 0 || attributes.getColor() < 0;
        found.layers.push_back(layer);
    }

    void addBlock(const DL_BlockData& data) override {
        block = folded(data.name);
        found.blocks[block].base = {data.bpx, data.bpy};
        found.blocks[block].elsewhere = (data.flags & 4) != 0;
    }
    void endBlock() override { block.clear(); }

    void addLine(const DL_LineData& data) override {
        DxfEntity e = entity("LINE", data.z1, data.z2);
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
        DxfEntity e = entity("ELLIPSE", data.cz, data.cz + data.mz);
        DxfEntity turned = e;
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
        DxfEntity e = std::move(polyline);
        polyline = {};
        if (vertices.empty()) return;
        const BlockMap map = own_plane(e);
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
        DxfEntity e = entity("INSERT", data.ipz, data.ipz);
        const BlockMap plane = own_plane(e);
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

}  // namespace

BlockMap after(const BlockMap& outer, const BlockMap& inner) {
    return {outer(inner.origin), outer.turned(inner.right), outer.turned(inner.up)};
}

DxfEntities entities_of(const std::string& dxf) {
    // dxflib counts lines in a variable that all its readers share.
    static std::mutex one_at_a_time;
    const std::lock_guard<std::mutex> lock(one_at_a_time);
    Taker taker;
    std::istringstream text(dxf);
    DL_Dxf().in(text, &taker);
    return std::move(taker.found);
}

}  // namespace velquor
