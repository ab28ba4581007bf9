// A sheet as SVG, PNG and PDF, and on somebody else's page.
#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cmath>

#include "kit/draw/sheet.h"
#include "kit/draw/svg.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double PAGE = 170 / 25.4 * 72;  // points: the width of the words on a page of A4
constexpr double LARGEST = 16000;         // pixels or points of a side

using Surface = std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)>;
using Cairo = std::unique_ptr<cairo_t, void (*)(cairo_t*)>;

cairo_status_t append(void* text, const unsigned char* bytes, unsigned int count) try {
    static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
} catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
}

// A plain picture is small, and laid out in its own pixels.
double units_of(const Sheet& sheet) { return !sheet.plain ? UNITS : sheet.width > 0 ? sheet.width : UNITS / 4; }

struct Size {
    double width, height, scale;  // units of the sheet times scale
};
Size size_of(const Picture& picture, double standard) {
    const double units = units_of(picture.sheet);
    const double width = picture.sheet.width > 0 ? picture.sheet.width : picture.sheet.plain ? units : standard;
    const double scale = width / units, height = std::ceil(height_of(picture, units) * scale);
    if (!(width >= 16 && width <= LARGEST && height <= LARGEST))
        throw Error("", "a picture " + text_of(width, 6) + " wide and " + text_of(height, 6) + " high",
                    "both must be from 16 to " + text_of(LARGEST));
    return {width, height, scale};
}

}  // namespace

std::string draw_svg(const Section& section, const Analysis& analysis, const Sheet& sheet) {
    const Picture picture(section, analysis, sheet);
    const Size size = size_of(picture, UNITS);
    const double units = units_of(sheet), height = height_of(picture, units);
    std::string drawn;
    SvgParts parts;
    {
        const Surface surface(cairo_svg_surface_create_for_stream(append, &drawn, units, height),
                              cairo_surface_destroy);
        check_status(cairo_surface_status(surface.get()));
        cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
        const Cairo cairo(cairo_create(surface.get()), cairo_destroy);
        Pen pen = pen_on(cairo.get(), theme_of(sheet.dark));
        pen.svg = &parts;
        draw_sheet(picture, pen, units_of(sheet));
        cairo_surface_finish(surface.get());
        check_status(cairo_surface_status(surface.get()));
    }
    SvgHead head{section.name.empty() ? "Section" : section.name, "", size.width, size.height, units, height};
    for (const Panel& panel : sheet.panels) {
        const std::string subtitle = subtitle_of(picture, panel);
        head.about += (head.about.empty() ? "" : ". ") + title_of(panel) + (subtitle.empty() ? "" : ", " + subtitle);
    }
    return whole_svg(drawn, parts, head, theme_of(sheet.dark));
}

std::string draw_png(const Section& section, const Analysis& analysis, const Sheet& sheet) {
    const Picture picture(section, analysis, sheet);
    const Size size = size_of(picture, UNITS);
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::ceil(size.width)),
                                                     static_cast<int>(size.height)),
                          cairo_surface_destroy);
    check_status(cairo_surface_status(surface.get()));
    const Cairo cairo(cairo_create(surface.get()), cairo_destroy);
    const Pen pen = pen_on(cairo.get(), theme_of(sheet.dark));
    set(pen, pen.theme->paper);
    cairo_paint(cairo.get());
    cairo_scale(cairo.get(), size.scale, size.scale);
    draw_sheet(picture, pen, units_of(sheet));
    std::string png;
    check_status(cairo_surface_write_to_png_stream(surface.get(), append, &png));
    return png;
}

std::string draw_pdf(const Section& section, const Analysis& analysis, const Sheet& sheet) {
    const Picture picture(section, analysis, sheet);
    const Size size = size_of(picture, PAGE);
    std::string pdf;
    const Surface surface(cairo_pdf_surface_create_for_stream(append, &pdf, size.width, size.height),
                          cairo_surface_destroy);
    check_status(cairo_surface_status(surface.get()));
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, printable(section.name).c_str());
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");  // the same bytes at any time
    const Cairo cairo(cairo_create(surface.get()), cairo_destroy);
    const Pen pen = pen_on(cairo.get(), theme_of(sheet.dark));
    cairo_scale(cairo.get(), size.scale, size.scale);
    draw_sheet(picture, pen, units_of(sheet));
    cairo_surface_finish(surface.get());
    check_status(cairo_surface_status(surface.get()));
    return pdf;
}

double height_of(const Section& section, const Analysis& analysis, const Sheet& sheet, double width) {
    return height_of(Picture(section, analysis, sheet), UNITS) * width / UNITS;
}

void draw_on(cairo_t* page, const Box& box, const Section& section, const Analysis& analysis, const Sheet& sheet,
             double units) {
    const Picture picture(section, analysis, sheet);
    const double height = height_of(picture, units), scale = std::min(box.width / units, box.height / height);
    const Pen pen = pen_on(page, theme_of(sheet.dark));
    cairo_save(page);
    cairo_new_path(page);
    cairo_translate(page, box.x + (box.width - scale * units) / 2, box.y);
    cairo_scale(page, scale, scale);
    draw_sheet(picture, pen, units);
    cairo_restore(page);
    check_status(cairo_status(page));
}

}  // namespace velquor
