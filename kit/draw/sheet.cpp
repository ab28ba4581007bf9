// Panels on a sheet, and what they share: the section, its materials, lines of words.
#include <algorithm>
#include <cmath>
#include <set>

#include "kit/analysis/extent.h"
#include "kit/analysis/measured.h"
#include "kit/draw/sheet.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double EDGE = 18, BETWEEN = 26;    // around the sheet, between panels
constexpr double NAME = 17, NAME_ROOM = 30;  // letters of the section's name, and its room
constexpr double TITLE_ROOM = 20, SUBTITLE_ROOM = 18, MOST_LINES = 4;
constexpr double HIGHEST_ALONE = 560, HIGHEST = 400;  // of the drawings, in rows of one and of several panels

std::size_t columns_of(const Picture& p) {
    const std::size_t n = p.sheet.panels.size();
    const double aspect = (p.high_y - p.low_y) / (p.high_z - p.low_z);
    if (n < 2 || aspect > 2.4) return 1;
    return n % 3 == 0 && aspect < 0.75 ? 3 : 2;
}

struct Placed {
    Rect at;  // of the panel, its heading included
    Room room;
    bool subtitle;
};

// Room for the lines of a subtitle, by letters a little wider than those of names and numbers.
double subtitle_room(const std::string& text, double width) {
    const auto letters = std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; });
    const double lines = std::ceil(0.64 * SMALL * static_cast<double>(letters) / width);
    return letters == 0 ? 0 : SUBTITLE_ROOM + (std::clamp(lines, 1.0, MOST_LINES) - 1) * (LINE - 2);
}
struct Layout {
    std::vector<Placed> panels;
    double height = 0;
};

bool has_name(const Picture& p) { return p.sheet.named && !p.sheet.plain && !p.section.name.empty(); }

Layout layout_of(const Picture& p, double width) {
    const std::size_t columns = columns_of(p);
    const bool plain = p.sheet.plain;
    const double edge = plain ? 4 : EDGE;
    const double wide = (width - 2 * edge - static_cast<double>(columns - 1) * BETWEEN) / static_cast<double>(columns);
    Layout layout;
    double y = edge + (has_name(p) ? NAME_ROOM : 0);
    for (std::size_t first = 0; first < p.sheet.panels.size(); first += columns) {
        double highest = 0;
        const std::size_t last = std::min(first + columns, p.sheet.panels.size());
        // Headings of a row are alike, so that its drawings begin at one height.
        double subtitles = 0;
        for (std::size_t k = first; k < last; ++k)
            subtitles = std::max(subtitles, subtitle_room(subtitle_of(p, p.sheet.panels[k]), wide));
        const double heading = plain ? 0 : TITLE_ROOM + subtitles;
        for (std::size_t k = first; k < last; ++k) {
            const Panel& panel = p.sheet.panels[k];
            const Rect at{edge + static_cast<double>(k - first) * (wide + BETWEEN), y, wide, 0};
            const Rect below{at.x, at.y + heading, wide, 0};
            const double limit = plain ? wide : columns == 1 ? HIGHEST_ALONE : HIGHEST;
            const Room room =
                panel.what == Shown::outline ? room_of_outline(p, below, limit) : room_of_field(p, panel, below, limit);
            highest = std::max(highest, heading + room.height);
            layout.panels.push_back({at, room, subtitles > 0});
        }
        y += highest + (last < p.sheet.panels.size() ? BETWEEN : 0);
    }
    layout.height = std::ceil(y + edge);
    return layout;
}

// Of lines at 45 and 135 degrees, level and upright, which a material's number has as bits.
constexpr double ANGLES[] = {45, 135, 0, 90};
constexpr int HATCHES[] = {0, 1, 2, 3, 4, 8, 12};
constexpr double HATCH = 7;  // distance of its lines

void hatch(const Pen& pen, int number, const Rect& area) {
    const int lines = HATCHES[static_cast<std::size_t>(number) % std::size(HATCHES)];
    const double reach = std::hypot(area.width, area.height) / 2;
    const SheetPoint middle{area.x + area.width / 2, area.y + area.height / 2};
    for (int k = 0; k < 4; ++k) {
        if (!(lines & 1 << k)) continue;
        const double c = std::cos(ANGLES[k] * PI / 180), s = -std::sin(ANGLES[k] * PI / 180);
        for (double off = -HATCH * std::floor(reach / HATCH); off <= reach; off += HATCH) {
            const double half = std::sqrt(std::max(0.0, reach * reach - off * off));
            cairo_move_to(pen.cairo, middle.x - off * s - half * c, middle.y + off * c - half * s);
            cairo_line_to(pen.cairo, middle.x - off * s + half * c, middle.y + off * c + half * s);
        }
    }
    set(pen, pen.theme->faint);
    cairo_set_line_width(pen.cairo, 0.6);
    cairo_stroke(pen.cairo);
}

const Colour& fill_of(const Pen& pen, int number) {
    const auto& fills = pen.theme->fills;
    return fills[static_cast<std::size_t>(number) % fills.size()];
}

// Materials that have elements or bars, in the section's order.
std::vector<int> used_materials(const Picture& p) {
    std::set<int> used(p.material.begin(), p.material.end());
    for (const Bar& bar : p.section.bars)
        for (std::size_t m = 0; m < p.section.materials.size(); ++m)
            if (p.section.materials[m].name == bar.material) used.insert(static_cast<int>(m));
    return {used.begin(), used.end()};
}

void draw_panel(const Picture& p, const Pen& pen, const Panel& panel, const Placed& placed) {
    if (!p.sheet.plain) {
        const Style title{LETTERS + 1, true, pen.theme->ink, Anchor::start, false, false};
        const Style subtitle{SMALL, false, pen.theme->faint, Anchor::start, false, false};
        const Rect& at = placed.at;
        write(pen, cut_to(pen, title_of(panel), at.width, title), {at.x, at.y + LETTERS}, title);
        if (placed.subtitle)
            write_lines(pen, cut_to(pen, subtitle_of(p, panel), (MOST_LINES - 0.5) * at.width, subtitle), at.x,
                        at.y + LETTERS + SUBTITLE_ROOM, at.width, subtitle);
    }
    if (panel.what == Shown::outline)
        draw_outline(p, pen, placed.room);
    else if (panel.what == Shown::mesh)
        draw_mesh(p, pen, placed.room);
    else
        draw_field(p, panel, pen, placed.room);
}

}  // namespace

Picture::Picture(const Section& of, const Analysis& by, const Sheet& on)
    : section(of), analysis(by), sheet(on), values(values_of(of, by)) {
    const Mesh& mesh = analysis.mesh;
    std::vector<int> owners;
    for (const std::int32_t owner : mesh.owners) {
        owners.push_back(owner);
        material.push_back(static_cast<int>(&material_of(section, owner) - section.materials.data()));
    }
    whole = boundary_of(mesh, std::vector<int>(mesh.elements.size(), 0));
    parts = boundary_of(mesh, owners);
    materials = boundary_of(mesh, material);
    const Extent y = extent_of(mesh, 0), z = extent_of(mesh, PI / 2);
    low_y = y.low, high_y = y.high, low_z = z.low, high_z = z.high;
}

void fill_materials(const Picture& p, const Pen& pen, const View& view) {
    const SheetPoint low = view({p.low_y, p.low_z}), high = view({p.high_y, p.high_z});
    const bool several = used_materials(p).size() > 1;
    for (int m = 0; m < p.materials.kinds; ++m) {
        cairo_save(pen.cairo);
        trace(pen, view, p.materials, m);
        set(pen, fill_of(pen, m));
        cairo_fill_preserve(pen.cairo);
        cairo_clip(pen.cairo);
        cairo_new_path(pen.cairo);
        if (several) hatch(pen, m, {low.x, high.y, high.x - low.x, low.y - high.y});
        cairo_restore(pen.cairo);
    }
    // Bars are too small for hatches.
    for (int k = static_cast<int>(p.section.parts.size()); k < p.parts.kinds; ++k) trace(pen, view, p.parts, k);
    for (const Bar& bar : p.section.bars)
        if (bar.as_point) trace_bar(pen, view, bar);
    set(pen, pen.theme->faint);
    cairo_fill(pen.cairo);
}

void trace_bar(const Pen& pen, const View& view, const Bar& bar) {
    const SheetPoint at = view(bar.at);
    cairo_new_sub_path(pen.cairo);
    cairo_arc(pen.cairo, at.x, at.y, std::max(2.0, view.scale * std::sqrt(bar.area / PI)), 0, 2 * PI);
}

void draw_boundaries(const Picture& p, const Pen& pen, const View& view) {
    set(pen, pen.theme->ink);
    cairo_set_line_join(pen.cairo, CAIRO_LINE_JOIN_MITER);
    const Boundary& inside = p.sheet.plain ? p.materials : p.parts;
    for (int k = 0; k < inside.kinds; ++k) trace(pen, view, inside, k);
    cairo_set_line_width(pen.cairo, 0.7);
    cairo_stroke(pen.cairo);
    trace(pen, view, p.whole, 0);
    cairo_set_line_width(pen.cairo, 1.4);
    cairo_stroke(pen.cairo);
    for (const Bar& bar : p.section.bars) {
        if (!bar.as_point) continue;
        trace_bar(pen, view, bar);
        cairo_set_line_width(pen.cairo, 0.9);
        cairo_stroke(pen.cairo);
    }
}

int materials_in_key(const Picture& p) {
    const int used = static_cast<int>(used_materials(p).size());
    return used > 1 ? used : 0;
}

double key_of_materials(const Picture& p, const Pen& pen, double x, double y, double width) {
    const Style style{SMALL, false, pen.theme->ink, Anchor::start, false, false};
    if (materials_in_key(p) == 0) return y;
    for (const int m : used_materials(p)) {
        const std::string& name = p.section.materials[static_cast<std::size_t>(m)].name;
        write(pen, cut_to(pen, name, width - 26, style), {x + 26, y}, style);
        const auto& parts = p.section.parts;
        if (std::none_of(parts.begin(), parts.end(), [&](const Part& part) { return part.material == name; })) {
            cairo_new_sub_path(pen.cairo);
            cairo_arc(pen.cairo, x + 10, y - 4, 4.5, 0, 2 * PI);  // of bars alone
            set(pen, pen.theme->faint);
            cairo_fill_preserve(pen.cairo);
            set(pen, pen.theme->ink);
            cairo_set_line_width(pen.cairo, 0.8);
            cairo_stroke(pen.cairo);
            y += LINE;
            continue;
        }
        const Rect sign{x, y - 10, 20, 12};
        cairo_save(pen.cairo);
        cairo_rectangle(pen.cairo, sign.x, sign.y, sign.width, sign.height);
        set(pen, fill_of(pen, m));
        cairo_fill_preserve(pen.cairo);
        cairo_clip(pen.cairo);
        cairo_new_path(pen.cairo);
        hatch(pen, m, sign);
        cairo_restore(pen.cairo);
        cairo_rectangle(pen.cairo, sign.x, sign.y, sign.width, sign.height);
        set(pen, pen.theme->ink);
        cairo_set_line_width(pen.cairo, 0.8);
        cairo_stroke(pen.cairo);
        y += LINE;
    }
    return y;
}

double write_lines(const Pen& pen, const std::string& text, double x, double y, double width, const Style& style) {
    std::string line;
    for (std::size_t from = 0; from <= text.size();) {
        const std::size_t blank = std::min(text.find(' ', from), text.size());
        const std::string word = text.substr(from, blank - from), longer = line.empty() ? word : line + " " + word;
        if (!line.empty() && width_of(pen, longer, style) > width) {
            write(pen, cut_to(pen, line, width, style), {x, y}, style);
            y += LINE - 2;
            line = word;
        } else {
            line = longer;
        }
        from = blank + 1;
    }
    write(pen, cut_to(pen, line, width, style), {x, y}, style);
    return y + LINE;
}

bool needs_stresses(const Sheet& sheet) {
    return std::any_of(sheet.panels.begin(), sheet.panels.end(), [](const Panel& p) {
        return (p.what == Shown::warping && p.direction == 0) || p.what == Shown::axial || p.what == Shown::shear ||
               p.what == Shown::mises;
    });
}

double height_of(const Picture& p, double width) { return layout_of(p, width).height; }

void draw_sheet(const Picture& p, const Pen& pen, double width) {
    const Layout layout = layout_of(p, width);
    if (!pen.svg) {
        set(pen, pen.theme->paper);
        cairo_rectangle(pen.cairo, 0, 0, width, layout.height);
        cairo_fill(pen.cairo);
    }
    if (has_name(p)) {
        const Style name{NAME, true, pen.theme->ink, Anchor::start, false, false};
        write(pen, cut_to(pen, p.section.name, width - 2 * EDGE, name), {EDGE, EDGE + NAME - 3}, name);
    }
    for (std::size_t k = 0; k < layout.panels.size(); ++k) draw_panel(p, pen, p.sheet.panels[k], layout.panels[k]);
    check_status(cairo_status(pen.cairo));
}

}  // namespace velquor
