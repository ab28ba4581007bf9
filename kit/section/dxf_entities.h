// The entities of a DXF file as dxflib reads them, before blocks are put in their places: a step of drawn_in().
#pragma once

#include <map>
#include <string>
#include <vector>

#include "kit/section/dxf.h"
#include "kit/section/ellipse.h"
#include "kit/section/vectors.h"

namespace velquor {

// Where the origin and the points (1, 0) and (0, 1) of a block go.
struct BlockMap {
    Point origin, right = {1, 0}, up = {0, 1};
    Point turned(const Point& p) const { return p.y * right + p.z * up; }
    Point operator()(const Point& p) const { return origin + turned(p); }
};

struct DxfCurve {
    Point from, to;
    bool arc = false;
    Arc way;  // of an arc, in its own sense, which may be from `to` to `from`
    bool backwards = false;
};

struct DxfEntity {
    std::string kind, layer;
    double low = 0, high = 0;  // out of the plane
    bool tilted = false;
    std::vector<DxfCurve> curves;
    bool closed = false;
    std::string block;    // of an INSERT
    BlockMap map;         // its first copy
    Point across, along;  // from one column, and one row, to the next
    int columns = 1, rows = 1;
};

struct DxfBlock {
    Point base;
    bool elsewhere = false;  // in another drawing
    std::vector<DxfEntity> entities;
    std::vector<Other> others;
};

// Of the whole file; the drawing itself stands under an empty name.
struct DxfEntities {
    std::map<std::string, DxfBlock> blocks;
    std::vector<Layer> layers;
    int unit = 0;  // as $INSUNITS has it
};
DxfEntities entities_of(const std::string& dxf);

// One map behind another.
BlockMap after(const BlockMap& outer, const BlockMap& inner);

}  // namespace velquor
