// Lengths are points of the page, from its upper left corner.
#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <memory>

#include "kit/report/document.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double WIDTH = 595.276, HEIGHT = 841.89;  // A4
constexpr double LEFT = 68, RIGHT = WIDTH - 45, TOP = 68, BOTTOM = HEIGHT - 62;
constexpr double ROOM = RIGHT - LEFT;
constexpr double HEADER = 38, FOOTER = HEIGHT - 44;  // of the lines that every page has
constexpr double PAD = 4, GAP = 9;                   // beside the words of a cell, between blocks
constexpr double TEXT_SIZE = 9.2, TABLE_SIZE = 8, SMALL = 6.8;
constexpr double LEAST_ROW = 13.6;   // an index below a line makes no difference
constexpr std::size_t FEW_ROWS = 3;  // at the beginning and at the end of a table that stay together
constexpr double LEAST_COLUMN = 45;  // to which columns of words are narrowed
constexpr double LARGEST_PICTURE = 0.92 * (BOTTOM - TOP);  // room for its caption
const char* const FONT = "DejaVu Sans";

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

// A run over the pages: the first one counts them, and draws nothing that anybody sees.
struct Run {
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
Layout words(const Run& run, const std::string& text, const Look& look, double width = 0, double most = BOTTOM - TOP) {
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

// A symbol with its index set lower.
void lower_index(PangoLayout* layout, const std::string& letter, double size) {
    const std::unique_ptr<PangoAttrList, void (*)(PangoAttrList*)> list(pango_attr_list_new(), pango_attr_list_unref);
    for (PangoAttribute* const attribute :
         {pango_attr_rise_new(static_cast<int>(-0.22 * size * PANGO_SCALE)), pango_attr_scale_new(0.8)}) {
        attribute->start_index = static_cast<guint>(letter.size());
        pango_attr_list_insert(list.get(), attribute);
    }
    pango_layout_set_attributes(layout, list.get());
}

struct Size {
    double width, height;
};
Size size_of(const Layout& layout) {
    int width = 0, height = 0;
    pango_layout_get_size(layout.get(), &width, &height);
    return {width / double(PANGO_SCALE), height / double(PANGO_SCALE)};
}

void put(const Run& run, const Layout& layout, double x, double y, double grey = 0) {
    cairo_set_source_rgb(run.page, grey, grey, grey);
    cairo_move_to(run.page, x, y);
    pango_cairo_show_layout(run.page, layout.get());
}

void rule(const Run& run, double y, double width, double grey, double from = LEFT, double to = RIGHT) {
    cairo_set_source_rgb(run.page, grey, grey, grey);
    cairo_set_line_width(run.page, width);
    cairo_move_to(run.page, from, y);
    cairo_line_to(run.page, to, y);
    cairo_stroke(run.page);
}

// The line above and below the text of every page.
void new_page(Run& run) {
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

void need(Run& run, double height) {
    if (run.y + height > BOTTOM && run.y > TOP) new_page(run);
}

// Columns as wide as their words; where these are too wide together, the widest share what the others leave.
struct Columns {
    std::vector<double> left, width;  // of the words
};

bool is_bare(const Table& table) {
    return std::all_of(table.columns.begin(), table.columns.end(), [](const Column& c) { return c.heading.empty(); });
}

Look look_of(const Column& column) {
    return {TABLE_SIZE, false, 0, column.kind == Column::Kind::number ? PANGO_ALIGN_RIGHT : PANGO_ALIGN_LEFT};
}

Layout cell(const Run& run, const std::string& text, const Column& column, double width) {
    const double most = (BOTTOM - TOP) / 2;
    if (column.kind != Column::Kind::symbol) return words(run, printable(text), look_of(column), width, most);
    const auto [letter, index] = letter_and_index(text);
    Layout layout = words(run, letter + index, look_of(column), width, most);
    lower_index(layout.get(), letter, TABLE_SIZE);
    return layout;
}

Columns columns_of(const Run& run, const Table& table) {
    const std::size_t count = table.columns.size();
    std::vector<double> wanted(count, 0);
    for (std::size_t k = 0; k < count; ++k) {
        const Column& column = table.columns[k];
        Look bold = look_of(column);
        bold.bold = true;
        for (const std::string& text : {column.heading, column.unit}) {
            const Layout narrow = words(run, text, bold, 1);
            pango_layout_set_wrap(narrow.get(), PANGO_WRAP_WORD);
            wanted[k] = std::max(wanted[k], size_of(narrow).width);
        }
        for (const Row& row : table.rows)
            if (!row.group) wanted[k] = std::max(wanted[k], size_of(cell(run, row.cells.at(k), column, 0)).width);
        wanted[k] += 0.5;  // of rounding
    }
    const double room = ROOM - 2 * PAD * static_cast<double>(count);
    double rest = room;
    std::vector<std::size_t> wide;  // columns that may be narrowed
    for (std::size_t k = 0; k < count; ++k)
        if (table.columns[k].kind == Column::Kind::text)
            wide.push_back(k);
        else
            rest -= wanted[k];
    if (rest < LEAST_COLUMN * static_cast<double>(wide.size())) {
        rest = room;
        wide.clear();
        for (std::size_t k = 0; k < count; ++k) wide.push_back(k);
    }
    std::sort(wide.begin(), wide.end(),
              [&](std::size_t a, std::size_t b) { return wanted[a] != wanted[b] ? wanted[a] < wanted[b] : a < b; });
    for (std::size_t i = 0; i < wide.size(); ++i) {
        double& width = wanted[wide[i]];
        width = std::min(width, rest / static_cast<double>(wide.size() - i));
        rest -= width;
    }
    // What is left goes to the last column of words or, of numbers behind a name, to all.
    std::size_t last = count - 1;
    while (last > 0 && table.columns[last].kind != Column::Kind::text) --last;
    for (std::size_t k = last; k < (last > 0 ? last + 1 : count); ++k)
        wanted[k] += std::max(0.0, rest) / static_cast<double>(last > 0 ? 1 : count);
    Columns columns = {{}, wanted};
    double x = LEFT;
    for (std::size_t k = 0; k < count; ++k) {
        columns.left.push_back(x + PAD);
        x += wanted[k] + 2 * PAD;
    }
    return columns;
}

// Layouts of a row, to be measured and then put.
using Cells = std::vector<Layout>;

double height_of(const Cells& cells) {
    double height = 0;
    for (const Layout& layout : cells) height = std::max(height, size_of(layout).height);
    return std::max(LEAST_ROW, height + PAD);
}

Cells cells_of(const Run& run, const Table& table, const Columns& columns, const Row& row) {
    Cells cells;
    if (row.group) {
        cells.push_back(words(run, printable(row.cells.at(0)), {TABLE_SIZE, true}, ROOM - 2 * PAD));
        return cells;
    }
    for (std::size_t k = 0; k < table.columns.size(); ++k)
        cells.push_back(cell(run, row.cells.at(k), table.columns[k], columns.width[k]));
    return cells;
}

struct Head {
    Cells names, units;
    double above = 0, height = 0;  // of the names, of both
};

Head head_of(const Run& run, const Table& table, const Columns& columns) {
    Head head;
    if (is_bare(table)) return head;
    double below = 0;
    for (std::size_t k = 0; k < table.columns.size(); ++k) {
        Look look = look_of(table.columns[k]);
        look.bold = true;
        head.names.push_back(words(run, table.columns[k].heading, look, columns.width[k]));
        look.bold = false;
        look.size = SMALL;
        head.units.push_back(words(run, table.columns[k].unit, look, columns.width[k]));
        head.above = std::max(head.above, size_of(head.names.back()).height);
        if (!table.columns[k].unit.empty()) below = std::max(below, size_of(head.units.back()).height);
    }
    head.height = head.above + below + PAD;
    return head;
}

void put_head(Run& run, const Head& head, const Columns& columns) {
    if (head.names.empty()) {
        rule(run, run.y, 0.4, 0.7);
        return;
    }
    for (std::size_t k = 0; k < head.names.size(); ++k) {
        const double name = run.y + head.above - size_of(head.names[k]).height;
        put(run, head.names[k], columns.left[k], name);
        put(run, head.units[k], columns.left[k], run.y + head.above, 0.3);
    }
    run.y += head.height;
    rule(run, run.y, 0.9, 0);
}

void put_row(Run& run, const Columns& columns, const Row& row, const Cells& cells) {
    const double height = height_of(cells);
    if (row.group) {
        cairo_set_source_rgb(run.page, 0.94, 0.95, 0.96);
        cairo_rectangle(run.page, LEFT, run.y, ROOM, height);
        cairo_fill(run.page);
    }
    for (std::size_t k = 0; k < cells.size(); ++k) put(run, cells[k], columns.left[k], run.y + PAD / 2);
    run.y += height;
    rule(run, run.y, 0.3, 0.75);
}

double height_of_caption(const Run& run, const Table& table) {
    if (table.caption.empty()) return 0;
    return size_of(words(run, table.caption, {TEXT_SIZE, true}, ROOM)).height + 3;
}

// Of what must stand together at its beginning: caption, head and the first rows, with the heading of their group.
double least_height(const Run& run, const Table& table, const Columns& columns) {
    double height = height_of_caption(run, table) + head_of(run, table, columns).height;
    std::size_t rows = 0;
    for (std::size_t k = 0; k < table.rows.size() && rows < FEW_ROWS; ++k) {
        height += height_of(cells_of(run, table, columns, table.rows[k]));
        rows += !table.rows[k].group;
    }
    return height;
}

// Of a row and of those that stay with it: behind a group's heading its first row, the last rows of a table together.
double height_with_followers(const Run& run, const Table& table, const Columns& columns, std::size_t k) {
    const std::size_t count = table.rows.size();
    std::size_t last = table.rows[k].group ? k + 1 : k;
    if (k + FEW_ROWS == count) last = count - 1;
    double height = 0;
    for (; k <= last && k < count; ++k) height += height_of(cells_of(run, table, columns, table.rows[k]));
    return height;
}

void set(Run& run, const Table& table) {
    const Columns columns = columns_of(run, table);
    const Head head = head_of(run, table, columns);
    need(run, least_height(run, table, columns));
    if (!table.caption.empty()) {
        put(run, words(run, table.caption, {TEXT_SIZE, true}, ROOM), LEFT, run.y);
        run.y += height_of_caption(run, table);
    }
    put_head(run, head, columns);
    for (std::size_t k = 0; k < table.rows.size(); ++k) {
        const Cells cells = cells_of(run, table, columns, table.rows[k]);
        if (run.y + height_with_followers(run, table, columns, k) > BOTTOM) {
            new_page(run);
            put_head(run, head, columns);
        }
        put_row(run, columns, table.rows[k], cells);
    }
    run.y += GAP;
}

double height_of(const Run& run, const Heading& heading) {
    const double size = heading.level == 1 ? 13 : 10.5;
    return 12 + size_of(words(run, printable(heading.text), {size, true}, ROOM)).height + 6;
}

void set(Run& run, const Heading& heading) {
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

void set(Run& run, const Paragraph& paragraph) {
    const Layout layout = words(run, printable(paragraph.text), {}, ROOM);
    pango_layout_set_height(layout.get(), -1);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_NONE);
    pango_layout_set_spacing(layout.get(), static_cast<int>(2.2 * PANGO_SCALE));
    const double height = size_of(layout).height;
    if (height < (BOTTOM - TOP) / 4) need(run, height);
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

double height_of(const Run& run, const Figure& picture) {
    return std::min(height_of(*run.document.section, *run.document.analysis, picture.sheet, ROOM), LARGEST_PICTURE);
}

void set(Run& run, const Figure& picture) {
    const Layout caption = words(run, printable(picture.caption), {SMALL + 0.6, false, 0.3}, ROOM);
    const double height = height_of(run, picture);
    need(run, height + size_of(caption).height + 4);
    if (run.pages > 0)
        draw_on(run.page, {LEFT, run.y, ROOM, height}, *run.document.section, *run.document.analysis, picture.sheet);
    run.y += height + 4;
    put(run, caption, LEFT, run.y, 0.3);
    run.y += size_of(caption).height + GAP;
}

// What must follow a heading on the same page: headings and paragraphs up to a table's first row, a picture, or text of
// some lines.
double height_below(const Run& run, std::size_t block) {
    if (block >= run.document.blocks.size()) return 0;
    const Block& next = run.document.blocks[block];
    if (const auto* heading = std::get_if<Heading>(&next))
        return height_of(run, *heading) + height_below(run, block + 1);
    if (const auto* table = std::get_if<Table>(&next)) return least_height(run, *table, columns_of(run, *table));
    if (const auto* picture = std::get_if<Figure>(&next)) return height_of(run, *picture) + 20;
    return 3 * 1.5 * TEXT_SIZE;
}

// Title, and the block of fields below it, two in a line.
void set_title(Run& run) {
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
        Run run = {document, surface.get(), page.get(), context.get(), pages};
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

std::string pdf_of(const Document& document) { return printed(document, printed(document, 0).pages).file; }

}  // namespace velquor
