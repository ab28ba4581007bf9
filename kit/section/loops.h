// Lines of a drawing into faces: joined end to end, and those that lie in one another into outlines and holes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kit/section/crossings.h"

namespace velquor {

// Of the extent of what is drawn on a layer: ends and lines that are nearer to one another are the same.
constexpr double SAME_END = 1e-6;

// Edges that follow one another, as one entity draws them. Closed: the first begins where the last one ends.
struct Run {
    Point from;
    std::vector<Edge> edges;
    bool closed = false;
};
Run reversed(const Run& run);

// The outlines that the runs of a layer make. Gaps between ends are closed in their middle up to `gap`, or SAME_END
// where that is more; `unit` is that of the gaps, for messages. Runs that are drawn twice count once. Throws Error
// where an end stays open, or more than two ends meet, and adds a note where a gap was closed or something left out.
std::vector<Outline> joined(std::vector<Run> runs, double gap, const std::string& layer, const std::string& unit,
                            std::vector<std::string>& notes);

// Faces by even and odd: what lies in an outline is a hole of it, what lies in that a face again. Throws Error where
// outlines cross themselves or one another, or touch themselves or a hole.
std::vector<Face> nested(const std::vector<Outline>& outlines, const std::string& layer);

// Whether an outline lies in another or on its boundary, as far as some points of it show; and whether these lie partly
// in it and partly outside.
struct Lies {
    bool inside = false, across = false;
    Point at;  // where it is across
};
Lies lies_in(const Region& inner, const Region& outer);

// "layer STEEL", "(12.5, 30)"
std::string named_layer(std::string_view name);
std::string text_at(const Point& p);

}  // namespace velquor
