// A field in cells, each of one colour or of colours along a line, and the lines of equal value.
#pragma once

#include <array>
#include <vector>

#include "kit/draw/colours.h"
#include "kit/draw/picture.h"

namespace velquor {

// A piece of an element, a triangle or a quadrilateral, with the field at its corners. `bulge`: how far the true edge
// may lie outside of it.
struct Cell {
    int corners = 3;
    std::array<Point, 4> at;
    std::array<double, 4> value;
    std::size_t element = 0;  // of the coarse mesh
    double bulge = 0;
};

// The elements of the coarse mesh as cells, with one value at each node.
std::vector<Cell> cells_of(const Mesh& mesh, const std::vector<double>& at_nodes);

// The same of a value at each spot of a field of stresses. An element is taken as the parts that the levels made of it
// where its own corners would miss what is in between by more than a small share of the range, unless its edges are
// shorter than `smallest`.
std::vector<Cell> cells_of(const Mesh& mesh, const Field& field, const std::vector<double>& at_spots, double range,
                           double smallest);

// Draws the cells, those of each material within its true outline.
void draw_cells(const Picture& picture, const Pen& pen, const View& view, const Scale& scale,
                const std::vector<Cell>& cells);

// Lines along which the field has the values of the ticks; that of 0 is stronger where the field has both signs.
void draw_levels(const Picture& picture, const Pen& pen, const View& view, const Scale& scale,
                 const std::vector<Cell>& cells);

}  // namespace velquor
