// Shapes of rolled and of welded steel: flanges and a web, with the fillets between them.
#include <algorithm>
#include <cmath>

#include "kit/section/geometry.h"
#include "kit/section/shapes.h"

namespace velquor {

namespace {

// The corners of a flange's end and of its root, from the tip inwards along a sloped side: thickness tf at the distance
// e from the tip, which grows towards the web by the slope. The arc at the tip must leave something of its end.
struct SlopedFlange {
    double tip, root;  // thickness
};

SlopedFlange sloped_flange(const Given& p, double outstand, double e, double depth) {
    const double slope = p("slope"), tf = p("tf");
    p.below("slope", "tf / e", tf / e);
    p.at_most("e", "the flange's outstand", outstand);
    const SlopedFlange flange = {tf - slope * e, tf + slope * (outstand - e)};
    p.below("tf", "half of h, less the slope's rise to the web", depth / 2 - slope * (outstand - e));
    // An arc between two lines that meet at the angle of 90 degrees plus the slope's takes r tan(half the turn) of
    // each.
    const double turn = std::atan2(1, slope), reach = std::tan(turn / 2), level = reach * std::cos(std::atan(slope));
    p.at_most("r2", "the flange's end / tan(its turn / 2)", flange.tip / reach);
    p.at_most("r1", "web's height inside / (2 tan(its turn / 2))", (depth / 2 - flange.root) / reach);
    p.at_most("r1", "the flange's outstand less r2", (outstand - p("r2") * level) / level);
    return flange;
}

std::vector<Face> sharp_or_round_i(double h, double b, double tw, SlopedFlange f, double r1, double r2) {
    // The right half from below, then its mirror image.
    std::vector<Corner> c = {{{b / 2, -h / 2}},
                             {{b / 2, -h / 2 + f.tip}, r2},
                             {{tw / 2, -h / 2 + f.root}, r1},
                             {{tw / 2, h / 2 - f.root}, r1},
                             {{b / 2, h / 2 - f.tip}, r2},
                             {{b / 2, h / 2}}};
    for (std::size_t i = c.size(); i-- > 0;) c.push_back({{-c[i].at.y, c[i].at.z}, c[i].radius});
    return {{rounded(c), {}}};
}

std::vector<Face> sharp_or_round_channel(double h, double b, double tw, SlopedFlange f, double r1, double r2) {
    return {{rounded({{{0, -h / 2}},
                      {{b, -h / 2}},
                      {{b, -h / 2 + f.tip}, r2},
                      {{tw, -h / 2 + f.root}, r1},
                      {{tw, h / 2 - f.root}, r1},
                      {{b, h / 2 - f.tip}, r2},
                      {{b, h / 2}},
                      {{0, h / 2}}}),
             {}}};
}

std::vector<Face> i(const Given& p) {
    const double h = p("h"), b = p("b"), tw = p("tw"), tf = p("tf");
    p.below("tf", "h / 2", h / 2);
    p.below("tw", "b", b);
    p.below("r", "(h - 2 tf) / 2", (h - 2 * tf) / 2);
    p.below("r", "(b - tw) / 2", (b - tw) / 2);
    return sharp_or_round_i(h, b, tw, {tf, tf}, p("r"), 0);
}

std::vector<Face> i_sloped(const Given& p) {
    const double h = p("h"), b = p("b"), tw = p("tw");
    p.below("tw", "b", b);
    const SlopedFlange flange = sloped_flange(p, (b - tw) / 2, p("e") > 0 ? p("e") : b / 4, h);
    return sharp_or_round_i(h, b, tw, flange, p("r1"), p("r2"));
}

std::vector<Face> channel(const Given& p) {
    const double h = p("h"), b = p("b"), tw = p("tw"), tf = p("tf");
    p.below("tf", "h / 2", h / 2);
    p.below("tw", "b", b);
    p.below("r", "(h - 2 tf) / 2", (h - 2 * tf) / 2);
    p.below("r", "b - tw", b - tw);
    return sharp_or_round_channel(h, b, tw, {tf, tf}, p("r"), 0);
}

std::vector<Face> channel_sloped(const Given& p) {
    const double h = p("h"), b = p("b"), tw = p("tw");
    p.below("tw", "b", b);
    const SlopedFlange flange = sloped_flange(p, b - tw, p("e") > 0 ? p("e") : b / 2, h);
    return sharp_or_round_channel(h, b, tw, flange, p("r1"), p("r2"));
}

std::vector<Face> i_welded(const Given& p) {
    const double h = p("h"), tw = p("tw"), b1 = p("b"), t1 = p("tf");
    const double b2 = p("b2") > 0 ? p("b2") : b1, t2 = p("tf2") > 0 ? p("tf2") : t1;
    p.below("tw", "the narrower flange", std::min(b1, b2));
    p.below("tf", "h - tf2", h - t2);
    p.below("a", "(h - tf - tf2) / sqrt(8)", (h - t1 - t2) / std::sqrt(8));
    p.below("a", "(b - tw) / sqrt(8), b that of the narrower flange", (std::min(b1, b2) - tw) / std::sqrt(8));
    const double leg = p("a") * std::sqrt(2), w = tw / 2;
    std::vector<Corner> c = {{{b2 / 2, -h / 2}}, {{b2 / 2, -h / 2 + t2}}};
    if (leg > 0) c.push_back({{w + leg, -h / 2 + t2}});
    c.push_back({{w, -h / 2 + t2 + leg}});
    c.push_back({{w, h / 2 - t1 - leg}});
    if (leg > 0) c.push_back({{w + leg, h / 2 - t1}});
    c.insert(c.end(), {{{b1 / 2, h / 2 - t1}}, {{b1 / 2, h / 2}}});
    for (std::size_t k = c.size(); k-- > 0;) c.push_back({{-c[k].at.y, c[k].at.z}});
    return {{rounded(c), {}}};
}

std::vector<Face> angle(const Given& p) {
    const double h = p("h"), b = p("b"), t = p("t"), r1 = p("r1"), r2 = p("r2");
    p.below("t", "h", h);
    p.below("t", "b", b);
    p.at_most("r2", "t", t);
    p.at_most("r1", "h - t - r2", h - t - r2);
    p.at_most("r1", "b - t - r2", b - t - r2);
    return {{rounded({{{0, 0}}, {{b, 0}}, {{b, t}, r2}, {{t, t}, r1}, {{t, h}, r2}, {{0, h}}}), {}}};
}

std::vector<Face> tee(const Given& p) {
    const double h = p("h"), b = p("b"), tw = p("tw"), tf = p("tf"), r = p("r");
    p.below("tf", "h", h);
    p.below("tw", "b", b);
    p.below("r", "h - tf", h - tf);
    p.below("r", "(b - tw) / 2", (b - tw) / 2);
    return {{rounded({{{tw / 2, -h}},
                      {{tw / 2, -tf}, r},
                      {{b / 2, -tf}},
                      {{b / 2, 0}},
                      {{-b / 2, 0}},
                      {{-b / 2, -tf}},
                      {{-tw / 2, -tf}, r},
                      {{-tw / 2, -h}}}),
             {}}};
}

std::vector<Face> z(const Given& p) {
    const double h = p("h"), b = p("b"), w = p("tw") / 2, tf = p("tf"), r = p("r");
    p.below("tf", "h / 2", h / 2);
    p.below("tw", "b", b);
    p.below("r", "h - 2 tf", h - 2 * tf);
    p.below("r", "b - tw", b - 2 * w);
    // The lower flange to the right; the other half is the same, turned by 180 degrees.
    std::vector<Corner> c = {{{-w, -h / 2}}, {{b - w, -h / 2}}, {{b - w, -h / 2 + tf}}, {{w, -h / 2 + tf}, r}};
    for (std::size_t k = 0; k < 4; ++k) c.push_back({{-c[k].at.y, -c[k].at.z}, c[k].radius});
    return {{rounded(c), {}}};
}

}  // namespace

std::vector<Shape> rolled_shapes() {
    const Kind radius = Kind::optional_length;
    const Parameter h = {"h", "overall height"}, b = {"b", "overall width"};
    const Parameter tw = {"tw", "thickness of the web"}, tf = {"tf", "thickness of the flanges"};
    const Parameter r = {"r", "radius of the fillets between web and flanges", radius, false};
    const Parameter r1 = {"r1", "radius of the fillets between web and flanges", radius, false};
    const Parameter r2 = {"r2", "radius at the flanges' tips", radius, false};
    const Parameter tf_at = {"tf", "thickness of the flanges at the distance e from their tips"};
    const Parameter slope = {"slope", "rise of the flanges' inner sides over their run, 0.14 for 14 %", Kind::ratio};
    return {
        {"i", "I or H with parallel flanges and fillets; origin: centre", {h, b, tw, tf, r}, i},
        {"i_sloped",
         "I with flanges that are sloped inside; origin: centre",
         {h, b, tw, tf_at, slope, r1, r2, {"e", "from a tip to where tf is measured; 0: b / 4", radius, false}},
         i_sloped},
        {"i_welded",
         "I of three plates; origin: middle of the height, on the web's axis",
         {h,
          {"b", "width of the upper flange"},
          tw,
          {"tf", "thickness of the upper flange"},
          {"b2", "width of the lower flange; 0: b", radius, false},
          {"tf2", "thickness of the lower flange; 0: tf", radius, false},
          {"a", "throat of the fillet welds; 0: not drawn", radius, false}},
         i_welded},
        {"channel",
         "channel with parallel flanges to the right; origin: middle of the web's back",
         {h, b, tw, tf, r},
         channel},
        {"channel_sloped",
         "channel with flanges that are sloped inside, to the right; origin: middle of the web's back",
         {h, b, tw, tf_at, slope, r1, r2, {"e", "from a tip to where tf is measured; 0: b / 2", radius, false}},
         channel_sloped},
        {"angle",
         "angle, legs upwards and to the right; origin: heel",
         {{"h", "length of the upright leg"},
          {"b", "length of the level leg"},
          {"t", "thickness"},
          {"r1", "radius of the fillet between the legs", radius, false},
          {"r2", "radius at the legs' tips, inside", radius, false}},
         angle},
        {"tee", "tee, flange on top; origin: middle of the flange's top", {h, b, tw, tf, r}, tee},
        {"z",
         "Z, lower flange to the right, upper flange to the left; origin: centre",
         {h, {"b", "width of a flange, with the web"}, tw, tf, r},
         z},
    };
}

}  // namespace velquor
