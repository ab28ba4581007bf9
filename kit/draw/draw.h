// Pictures of a section, drawn with cairo, their words by pango: one field, or several on a sheet.
//
// A sheet is laid out 800 units wide, with letters of 13 units, and scaled as a whole to the width that is wished. The
// same section, analysis and sheet give the same bytes on a machine with the same fonts. Nothing is read but these and
// the machine's fonts, which fontconfig finds by its own settings. Every call has its own list of fonts, so that calls
// may run side by side; pango looks them up in threads of its own, which end when it is done.
#pragma once

#include <string>
#include <vector>

#include "kit/analysis/analysis.h"

typedef struct _cairo cairo_t;

namespace velquor {

// What a panel shows. Of a load: axial (sigma, signed), shear (amount, with arrows), mises.
enum class Shown { outline, mesh, warping, axial, shear, mises };

struct Panel {
    Shown what = Shown::outline;
    Load load;               // of axial, shear, mises: what acts; its name stands in the heading
    bool unit_case = false;  // of these: the load is a unit load, named so in the heading
    int direction = 0;  // of warping: 0 of a unit twist about the shear centre, 1 and 2 of unit shear along u and v
    std::string title;  // empty: what it shows, in the words of the tables
};

struct Sheet {
    std::vector<Panel> panels;
    bool dark = false;
    bool named = true;   // the section's name stands above all panels
    bool plain = false;  // without headings, keys, legends and dimensions: a small picture beside a text
    double width = 0;    // pixels of SVG and PNG, points of PDF; 0: 800 pixels, or 170 mm of a page; 200 of a plain one
};

// The panel that a text names: "outline", "mesh", "warping", "warping:u", "axial", "shear:Vz", "mises:snow". Behind the
// colon stands a load set of the section by its name, or a unit case: N My Mz B for axial; T Vy Vz Tw for shear; each
// of them for mises. Without one the section's first load set is taken or, where it has none, My, Vz and My. Throws
// Error with this place where there is no such field or load.
Panel panel_of(const Section& section, const std::string& text, const std::string& place);

// Whether a sheet needs Analysis::field: its panels of stresses do, and that of warping is finer with it.
bool needs_stresses(const Sheet& sheet);

// Whole files. They throw Error where an axial, shear or mises panel has no Analysis::field, where no fonts are
// installed, or where a picture would be too large; std::bad_alloc.
std::string draw_svg(const Section& section, const Analysis& analysis, const Sheet& sheet);  // texts as <text>
std::string draw_png(const Section& section, const Analysis& analysis, const Sheet& sheet);
std::string draw_pdf(const Section& section, const Analysis& analysis, const Sheet& sheet);  // one page of its size

// In points of a page that somebody else makes.
struct Box {
    double x = 0, y = 0, width = 0, height = 0;
};

// The height that a sheet takes at this width, in the same unit. `width` of the sheet is not read.
double height_of(const Section& section, const Analysis& analysis, const Sheet& sheet, double width);

// Draws into a box of a page, as large as it fits, at its top and in the middle. The page's state is as before.
// Letters are of 13 units of 800 to the width of the box; a sheet laid out narrower gives larger ones: `units`.
// Throws as above, and Error where the page has failed.
void draw_on(cairo_t* page, const Box& box, const Section& section, const Analysis& analysis, const Sheet& sheet,
             double units = 800);

}  // namespace velquor
