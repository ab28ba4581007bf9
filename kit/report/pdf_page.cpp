#include "kit/report/pdf_page.h"

namespace velquor::pdf {

Layout words(const Setting& run, const std::string& text, const Look& look, double width, double most) {
    Layout layout(pango_layout_new(run.context));
    const std::unique_ptr<PangoFontDescription, void (*)(PangoFontDescription*)> font(pango_font_description_new(),
                                                                                      pango_font_description_free);
    pango_font_description_set_family_static(font.get(), FONT);
    pango_font_description_set_absolute_size(font.get(), look.size * PANGO_SCALE);
    if (look.bold) pango_font_description_set_weight(font.get(), PANGO_WEIGHT_BOLD);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_alignment(layout.get(), look.align);
    if (width <= 0) {
        pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
        return layout;
    }
    pango_layout_set_width(layout.get(), static_cast<int>(width * PANGO_SCALE));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_height(layout.get(), static_cast<int>(most * PANGO_SCALE));
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    return layout;
}

void lower_index(PangoLayout* layout, const std::string& letter, double size) {
    const std::unique_ptr<PangoAttrList, void (*)(PangoAttrList*)> list(pango_attr_list_new(), pango_attr_list_unref);
    for (PangoAttribute* const attribute :
         {pango_attr_rise_new(static_cast<int>(-0.22 * size * PANGO_SCALE)), pango_attr_scale_new(0.8)}) {
        attribute->start_index = static_cast<guint>(letter.size());
        pango_attr_list_insert(list.get(), attribute);
    }
    pango_layout_set_attributes(layout, list.get());
}

Size size_of(const Layout& layout) {
    int width = 0, height = 0;
    pango_layout_get_size(layout.get(), &width, &height);
    return {width / double(PANGO_SCALE), height / double(PANGO_SCALE)};
}

void put(const Setting& run, const Layout& layout, double x, double y, double grey) {
    cairo_set_source_rgb(run.page, grey, grey, grey);
    cairo_move_to(run.page, x, y);
    pango_cairo_show_layout(run.page, layout.get());
}

void rule(const Setting& run, double y, double width, double grey, double from, double to) {
    cairo_set_source_rgb(run.page, grey, grey, grey);
    cairo_set_line_width(run.page, width);
    cairo_move_to(run.page, from, y);
    cairo_line_to(run.page, to, y);
    cairo_stroke(run.page);
}

void new_page(Setting& run) {
    if (run.number++ > 0) cairo_show_page(run.page);
    const Look small = {SMALL, false, 0.3};
    const Layout producer = words(run, run.document.producer, small);
    const double width = size_of(producer).width;
    put(run, producer, RIGHT - width, HEADER, 0.3);
    put(run, words(run, run.document.title, small, ROOM - width - 12, 1), LEFT, HEADER, 0.3);
    rule(run, HEADER + 12, 0.4, 0.6);
    const Layout count = words(run, std::to_string(run.number) + " / " + std::to_string(run.pages), small);
    put(run, count, RIGHT - size_of(count).width, FOOTER, 0.3);
    run.y = TOP;
}

void need(Setting& run, double height) {
    if (run.y + height > BOTTOM && run.y > TOP) new_page(run);
}

}  // namespace velquor::pdf
