/* Velquor: characteristics of a beam's cross-section by a two-dimensional finite-element analysis.
 *
 * One call of vq_velquor is one complete calculation of one section. It runs on the calling thread, keeps nothing
 * between calls and reads and writes no file; calls with separate tables can run side by side. All values are in the
 * host's units, neither scaled nor converted. The host's rounding mode, its treatment of denormal numbers and its traps
 * have no part in the results; they, the exception flags and errno are after a call what they were before it. 64 KiB of
 * free stack are enough.
 *
 * Every table is a contiguous block of the host's memory, naturally aligned, without a header, apart from all others. A
 * table of several columns lies column after column (all of column 1, then all of column 2), and nodes, elements,
 * groups and columns count from 1; only the slots of the result record count from 0.
 */
#ifndef VELQUOR_H
#define VELQUOR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version, VQ_VERSION_MAJOR . VQ_VERSION_MINOR . VQ_VERSION_PATCH. Names and values here keep their meaning while
 * the first stays the same. */
#define VQ_VERSION_MAJOR 1
#define VQ_VERSION_MINOR 1
#define VQ_VERSION_PATCH 0

/* VQ_STATIC goes with the static library, where its CMake package and its pkg-config file define it. VQ_BUILDING is
 * defined while the shared library itself is compiled, and nowhere else. */
#if defined(VQ_STATIC)
#define VQ_EXPORT
#elif defined(_WIN32) && defined(VQ_BUILDING)
#define VQ_EXPORT __declspec(dllexport)
#elif defined(_WIN32)
#define VQ_EXPORT __declspec(dllimport)
#elif defined(__GNUC__)
#define VQ_EXPORT __attribute__((visibility("default")))
#else
#define VQ_EXPORT
#endif

/* Status of a run, in STATUS on return. Any other value than VQ_DONE: RESULT, NODEOUT and ELEMOUT are as the host gave
 * them. */
enum {
    VQ_DONE = 0,         /* all results are in the host's tables */
    VQ_REFUSED = 1,      /* the tables or the mesh were refused; the bars too are as the host gave them */
    VQ_NOT_SOLVED = 2,   /* an equation system could not be solved, as with a triangle without area, a GMOD other than 0
                            some 1e-25 of the others' or below, or numbers beyond all reals; output fields of bars may
                            have been written */
    VQ_OUT_OF_MEMORY = 3 /* memory could not be had, or the run found itself inconsistent (a line on the error stream
                            says so); bars as the host gave them */
};

/* Calculation mode, on entry the integer part (cut towards zero) of RESULT[VQ_MODE_SLOT]. It only selects the plastic
 * calculation; any other value, and one that is not finite, counts as VQ_ELASTIC. */
enum {
    VQ_ELASTIC = 0,        /* no plastic calculation, all plastic slots 0 */
    VQ_PLASTIC = 1,        /* directions 2, 1, -2, -1 in both frames */
    VQ_PLASTIC_TWO = 11,   /* directions 2, 1 in both frames; the slots of -2 and -1 stay 0 */
    VQ_PLASTIC_TWO_21 = 21 /* the same */
};

/* Columns of the element property table. Three things are accepted without a sign, though seldom meant:
 *   - a COUPLING of 0, as in a table that was only cleared, makes the section a coupled one: YC and ZC are 0 and each
 *     group bends by itself;
 *   - PLAXIS and PLMOD need strengths in all elements that take part, both of them positive. Without any, every line
 *     balances, and PLAXIS stays in the middle of the nodes' extent;
 *   - where that middle lies at 100.0 along an axis, the plastic search ends there at once, whatever the strengths. */
enum {
    VQ_EMOD = 1,     /* elastic modulus: weight of the element in all stiffness sums */
    VQ_GMOD = 2,     /* shear modulus: coefficient of the element in the warping problem */
    VQ_CARRIED = 3,  /* carried along, no calculation reads it */
    VQ_COUPLING = 4, /* coupling factor of the group; the last element of a group gives its factor; below
                        1.0 anywhere: groups bend about their own centres */
    VQ_GROUP = 5,    /* group number, 1 to NGROUPS in absolute value, cut to an integer; only a value above 0 counts in
                        VQ_ANET and VQ_WEIGHT */
    VQ_MATFLAG = 6,  /* the first element with exactly 1.0 sets EREF and GREF; 0.5 or more counts in the plastic sums */
    VQ_FNEG = 7,     /* plastic strength, positive too, below the line for directions 1 and 2, above it for -1 and -2 */
    VQ_FPOS = 8,     /* plastic strength, positive, above the line for directions 1 and 2, below it for -1 and -2 */
    VQ_UNITWEIGHT = 9, /* weight for a unit of area */
    VQ_TENTH = 10,     /* read by nothing */
    VQ_NCOLUMNS = 10
};

/* Slots of the result record, counted from 0. Y and Z are the host's axes, u and v the principal ones: with ALPHA the
 * angle, u = cos Y + sin Z and v = -sin Y + cos Z. Second moments are stiffnesses, modulus times second moment; their
 * names say over which squared coordinate the sum runs. */
enum {
    VQ_EA = 0,  /* axial stiffness; a bar counts with its excess over EREF */
    VQ_IYY = 1, /* over the squared Y distance from the centroid */
    VQ_IZZ = 2, /* over the squared Z distance */
    VQ_DYZ = 3, /* over the product of both */
    VQ_YC = 4,  /* centroid, weighted with the modulus; 0 in a coupled section */
    VQ_ZC = 5,
    VQ_SCY = 6, /* shear centre, host's system */
    VQ_SCZ = 7,
    VQ_SCU = 8, /* the same position vector turned into the principal axes, the centroid not taken off */
    VQ_SCV = 9,
    VQ_GJ = 10,    /* torsional stiffness about the shear centre */
    VQ_GAY = 11,   /* shear stiffness along Y */
    VQ_GAZ = 12,   /* shear stiffness along Z */
    VQ_IW = 13,    /* warping constant about the shear centre */
    VQ_ALPHA = 14, /* angle of the principal axes, radians */
    VQ_I1 = 15,    /* first principal value of IYY, IZZ, DYZ */
    VQ_I2 = 16,    /* second */
    VQ_GAU = 17,   /* shear stiffness along u */
    VQ_GAV = 18,   /* along v */
    VQ_GAUV = 19,  /* coupling of both */
    VQ_IWS = 20,   /* warping constant about the centroid (the host's origin in a coupled section); bars add
                      nothing to it */
    VQ_WT = 21,    /* reciprocal of the largest corner shear stress under unit torque */
    VQ_RZ = 22,    /* modulus x Z distance x squared distance from the centroid, summed, over IZZ */
    VQ_RY = 23,    /* the same with the Y distance, over IYY */
    VQ_RV = 24,    /* the two undivided sums turned into v, over I1 */
    VQ_RU = 25,    /* turned into u, over I2 */
    VQ_WR1 = 26,   /* modulus x warping x squared distance, summed: unit twist about the centroid, over IW */
    VQ_WR2 = 27,   /* unit twist about the shear centre, over IWS; both 0 when the second sum is within 0.0001 of 0 */
    VQ_ANET = 28,  /* area of the elements with GROUP above 0 */

    /* Plastic neutral axes. A direction 1 or -1 measures the line along Y (or u), 2 or -2 along Z (or v). PLAXIS is the
     * line's position, in the host's system, then from the centroid along u or v; PLMOD the plastic section modulus;
     * PLMOM the plastic moment. A line measured along Z answers bending about Y. Mind the two orders of directions, and
     * what PLAXIS and PLMOD need of VQ_FNEG and VQ_FPOS, above. */
    VQ_PLAXIS_Y = 29, /* host's axes: directions 1, 2, -1, -2 */
    VQ_PLAXIS_Z = 30,
    VQ_PLAXIS_Y_NEG = 31,
    VQ_PLAXIS_Z_NEG = 32,
    VQ_PLMOD_Z = 33, /* directions 2, 1, -2, -1 */
    VQ_PLMOD_Y = 34,
    VQ_PLMOD_Z_NEG = 35,
    VQ_PLMOD_Y_NEG = 36,
    VQ_PLMOM_Z = 37,
    VQ_PLMOM_Y = 38,
    VQ_PLMOM_Z_NEG = 39,
    VQ_PLMOM_Y_NEG = 40,
    VQ_PLAXIS_U = 41, /* principal axes: the same orders */
    VQ_PLAXIS_V = 42,
    VQ_PLAXIS_U_NEG = 43,
    VQ_PLAXIS_V_NEG = 44,
    VQ_PLMOD_V = 45,
    VQ_PLMOD_U = 46,
    VQ_PLMOD_V_NEG = 47,
    VQ_PLMOD_U_NEG = 48,
    VQ_PLMOM_V = 49,
    VQ_PLMOM_U = 50,
    VQ_PLMOM_V_NEG = 51,
    VQ_PLMOM_U_NEG = 52,

    VQ_COUP1 = 53,  /* centre weighted with COUPLING: Y, then turned by ALPHA as the second coordinate of the pair */
    VQ_COUP2 = 54,  /* the same: Z, then turned as the first coordinate; both stay as they are where ALPHA is 0 */
    VQ_WEIGHT = 55, /* weight of the elements with GROUP above 0 and of the bars */
    VQ_EREF = 56,   /* reference moduli */
    VQ_GREF = 57,
    VQ_NSLOTS = 58,
    VQ_MODE_SLOT = 31 /* holds the calculation mode on entry; set it again before each call */
};

/* One reinforcement point (bar), 184 bytes. Offsets and gaps are part of the format; members marked "not read" keep the
 * host's bytes. A bar takes part when EMODUL is 2.0 or more and NODE is 1 or more (in area, inertia and weight only
 * when EMODUL is above 2.0). NODE is then a node of its own: no element uses it and no other bar that takes part stands
 * on it. A record that takes no part adds nothing but its modulus, where that is a number, to the corners within its
 * RADIUS, and its node to the interval in which plastic axes are searched; where that node has no finite place, not
 * even this.
 */
typedef struct VYZTUZE_INFO {
    int32_t NODE; /*   0  in   node number, 1 to NNODES; 0 or below leaves the record out */
    int32_t not_read_1[2];
    int32_t ELEMENT;    /*  12  in   the element in which the bar lies (its host element) */
    int32_t NELNODES;   /*  16  out  nodes of the host element, 3 or 4 */
    int32_t ELNODES[4]; /*  20  out  these nodes; for a triangle the fourth stays as it was */
    int32_t gap;
    double AREA;   /*  40  in */
    double EMODUL; /*  48  in   elastic modulus */
    double GMODUL; /*  56  in   shear modulus */
    double RADIUS; /*  64  in   element corners nearer than this take the bar's modulus in the axial stresses; any
                      value: infinity reaches all corners, 0, a negative one and NaN none */
    double not_read_2[3];
    double BARWEIGHT; /*  96  in   weight for a unit of area */
    double SHAPE[4];  /* 104  out  shape values of the host element at the bar */
    double RS[2];     /* 136  out  natural coordinates r, s in the host element */
    double STRESS[4]; /* 152  out  axial stress in the four load cases of SIGMA */
} VYZTUZE_INFO;

/* Calculates one section.
 *
 *   STATUS    in   number of material groups, NGROUPS
 *             out  VQ_DONE or why there are no results; set it again before each call. Null: nothing is done.
 *   NODES     in   (NNODES, 2)   coordinates Y, Z
 *   ELEMENTS  in   (NELEMS, 4)   node numbers, counter-clockwise in the (Y, Z) plane; columns 3 and 4 equal: a triangle
 *   PROPS     in   (NELEMS, 10)  properties, columns VQ_EMOD to VQ_TENTH
 *   POINTS    both NPOINTS bars; may be null when NPOINTS is 0
 *   RESULT    both VQ_NSLOTS reals. In: the mode in VQ_MODE_SLOT. Out: the section values.
 *   NODEOUT   out  (NNODES, 3)   warping of a unit twist about the shear centre, shear warping along u, along v
 *   ELEMOUT   out  48 reals for each element: for each of its corners p = 1 to 4 (a triangle repeats corner 3) twelve,
 *                  first the shear stresses as pairs along Y, Z in four load cases (unit torque about the shear centre,
 *                  unit shear force along u, along v, unit warping shear), then the axial stress in four load cases
 *                  (unit normal force, unit moment about the two principal axes, unit bimoment)
 *
 * With VQ_DONE, axial stiffness, centroid, second moments and plastic slots are right whatever the mesh. What rests on
 * the warping may be infinite, no number, or, where rounding hides that, of any size: in a section that has no
 * stiffness in shear or falls in pieces, and in a mesh that cannot warp, such as one triangle, two in a rectangle or
 * four squares in a square, whose VQ_IW is 0 up to rounding.
 *
 * Refused, with VQ_REFUSED: a null table or a negative count; a node number outside 1 to NNODES; no element with
 * MATFLAG 1.0, or an EREF not above 0; a group outside 1 to NGROUPS; an element that is clockwise, names a node twice,
 * or has an edge below 1e-5 of its longest or a longest edge below 1e-8; a quadrilateral with a corner below 4.6
 * degrees, within 4.6 degrees of straight, or re-entrant (elements with a modulus below about 1e-6 EREF are not looked
 * at); a bar that takes part without a node of its own or a host element; a value that is not finite where the run
 * reads it. These are, of every element, VQ_EMOD, VQ_GMOD, VQ_COUPLING, VQ_GROUP, VQ_MATFLAG and VQ_UNITWEIGHT, and
 * with a plastic calculation VQ_FNEG and VQ_FPOS; of every bar that takes part, AREA, EMODUL, GMODUL and BARWEIGHT; the
 * coordinates of the nodes of both. Which element was at fault is not told.
 */
VQ_EXPORT void vq_velquor(int32_t* STATUS, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS,
                          const double* PROPS, int32_t NPOINTS, VYZTUZE_INFO* POINTS, double* RESULT, double* NODEOUT,
                          double* ELEMOUT);

#ifdef __cplusplus
}
#endif

#endif
