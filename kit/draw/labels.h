// Names beside points of a drawing, that keep off what is drawn there.
#pragma once

#include <string>
#include <vector>

#include "kit/draw/pen.h"

namespace velquor {

struct Segment {
    SheetPoint a, b;
};

// What stands on the drawing, so that words keep off it.
struct Taken {
    std::vector<Rect> boxes;
    std::vector<Segment> lines;
};

bool overlap(const Rect& a, const Rect& b);
bool is_free(const Taken& taken, const Rect& box, const Rect& within);  // with a little air around the box

// Writes a name beside a point, at the first of some places that is free; else at the first of them.
void write_near(const Pen& pen, const std::string& text, const SheetPoint& at, double off, Style style, Taken& taken,
                const Rect& within);

}  // namespace velquor
