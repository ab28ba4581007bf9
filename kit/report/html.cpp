#include <algorithm>

#include "kit/report/document.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

// Screens light or dark as they are set; paper is always light. Pictures keep a light ground.
const char* const STYLE = R"(
:root { color-scheme: light dark; --ink: #1a1a1a; --paper: #fff; --soft: #5a5f66; --rule: #c9cdd2; --group: #f1f3f5; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e4e6e8; --paper: #16181b; --soft: #a3a9b0; --rule: #43484e; --group: #22262a; }
}
@media print {
  :root { color-scheme: light; --ink: #000; --paper: #fff; --soft: #444; --rule: #b5b9be; --group: #f1f3f5; }
}
@page { size: A4; margin: 18mm 16mm 18mm 22mm; @bottom-right { content: counter(page) " / " counter(pages); } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 2rem 1.5rem 4rem; max-width: 62rem; color: var(--ink); background: var(--paper);
  font: 15px/1.5 "DejaVu Sans", Verdana, system-ui, sans-serif; }
h1 { margin: 0; font-size: 1.8em; line-height: 1.25; overflow-wrap: anywhere; }
h2 { margin: 2.5rem 0 .75rem; padding-bottom: .25rem; font-size: 1.3em; border-bottom: 2px solid var(--ink); }
h3 { margin: 1.75rem 0 .5rem; font-size: 1.1em; }
h2, h3 { break-after: avoid; overflow-wrap: anywhere; }
p { margin: .6em 0; max-width: 48rem; overflow-wrap: anywhere; orphans: 2; widows: 2; }
.subtitle { color: var(--soft); }
dl { display: grid; grid-template-columns: 1fr 1fr; gap: 0; margin: 1.25rem 0 0; border: 1px solid var(--rule); }
dl div { min-height: 3.1rem; padding: .3rem .6rem; border: .5px solid var(--rule); }
dt { color: var(--soft); font-size: .75em; }
dd { margin: 0; overflow-wrap: anywhere; }
.table { overflow-x: auto; margin: 1rem 0; }
table { border-collapse: collapse; width: 100%; font-size: .87em; line-height: 1.35; }
caption { padding: .25rem 0; font-weight: bold; text-align: left; break-after: avoid; }
thead { display: table-header-group; }
tr { break-inside: avoid; }
th, td { padding: .25em .6em; text-align: left; vertical-align: top; border-bottom: 1px solid var(--rule); }
thead th { vertical-align: bottom; border-bottom: 1.5px solid var(--ink); }
thead small { display: block; font-weight: normal; color: var(--soft); }
th.group { break-after: avoid; background: var(--group); }
tr.group { break-after: avoid; }
tbody th { font-weight: normal; }
tbody th.group { font-weight: bold; }
.number { text-align: right; font-variant-numeric: tabular-nums; }
td.number { white-space: nowrap; }
.symbol { white-space: nowrap; }
sub { font-size: .8em; line-height: 0; }
figure { margin: 1rem 0; padding: .75rem; break-inside: avoid; color: #1a1a1a; background: #fff;
  border: 1px solid var(--rule); }
figure svg { display: block; width: 100%; height: auto; }
figcaption { padding-top: .4rem; color: #444; font-size: .87em; }
@media print {
  html { font-size: 8pt; }
  body { padding: 0; max-width: none; font-size: 9pt; }
  p { max-width: none; }
  table { font-size: 7.6pt; line-height: 1.25; }
  th, td { padding: .2em .45em; }
  .table { overflow: visible; }
  figure { border: none; padding: 0; }
}
)";

// Words that may be longer than a column get places to break.
std::string breakable(const std::string& text) {
    constexpr std::size_t LONGEST = 24;
    const std::string shown = printable(text);
    std::string out, word;
    std::size_t letters = 0;
    for (std::size_t k = 0; k <= shown.size(); ++k) {
        const bool begins = k == shown.size() || (shown[k] & 0xc0) != 0x80;
        if (begins && letters == LONGEST) {
            out += in_markup(word) + "<wbr>";
            word.clear();
            letters = 0;
        }
        if (k == shown.size()) break;
        word += shown[k];
        letters = shown[k] == ' ' ? 0 : letters + begins;
    }
    return out + in_markup(word);
}

const char* name_of(Column::Kind kind) {
    return kind == Column::Kind::number ? "number" : kind == Column::Kind::symbol ? "symbol" : "text";
}

std::string cell(const std::string& text, Column::Kind kind) {
    if (kind != Column::Kind::symbol) return breakable(text);
    const auto [letter, index] = letter_and_index(text);
    return in_markup(letter) + (index.empty() ? "" : "<sub>" + in_markup(index) + "</sub>");
}

// A drawing within a page: without the head of a file, and the names of forms that HTML knows.
std::string embedded(std::string svg) {
    svg.erase(0, std::min(svg.find("<svg"), svg.size()));
    for (const std::string space : {" xmlns=\"", " xmlns:xlink=\""})
        if (const std::size_t at = svg.find(space); at != std::string::npos)
            svg.erase(at, svg.find('"', at + space.size()) + 1 - at);
    return svg;
}

struct Writer {
    const Document& document;
    std::string text = {};

    void operator()(const Heading& heading) {
        const std::string tag = "h" + std::to_string(heading.level + 1);
        text += "<" + tag + ">" + in_markup(heading.text) + "</" + tag + ">\n";
    }
    void operator()(const Paragraph& paragraph) { text += "<p>" + in_markup(paragraph.text) + "</p>\n"; }

    void operator()(const Table& table) {
        text += "<div class=\"table\"><table>\n";
        if (!table.caption.empty()) text += "<caption>" + in_markup(table.caption) + "</caption>\n";
        text += "<thead><tr>";
        for (const Column& column : table.columns) {
            text +=
                std::string("<th scope=\"col\" class=\"") + name_of(column.kind) + "\">" + in_markup(column.heading);
            if (!column.unit.empty()) text += " <small>" + in_markup(column.unit) + "</small>";
            text += "</th>";
        }
        text += "</tr></thead>\n<tbody>\n";
        for (const Row& row : table.rows) {
            if (row.group) {
                text += "</tbody>\n<tbody>\n<tr class=\"group\"><th class=\"group\" scope=\"rowgroup\" colspan=\"" +
                        std::to_string(table.columns.size()) + "\">" + in_markup(row.cells.at(0)) + "</th></tr>\n";
                continue;
            }
            text += "<tr>";
            for (std::size_t k = 0; k < table.columns.size(); ++k) {
                const Column::Kind kind = table.columns[k].kind;
                const char* const tag = k == 0 ? "th" : "td";
                text += std::string("<") + tag + (k == 0 ? " scope=\"row\"" : "") + " class=\"" + name_of(kind) +
                        "\">" + cell(row.cells.at(k), kind) + "</" + tag + ">";
            }
            text += "</tr>\n";
        }
        text += "</tbody>\n</table></div>\n";
    }

    void operator()(const Figure& picture) {
        text += "<figure>" + embedded(draw_svg(*document.section, *document.analysis, picture.sheet));
        if (!picture.caption.empty()) text += "<figcaption>" + in_markup(picture.caption) + "</figcaption>";
        text += "</figure>\n";
    }
};

}  // namespace

std::string html_of(const Document& document) {
    Writer writer = {document};
    std::string& text = writer.text;
    text =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<meta name=\"generator\" "
        "content=\"" +
        in_markup(document.producer) + "\">\n<title>" + in_markup(document.title) + "</title>\n<style>" + STYLE +
        "</style>\n</head>\n<body>\n<header>\n<h1>" + in_markup(document.title) + "</h1>\n<p class=\"subtitle\">" +
        in_markup(document.subtitle) + "</p>\n<dl>\n";
    for (const auto& [name, value] : document.fields)
        text += "<div><dt>" + in_markup(name) + "</dt><dd>" + in_markup(value) + "</dd></div>\n";
    text += "</dl>\n</header>\n<main>\n";
    for (const Block& block : document.blocks) std::visit(writer, block);
    text += "</main>\n</body>\n</html>\n";
    return text;
}

}  // namespace velquor
