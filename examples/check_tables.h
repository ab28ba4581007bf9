/* What a host can find out about its tables before the call, in C99 to copy into a host: what the library would refuse
 * and where, and whether the mesh is one piece. */
#ifndef CHECK_TABLES_H
#define CHECK_TABLES_H

#include "velquor.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct refusal {
    const char* why;   /* null: the library takes the tables */
    const char* table; /* "NODES", "ELEMENTS", "PROPS", "POINTS"; "call": an argument */
    int32_t row;       /* counted from 1; 0: the table as a whole */
} refusal;

/* The first fault of the tables by the rules of vq_velquor, whose arguments these are; NGROUPS is what STATUS brings,
 * `mode` what stands in RESULT[VQ_MODE_SLOT]. RESULT, NODEOUT and ELEMOUT must not be null either. `taken` is a work
 * table of NNODES bytes, set here. */
refusal find_refusal(int32_t NGROUPS, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS,
                     const double* PROPS, int32_t NPOINTS, const VYZTUZE_INFO* POINTS, double mode,
                     unsigned char* taken);

/* Pieces of an accepted mesh that no element connects. One of GMOD 0 carries no shear and connects nothing: a node that
 * only such elements have is a piece of its own. Returns their number, and in piece[n - 1] the piece of node n: the
 * number of its first node, or 0 where no element has the node, or only some of EMOD and GMOD 0. */
int32_t find_pieces(int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS, const double* PROPS, int32_t* piece);

#ifdef __cplusplus
}
#endif

#endif
