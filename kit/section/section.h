// A cross-section as an engineer describes it. Y points to the right, Z upwards; lengths are in the section's unit of
// length, stresses and moduli in its unit of force over the square of that.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace velquor {

struct Point {
    double y = 0, z = 0;
};

// An edge of an outline, from the end of the edge before it: a straight line, or the arc through a third point.
struct Edge {
    Point to;
    bool arc = false;
    Point through;  // of an arc: any of its points between the ends
};

// A closed line without crossings: the first edge begins where the last one ends. Either sense of rotation.
struct Outline {
    std::vector<Edge> edges;
};

// What an outline encloses, less its holes.
struct Face {
    Outline outer;
    std::vector<Outline> holes;
};

struct Material {
    std::string name;
    double E = 0;
    double G = 0;
    double density = 0;                   // mass in a unit of volume, in kg; 0: not known
    double tension = 0, compression = 0;  // strengths, both positive; 0: not known, no plastic values
};

// Where a part goes: mirrored at its own Z axis first, then turned counter-clockwise, then moved.
struct Place {
    bool mirrored = false;
    double angle = 0;  // degrees
    Point at;
};

// A piece of one material: a parametric shape, a rolled profile by its name, or a face as it is drawn.
struct Part {
    std::string name;
    std::string material;
    std::string shape;                         // a name of shapes.h, or empty
    std::map<std::string, double> parameters;  // of the shape; those that have a default may be missing
    std::string profile;                       // a name of profiles.json, or empty
    Face face;                                 // where neither is given
    Place place;
    int group = 1;           // coupling group, from 1
    double factor = 1;       // of its group, 0 to 1; below 1 groups bend by themselves
    std::string where = {};  // what messages call it, where it comes from a drawing: "layer STEEL"; empty: "parts[1]"
};

struct Bar {
    Point at;
    double area = 0;
    std::string material;
    bool as_point = false;   // false: meshed as a disc, and takes part in everything
    std::string place = {};  // where a file has it: "bars[1] (3rd of the row)"; empty where none was read
};

// How the section is to be calculated.
struct Wishes {
    double accuracy = 1e-3;  // relative bound that is to be reached
    int levels = 3;
    double size = 0;  // of the coarsest elements; 0: from the walls' thickness
};

// Forces on the section. N acts at the centroid and is positive in tension; My and Mz turn about the host's axes there,
// as vectors along +Y and +Z by the right-hand rule: My pulls at +Z, Mz presses at +Y. Vy and Vz act along these axes
// through the shear centre, about which T turns from Y to Z: the part of the torque that free twist carries, beside Tw,
// that of warping shear. B is the bimoment, the sum of axial stress times warping.
struct Load {
    std::string name;
    double N = 0, My = 0, Mz = 0, Vy = 0, Vz = 0, T = 0, Tw = 0, B = 0;  // in the section's units
};

// What a group of a mesh or a layer of a drawing is made of.
struct Use {
    std::string material;  // empty: the only one, or of a layer that of its name
    int group = 1;
    double factor = 1;
};

// A section that comes as a mesh, from a file or from the program itself. Its parts are the groups of the mesh: with
// name, material, group and factor, and nothing to draw. They are made by read_mesh of kit/mesh/mesh_file.h, from
// `groups`.
struct ReadMesh {
    std::string file;                   // as it was named; empty: there is none
    std::map<std::string, Use> groups;  // by the name or the number that a group has in the file
    double join = -1;                   // nodes that are nearer to one another are one; below 0: JOIN of the extent
    std::string plane;                  // the file's axes along Y and Z, as in "xz"; empty: by the plane it lies in

    std::vector<Point> nodes;                           // numbered from 1 in `elements`
    std::vector<std::array<std::int32_t, 4>> elements;  // counter-clockwise; a triangle repeats its third node
    std::vector<std::int32_t> owners;                   // of each element: index of its part
    std::vector<std::uint64_t> numbers;                 // of each element: its number in the file; empty: as they stand
};
constexpr double JOIN = 1e-6;

// Outlines from a DXF file, each of which is a part of the material of its layer: read_drawing of drawing.h makes them.
struct Drawing {
    std::string file;                   // as it was named; empty: there is none that is still to be read
    std::map<std::string, Use> layers;  // that are read, by their names in whatever capitals; empty: all
    double gap = 0;                     // between ends, in the drawing's unit, up to which they are joined
    std::string unit;                   // of length, in place of the drawing's own; empty: that, or mm
};

struct Section {
    std::string name;
    std::string length = "mm", force = "N";
    std::vector<Material> materials;
    std::vector<Part> parts;  // a later part replaces what it covers of those before it
    std::vector<Bar> bars;
    std::vector<Load> loads;
    Wishes wishes;
    std::vector<std::string> notes;  // what was done to an input on its way in, a line each, for the user to see
    ReadMesh mesh;                   // in the place of what is drawn
    Drawing drawing;                 // parts that come before the others
};
inline bool is_mesh(const Section& section) { return !section.mesh.file.empty() || !section.mesh.elements.empty(); }

// A fault in what the user gave: where in the input, what is wrong, and what would be right.
struct Error : std::runtime_error {
    std::string place, fault, remedy;
    Error(std::string where, std::string what, std::string instead = "")
        : std::runtime_error(where + (where.empty() ? "" : ": ") + what + (instead.empty() ? "" : "; " + instead)),
          place(std::move(where)),
          fault(std::move(what)),
          remedy(std::move(instead)) {}
};

// Where a message is to say that a bar stands: in the file that was read, else in the section's own list. An owner is a
// part, counted from 0, or behind all of them a bar.
std::string place_of_bar(const Section& section, std::size_t number);
std::string place_of_owner(const Section& section, std::size_t owner);

// The same of an element of a mesh, counted from 0: "element 17", by its number in the file.
std::string place_of_element(const Section& section, std::size_t element);

}  // namespace velquor
