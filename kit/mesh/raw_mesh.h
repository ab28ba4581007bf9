// What a file of elements holds, as Gmsh reads it: a step of read_mesh.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velquor {

struct RawMesh {
    // Elements of one of Gmsh's types on one surface.
    struct Block {
        std::int32_t surface = 0, type = 0;
        std::string name;                    // of the type: "Triangle 6"
        std::vector<std::uint64_t> numbers;  // in the file
        std::vector<std::uint64_t> nodes;    // of one element after the other, by their numbers in the file
    };
    // A surface, or a property, and the physical groups to which it belongs.
    struct Surface {
        std::int32_t number = 0;
        std::vector<std::pair<std::int32_t, std::string>> groups;  // by number, the name may be empty
    };
    std::vector<std::uint64_t> numbers;  // of the nodes
    std::vector<double> places;          // x, y, z of each
    std::vector<Block> blocks;
    std::vector<Surface> surfaces;
    std::uint64_t points = 0, lines = 0, solids = 0;  // elements of these
    std::string complaint;                            // the first error that Gmsh told
    std::string warnings;                             // what else it told
};

// Reads the file in a copy of this process. Throws Error with this place.
RawMesh raw_mesh(const std::string& path, const std::string& place, double seconds);

}  // namespace velquor
