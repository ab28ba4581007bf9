/* Velquor levels: section values that hardly depend on the mesh, each with a bound for its error, and a look at the
 * tables before a call.
 *
 * vq_levels splits every element of the host's mesh in four as often as is wanted, calls vq_velquor on each of these
 * levels, and extrapolates from them to the mesh that is infinitely fine. vq_check tells what vq_velquor would refuse,
 * and what it would accept though it is seldom meant. The promises of velquor.h hold for both: they run on the calling
 * thread, keep nothing between calls, touch no file, and leave the thread's floating-point environment and errno as
 * they were. Tables have the shapes that velquor.h gives them.
 */
#ifndef VELQUOR_LEVELS_H
#define VELQUOR_LEVELS_H

#include "velquor.h"

#if defined(_WIN32) && !defined(VQ_STATIC) && defined(VQ_BUILDING_LEVELS)
#define VQ_LEVELS_EXPORT __declspec(dllexport)
#else
#define VQ_LEVELS_EXPORT VQ_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum { VQ_MAXLEVELS = 6 };

/* A routine of the host that places a new node on the true course of an edge of its mesh: one that a single element
 * has, or that lies between elements of different properties.
 *
 *   context  what the host gave to vq_levels
 *   A, B     in    ends of the host's edge, numbers of the host's nodes, in the order of one element that has it
 *   t        in    share of the way from A to B: 1/2 on the second level, 1/4 and 3/4 on the third, and so on
 *   YZ       both  the new node: on entry halfway between its neighbours on the edge, on return on the true course
 *
 * It is called once for each such node, on the thread of the call, in the floating-point environment that a program
 * starts with, and must return: no exception, no longjmp. */
typedef void (*vq_place)(void* context, int32_t A, int32_t B, double t, double* YZ);

/* Calculates one section on nested meshes.
 *
 * The first eleven arguments are those of vq_velquor and are filled in the same way. What comes out of them, and the
 * further ones:
 *
 *   STATUS   both  as there; on return VQ_DONE, or why the first level, or of several the second, has no results
 *   POINTS   both  STRESS extrapolated, the other outputs for the host's own element
 *   RESULT   both  in: the mode. Out: extrapolated values.
 *   NODEOUT  out   at the host's nodes, extrapolated
 *   ELEMOUT  out   at the corners of the host's elements, extrapolated; where SHARP is 1, shear stresses are those of
 *                  the finest level and mean nothing
 *   LEVELS   both  in: 1 to VQ_MAXLEVELS, any other number is refused. The finest has 4^(LEVELS - 1) elements for each
 *                  of the host's; 1 is the plain call. Out: levels that went well. Where a finer level is refused, not
 *                  solved or too large, two that went well are enough for VQ_DONE.
 *   BOUNDS   out   (VQ_NSLOTS) the value on an infinitely fine mesh is expected within RESULT -+ BOUNDS; never below
 *                  rounding. Infinite where there is no such value: for what rests on warping where the mesh falls in
 *                  pieces, or hangs together in a single node, or bars have a GMODUL; for shear stiffness where any
 *                  bars take part; for WT where stresses are infinite; for ALPHA where I1 and I2 are equal; for what
 *                  is a number on the finest level alone, or lies along principal axes that change before it. Not a
 *                  number with one level.
 *   SHARP    out   (NNODES) 1 at nodes where shear stresses grow without limit as the mesh becomes finer: re-entrant
 *                  corners, corners where materials meet, nodes in which alone parts touch. Else 0. WT is then the
 *                  reciprocal of the largest stress at the other corners of the host's elements. May be null.
 *   place    in    null: edges are straight, as the host's mesh has them
 *   context  in    handed on to place, which alone looks at it
 *
 * With any other status than VQ_DONE all tables but STATUS and LEVELS are as the host gave them. NODEOUT, ELEMOUT and
 * SHARP have the sizes of the host's mesh. Where a plastic search would begin at 100.0 and end there at once, with one
 * level too, an unused node moves its beginning. What the bounds rest on, and where they can fail: docs/levels.md.
 */
VQ_LEVELS_EXPORT void vq_levels(int32_t* STATUS, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS,
                                int32_t NELEMS, const double* PROPS, int32_t NPOINTS, VYZTUZE_INFO* POINTS,
                                double* RESULT, double* NODEOUT, double* ELEMOUT, int32_t* LEVELS, double* BOUNDS,
                                int32_t* SHARP, vq_place place, void* context);

/* Looks at a level that went well: the host's own mesh first, with its tables as vq_velquor took them and what came out
 * of that call. A level's nodes begin with those of the level before; element e, counted from 0, became the elements
 * 4 e to 4 e + 3, of which part k holds corner k in the same place among its own, the last part of a triangle its
 * middle. Tables live until it returns, and it must return: no exception, no longjmp. */
typedef void (*vq_watch)(void* watcher, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS,
                         const double* PROPS, const double* RESULT, const double* NODEOUT, const double* ELEMOUT);

/* vq_levels, with somebody who looks on; watch may be null. */
VQ_LEVELS_EXPORT void vq_levels_watched(int32_t* STATUS, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS,
                                        int32_t NELEMS, const double* PROPS, int32_t NPOINTS, VYZTUZE_INFO* POINTS,
                                        double* RESULT, double* NODEOUT, double* ELEMOUT, int32_t* LEVELS,
                                        double* BOUNDS, int32_t* SHARP, vq_place place, void* context, vq_watch watch,
                                        void* watcher);

/* Where a finding lies, in this order. */
enum { VQ_IN_CALL = 0, VQ_IN_NODES = 1, VQ_IN_ELEMENTS = 2, VQ_IN_PROPS = 3, VQ_IN_POINTS = 4 };
/* What comes of it. */
enum { VQ_WARNING = 1, VQ_ERROR = 2 };

/* Reasons. Their values stay while VQ_VERSION_MAJOR does; vq_reason gives each a sentence. */
enum {
    /* refused by vq_velquor: VQ_ERROR */
    VQ_NULL_TABLE = 1,
    VQ_NEGATIVE_COUNT = 2,
    VQ_COUNT_TOO_LARGE = 3, /* 2147483647 */
    VQ_NOT_FINITE = 4,      /* NODES, PROPS, POINTS */
    VQ_NODE_OUTSIDE = 5,    /* ELEMENTS: a node number outside 1 to NNODES; POINTS: NODE above NNODES */
    VQ_NODE_TWICE = 6,      /* ELEMENTS; POINTS: of the host element */
    VQ_CLOCKWISE = 7,       /* or without area */
    VQ_EDGE_SHORT = 8,      /* an edge below 1e-5 of the longest */
    VQ_ELEMENT_SMALL = 9,   /* no edge of 1e-8 or more */
    VQ_CORNER_BAD = 10,     /* below 4.6 degrees, within 4.6 degrees of straight, or re-entrant */
    VQ_GROUP_OUTSIDE = 11,
    VQ_NO_REFERENCE = 12,  /* no MATFLAG of exactly 1.0 */
    VQ_REFERENCE_BAD = 13, /* EREF not above 0 */
    VQ_NODE_TAKEN = 14,    /* a bar on a node of an element or of another bar */
    VQ_HOST_OUTSIDE = 15,  /* a bar's ELEMENT outside 1 to NELEMS */
    /* accepted, though seldom meant: VQ_WARNING */
    VQ_LOOSE_PIECE = 16,       /* NODES: the first node of each piece after the first */
    VQ_MIDDLE_AT_100 = 17,     /* NODES, row 0, plastic modes */
    VQ_FLAT_TRIANGLE = 18,     /* ELEMENTS */
    VQ_OBLONG = 19,            /* ELEMENTS: where thin walls of few layers make GJ wrong, the most oblong element */
    VQ_COUPLING_ZERO = 20,     /* PROPS: the first row that has it */
    VQ_STRENGTH_MISSING = 21,  /* PROPS, row 0, plastic modes: no element that takes part has both strengths */
    VQ_STRENGTH_MIXED = 22,    /* PROPS, plastic modes: this row has none, others have */
    VQ_STRENGTH_NEGATIVE = 23, /* PROPS, plastic modes */
    VQ_BAR_OUTSIDE = 24,       /* POINTS: the bar's node lies outside its element */
    VQ_HINGE = 25,             /* NODES: joins corners that share no edge, which holds them less on every finer mesh */
    VQ_COUPLING_UNLIKE = 26    /* PROPS, coupled sections: the first row of a group that differs from its first */
};

typedef struct vq_finding {
    int32_t TABLE, ROW; /* ROW counted from 1; 0: the table as a whole */
    int32_t REASON, SEVERITY;
} vq_finding;

/* Looks at the tables of a call: NGROUPS is what STATUS would bring, `mode` what would stand in RESULT[VQ_MODE_SLOT].
 * Returns the number of findings, in the order of the tables and of their rows, or -1 where memory could not be had.
 * The first CAPACITY of them are written to FINDINGS, which may be null when CAPACITY is 0. vq_velquor refuses the
 * tables if and only if one of the findings is a VQ_ERROR; RESULT, NODEOUT and ELEMOUT, which this routine does not
 * get, must not be null either. Where there is an error there are no warnings. */
VQ_LEVELS_EXPORT int32_t vq_check(int32_t NGROUPS, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS,
                                  int32_t NELEMS, const double* PROPS, int32_t NPOINTS, const VYZTUZE_INFO* POINTS,
                                  double mode, int32_t CAPACITY, vq_finding* FINDINGS);

/* The reason in English, to be read after the table's name and the row: "is clockwise". Never null; lives as long as
 * the library is loaded. */
VQ_LEVELS_EXPORT const char* vq_reason(int32_t REASON);

#ifdef __cplusplus
}
#endif

#endif
