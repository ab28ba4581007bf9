#include "kit/draw/pen.h"

#include <pango/pangocairo.h>

#include <cmath>
#include <new>

#include "kit/draw/svg.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

// Ascent and descent of letters over their size, for rooms around words.
constexpr double ABOVE = 0.78, BELOW = 0.22;

using Layout = std::unique_ptr<PangoLayout, void (*)(gpointer)>;

Layout layout_of(const Pen& pen, const std::string& text, const Style& style) {
    Layout layout(pango_layout_new(pen.context.get()), g_object_unref);
    const std::unique_ptr<PangoFontDescription, void (*)(PangoFontDescription*)> font(pango_font_description_new(),
                                                                                      pango_font_description_free);
    pango_font_description_set_family_static(font.get(), "sans-serif");
    pango_font_description_set_weight(font.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_absolute_size(font.get(), style.size * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_single_paragraph_mode(layout.get(), true);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    return layout;
}

double width_of(PangoLayout* layout) {
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    return static_cast<double>(logical.width) / PANGO_SCALE;
}

double before(Anchor anchor, double width) {
    return anchor == Anchor::start ? 0 : anchor == Anchor::middle ? width / 2 : width;
}

}  // namespace

const Theme& theme_of(bool dark) {
    static const Theme light{{1, 1, 1},
                             {0.10, 0.12, 0.15},
                             {0.42, 0.45, 0.50},
                             {0.02, 0.35, 0.62},
                             {0.62, 0.27, 0.02},
                             {0.72, 0.08, 0.10},
                             {{0.86, 0.89, 0.93}, {0.93, 0.90, 0.83}, {0.84, 0.91, 0.85}, {0.92, 0.86, 0.91}}};
    static const Theme night{{0.078, 0.090, 0.110},
                             {0.91, 0.92, 0.94},
                             {0.60, 0.64, 0.69},
                             {0.45, 0.75, 1.00},
                             {1.00, 0.70, 0.38},
                             {1.00, 0.50, 0.47},
                             {{0.22, 0.26, 0.32}, {0.30, 0.28, 0.22}, {0.20, 0.29, 0.24}, {0.29, 0.22, 0.29}}};
    return dark ? night : light;
}

Pen pen_on(cairo_t* cairo, const Theme& theme) {
    Pen pen;
    pen.cairo = cairo;
    pen.theme = &theme;
    const std::unique_ptr<PangoFontMap, void (*)(gpointer)> fonts(pango_cairo_font_map_new(), g_object_unref);
    pen.context.reset(pango_font_map_create_context(fonts.get()), g_object_unref);
    const std::unique_ptr<PangoFontDescription, void (*)(PangoFontDescription*)> any(
        pango_font_description_from_string("sans-serif 13"), pango_font_description_free);
    PangoFont* const font = pango_context_load_font(pen.context.get(), any.get());
    const bool has_letters = font && pango_font_has_char(font, 'A');
    if (font) g_object_unref(font);
    if (!has_letters)
        throw Error("", "no fonts are installed, and pictures have words",
                    "install one, as Debian's fonts-dejavu-core");
    // Places and widths of letters in proportion to their size, so that a sheet looks alike at every width.
    const std::unique_ptr<cairo_font_options_t, void (*)(cairo_font_options_t*)> options(cairo_font_options_create(),
                                                                                         cairo_font_options_destroy);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    pango_cairo_context_set_font_options(pen.context.get(), options.get());
    pango_cairo_context_set_resolution(pen.context.get(), 72);
    pango_context_set_round_glyph_positions(pen.context.get(), false);
    return pen;
}

void set(const Pen& pen, const Colour& c, double alpha) { cairo_set_source_rgba(pen.cairo, c.r, c.g, c.b, alpha); }

void line(const Pen& pen, const SheetPoint& a, const SheetPoint& b, const Colour& colour, double width, double dash) {
    set(pen, colour);
    cairo_set_line_width(pen.cairo, width);
    const double dashes[2] = {dash, 0.6 * dash};
    cairo_set_dash(pen.cairo, dashes, dash > 0 ? 2 : 0, 0);
    cairo_move_to(pen.cairo, a.x, a.y);
    cairo_line_to(pen.cairo, b.x, b.y);
    cairo_stroke(pen.cairo);
    cairo_set_dash(pen.cairo, nullptr, 0, 0);
}

void add_arrow_head(const Pen& pen, const SheetPoint& tip, const SheetPoint& from, double size) {
    const double length = std::hypot(tip.x - from.x, tip.y - from.y);
    if (length == 0) return;
    const double c = (tip.x - from.x) / length, s = (tip.y - from.y) / length;
    cairo_move_to(pen.cairo, tip.x, tip.y);
    for (const double side : {-0.36, 0.36})
        cairo_line_to(pen.cairo, tip.x - size * (c + side * s), tip.y - size * (s - side * c));
    cairo_close_path(pen.cairo);
}

void arrow_head(const Pen& pen, const SheetPoint& tip, const SheetPoint& from, double size, const Colour& colour) {
    set(pen, colour);
    add_arrow_head(pen, tip, from, size);
    cairo_fill(pen.cairo);
}

double width_of(const Pen& pen, const std::string& text, const Style& style) {
    return width_of(layout_of(pen, text, style).get());
}

Rect box_of(const Pen& pen, const std::string& text, const SheetPoint& at, const Style& style) {
    const double width = width_of(pen, text, style), start = before(style.anchor, width);
    const double above = ABOVE * style.size, below = BELOW * style.size;
    if (style.upward) return {at.x - above, at.y - width + start, above + below, width};
    return {at.x - start, at.y - above, width, above + below};
}

std::string cut_to(const Pen& pen, std::string text, double width, const Style& style) {
    if (width_of(pen, text, style) <= width) return text;
    while (!text.empty() && width_of(pen, text + "…", style) > width) {
        while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xc0) == 0x80) text.pop_back();
        if (!text.empty()) text.pop_back();
    }
    return text + "…";
}

void write(const Pen& pen, const std::string& given, const SheetPoint& at, const Style& style) {
    const std::string text = printable(given);
    if (pen.svg) {
        pen.svg->words.push_back({text, at, style});
        return;
    }
    const Layout layout = layout_of(pen, text, style);
    const double baseline = static_cast<double>(pango_layout_get_baseline(layout.get())) / PANGO_SCALE;
    cairo_save(pen.cairo);
    cairo_translate(pen.cairo, at.x, at.y);
    if (style.upward) cairo_rotate(pen.cairo, -std::acos(0.0));
    cairo_move_to(pen.cairo, -before(style.anchor, width_of(layout.get())), -baseline);
    if (style.halo) {
        const Colour& paper = pen.theme->paper;
        pango_cairo_layout_path(pen.cairo, layout.get());
        set(pen, paper, 0.85);
        cairo_set_line_width(pen.cairo, 3);
        cairo_set_line_join(pen.cairo, CAIRO_LINE_JOIN_ROUND);
        cairo_stroke(pen.cairo);
        cairo_move_to(pen.cairo, -before(style.anchor, width_of(layout.get())), -baseline);
    }
    set(pen, style.colour);
    pango_cairo_show_layout(pen.cairo, layout.get());
    cairo_restore(pen.cairo);
    cairo_new_path(pen.cairo);  // no line from where the word ended
}

void check_status(cairo_status_t status) {
    if (status == CAIRO_STATUS_SUCCESS) return;
    if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    throw Error("", std::string("the picture could not be drawn: ") + cairo_status_to_string(status));
}

}  // namespace velquor
