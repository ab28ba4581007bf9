// A report as PDF: its blocks in their order, over as many pages as they need.
#include <algorithm>

#include "kit/report/pdf_page.h"
#include "kit/section/words.h"

namespace velquor {
namespace pdf {
namespace {

constexpr double LARGEST_PICTURE = 0.92 * (BOTTOM - TOP);  // room for its caption
constexpr double LEAST_SHARE = 0.82;                       // of a picture's height, where a page has no room for all
constexpr double SHORT = (BOTTOM - TOP) / 4;               // of paragraphs that stay in one piece

double height_of(const Setting& run, const Heading& heading) {
    const double size = heading.level == 1 ? 13 : 10.5;
    return 12 + size_of(words(run, printable(heading.text), {size, true}, ROOM)).height + 6;
}

void set(Setting& run, const Heading& heading) {
    const Layout layout = words(run, printable(heading.text), {heading.level == 1 ? 13.0 : 10.5, true}, ROOM);
    if (run.y > TOP) run.y += 12;
    const std::string target =
        "page=" + std::to_string(run.number) + " pos=[" + text_of(LEFT) + " " + text_of(run.y) + "]";
    const int parent = heading.level == 1 ? CAIRO_PDF_OUTLINE_ROOT : run.chapter;
    const int bookmark = cairo_pdf_surface_add_outline(run.surface, parent, printable(heading.text).c_str(),
                                                       target.c_str(), CAIRO_PDF_OUTLINE_FLAG_OPEN);
    if (heading.level == 1) run.chapter = bookmark;
    put(run, layout, LEFT, run.y);
    run.y += size_of(layout).height + 2;
    if (heading.level == 1) rule(run, run.y, 0.9, 0);
    run.y += 4;
}

Layout layout_of(const Setting& run, const Paragraph& paragraph) {
    Layout layout = words(run, printable(paragraph.text), {}, ROOM);
    pango_layout_set_height(layout.get(), -1);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_NONE);
    pango_layout_set_spacing(layout.get(), static_cast<int>(2.2 * PANGO_SCALE));
    return layout;
}

void set(Setting& run, const Paragraph& paragraph) {
    const Layout layout = layout_of(run, paragraph);
    const double height = size_of(layout).height;
    if (height < SHORT) need(run, height);
    for (int k = 0; k < pango_layout_get_line_count(layout.get()); ++k) {
        PangoLayoutLine* const line = pango_layout_get_line_readonly(layout.get(), k);
        PangoRectangle box;
        pango_layout_line_get_extents(line, nullptr, &box);
        need(run, box.height / double(PANGO_SCALE));
        cairo_set_source_rgb(run.page, 0, 0, 0);
        cairo_move_to(run.page, LEFT, run.y - box.y / double(PANGO_SCALE));
        pango_cairo_show_layout_line(run.page, line);
        run.y += box.height / double(PANGO_SCALE) + 2.2;
    }
    run.y += 5;
}

double height_of(const Setting& run, const Figure& picture) {
    return std::min(height_of(*run.document.section, *run.document.analysis, picture.sheet, ROOM), LARGEST_PICTURE);
}

void set(Setting& run, const Figure& picture) {
    const Layout caption = words(run, printable(picture.caption), {SMALL + 0.6, false, 0.3}, ROOM);
    const double below = picture.caption.empty() ? 0 : 4 + size_of(caption).height;
    double height = height_of(run, picture);
    if (const double left = BOTTOM - run.y - below; left < height && left >= LEAST_SHARE * height) height = left;
    need(run, height + below);
    if (run.pages > 0)
        draw_on(run.page, {LEFT, run.y, ROOM, height}, *run.document.section, *run.document.analysis, picture.sheet);
    if (below > 0) put(run, caption, LEFT, run.y + height + 4, 0.3);
    run.y += height + below + GAP;
}

// What must follow a heading on the same page: headings, and words of some lines, up to a table's first rows, a
// picture, or the beginning of a long text.
double height_below(const Setting& run, std::size_t block) {
    if (block >= run.document.blocks.size()) return 0;
    const Block& next = run.document.blocks[block];
    if (const auto* heading = std::get_if<Heading>(&next))
        return height_of(run, *heading) + height_below(run, block + 1);
    if (const auto* table = std::get_if<Table>(&next)) return least_height(run, *table);
    if (const auto* picture = std::get_if<Figure>(&next)) return LEAST_SHARE * height_of(run, *picture) + 20;
    const double height = size_of(layout_of(run, std::get<Paragraph>(next))).height;
    constexpr double SOME_LINES = 3 * 1.5 * TEXT_SIZE;
    if (height > SOME_LINES) return SOME_LINES;
    const bool more =
        block + 1 < run.document.blocks.size() && !std::holds_alternative<Heading>(run.document.blocks[block + 1]);
    return height + 5 + (more ? height_below(run, block + 1) : 0);
}

// Title, and the block of fields below it, two in a line.
void set_title(Setting& run) {
    const Layout title = words(run, printable(run.document.title), {18, true}, ROOM, 120);
    put(run, title, LEFT, run.y);
    run.y += size_of(title).height + 2;
    const Layout subtitle = words(run, printable(run.document.subtitle), {TEXT_SIZE, false, 0.3}, ROOM, 60);
    put(run, subtitle, LEFT, run.y, 0.3);
    run.y += size_of(subtitle).height + GAP;
    constexpr double BOX = 32;
    for (std::size_t k = 0; k < run.document.fields.size(); ++k) {
        const auto& [name, value] = run.document.fields[k];
        const double x = k % 2 == 0 ? LEFT : LEFT + ROOM / 2;
        cairo_set_source_rgb(run.page, 0.6, 0.6, 0.6);
        cairo_set_line_width(run.page, 0.5);
        cairo_rectangle(run.page, x, run.y, ROOM / 2, BOX);
        cairo_stroke(run.page);
        put(run, words(run, name, {SMALL, false, 0.3}), x + PAD, run.y + 2, 0.3);
        put(run, words(run, printable(value), {TEXT_SIZE}, ROOM / 2 - 2 * PAD, 1), x + PAD, run.y + 14);
        if (k % 2 == 1 || k + 1 == run.document.fields.size()) run.y += BOX;
    }
    run.y += GAP;
}

cairo_status_t take(void* text, const unsigned char* bytes, unsigned int count) {
    static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

struct Printed {
    std::string file;
    int pages = 0;
};

Printed printed(const Document& document, int pages) {
    Printed done;
    const Surface surface(cairo_pdf_surface_create_for_stream(take, &done.file, WIDTH, HEIGHT));
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, printable(document.title).c_str());
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATOR, document.producer.c_str());
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");  // files of one input are alike
    {
        const Page page(cairo_create(surface.get()));
        const std::unique_ptr<PangoFontMap, Free> fonts(pango_cairo_font_map_new());
        const Context context(pango_font_map_create_context(fonts.get()));
        pango_cairo_update_context(page.get(), context.get());
        const std::unique_ptr<PangoFontDescription, void (*)(PangoFontDescription*)> wanted(
            pango_font_description_from_string(FONT), pango_font_description_free);
        const std::unique_ptr<PangoFont, Free> font(pango_context_load_font(context.get(), wanted.get()));
        if (!font) throw Error("", "no fonts are installed, and a report has words", "install fonts-dejavu-core");
        pango_cairo_context_set_resolution(context.get(), 72);
        pango_context_set_round_glyph_positions(context.get(), FALSE);
        const std::unique_ptr<cairo_font_options_t, void (*)(cairo_font_options_t*)> options(
            cairo_font_options_create(), cairo_font_options_destroy);
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(context.get(), options.get());
        Setting run = {document, surface.get(), page.get(), context.get(), pages};
        new_page(run);
        set_title(run);
        for (std::size_t k = 0; k < document.blocks.size(); ++k) {
            if (std::holds_alternative<Heading>(document.blocks[k])) need(run, height_below(run, k));
            std::visit([&](const auto& block) { set(run, block); }, document.blocks[k]);
        }
        cairo_show_page(page.get());
        if (const cairo_status_t status = cairo_status(page.get()); status != CAIRO_STATUS_SUCCESS)
            throw Error("", std::string("the report could not be set: ") + cairo_status_to_string(status));
        done.pages = run.number;
    }
    cairo_surface_finish(surface.get());
    if (const cairo_status_t status = cairo_surface_status(surface.get()); status != CAIRO_STATUS_SUCCESS)
        throw Error("", std::string("the report could not be set: ") + cairo_status_to_string(status));
    return done;
}

}  // namespace
}  // namespace pdf

std::string pdf_of(const Document& document) { return pdf::printed(document, pdf::printed(document, 0).pages).file; }

}  // namespace velquor
