// A section of the validation as its data file tells it. README.md describes the files.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "mesher.h"

struct Material {
    std::string name;
    double props[10];  // columns VQ_EMOD to VQ_TENTH; those of the parts' coupling group too
};

struct Bar {
    point at;
    double AREA, EMODUL, GMODUL, RADIUS, BARWEIGHT;
};

enum class Quantity { slot, stress, bar, warping };

struct Expectation {
    std::string name, unit_name, source, note;
    Quantity quantity;
    int slot = -1, minus = -1, over = -1;  // of the result; -1: none
    std::string stress;                    // TAU, TAUY, TAUZ, SIGMA
    int load_case = 0, bar = 0, field = 0, material = 0;
    bool largest = false;
    point at = {0, 0};
    double unit = 1, value = 0, tolerance = -1;  // tolerance -1: shown, not judged
    bool absolute = false;                       // the tolerance, in the printed unit; otherwise over the value
    int order = 0;  // the difference is the mesh's and falls with this power of the element size; 0: not judged so
    bool outline = true;  // false: the kit, from the outline, has no such value
};

struct SectionFile {
    std::string path, title, about, units;
    std::string section;  // as kit/section/schema.json has it
    bool study = false;   // shows how a value behaves; nothing in it is judged
    std::vector<Material> materials;
    double size = 0, wall = 0, turn = 0;  // wall: thickness of the thinnest wall, 0 where there is none to name
    point shift = {0, 0};
    bool triangles = false;
    std::vector<nlohmann::json>
        parts;  // of the mesh: each with a known shape, its keys, and the number of its material
    std::vector<Bar> bars;
    std::vector<int> refine;
    std::vector<Expectation> expected;
};

// Reads and checks a file. Throws std::runtime_error with the file, the place in it and what is wrong: no key is
// ignored, no name is passed over.
SectionFile read_section_file(const std::string& path);

// Meshes the parts with every count of cells multiplied by `refine`. Throws std::runtime_error where a shape cannot be
// meshed or sides that touch do not share their nodes. The caller releases the mesh.
mesh make_mesh(const SectionFile& file, int refine);

// Names and numbers of the result slots, as in velquor.h without VQ_.
const std::vector<std::pair<const char*, int>>& slot_names();
