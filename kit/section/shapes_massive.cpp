// Shapes of one piece: bars, tubes, plates, and the larger ones of concrete.
#include <cmath>

#include "kit/section/geometry.h"
#include "kit/section/shapes.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

// An ellipse is drawn in arcs through three of its points each, at equal steps of the eccentric angle. With 128 of them
// the area is right within 1e-6, and the outline within 1e-5 of the smaller axis, for axes up to 10 : 1.
constexpr int ELLIPSE_ARCS = 128;

Outline rectangle_at(const Point& c, double b, double h, double r = 0) {
    return rounded({{{c.y - b / 2, c.z - h / 2}, r},
                    {{c.y + b / 2, c.z - h / 2}, r},
                    {{c.y + b / 2, c.z + h / 2}, r},
                    {{c.y - b / 2, c.z + h / 2}, r}});
}

Outline polygon_at(int n, double r) {
    std::vector<Corner> corners;
    // A side lies at the bottom.
    for (int i = 0; i < n; ++i) {
        const double angle = -PI / 2 + (2 * i + 1) * PI / n;
        corners.push_back({{r * std::cos(angle), r * std::sin(angle)}});
    }
    return rounded(corners);
}

std::vector<Face> rectangle(const Given& p) {
    p.at_most("r", "h / 2", p("h") / 2);
    p.at_most("r", "b / 2", p("b") / 2);
    return {{rectangle_at({}, p("b"), p("h"), p("r")), {}}};
}

std::vector<Face> circle(const Given& p) { return {{circle_at({}, p("d") / 2), {}}}; }

std::vector<Face> ring(const Given& p) {
    p.below("t", "d / 2", p("d") / 2);
    return {{circle_at({}, p("d") / 2), {circle_at({}, p("d") / 2 - p("t"))}}};
}

std::vector<Face> hollow_rectangle(const Given& p) {
    const double h = p("h"), b = p("b"), t = p("t");
    p.below("t", "h / 2", h / 2);
    p.below("t", "b / 2", b / 2);
    p.at_most("ro", "h / 2", h / 2);
    p.at_most("ro", "b / 2", b / 2);
    p.at_most("ri", "h / 2 - t", h / 2 - t);
    p.at_most("ri", "b / 2 - t", b / 2 - t);
    // In the corner's diagonal the wall must not vanish: the outer arc is cut back by (sqrt 2 - 1) ro.
    p.below("ro", "ri + t / (1 - sqrt(1/2))", p("ri") + t / (1 - std::sqrt(0.5)));
    return {{rectangle_at({}, b, h, p("ro")), {rectangle_at({}, b - 2 * t, h - 2 * t, p("ri"))}}};
}

std::vector<Face> ellipse(const Given& p) {
    const double a = p("b") / 2, b = p("h") / 2;
    const auto at = [&](double step) {
        const double angle = step * 2 * PI / ELLIPSE_ARCS;
        return Point{a * std::cos(angle), b * std::sin(angle)};
    };
    Outline outline;
    for (int i = 1; i <= ELLIPSE_ARCS; ++i) outline.edges.push_back({at(i % ELLIPSE_ARCS), true, at(i - 0.5)});
    return {{outline, {}}};
}

std::vector<Face> triangle(const Given& p) {
    const double b = p("b");
    return {{rounded({{{-b / 2, 0}}, {{b / 2, 0}}, {{p("a"), p("h")}}}), {}}};
}

std::vector<Face> trapezoid(const Given& p) {
    const double b = p("b"), t = p("bt"), a = p("a"), h = p("h");
    return {{rounded({{{-b / 2, 0}}, {{b / 2, 0}}, {{a + t / 2, h}}, {{a - t / 2, h}}}), {}}};
}

std::vector<Face> polygon(const Given& p) {
    const double n = p("n"), r = p("d") / 2, t = p("t");
    Face face = {polygon_at(static_cast<int>(n), r), {}};
    if (t > 0) {
        p.below("t", "d / 2 cos(180 / n)", r * std::cos(PI / n));
        face.holes.push_back(polygon_at(static_cast<int>(n), r - t / std::cos(PI / n)));
    }
    return {face};
}

std::vector<Face> concrete_t(const Given& p) {
    const double h = p("h"), b = p("b"), bw = p("bw"), hf = p("hf"), bv = p("bv"), hv = p("hv");
    p.below("bw", "b", b);
    p.below("hf", "h", h);
    p.below("bv", "(b - bw) / 2", (b - bw) / 2);
    p.below("hv", "h - hf", h - hf);
    const bool haunch = bv > 0 && hv > 0;
    std::vector<Corner> c = {{{bw / 2, -h}}};
    if (haunch) c.insert(c.end(), {{{bw / 2, -hf - hv}}, {{bw / 2 + bv, -hf}}});
    if (!haunch) c.push_back({{bw / 2, -hf}});
    c.insert(c.end(), {{{b / 2, -hf}}, {{b / 2, 0}}});
    for (std::size_t i = c.size(); i-- > 0;) c.push_back({{-c[i].at.y, c[i].at.z}});
    return {{rounded(c), {}}};
}

std::vector<Face> box_girder(const Given& p) {
    const double h = p("h"), b = p("b"), bt = p("bt"), bb = p("bb") > 0 ? p("bb") : bt;
    const double tw = p("tw"), tt = p("tt"), tb = p("tb");
    const double tip = p("tc") > 0 ? p("tc") : tt, root = p("tr") > 0 ? p("tr") : tt;
    p.below("bt", "b", b);
    p.at_most("bb", "b", b);
    p.below("tt", "h - tb", h - tb);
    p.below("tc", "h", h);
    p.below("tr", "h", h);
    // Sides of the webs at a height z: between (bt / 2, -root) and (bb / 2, -h) outside, tw further in inside.
    const auto side = [&](double z) { return bt / 2 + (bb - bt) / 2 * (-root - z) / (h - root); };
    p.below("tw", "the box's half width inside", std::min(side(-tt), side(-(h - tb))));
    p.above("tw", "what the webs lean outwards from tr up to tt", side(-tt) - bt / 2);
    const double it = side(-tt) - tw, ib = side(-(h - tb)) - tw;
    const Outline outer = rounded({{{bb / 2, -h}},
                                   {{bt / 2, -root}},
                                   {{b / 2, -tip}},
                                   {{b / 2, 0}},
                                   {{-b / 2, 0}},
                                   {{-b / 2, -tip}},
                                   {{-bt / 2, -root}},
                                   {{-bb / 2, -h}}});
    return {{outer, {rounded({{{ib, tb - h}}, {{it, -tt}}, {{-it, -tt}}, {{-ib, tb - h}}})}}};
}

}  // namespace

std::vector<Shape> massive_shapes() {
    const Kind any = Kind::offset, radius = Kind::optional_length;
    return {
        {"rectangle",
         "rectangle, its corners rounded on wish; origin: centre",
         {{"h", "height"}, {"b", "width"}, {"r", "radius of the corners", radius, false}},
         rectangle},
        {"circle", "circle; origin: centre", {{"d", "diameter"}}, circle},
        {"ring", "round tube; origin: centre", {{"d", "outer diameter"}, {"t", "thickness"}}, ring},
        {"hollow_rectangle",
         "rectangular tube; origin: centre",
         {{"h", "overall height"},
          {"b", "overall width"},
          {"t", "thickness"},
          {"ro", "outer radius of the corners", radius, false},
          {"ri", "inner radius of the corners", radius, false}},
         hollow_rectangle},
        {"ellipse", "ellipse, drawn in 128 arcs; origin: centre", {{"h", "height"}, {"b", "width"}}, ellipse},
        {"triangle",
         "triangle on a level base; origin: middle of the base",
         {{"h", "height"}, {"b", "width of the base"}, {"a", "apex to the right of the origin", any, false}},
         triangle},
        {"trapezoid",
         "trapezoid on a level base; origin: middle of the base",
         {{"h", "height"},
          {"b", "width of the base"},
          {"bt", "width of the top"},
          {"a", "middle of the top to the right of the origin", any, false}},
         trapezoid},
        {"polygon",
         "regular polygon, solid or a tube, a side at the bottom; origin: centre",
         {{"n", "number of sides", Kind::sides},
          {"d", "diameter of the circle through the corners"},
          {"t", "thickness of the wall; 0: solid", radius, false}},
         polygon},
        {"concrete_t",
         "beam with a slab on top, with haunches on wish; origin: middle of the slab's top",
         {{"h", "overall height"},
          {"b", "width of the slab"},
          {"bw", "width of the web"},
          {"hf", "thickness of the slab"},
          {"bv", "width of the haunches", radius, false},
          {"hv", "height of the haunches", radius, false}},
         concrete_t},
        {"box_girder",
         "box with inclined webs under a deck with cantilevers; origin: middle of the deck's top",
         {{"h", "overall height"},
          {"b", "width of the deck"},
          {"bt", "width of the box under the deck, outside"},
          {"bb", "width of the box at its bottom, outside; 0: bt", radius, false},
          {"tt", "thickness of the deck over the box"},
          {"tb", "thickness of the bottom"},
          {"tw", "thickness of the webs, measured level"},
          {"tc", "thickness of the cantilevers at their tips; 0: tt", radius, false},
          {"tr", "thickness of the cantilevers at the webs; 0: tt", radius, false}},
         box_girder},
    };
}

}  // namespace velquor
