// The records that carry a run, the mesh definition with its checks, and the mesh dump.
//
// A run has two frames side by side: XY is in the host's coordinates until the mesh is moved to the centroid, and
// centred after it; ELEMYC and ELEMZC stay in the host's coordinates throughout.
#pragma once

#include <cstddef>
#include <cstdint>

#include "api/velquor.h"
#include "data/table.h"

namespace VQ_DATA_MOD {

// The system's logical is a 32-bit word; a test reads its lowest bit only.
using LOGICAL = std::int32_t;
constexpr LOGICAL LOGICAL_TRUE = -1, LOGICAL_FALSE = 0;
inline bool is_true(LOGICAL word) { return (word & 1) != 0; }

using POINTTABLE = View<VYZTUZE_INFO, 1>;  // the host's NPOINTS bars, worked on in place

// A bar takes part in the equation system and its results from this modulus on, in the sums over area only above it.
constexpr double MINBARMODULUS = 2.0;
inline bool is_in_system(const VYZTUZE_INFO& bar) { return bar.NODE >= 1 && bar.EMODUL >= MINBARMODULUS; }
inline bool is_in_sums(const VYZTUZE_INFO& bar) { return bar.NODE >= 1 && bar.EMODUL > MINBARMODULUS; }

// The mesh of a run and what is known of each element and group.
struct VARIABLES_T {
    Table<double, 2> XY;         // (NNODES, 2)   Y, Z; (0, 0) where unused                by DEFINEMESH, vq_velquor
    Table<double, 1> ELEMAREA;   // (NELEMS)      not negative                             by SOLVEBASICCHAR
    Table<double, 1> GROUPAREA;  // (NGROUPS)     transformed area, sum of A E / EREF      by SOLVEBASICCHAR
    Table<double, 1> GROUPZC, GROUPYC;  // (NGROUPS)     centre of the group; coupled form only   by SOLVEBASICCHAR
    Table<double, 1> GROUPDZ, GROUPDY;  // (NGROUPS)     that, minus the centre weighted with COUPLING
    Table<double, 1> ELEMYC, ELEMZC;    // (NELEMS)      centroid, host's coordinates             by SOLVEBASICCHAR
    Table<double, 2> ELEMPROP;          // (NELEMS, 10)  the host's properties                    by vq_velquor
    Table<std::int32_t, 2> ELEMNODES;   // (NELEMS, 4)   columns 3 and 4 equal mark a triangle    by DEFINEMESH
    Table<LOGICAL, 1> NODEUSED;         // (NNODES)      true where XY has the host's place  by DEFINEMESH, vq_velquor
    std::int32_t NNODES = 0;            // the host's node count
    std::int32_t NELEMS = 0;
    std::int32_t NGROUPS = 0;
    std::int32_t NPOINTS = 0;
    std::int32_t COUPLEDFLAG = 0;  // 1 when any COUPLING is below 1.0                            by SOLVEBASICCHAR
};

// The only marker of an element's kind.
inline bool is_triangle(const VARIABLES_T& VARS, std::int32_t e) {
    return VARS.ELEMNODES(e, 3) == VARS.ELEMNODES(e, 4);
}

// A real without its fraction; `otherwise` for one that is not finite or does not fit.
inline std::int32_t integer_part(double x, std::int32_t otherwise) {
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<std::int32_t>(x) : otherwise;
}

// Group of element e: the absolute value of its GROUP, cut to an integer. In 1 to NGROUPS for accepted tables.
inline std::int32_t group_of(const VARIABLES_T& VARS, std::int32_t e) {
    const double GROUP = VARS.ELEMPROP(e, VQ_GROUP);
    return integer_part(GROUP < 0.0 ? -GROUP : GROUP, 0);
}

// Plastic results of one frame; the position within each block is the direction's, in two different orders.
struct PLASTIC_SLOTS {
    Real<4> PLAXIS;  // directions 1, 2, -1, -2
    Real<4> PLMOD;   // directions 2, 1, -2, -1
    Real<4> PLMOM;   // directions 2, 1, -2, -1
};

// The section result record, the host's 58 slots in their order.
struct VELQUOR_CHAR {
    double EA, IYY, IZZ, DYZ, YC, ZC;
    double SCY, SCZ, SCU, SCV, GJ, GAY, GAZ, IW;
    double ALPHA, I1, I2;
    double GAU, GAV, GAUV, IWS, WT;
    double RZ, RY, RV, RU, WR1, WR2;
    double ANET;
    Block<PLASTIC_SLOTS, 2> PLASTIC;  // host's axes, principal axes
    double COUP1, COUP2, WEIGHT, EREF, GREF;
};
static_assert(sizeof(VELQUOR_CHAR) == VQ_NSLOTS * sizeof(double));
static_assert(offsetof(VELQUOR_CHAR, IW) == VQ_IW * sizeof(double));
static_assert(offsetof(VELQUOR_CHAR, WT) == VQ_WT * sizeof(double));
static_assert(offsetof(VELQUOR_CHAR, PLASTIC) == VQ_PLAXIS_Y * sizeof(double));
static_assert(offsetof(VELQUOR_CHAR, COUP1) == VQ_COUP1 * sizeof(double));
static_assert(offsetof(VELQUOR_CHAR, GREF) == VQ_GREF * sizeof(double));

static_assert(sizeof(VYZTUZE_INFO) == 184);
static_assert(offsetof(VYZTUZE_INFO, ELEMENT) == 12 && offsetof(VYZTUZE_INFO, NELNODES) == 16);
static_assert(offsetof(VYZTUZE_INFO, ELNODES) == 20 && offsetof(VYZTUZE_INFO, AREA) == 40);
static_assert(offsetof(VYZTUZE_INFO, EMODUL) == 48 && offsetof(VYZTUZE_INFO, GMODUL) == 56);
static_assert(offsetof(VYZTUZE_INFO, RADIUS) == 64 && offsetof(VYZTUZE_INFO, BARWEIGHT) == 96);
static_assert(offsetof(VYZTUZE_INFO, SHAPE) == 104 && offsetof(VYZTUZE_INFO, RS) == 136);
static_assert(offsetof(VYZTUZE_INFO, STRESS) == 152);

// Sets all 58 slots to 0.
void INIT_VQCHAR(VELQUOR_CHAR& CHAR);

// Frees the arrays of a record, whichever exist.
void RELEASEVQDATA(VARIABLES_T& VARS);

// Fills the mesh part of VARS from the host's tables NODES (NNODES, 2) and ELEMENTS (NELEMS, 4) and checks it. Node
// numbers stay the host's. STATUS 0: accepted. -3: an element names a node outside 1 to NNODES, VARS is unchanged.
// Above 0: the first element that CHECKMESH refused; the arrays stay for the caller to release.
void DEFINEMESH(std::int32_t& STATUS, View<const double, 2> NODES, View<const std::int32_t, 2> ELEMENTS,
                VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR);

// Tests every element whose modulus is not far below EREF: distinct nodes, edges of comparable length, corners neither
// too sharp nor too flat, counter-clockwise. STATUS 0, or the number of the first element that fails. Two gaps remain:
// elements of small modulus, and triangles of exactly zero area.
void CHECKMESH(std::int32_t& STATUS, VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR);

// Shape of a quadrilateral with the corners Q = Y1 .. Y4, Z1 .. Z4. 0: good; 1: good, but clockwise or without area;
// 2: edges vanish or are too unequal, or a corner is too sharp, too flat or re-entrant.
std::int32_t TESTQUADGEO(const Real<8>& Q);

// Writes the mesh as a bulk data file and a table of materials, both at fixed paths, for a look at it in a
// pre-processor. Nothing in a run calls it. A file that cannot be opened ends it without a message.
void WRITEMESHFORDEBUG(const VARIABLES_T& VARS);

}  // namespace VQ_DATA_MOD
