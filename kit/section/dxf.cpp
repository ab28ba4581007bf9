#include "kit/section/dxf.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "kit/section/dxf_entities.h"
#include "kit/section/ellipse.h"
#include "kit/section/loops.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double OUT_OF_PLANE = 1e-6;       // of a drawing's extent
constexpr int DEEPEST = 16;                 // blocks in blocks
constexpr std::size_t MOST_STEPS = 100000;  // entities and copies, blocks put in their places

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
    DxfEntities& taken;
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

    void take(const std::string& name, const BlockMap& map, const std::string& outer, double lift, int depth) {
        const DxfBlock& block = taken.blocks[name];
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
        for (const DxfEntity& e : block.entities) {
            count_step();
            const std::string own = layer_in(e.layer, outer);
            if (e.kind == "INSERT")
                take_copies(e, map, own, lift, depth);
            else
                take(e, map, own, lift);
        }
    }

    void take_copies(const DxfEntity& e, const BlockMap& map, const std::string& own, double lift, int depth) {
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
                BlockMap copy = e.map;
                copy.origin = copy.origin + column * e.across + row * e.along - copy.turned(known->second.base);
                take(e.block, after(map, copy), own, lift + e.low, depth + 1);
            }
    }

    void take(const DxfEntity& e, const BlockMap& map, const std::string& own, double lift) {
        Layer& on = layer(own);
        ++on.entities;
        if (on.hidden || !is_wanted(on)) return;
        const Point from = map(e.curves[0].from);
        if (e.kind != "POLYLINE" && e.kind.find(' ') != std::string::npos)
            refuse(e.kind, own, from, "not read", "convert it to a polyline of lines and arcs");
        for (const DxfCurve& curve : e.curves)
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
        for (const DxfCurve& curve : e.curves) add(curve, map, e, own, run);
        edges += run.edges.size();
        if (edges > MOST_EDGES)
            throw Error("", "more than " + std::to_string(MOST_EDGES) + " lines and arcs",
                        "name the layers that are to be read");
        on.runs.push_back(std::move(run));
    }

    void add(const DxfCurve& curve, const BlockMap& map, const DxfEntity& e, const std::string& own, Run& run) {
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
    DxfEntities taken = entities_of(looked.text);
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
