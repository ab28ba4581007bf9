// What is drawn in a DXF file: the lines of each layer, in the plane and unit of the drawing. dxflib reads the
// entities (dxf_entities.h), from a text that dxf_text.cpp has looked through: dxflib itself trusts counts and the
// order of what stands there, reads numbers by the program's locale, and does not end on a line of more than 1023
// letters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kit/section/loops.h"

namespace velquor {

// Most edges that a drawing may come to, its blocks put in their places.
constexpr std::size_t MOST_EDGES = 10000;

// An entity that dxflib is not given: it is passed over, or it is no outline that could be read.
struct Other {
    std::string block;  // that it stands in, as folded() has it; empty: in the drawing itself
    std::string kind, layer;
    Point at;
    bool passed_over = false;
    bool hidden = false;  // in paper space, or invisible
};

// Steps of drawn_in(): the text as dxflib gets it, of whole records with the groups that are wanted, and with numbers
// that read alike in every locale. Throws Error with the line where the text is no DXF.
struct Looked {
    std::string text;
    std::vector<Other> others;
    std::size_t hidden = 0;  // entities in paper space, or invisible, that were left out of the text
};
Looked looked_through(std::string_view dxf);

struct Layer {
    std::string name;
    bool hidden = false;  // off or frozen
    std::vector<Run> runs;
    std::size_t entities = 0;
};

struct Drawn {
    std::string unit;                    // of length, from the drawing; empty: it names none
    std::vector<Layer> layers;           // in the order of the layer table, then those that only entities name
    std::size_t ellipses = 0, arcs = 0;  // how many are drawn by how many
    double off = 0;                      // largest distance of these from them
};

// Layers are wanted whose names are listed, whatever their capitals; all, where none is. What the others hold is
// counted only. Throws Error where something on a wanted layer cannot be read, with the entity, its layer and its
// place, and adds a note for each kind of thing that was passed over or put into other terms.
Drawn drawn_in(std::string_view dxf, const std::vector<std::string>& wanted, std::vector<std::string>& notes);

// A layer's or block's name as it is compared: its capitals as small letters.
std::string folded(std::string_view name);

}  // namespace velquor
