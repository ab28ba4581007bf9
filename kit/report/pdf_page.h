// Pages of a report as PDF: words, lines and what stands on every page. Lengths are points of the page, from its upper
// left corner.
#pragma once

#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include <memory>

#include "kit/report/document.h"

namespace velquor::pdf {

inline constexpr double WIDTH = 595.276, HEIGHT = 841.89;  // A4
inline constexpr double LEFT = 68, RIGHT = WIDTH - 45, TOP = 68, BOTTOM = HEIGHT - 62;
inline constexpr double ROOM = RIGHT - LEFT;
inline constexpr double HEADER = 38, FOOTER = HEIGHT - 44;  // of the lines that every page has
inline constexpr double PAD = 4, GAP = 9;                   // beside the words of a cell, between blocks
inline constexpr double TEXT_SIZE = 9.2, TABLE_SIZE = 8, SMALL = 6.8;
inline const char* const FONT = "DejaVu Sans";

struct Free {
    void operator()(cairo_t* page) const { cairo_destroy(page); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(void* object) const { g_object_unref(object); }
};
using Surface = std::unique_ptr<cairo_surface_t, Free>;
using Page = std::unique_ptr<cairo_t, Free>;
using Context = std::unique_ptr<PangoContext, Free>;
using Layout = std::unique_ptr<PangoLayout, Free>;

struct Look {
    double size = TEXT_SIZE;
    bool bold = false;
    double grey = 0;
    PangoAlignment align = PANGO_ALIGN_LEFT;
};

// One setting of all pages: the first one counts them, and draws nothing that anybody sees.
struct Setting {
    const Document& document;
    cairo_surface_t* surface;
    cairo_t* page;
    PangoContext* context;
    int pages = 0;  // of all; 0: not known yet
    int number = 0;
    double y = 0;
    int chapter = CAIRO_PDF_OUTLINE_ROOT;  // the bookmark above those of the second level
};

// Words in lines of at most this width; one line where it is 0, cut at what `most` leaves of height.
Layout words(const Setting& run, const std::string& text, const Look& look, double width = 0,
             double most = BOTTOM - TOP);

// Sets a symbol's index lower, which stands behind its letter.
void lower_index(PangoLayout* layout, const std::string& letter, double size);

struct Size {
    double width, height;
};
Size size_of(const Layout& layout);

void put(const Setting& run, const Layout& layout, double x, double y, double grey = 0);
void rule(const Setting& run, double y, double width, double grey, double from = LEFT, double to = RIGHT);

// A new page, with the lines above and below its text; the same where this height is not left.
void new_page(Setting& run);
void need(Setting& run, double height);

// A table, broken between rows, its head on each page; and the height of what must stand together at its beginning.
void set(Setting& run, const Table& table);
double least_height(const Setting& run, const Table& table);

}  // namespace velquor::pdf
