// What the panels of a sheet share: the section with what is known of it, and rooms on the sheet.
#pragma once

#include <string>
#include <vector>

#include "kit/analysis/values.h"
#include "kit/draw/boundary.h"
#include "kit/draw/draw.h"

namespace velquor {

struct Picture {
    const Section& section;
    const Analysis& analysis;
    const Sheet& sheet;
    Values values;
    std::vector<int> material;         // (elements)  index in the section's list
    Boundary whole, parts, materials;  // around all elements, around each owner's, around those of each material
    double low_y = 0, high_y = 0, low_z = 0, high_z = 0;  // of the section

    Picture(const Section& of, const Analysis& by, const Sheet& on);
};

// The rooms of a panel: its heading above, the drawing with its margins, the key beside it or below.
struct Room {
    Rect drawing, key;
    View view;
    double height = 0;   // of the panel
    bool beside = true;  // where the key is
};

constexpr double LETTERS = 13, SMALL = 11.5;  // sizes of letters
constexpr double LINE = 17;                   // from one line of small letters to the next

// The outline picture.
Room room_of_outline(const Picture& picture, const Rect& at, double highest);
void draw_outline(const Picture& picture, const Pen& pen, const Room& room);

// The mesh, and coloured fields.
Room room_of_field(const Picture& picture, const Panel& panel, const Rect& at, double highest);
void draw_mesh(const Picture& picture, const Pen& pen, const Room& room);
void draw_field(const Picture& picture, const Panel& panel, const Pen& pen, const Room& room);

// The heading of a panel and the line below it, which may be empty.
std::string title_of(const Panel& panel);
std::string subtitle_of(const Picture& picture, const Panel& panel);

// Fills the materials, with hatches where there are several, and draws the boundaries.
void fill_materials(const Picture& picture, const Pen& pen, const View& view);
void draw_boundaries(const Picture& picture, const Pen& pen, const View& view);
void trace_bar(const Pen& pen, const View& view, const Bar& bar);  // adds the circle of one that is a point
// The materials' signs, one line each, from this place downwards; nothing of one material alone. Returns the next line.
double key_of_materials(const Picture& picture, const Pen& pen, double x, double y, double width);
int materials_in_key(const Picture& picture);

// Lines of words of at most this width, from this place downwards. Returns where the next begins.
double write_lines(const Pen& pen, const std::string& text, double x, double y, double width, const Style& style);

}  // namespace velquor
