// Section meshes for the tests and the benchmarks. They come from a generator of our own, so that a plan gives the same
// mesh, to the last bit, on every machine.
#pragma once

#include <cstdint>
#include <vector>

#include "api/velquor.h"
#include "data/table.h"

namespace meshes {

// Uniform numbers by splitmix64 (Steele, Lea, Flood 2014).
struct Random {
    std::uint64_t state;
};
std::uint64_t next(Random& random);                       // any 64 bits
double uniform(Random& random, double low, double high);  // low <= value < high
std::int32_t below(Random& random, std::int32_t limit);   // 0 <= value < limit

// A reinforcement bar on a node of its own, which its host element interpolates.
struct Bar {
    std::int32_t NODE, ELEMENT;
    double AREA, EMODUL, GMODUL;
    Real<4> SHAPE;  // weights of the host's nodes at the bar; the fourth is 0 in a triangle
};

struct Mesh {
    std::int32_t NNODES = 0, NELEMS = 0;
    Table<double, 2> XY;               // (NNODES, 2)
    Table<std::int32_t, 2> ELEMNODES;  // (NELEMS, 4)  counter-clockwise; columns 3 and 4 are equal in a triangle
    Table<double, 1> EMOD, GMOD;       // (NELEMS)     2.6 and 1 throughout
    std::vector<Bar> bars;
};

// Angle with legs of 1/4, hollow with walls of 1/8 of the width; channel with a web of 1/8, a flange of 1/12 over the
// whole width and one of 1/16 over 5/8 of it.
enum class Shape { square, angle, hollow, channel };

struct Plan {
    Shape shape = Shape::square;
    std::int32_t nodes = 25;  // wanted in one piece; the mesh comes near to it
    std::int32_t bars = 0;    // spread evenly over the elements, several in one if need be
    bool triangles = false;   // every cell split along one of its diagonals, drawn at random
    bool shuffled = false;    // nodes numbered at random, else row after row, bars last
    double jitter = 0.15;     // share of a cell by which a node may move, up to 0.2
    double aspect = 1;        // width of a cell divided by its height
    std::int32_t pieces = 1;  // copies that do not touch each other, no three of the first five in one line
    std::uint64_t seed = 1;
};

Mesh make_mesh(const Plan& plan);

// The bars of a mesh as records of the host, all with one RADIUS.
std::vector<VYZTUZE_INFO> records_of(const std::vector<Bar>& bars, double RADIUS);

}  // namespace meshes
