// What an SVG has that cairo would write otherwise: words as <text>, which cairo turns into shapes, and cells of
// colour, for each of which cairo would repeat all colours and the outline that they are cut to.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "kit/draw/colours.h"

namespace velquor {

struct SvgParts {
    std::vector<Word> words;
    std::string definitions, cells;
    std::map<std::string, int> gradients;  // those that are defined, by where they begin and end
    int clips = 0, maps = 0;
};

// Between these, cells are cut to cairo's path, which is taken; their colours are those of the scale.
void begin_cells(SvgParts& parts, cairo_t* cairo, const Scale& scale);
void end_cells(SvgParts& parts);

// A polygon of one colour, or of the colours of the scale's map, from its one end at a to the other at b.
void add_cell(SvgParts& parts, const SheetPoint* at, std::size_t count, const Colour& colour);
void add_cell(SvgParts& parts, const SheetPoint* at, std::size_t count, const SheetPoint& a, const SheetPoint& b);

// The whole file: the paper, the cells, what cairo has drawn beside the parts, the words.
struct SvgHead {
    std::string title, about;
    double width, height;          // as shown
    double box_width, box_height;  // in units of the sheet
};
std::string whole_svg(const std::string& drawn, const SvgParts& parts, const SvgHead& head, const Theme& theme);

}  // namespace velquor
