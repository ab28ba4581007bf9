// Sections for the tests: the host's tables, built rectangle by rectangle, and a run over them.
#pragma once

#include <cstdint>
#include <vector>

#include "api/velquor.h"
#include "bench/meshes.h"
#include "data/vq_data_mod.h"
#include "levels/velquor_levels.h"

// Properties of one element, in the order of the host's columns.
struct Material {
    double EMOD = 1, GMOD = 1, third = 0, COUPLING = 1, GROUP = 1, MATFLAG = 1, FNEG = 1, FPOS = 1, UNITWEIGHT = 1,
           tenth = 0;
};

struct Section {
    std::vector<double> y, z;                         // nodes
    std::vector<std::vector<std::int32_t>> elements;  // four numbers each, counted from 1
    std::vector<Material> materials;                  // one for each element
    std::vector<VYZTUZE_INFO> bars;
    std::int32_t groups = 1;
};

struct Results {
    std::int32_t status;
    std::vector<double> slots, nodeout, elemout;
    std::vector<VYZTUZE_INFO> bars;
};

// Adds the rectangle (y0, z0) to (y1, z1) as ny x nz quadrilaterals. Nodes are shared with what stands there already;
// the section has as many groups as the material asks for.
void add_rectangle(Section& section, double y0, double z0, double y1, double z1, int ny, int nz,
                   const Material& material = {});

// The number of the node at (y, z), added where none stands within 1e-9.
std::int32_t node_at(Section& section, double y, double z);

// A bar on a node of its own at (y, z) in element `host`.
VYZTUZE_INFO& add_bar(Section& section, double y, double z, std::int32_t host, double AREA, double EMODUL,
                      double GMODUL = 0);

// A generated mesh, its bars with one RADIUS.
Section section_of(const meshes::Mesh& mesh, double RADIUS = 0);

// The same section: quadrilaterals split in two triangles; nodes numbered anew; turned by `angle`, then moved; scaled.
Section as_triangles(const Section& section);
Section renumbered(const Section& section);
Section moved(const Section& section, double dy, double dz, double angle = 0);
Section scaled(const Section& section, double factor);

// The host's tables for one call, column after column. All that a run may write stands between GUARD entries on both
// sides.
constexpr std::size_t GUARD = 8;
constexpr double before = -77.5;  // what outputs and guards hold before the call
struct Host {
    std::int32_t STATUS, NNODES, NELEMS, NPOINTS;
    std::vector<double> NODES{}, PROPS{}, RESULT{}, NODEOUT{}, ELEMOUT{};
    std::vector<std::int32_t> ELEMENTS{};
    std::vector<VYZTUZE_INFO> POINTS{};
    // of vq_levels, which is called where LEVELS is not 0
    std::int32_t LEVELS = 0, REACHED = 0;  // asked for, and what the call made of it
    std::vector<double> BOUNDS{};
    std::vector<std::int32_t> SHARP{};
    vq_place place = nullptr;
    void* context = nullptr;
};
Host host_of(const Section& section, double mode = VQ_PLASTIC, std::int32_t LEVELS = 0);

// Calls vq_velquor or vq_levels, with a null pointer for argument number `missing`.
void call(Host& host, int missing = 0);

// Whether two hosts hold the same bits in all tables, guards included; and whether the guards are as they were made.
bool same_tables(const Host& a, const Host& b);
bool guards_intact(const Host& host);

// A call on copies of the tables; throws where a guard was touched. Outputs hold `before` where nothing was written.
Results run(const Section& section, double mode = VQ_PLASTIC);

// The records as they stand before SOLVEBASICCHAR: properties, mesh, bar nodes, EREF.
void fill_records(const Section& section, VQ_DATA_MOD::VARIABLES_T& VARS, VQ_DATA_MOD::VELQUOR_CHAR& CHAR);
