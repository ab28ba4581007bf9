// What the pictures are drawn with: a cairo surface in units of the sheet, y downwards, and words by pango.
#pragma once

#include <cairo.h>

#include <memory>
#include <string>
#include <vector>

#include "kit/section/section.h"

typedef struct _PangoContext PangoContext;

namespace velquor {

struct Colour {
    double r = 0, g = 0, b = 0;
};

struct Theme {
    Colour paper, ink, faint, accent, second, mark;  // accent: principal axes; second: plastic axes; mark: warnings
    std::vector<Colour> fills;                       // of materials, in turn
};
const Theme& theme_of(bool dark);

// In units of the sheet, y downwards.
struct SheetPoint {
    double x = 0, y = 0;
};
struct Rect {
    double x = 0, y = 0, width = 0, height = 0;
};

enum class Anchor { start, middle, end };
struct Style {
    double size = 13;
    bool bold = false;
    Colour colour;
    Anchor anchor = Anchor::start;
    bool halo = false;    // with an edge of the paper's colour
    bool upward = false;  // read from below to above
};

// A word that was drawn, for the SVG. Its place is that of its line of writing, where its anchor says.
struct Word {
    std::string text;
    SheetPoint at;
    Style style;
};

struct SvgParts;  // of svg.h
struct Pen {
    cairo_t* cairo = nullptr;
    const Theme* theme = nullptr;
    SvgParts* svg = nullptr;  // takes words and cells, which are then not drawn; null: they are
    std::shared_ptr<PangoContext> context;
};

// A pen with a list of fonts of its own. Throws Error where there are no fonts.
Pen pen_on(cairo_t* cairo, const Theme& theme);

void set(const Pen& pen, const Colour& colour, double alpha = 1);
void line(const Pen& pen, const SheetPoint& a, const SheetPoint& b, const Colour& colour, double width = 1,
          double dash = 0);
void add_arrow_head(const Pen& pen, const SheetPoint& tip, const SheetPoint& from, double size);  // to the path
void arrow_head(const Pen& pen, const SheetPoint& tip, const SheetPoint& from, double size, const Colour& colour);

void write(const Pen& pen, const std::string& text, const SheetPoint& at, const Style& style);
double width_of(const Pen& pen, const std::string& text, const Style& style);
Rect box_of(const Pen& pen, const std::string& text, const SheetPoint& at, const Style& style);
// The text cut to this width, with an ellipsis.
std::string cut_to(const Pen& pen, std::string text, double width, const Style& style);

// Between two points: colours at shares of the way, increasing.
struct Stop {
    double share;
    Colour colour;
};

// Throws where cairo has failed: std::bad_alloc, or Error.
void check_status(cairo_status_t status);

}  // namespace velquor
