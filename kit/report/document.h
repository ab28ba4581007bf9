// A document: what a page says, and nothing of how it looks. Two writers set it: HTML and PDF.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "kit/draw/draw.h"

namespace velquor {

struct Heading {
    int level = 1;  // 1 or 2 below the title
    std::string text;
};

struct Paragraph {
    std::string text;
};

// Cells of symbols are set as "Wel,y" is spoken: W with the index "el,y".
struct Column {
    enum class Kind { text, number, symbol } kind = Kind::text;
    std::string heading, unit;
};
struct Row {
    std::vector<std::string> cells;  // as many as columns; of a group one, the heading of the rows behind it
    bool group = false;
};
struct Table {
    std::string caption;
    std::vector<Column> columns;
    std::vector<Row> rows;
};

// A picture of the document's section, as wide as the page. Without a caption it belongs to the next one.
struct Figure {
    std::string caption;
    Sheet sheet;
};

using Block = std::variant<Heading, Paragraph, Table, Figure>;

struct Document {
    std::string title, subtitle;
    std::vector<std::pair<std::string, std::string>> fields;  // of the title block; empty ones are for a pen
    std::vector<Block> blocks;
    std::string producer;              // what made it
    const Section* section = nullptr;  // of the pictures, like the next; not owned
    const Analysis* analysis = nullptr;
};

// Letter and index of a symbol: "A" and "s,y" of "As,y", "EI" and "y" of "EIy", "A" and "tr" of "A,tr".
std::pair<std::string, std::string> letter_and_index(const std::string& symbol);

// One file in UTF-8 that loads nothing from elsewhere. Texts may hold anything. Throws what draw_svg throws.
std::string html_of(const Document& document);

// A4 upright. Tables break between rows, with their header again on the next page; no heading stands alone at a page's
// foot, nor with no more than the words above a table. Pictures are a little smaller where a page has room for that.
// The same document gives the same bytes on a machine with the same fonts. Throws what draw_on throws, and Error where
// no font is installed.
std::string pdf_of(const Document& document);

}  // namespace velquor
