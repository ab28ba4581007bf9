// The mesh, and coloured fields with their legends.
#include <algorithm>
#include <cmath>

#include "kit/draw/field_values.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr double MARGIN = 24;                              // around a field
constexpr double BESIDE = 190, GAP = 24;                   // width of a legend beside the field, and what is between
constexpr double BAR = 16, LONGEST_BAR = 300, NOTES = 92;  // the bar of colours; height of what is said below it
constexpr double SMALLEST = 9;                             // edges of cells that are not cut, in units of the sheet
constexpr double ALONG = 30, ACROSS = 15;                  // distances of arrows, in units of the sheet
constexpr double LONGEST = 26, SHORTEST = 4;               // and their lengths

std::string place_text(const Picture& picture, const Point& p) {
    const double size = std::max(picture.high_y - picture.low_y, picture.high_z - picture.low_z);
    const auto text = [&](double x) { return with_minus(text_beside(size, x)); };
    return "(" + text(p.y) + ", " + text(p.z) + ")";
}

// A ring at a place and a value beside it, where there is room on the drawing.
void mark(const Picture& picture, const Pen& pen, const Room& room, const Point& place, const std::string& text,
          std::vector<Rect>& taken) {
    const SheetPoint at = room.view(place);
    cairo_new_sub_path(pen.cairo);
    cairo_arc(pen.cairo, at.x, at.y, 4, 0, 2 * PI);
    set(pen, pen.theme->paper);
    cairo_set_line_width(pen.cairo, 3.4);
    cairo_stroke_preserve(pen.cairo);
    set(pen, pen.theme->ink);
    cairo_set_line_width(pen.cairo, 1.4);
    cairo_stroke(pen.cairo);
    Style style{SMALL, true, pen.theme->ink, Anchor::start, true, false};
    const Rect& d = room.drawing;
    const double middle = room.view({(picture.low_y + picture.high_y) / 2, 0}).x;
    for (const double dy : {-8.0, 16.0, 4.0, -20.0, 28.0})
        for (int side = 0; side < 2; ++side) {
            const bool right = (at.x > middle) == (side == 0);
            style.anchor = right ? Anchor::start : Anchor::end;
            const SheetPoint to{at.x + (right ? 7 : -7), at.y + dy};
            const Rect box = box_of(pen, text, to, style);
            const bool inside =
                box.x > d.x && box.x + box.width < d.x + d.width && box.y > d.y && box.y + box.height < d.y + d.height;
            const bool free = std::none_of(taken.begin(), taken.end(), [&](const Rect& r) {
                return box.x < r.x + r.width && r.x < box.x + box.width && box.y < r.y + r.height &&
                       r.y < box.y + box.height;
            });
            if (!inside || !free) continue;
            taken.push_back(box);
            write(pen, text, to, style);
            return;
        }
}

void draw_bar(const Pen& pen, const Scale& scale, const Rect& bar, bool upright) {
    const double a = scale.low, b = scale.high;
    const std::unique_ptr<cairo_pattern_t, void (*)(cairo_pattern_t*)> pattern(
        upright ? cairo_pattern_create_linear(0, bar.y + bar.height, 0, bar.y)
                : cairo_pattern_create_linear(bar.x, 0, bar.x + bar.width, 0),
        cairo_pattern_destroy);
    for (const Stop& stop : stops_between(scale, a, b))
        cairo_pattern_add_color_stop_rgb(pattern.get(), stop.share, stop.colour.r, stop.colour.g, stop.colour.b);
    cairo_rectangle(pen.cairo, bar.x, bar.y, bar.width, bar.height);
    cairo_set_source(pen.cairo, pattern.get());
    cairo_fill_preserve(pen.cairo);
    set(pen, pen.theme->ink);
    cairo_set_line_width(pen.cairo, 0.8);
    cairo_stroke(pen.cairo);
    const Style style{SMALL, false, pen.theme->ink, upright ? Anchor::start : Anchor::middle, false, false};
    double last = -1e9;
    for (const double tick : scale.ticks) {
        const double share = b > a ? (tick - a) / (b - a) : 1;
        if (upright) {
            const double y = bar.y + bar.height * (1 - share);
            line(pen, {bar.x + bar.width, y}, {bar.x + bar.width + 5, y}, pen.theme->ink, 0.8);
            write(pen, shown_on(scale, tick), {bar.x + bar.width + 9, y + 0.36 * SMALL}, style);
        } else {
            const double x = bar.x + bar.width * share;
            line(pen, {x, bar.y + bar.height}, {x, bar.y + bar.height + 5}, pen.theme->ink, 0.8);
            const std::string text = shown_on(scale, tick);
            const SheetPoint at{x, bar.y + bar.height + 17};
            const Rect box = box_of(pen, text, at, style);
            if (box.x < last + 4) continue;
            last = box.x + box.width;
            write(pen, text, at, style);
        }
    }
}

// Colours, round numbers, the largest and the smallest with their places, what arrows and marks mean.
void draw_legend(const Picture& picture, const Panel& panel, const Pen& pen, const Room& room, const FieldValues& v) {
    const Rect& key = room.key;
    const Style words{SMALL, false, pen.theme->ink, Anchor::start, false, false};
    double x = key.x, y = key.y + SMALL;
    write(pen, "in " + unit_on(v.scale, v.unit), {x, y}, words);
    y += 9;
    if (room.beside) {
        const double height = std::min(LONGEST_BAR, std::max(120.0, key.height - NOTES - 30));
        draw_bar(pen, v.scale, {x, y, BAR, height}, true);
        y += height + LINE + 4;
    } else {
        draw_bar(pen, v.scale, {x + 8, y, std::min(key.width - 16, 420.0), 12}, false);
        y += 12 + 2 * LINE + 4;
    }
    const std::string length = " " + raised(picture.section.length);
    const Style faint{SMALL, false, pen.theme->faint, Anchor::start, false, false};
    const auto peak = [&](const char* name, double value, const Point& at) {
        const std::string text = std::string(name) + " " + shown_on(v.scale, value);
        const std::string place = "at " + place_text(picture, at) + length;
        write(pen, text, {x, y}, words);
        if (!room.beside) write(pen, place, {x + width_of(pen, text + " ", words), y}, faint);
        if (room.beside) write(pen, place, {x, y += LINE - 2}, faint);
        y += LINE + 2;
    };
    if (!(v.scale.high > v.scale.low)) {
        write(pen, "0 everywhere", {x, y}, words);
        return;
    }
    peak("largest", v.most, v.most_at);
    if (v.signs) peak("smallest", v.least, v.least_at);
    if (panel.what == Shown::axial) y = write_lines(pen, "tension is positive", x, y, key.width, faint);
    if (panel.what == Shown::warping) y = write_lines(pen, "positive towards the viewer", x, y, key.width, faint);
    if (panel.what == Shown::shear)
        y = write_lines(pen, "arrows: direction on the face towards the viewer, length by amount", x, y, key.width,
                        faint);
    const Style mark{SMALL, false, pen.theme->mark, Anchor::start, false, false};
    if (!v.warning.empty())
        write_lines(pen, v.warning, x, y, key.width, mark);
    else if (v.unlimited)
        write_lines(pen, "no limit at the marked corners: the scale ends at the largest elsewhere", x, y, key.width,
                    mark);
}

// Bars that are points, in the colour of their stress.
void fill_bars(const Picture& picture, const Pen& pen, const View& view, const FieldValues& v) {
    std::size_t next = 0;
    for (const Bar& bar : picture.section.bars) {
        if (!bar.as_point || next == v.bars.size()) continue;
        trace_bar(pen, view, bar);
        set(pen, colour_at(v.scale, v.bars[next++]));
        cairo_fill(pen.cairo);
    }
}

// Arrows along the shear stress at a regular distance: the largest first, none nearer to another than the spacing.
void draw_arrows(const Picture& picture, const Pen& pen, const View& view, const FieldValues& v) {
    const Field& field = picture.analysis.field;
    struct Arrow {
        SheetPoint at;
        double y, z, amount;
    };
    std::vector<Arrow> arrows;
    const auto add = [&](const std::array<std::int32_t, 4>& spots) {
        const std::size_t n = spots[2] == spots[3] ? 3 : 4;
        Point at;
        double y = 0, z = 0;
        for (std::size_t k = 0; k < n; ++k) {
            const auto s = static_cast<std::size_t>(spots[k]);
            at = at + (1 / static_cast<double>(n)) * field.nodes[static_cast<std::size_t>(field.spots[s].node)];
            y += v.stresses[s].tau_y / static_cast<double>(n);
            z += v.stresses[s].tau_z / static_cast<double>(n);
        }
        arrows.push_back({view(at), y, z, std::hypot(y, z)});
    };
    // Of about equal amounts nodes inside come first, which lie in the middle of thin walls.
    std::vector<bool> inside(field.coarse_nodes, true);
    for (const Curve& edge : picture.whole.plane.curves)
        inside[static_cast<std::size_t>(edge.from)] = inside[static_cast<std::size_t>(edge.to)] = false;
    for (std::size_t i = 0; i < field.coarse_spots; ++i) {
        const auto spot = static_cast<std::int32_t>(i);
        if (inside[static_cast<std::size_t>(field.spots[i].node)]) add({spot, spot, spot, spot});
    }
    for (const auto& element : field.elements) add(element);
    const auto grade = [&](const Arrow& a) { return static_cast<int>(10 * a.amount / v.scale.high); };
    std::stable_sort(arrows.begin(), arrows.end(), [&](const Arrow& a, const Arrow& b) { return grade(a) > grade(b); });
    const double most = v.scale.high;
    std::vector<Arrow> kept;
    for (const Arrow& a : arrows) {
        const double length = LONGEST * std::min(1.0, a.amount / most);
        if (length < SHORTEST) continue;
        const bool near = std::any_of(kept.begin(), kept.end(), [&](const Arrow& b) {
            const double c = b.y / b.amount, s = -b.z / b.amount, dx = a.at.x - b.at.x, dy = a.at.y - b.at.y;
            const double along = (c * dx + s * dy) / ALONG, across = (c * dy - s * dx) / ACROSS;
            // Those that run against each other, as on the two faces of a thin wall, may lie nearer.
            const bool against = a.y * b.y + a.z * b.z < 0;
            return along * along + across * across * (against ? 4 : 1) < 1;
        });
        if (near) continue;
        kept.push_back(a);
    }
    // All at once, which keeps SVG small: first light edges, then the arrows.
    for (const bool edge : {true, false}) {
        const double more = edge ? 2.2 : 0;
        const Colour colour = edge ? Colour{1, 1, 1} : Colour{0.05, 0.06, 0.08};
        for (const bool heads : {false, true}) {
            for (const Arrow& a : kept) {
                const double length = LONGEST * std::min(1.0, a.amount / most), head = std::min(5.0, 0.5 * length);
                const double c = a.y / a.amount, s = -a.z / a.amount;
                const SheetPoint tip{a.at.x + (length + more) / 2 * c, a.at.y + (length + more) / 2 * s};
                if (heads) {
                    add_arrow_head(pen, tip, a.at, head + more);
                    continue;
                }
                cairo_move_to(pen.cairo, a.at.x - length / 2 * c, a.at.y - length / 2 * s);
                cairo_line_to(pen.cairo, tip.x - 0.7 * head * c, tip.y - 0.7 * head * s);
            }
            set(pen, colour);
            cairo_set_line_width(pen.cairo, edge ? 2.4 : 1.1);
            if (heads)
                cairo_fill(pen.cairo);
            else
                cairo_stroke(pen.cairo);
        }
    }
}

}  // namespace

Room room_of_field(const Picture& picture, const Panel& panel, const Rect& at, double highest) {
    const double width = picture.high_y - picture.low_y, height = picture.high_z - picture.low_z;
    const bool plain = picture.sheet.plain, coloured = panel.what != Shown::mesh;
    const double margin = plain ? 6 : MARGIN;
    Room room;
    room.beside = at.width > 520 && width < 2.2 * height;
    const bool key = !plain && (coloured || materials_in_key(picture) > 0);
    const double aside = key && room.beside ? BESIDE + GAP : 0;
    const double scale = std::min((at.width - aside - 2 * margin) / width, (highest - 2 * margin) / height);
    room.drawing = {at.x, at.y, at.width - aside, scale * height + 2 * margin};
    const double least = coloured ? 260 : 20 + LINE * materials_in_key(picture);
    if (key && room.beside) room.drawing.height = std::max(room.drawing.height, least);
    room.height = room.drawing.height;
    if (key && room.beside) room.key = {at.x + at.width - BESIDE, at.y + MARGIN / 2, BESIDE, room.height - MARGIN / 2};
    if (key && !room.beside) {
        const double lines = coloured ? 2.2 + 5 * LINE : 0;
        room.key = {at.x + 8, at.y + room.height, at.width - 16,
                    coloured ? 40 + lines + (at.width < 420 ? 3 * LINE : LINE) : LINE * materials_in_key(picture) + 6};
        room.height += room.key.height;
    }
    const Rect& d = room.drawing;
    room.view = {scale, d.x + d.width / 2 - scale * (picture.low_y + picture.high_y) / 2,
                 d.y + d.height / 2 + scale * (picture.low_z + picture.high_z) / 2};
    return room;
}

void draw_mesh(const Picture& picture, const Pen& pen, const Room& room) {
    const Mesh& mesh = picture.analysis.mesh;
    fill_materials(picture, pen, room.view);
    for (const auto& element : mesh.elements) {
        const std::size_t n = element[2] == element[3] ? 3 : 4;
        for (std::size_t k = 0; k < n; ++k) {
            const std::int32_t a = element[k], b = element[(k + 1) % n];
            Point centre;
            const double sweep = sweep_of(mesh, a, b, centre);
            if (a > b) continue;  // the element on its other side draws it, or the boundary
            const SheetPoint from = room.view(mesh.nodes[static_cast<std::size_t>(a - 1)]);
            cairo_move_to(pen.cairo, from.x, from.y);
            trace_edge(pen, room.view, mesh.nodes[static_cast<std::size_t>(b - 1)], centre, sweep);
        }
    }
    set(pen, pen.theme->accent);
    cairo_set_line_width(pen.cairo, 0.7);
    cairo_stroke(pen.cairo);
    draw_boundaries(picture, pen, room.view);
    if (!picture.sheet.plain) key_of_materials(picture, pen, room.key.x, room.key.y + SMALL, room.key.width);
}

void draw_field(const Picture& picture, const Panel& panel, const Pen& pen, const Room& room) {
    const FieldValues v = values_of(picture, panel, SMALLEST / room.view.scale);
    draw_cells(picture, pen, room.view, v.scale, v.cells);
    draw_levels(picture, pen, room.view, v.scale, v.fine.empty() ? v.cells : v.fine);
    fill_bars(picture, pen, room.view, v);
    draw_boundaries(picture, pen, room.view);
    if (panel.what == Shown::shear && v.scale.high > 0) draw_arrows(picture, pen, room.view, v);
    for (const Point& corner : v.corners) {
        const SheetPoint at = room.view(corner);
        cairo_rectangle(pen.cairo, at.x - 3.2, at.y - 3.2, 6.4, 6.4);
        set(pen, pen.theme->paper);
        cairo_fill_preserve(pen.cairo);
        set(pen, pen.theme->mark);
        cairo_set_line_width(pen.cairo, 1.6);
        cairo_stroke(pen.cairo);
    }
    if (picture.sheet.plain) return;
    std::vector<Rect> taken;
    if (v.scale.high > v.scale.low) {
        mark(picture, pen, room, v.most_at, shown_on(v.scale, v.most), taken);
        if (v.signs) mark(picture, pen, room, v.least_at, shown_on(v.scale, v.least), taken);
    }
    draw_legend(picture, panel, pen, room, v);
}

}  // namespace velquor
