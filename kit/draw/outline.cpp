// The outline with its dimensions, axes and centres.
#include <algorithm>
#include <cmath>
#include <functional>

#include "kit/draw/colours.h"
#include "kit/draw/labels.h"
#include "kit/draw/picture.h"
#include "kit/section/profiles.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr double LEFT = 64, RIGHT = 44, TOP = 40, BOTTOM = 58;  // margins, with dimensions and axes
constexpr double BESIDE = 212, GAP = 20;                        // width of the key beside the drawing, and the gap
constexpr double AXIS = 24, DIMENSION = 34;                     // how far axes and dimension lines reach out
constexpr double ROW = 2 * LINE + 5;                            // of the key

struct Outliner {
    const Picture& picture;
    const Pen& pen;
    const Room& room;
    Taken taken{};

    const Theme& theme() const { return *pen.theme; }
    const Entry& value(const char* key) const { return picture.values[key]; }
    double number(const char* key) const { return value(key).value.value; }
    Point centroid() const { return {number("y_C"), number("z_C")}; }

    void stroke(const SheetPoint& a, const SheetPoint& b, const Colour& colour, double width, double dash = 0) {
        line(pen, a, b, colour, width, dash);
        taken.lines.push_back({a, b});
    }

    // Overall width below, overall height at the left.
    void overall() {
        const SheetPoint low = room.view({picture.low_y, picture.low_z}),
                         high = room.view({picture.high_y, picture.high_z});
        const double y = low.y + DIMENSION;
        double x = low.x - DIMENSION;
        // Beside the shear centre, where that lies there.
        const double m = value("y_M").given ? room.view({number("y_M"), 0}).x : x - DIMENSION;
        if (std::abs(m - x) < 14) x = m - 16;
        dimension({low.x, y}, {high.x, y}, {low.x, low.y + 6}, {high.x, low.y + 6},
                  text_beside(picture.high_y - picture.low_y, picture.high_y - picture.low_y, 5));
        dimension({x, low.y}, {x, high.y}, {low.x - 6, low.y}, {low.x - 6, high.y},
                  text_beside(picture.high_z - picture.low_z, picture.high_z - picture.low_z, 5));
    }
    void dimension(const SheetPoint& a, const SheetPoint& b, const SheetPoint& from_a, const SheetPoint& from_b,
                   const std::string& text) {
        const bool upward = a.x == b.x;
        const auto beyond = [&](const SheetPoint& p) {
            return upward ? SheetPoint{p.x - 5, p.y} : SheetPoint{p.x, p.y + 5};
        };
        for (const auto& [from, to] : {std::make_pair(from_a, a), std::make_pair(from_b, b)})
            stroke(from, beyond(to), theme().faint, 0.6);
        stroke(a, b, theme().faint, 0.8);
        arrow_head(pen, a, b, 8, theme().faint);
        arrow_head(pen, b, a, 8, theme().faint);
        const Style style{LETTERS, false, theme().ink, Anchor::middle, false, upward};
        const SheetPoint at = upward ? SheetPoint{a.x - 5, (a.y + b.y) / 2} : SheetPoint{(a.x + b.x) / 2, a.y + 15};
        taken.boxes.push_back(box_of(pen, text, at, style));
        write(pen, text, at, style);
    }

    // An axis through a point of the sheet, from behind the section to beyond it, with its name at its head.
    void axis(const char* name, const Point& through, const Point& along, const Colour& colour, double width) {
        const auto [low, high] = reach(through, along);
        const SheetPoint a = room.view(through + low * along), b = room.view(through + high * along);
        stroke(a, b, colour, width);
        arrow_head(pen, b, a, 10, colour);
        const Style style{LETTERS, true, colour, Anchor::start, true, false};
        // Behind the head first, so that the name stands where the axis points.
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        const SheetPoint tip{b.x + 3 * (b.x - a.x) / length, b.y + 3 * (b.y - a.y) / length};
        write_near(pen, name, tip, 6, style, taken, room.drawing);
    }

    // How far a line through a point reaches within the section's box and a margin around it.
    std::pair<double, double> reach(const Point& through, const Point& along) const {
        const double margin = AXIS / room.view.scale;
        double low = -1e300, high = 1e300;
        const double at[2] = {through.y, through.z}, d[2] = {along.y, along.z},
                     least[2] = {picture.low_y, picture.low_z}, most[2] = {picture.high_y, picture.high_z};
        for (int k = 0; k < 2; ++k) {
            if (std::abs(d[k]) < 1e-9) continue;
            const double t = (least[k] - margin / 2 - at[k]) / d[k], u = (most[k] + margin - at[k]) / d[k];
            const double v = (least[k] - margin - at[k]) / d[k], w = (most[k] + margin / 2 - at[k]) / d[k];
            low = std::max(low, d[k] > 0 ? t : w);
            high = std::min(high, d[k] > 0 ? u : v);
        }
        return {low, high};
    }

    void plastic(const char* z, const char* y, double dash) {
        const Colour& colour = theme().second;
        const double off = 14;
        const SheetPoint low = room.view({picture.low_y, picture.low_z}),
                         high = room.view({picture.high_y, picture.high_z});
        if (value(z).given) {
            const double at = room.view({0, number(z)}).y;
            stroke({low.x - off, at}, {high.x + off, at}, colour, 1.4, dash);
        }
        if (value(y).given) {
            const double at = room.view({number(y), 0}).x;
            stroke({at, low.y + off}, {at, high.y - off}, colour, 1.4, dash);
        }
    }

    bool turned_axes() const {
        if (!value("alpha").given) return false;
        const double angle = std::abs(number("alpha")), slack = value("alpha").value.bound + 1e-6;
        return angle > slack && std::abs(angle - 90) > slack;
    }

    // Walls and radii that the shapes' parameters name, each at the first place where it can be measured.
    void walls() {
        if (picture.section.parts.size() > 4) return;
        std::vector<double> thicknesses, radii;
        const auto add = [](std::vector<double>& list, double x) {
            if (x > 0 && std::none_of(list.begin(), list.end(), [&](double y) { return std::abs(x - y) < 1e-9 * x; }))
                list.push_back(x);
        };
        for (const Part& part : picture.section.parts) {
            const auto parameters = part.profile.empty()
                                        ? part.parameters
                                        : profile_of(part.profile, picture.section.length, "").parameters;
            for (const auto& [name, x] : parameters) {
                if (name[0] == 't') add(thicknesses, x);
                if (name[0] == 'r') add(radii, x);
            }
        }
        for (const double t : thicknesses) thickness(t);
        for (const double r : radii) radius(r);
    }

    void thickness(double t) {
        const double width = picture.high_y - picture.low_y, height = picture.high_z - picture.low_z;
        const std::string text = text_beside(t, t, 5);
        const Style style{SMALL, false, theme().ink, Anchor::start, true, false};
        for (const bool level : {true, false})
            for (const double share :
                 {0.36, 0.3, 0.24, 0.64, 0.7, 0.76, 0.18, 0.82, 0.12, 0.88, 0.43, 0.57, 0.5, 0.06, 0.94, 0.03, 0.97}) {
                const Point from =
                    level ? Point{0, picture.low_z + share * height} : Point{picture.low_y + share * width, 0};
                const Point along = level ? Point{1, 0} : Point{0, 1};
                const std::vector<double> at = crossings(picture.whole, from, along);
                for (std::size_t k = 0; k + 1 < at.size(); k += 2) {
                    if (std::abs(at[k + 1] - at[k] - t) > 1e-6 * t) continue;
                    if (between_arrows(room.view(from + at[k] * along), room.view(from + at[k + 1] * along), text,
                                       style, k + 2 < at.size() ? room.view.scale * (at[k + 2] - at[k + 1]) : 1e9,
                                       k > 0 ? room.view.scale * (at[k] - at[k - 1]) : 1e9))
                        return;
                }
            }
    }

    // Arrows from outside onto both faces of a wall, and the number behind one of them.
    bool between_arrows(const SheetPoint& a, const SheetPoint& b, const std::string& text, Style style, double after,
                        double before) {
        const double d = std::hypot(b.x - a.x, b.y - a.y), c = (b.x - a.x) / d, s = (b.y - a.y) / d, tail = 18;
        const double wide = width_of(pen, text, style);
        for (const bool behind : {true, false}) {
            const SheetPoint& tip = behind ? b : a;
            const double sign = behind ? 1 : -1;
            const double need = std::abs(c) > 0.5 ? tail + wide + 8 : tail + style.size + 6;
            if ((behind ? after : before) < need || (behind ? before : after) < tail + 4) continue;
            const SheetPoint end{tip.x + sign * tail * c, tip.y + sign * tail * s};
            style.anchor = std::abs(c) < 0.5 ? Anchor::start : sign * c > 0 ? Anchor::start : Anchor::end;
            const SheetPoint at = std::abs(c) < 0.5 ? SheetPoint{end.x + 4, end.y + 0.36 * style.size}
                                                    : SheetPoint{end.x + sign * 3 * c, end.y + 0.36 * style.size};
            const Rect box = box_of(pen, text, at, style);
            const SheetPoint other = behind ? a : b, start{other.x - sign * tail * c, other.y - sign * tail * s};
            const Rect around{std::min(start.x, end.x) - 1, std::min(start.y, end.y) - 1, std::abs(end.x - start.x) + 2,
                              std::abs(end.y - start.y) + 2};
            if (!is_free(taken, box, room.drawing)) continue;
            if (std::any_of(taken.boxes.begin(), taken.boxes.end(), [&](const Rect& r) { return overlap(r, around); }))
                continue;
            stroke(end, tip, theme().faint, 0.8);
            stroke(start, other, theme().faint, 0.8);
            line(pen, a, b, theme().faint, 0.8);
            arrow_head(pen, tip, end, 7, theme().faint);
            arrow_head(pen, other, start, 7, theme().faint);
            taken.boxes.push_back(box);
            write(pen, text, at, style);
            return true;
        }
        return false;
    }

    // An arc of this radius, with a line from its middle to the number.
    void radius(double r) {
        const Plane& plane = picture.whole.plane;
        const Style style{SMALL, false, theme().ink, Anchor::start, true, false};
        const std::string text = "r " + text_beside(r, r, 5);
        for (const double reach : {20.0, 13.0, 30.0, 42.0})
            for (std::size_t k = 0; k < plane.curves.size(); ++k) {
                const Curve& c = plane.curves[k];
                if (c.sweep == 0 ||
                    std::abs(distance(plane.points[static_cast<std::size_t>(c.from)], c.centre) - r) > 1e-6 * r)
                    continue;
                const Side side = static_cast<Side>(k) + 1;
                const Point p = point_at(plane, side, 0.5);
                const SheetPoint at = room.view(p);
                // Outwards, away from what lies to the curve's left.
                const Point out = -1 * left_of(direction_at(plane, side, 0.5));
                const SheetPoint end{at.x + reach * out.y, at.y - reach * out.z};
                Style with = style;
                with.anchor = out.y >= 0 ? Anchor::start : Anchor::end;
                const SheetPoint to{end.x + (out.y >= 0 ? 3 : -3), end.y + 0.36 * style.size};
                const Rect box = box_of(pen, text, to, with);
                const std::vector<double> met = crossings(picture.whole, p, out);
                const bool meets = std::any_of(met.begin(), met.end(), [&](double t) {
                    return t > 1e-6 * r && t * room.view.scale < reach + width_of(pen, text, style) + 6;
                });
                if (meets || !is_free(taken, box, room.drawing)) continue;
                stroke(end, at, theme().faint, 0.8);
                arrow_head(pen, at, end, 7, theme().faint);
                taken.boxes.push_back(box);
                write(pen, text, to, with);
                return;
            }
    }

    void centroid_sign(const SheetPoint& at) {
        cairo_new_sub_path(pen.cairo);
        cairo_arc(pen.cairo, at.x, at.y, 3.6, 0, 2 * PI);
        set(pen, theme().ink);
        cairo_fill(pen.cairo);
    }
    void shear_centre_sign(const SheetPoint& at) {
        cairo_new_sub_path(pen.cairo);
        cairo_arc(pen.cairo, at.x, at.y, 5, 0, 2 * PI);
        set(pen, theme().paper);
        cairo_fill_preserve(pen.cairo);
        set(pen, theme().mark);
        cairo_set_line_width(pen.cairo, 1.5);
        cairo_stroke(pen.cairo);
        for (const double side : {-3.5, 3.5})
            line(pen, {at.x - 3.5, at.y - side}, {at.x + 3.5, at.y + side}, theme().mark, 1.2);
    }

    struct Row {
        std::function<void(const SheetPoint&)> sign;
        std::string name, values;
    };
    std::vector<Row> rows() {
        const std::string unit = " " + raised(picture.section.length);
        const auto written = [&](std::vector<const char*> keys) {
            std::string text;
            for (const char* key : keys) {
                if (!value(key).given) continue;
                text += (text.empty() ? "" : ", ") + std::string(value(key).quantity->symbol) + " = " +
                        short_text(number(key));
            }
            return text.empty() ? text : text + unit;
        };
        std::vector<Row> rows;
        rows.push_back({[this](const SheetPoint& p) { centroid_sign(p); }, "centroid C", written({"y_C", "z_C"})});
        if (value("y_M").given)
            rows.push_back(
                {[this](const SheetPoint& p) { shear_centre_sign(p); }, "shear centre M", written({"y_M", "z_M"})});
        if (turned_axes())
            rows.push_back({[this](const SheetPoint& p) {
                                line(pen, {p.x - 9, p.y}, {p.x + 9, p.y}, theme().accent, 1.3);
                            },
                            "principal axes u, v",
                            "α = " + with_minus(text_of(number("alpha"), 4)) + "°, from y to u"});
        const auto dashed = [this](double dash) {
            return [this, dash](const SheetPoint& p) {
                line(pen, {p.x - 9, p.y}, {p.x + 9, p.y}, theme().second, 1.5, dash);
            };
        };
        const std::string axes = written({"z_pl", "y_pl"}), opposite = written({"z_pl_neg", "y_pl_neg"});
        if (!axes.empty())
            rows.push_back({dashed(6), unlike() ? "plastic axes, tension on top, left" : "plastic axes", axes});
        if (unlike()) rows.push_back({dashed(2.2), "tension at the bottom, right", opposite});
        return rows;
    }
    // Whether the plastic axes depend on the sense of bending by more than can be seen.
    bool unlike() const {
        for (const auto& [one, other] : {std::make_pair("z_pl", "z_pl_neg"), std::make_pair("y_pl", "y_pl_neg")})
            if (value(one).given && value(other).given && std::abs(number(one) - number(other)) * room.view.scale > 0.5)
                return true;
        return false;
    }
    std::string short_text(double x) const {
        const double size = std::max(picture.high_y - picture.low_y, picture.high_z - picture.low_z);
        return with_minus(text_beside(size, x));
    }

    void key() {
        const Style name{SMALL, false, theme().ink, Anchor::start, false, false};
        const Style values{SMALL, false, theme().faint, Anchor::start, false, false};
        const std::vector<Row> all = rows();
        const double wide = room.beside || room.key.width < 420 ? room.key.width : room.key.width / 2;
        double x = room.key.x, y = room.key.y + SMALL;
        for (std::size_t k = 0; k < all.size(); ++k) {
            all[k].sign({x + 10, y - 4});
            write(pen, cut_to(pen, all[k].name, wide - 26, name), {x + 26, y}, name);
            write(pen, cut_to(pen, all[k].values, wide - 26, values), {x + 26, y + LINE - 2}, values);
            const bool second = wide < room.key.width && k % 2 == 0 && k + 1 < all.size();
            x = second ? room.key.x + wide : room.key.x;
            if (!second) y += ROW;
        }
        key_of_materials(picture, pen, room.key.x, y, room.key.width);
    }
};

}  // namespace

Room room_of_outline(const Picture& picture, const Rect& at, double highest) {
    // What is drawn: the section, and the shear centre beside it.
    double low_y = picture.low_y, high_y = picture.high_y, low_z = picture.low_z, high_z = picture.high_z;
    const Entry &y = picture.values["y_M"], &z = picture.values["z_M"];
    if (y.given && z.given) {
        low_y = std::min(low_y, y.value.value), high_y = std::max(high_y, y.value.value);
        low_z = std::min(low_z, z.value.value), high_z = std::max(high_z, z.value.value);
    }
    const bool plain = picture.sheet.plain;
    const double width = high_y - low_y, height = high_z - low_z;
    const double left = plain ? 8 : LEFT, right = plain ? 8 : RIGHT, top = plain ? 8 : TOP, bottom = plain ? 8 : BOTTOM;
    Room room;
    room.beside = at.width > 520 && width < 1.9 * height;
    const double aside = !plain && room.beside ? BESIDE + GAP : 0;
    const double scale = std::min((at.width - aside - left - right) / width, (highest - top - bottom) / height);
    room.drawing = {at.x, at.y, at.width - aside, scale * height + top + bottom};
    room.view.scale = scale;
    const Pen none;
    const double lines = static_cast<double>(Outliner{picture, none, room}.rows().size());
    const double materials = LINE * materials_in_key(picture);
    if (!plain && room.beside) room.drawing.height = std::max(room.drawing.height, TOP / 2 + lines * ROW + materials);
    room.height = room.drawing.height;
    if (plain) {
        room.key = {at.x, at.y, 0, 0};
    } else if (room.beside) {
        room.key = {at.x + at.width - BESIDE, at.y + TOP / 2, BESIDE, room.height};
    } else {
        room.key = {at.x + 8, at.y + room.height, at.width - 16, 0};
        room.key.height = (room.key.width < 420 ? lines : std::ceil(lines / 2)) * ROW + materials;
        room.height += room.key.height;
    }
    const Rect& d = room.drawing;
    room.view = {scale, d.x + left + (d.width - left - right) / 2 - scale * (low_y + high_y) / 2,
                 d.y + top + (d.height - top - bottom) / 2 + scale * (low_z + high_z) / 2};
    return room;
}

void draw_outline(const Picture& picture, const Pen& pen, const Room& room) {
    fill_materials(picture, pen, room.view);
    draw_boundaries(picture, pen, room.view);
    Outliner o{picture, pen, room};
    const Theme& theme = *pen.theme;
    const bool centre = o.value("y_C").given && o.value("z_C").given;
    const bool shear_centre = o.value("y_M").given && o.value("z_M").given;
    if (picture.sheet.plain) {
        if (centre) o.centroid_sign(room.view(o.centroid()));
        return;
    }
    for (std::size_t k = 0; k < picture.parts.plane.curves.size(); ++k)
        for (const double t : {0.0, 0.5}) {
            const Side side = static_cast<Side>(k) + 1;
            const Plane& plane = picture.parts.plane;
            o.taken.lines.push_back({room.view(point_at(plane, side, t)), room.view(point_at(plane, side, t + 0.5))});
        }
    o.overall();
    if (centre) {
        o.axis("y", o.centroid(), {1, 0}, theme.ink, 1);
        o.axis("z", o.centroid(), {0, 1}, theme.ink, 1);
        if (o.turned_axes()) {
            const Point u = turned(Point{1, 0}, o.number("alpha") * PI / 180);
            o.axis("u", o.centroid(), u, theme.accent, 1.3);
            o.axis("v", o.centroid(), left_of(u), theme.accent, 1.3);
        }
    }
    o.plastic("z_pl", "y_pl", 6);
    if (o.unlike()) o.plastic("z_pl_neg", "y_pl_neg", 2.2);
    const Point m{o.number("y_M"), o.number("z_M")};
    for (const auto& [shown, at] : {std::make_pair(centre, o.centroid()), std::make_pair(shear_centre, m)})
        if (shown) o.taken.boxes.push_back({room.view(at).x - 5, room.view(at).y - 5, 10, 10});
    o.walls();
    if (centre) {
        o.centroid_sign(room.view(o.centroid()));
        write_near(pen, "C", room.view(o.centroid()), 9, {LETTERS, true, theme.ink, Anchor::start, true, false},
                   o.taken, room.drawing);
    }
    if (shear_centre) {
        o.shear_centre_sign(room.view(m));
        write_near(pen, "M", room.view(m), 10, {LETTERS, true, theme.mark, Anchor::start, true, false}, o.taken,
                   room.drawing);
    }
    o.key();
}

}  // namespace velquor
