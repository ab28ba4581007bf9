// Tables of a report as PDF.
#include <algorithm>

#include "kit/report/pdf_page.h"
#include "kit/section/words.h"

namespace velquor::pdf {

namespace {

constexpr double LEAST_ROW = 13.6;   // an index below a line makes no difference
constexpr std::size_t FEW_ROWS = 3;  // at the beginning and at the end of a table that stay together
constexpr double LEAST_COLUMN = 45;  // to which columns of words are narrowed

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

Layout cell(const Setting& run, const std::string& text, const Column& column, double width) {
    const double most = (BOTTOM - TOP) / 2;
    if (column.kind != Column::Kind::symbol) return words(run, printable(text), look_of(column), width, most);
    const auto [letter, index] = letter_and_index(text);
    Layout layout = words(run, letter + index, look_of(column), width, most);
    lower_index(layout.get(), letter, TABLE_SIZE);
    return layout;
}

Columns columns_of(const Setting& run, const Table& table) {
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

Cells cells_of(const Setting& run, const Table& table, const Columns& columns, const Row& row) {
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

Head head_of(const Setting& run, const Table& table, const Columns& columns) {
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

void put_head(Setting& run, const Head& head, const Columns& columns) {
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

void put_row(Setting& run, const Columns& columns, const Row& row, const Cells& cells) {
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

double height_of_caption(const Setting& run, const Table& table) {
    if (table.caption.empty()) return 0;
    return size_of(words(run, table.caption, {TEXT_SIZE, true}, ROOM)).height + 3;
}

// Of a row and of those that stay with it: behind a group's heading its first row, the last rows of a table together.
double height_with_followers(const Setting& run, const Table& table, const Columns& columns, std::size_t k) {
    const std::size_t count = table.rows.size();
    std::size_t last = table.rows[k].group ? k + 1 : k;
    if (k + FEW_ROWS == count) last = count - 1;
    double height = 0;
    for (; k <= last && k < count; ++k) height += height_of(cells_of(run, table, columns, table.rows[k]));
    return height;
}

}  // namespace

double least_height(const Setting& run, const Table& table) {
    const Columns columns = columns_of(run, table);
    double height = height_of_caption(run, table) + head_of(run, table, columns).height;
    std::size_t rows = 0;
    for (std::size_t k = 0; k < table.rows.size() && rows < FEW_ROWS; ++k) {
        height += height_of(cells_of(run, table, columns, table.rows[k]));
        rows += !table.rows[k].group;
    }
    return height;
}

void set(Setting& run, const Table& table) {
    const Columns columns = columns_of(run, table);
    const Head head = head_of(run, table, columns);
    need(run, least_height(run, table));
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

}  // namespace velquor::pdf
