// Cold-formed shapes: a sheet of constant thickness, bent along a line.
#include <cmath>

#include "kit/section/geometry.h"
#include "kit/section/shapes.h"

namespace velquor {

namespace {

// All lengths are given over the outside. A plain side must leave room for the bend at each of its ends.
void sheet(const Given& p, std::initializer_list<const char*> sides) {
    for (const char* side : sides) p.above(side, "2 (t + r)", 2 * (p("t") + p("r")));
    if (p("c") > 0) p.above("c", "t + r", p("t") + p("r"));
}

std::vector<Face> wall(const Given& p, const std::vector<Point>& line) {
    return {{wall_along(line, p("t"), p("r")), {}}};
}

std::vector<Face> cold_c(const Given& p) {
    sheet(p, {"h", "b"});
    const double t = p("t"), h = p("h") / 2 - t / 2, b = p("b") - t / 2, c = p("c");
    if (c <= 0) return wall(p, {{p("b"), h}, {t / 2, h}, {t / 2, -h}, {p("b"), -h}});
    p.below("c", "h / 2", p("h") / 2);
    const double lip = p("h") / 2 - c;
    return wall(p, {{b, lip}, {b, h}, {t / 2, h}, {t / 2, -h}, {b, -h}, {b, -lip}});
}

std::vector<Face> cold_z(const Given& p) {
    sheet(p, {"h", "b"});
    if (p("b2") > 0) p.above("b2", "2 (t + r)", 2 * (p("t") + p("r")));
    const double t = p("t"), h = p("h") / 2 - t / 2, c = p("c");
    const double top = p("b") - t / 2, bottom = (p("b2") > 0 ? p("b2") : p("b")) - t / 2;  // from the web's middle
    if (c <= 0) return wall(p, {{-top, h}, {0, h}, {0, -h}, {bottom, -h}});
    p.below("c", "h / 2", p("h") / 2);
    const double lip = p("h") / 2 - c, yt = -(top - t / 2), yb = bottom - t / 2;
    return wall(p, {{yt, lip}, {yt, h}, {0, h}, {0, -h}, {yb, -h}, {yb, -lip}});
}

std::vector<Face> sigma(const Given& p) {
    sheet(p, {"h", "b"});
    const double t = p("t"), h = p("h") / 2 - t / 2, b = p("b") - t / 2, c = p("c"), d = p("d");
    const double outer = p("h") / 2 - p("hs"), inner = p("hi") / 2;  // heights of the bends in the web
    p.below("d", "b - 2 t", p("b") - 2 * t);
    p.below("hs", "(h - hi) / 2", p("h") / 2 - inner);
    p.above("hs", "t + r", t + p("r"));
    std::vector<Point> half = {{t / 2, h}, {t / 2, outer}, {t / 2 + d, inner}};
    if (c > 0) {
        p.below("c", "h / 2", p("h") / 2);
        half.insert(half.begin(), {{b, p("h") / 2 - c}, {b, h}});
    } else {
        half.insert(half.begin(), {p("b"), h});
    }
    for (std::size_t k = half.size(); k-- > 0;) half.push_back({half[k].y, -half[k].z});
    return wall(p, half);
}

std::vector<Face> hat(const Given& p) {
    sheet(p, {"h", "b"});
    p.above("bf", "2 t + r", 2 * p("t") + p("r"));
    const double t = p("t"), y = p("b") / 2 - t / 2, top = p("h") - t / 2, tip = p("b") / 2 + p("bf") - t, c = p("c");
    std::vector<Point> half = {{-y, t / 2}, {-y, top}};
    if (c > 0) {
        p.above("bf", "t + 2 r", t + 2 * p("r"));
        p.below("c", "h", p("h"));
        half.insert(half.begin(), {{-(tip - t / 2), c}, {-(tip - t / 2), t / 2}});
    } else {
        half.insert(half.begin(), {-tip, t / 2});
    }
    for (std::size_t k = half.size(); k-- > 0;) half.push_back({-half[k].y, half[k].z});
    return wall(p, half);
}

}  // namespace

std::vector<Shape> thin_shapes() {
    const Kind optional = Kind::optional_length;
    const Parameter h = {"h", "overall height"}, t = {"t", "thickness of the sheet"};
    const Parameter b = {"b", "overall width of the flanges"};
    const Parameter c = {"c", "overall length of the lips; 0: none", optional, false};
    const Parameter r = {"r", "inner radius of the bends", optional, false};
    return {
        {"cold_c",
         "cold-formed channel with lips, open to the right; origin: middle of the web's back",
         {h, b, c, t, r},
         cold_c},
        {"cold_z",
         "cold-formed Z with lips, upper flange to the left; origin: middle of the web",
         {h, {"b", "overall width of the upper flange"}, {"b2", "of the lower one; 0: b", optional, false}, c, t, r},
         cold_z},
        {"sigma",
         "cold-formed channel with its web set back in the middle; origin: middle of the height, on the web's back",
         {h,
          b,
          c,
          t,
          {"d", "by how much the web's middle is set back to the right"},
          {"hs", "height of the straight web next to a flange, overall"},
          {"hi", "height of the straight middle of the web"},
          r},
         sigma},
        {"hat",
         "cold-formed hat, open below, with flanges to both sides and lips upwards; origin: middle of the bottom",
         {h, {"b", "overall width of the top"}, {"bf", "width of a flange, with its web"}, c, t, r},
         hat},
    };
}

}  // namespace velquor
