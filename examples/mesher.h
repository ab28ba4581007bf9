/* A small mesher for cross-sections: patches with straight and circular sides, and the common profiles made of them.
 *
 *     mesh m = begin_mesh(2.0, 1);
 *     add_rectangle(&m, (point){0, 0}, (point){40, 10});
 *     add_sector(&m, (point){40, 0}, 5, 10, 0, 90);
 *     end_mesh(&m);
 *
 * Shapes that touch share their nodes where these coincide, so touching sides want the same number of cells: sides of
 * equal length have it. Along an arc of two chords or more the nodes stand a little outside, so that the
 * chords enclose the arc's area.
 * Angles are in degrees, from the Y towards the Z axis; lengths are in the unit of `size`. */
#ifndef MESHER_H
#define MESHER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct point {
    double y, z;
} point;

typedef struct mesh {
    double size;      /* wanted edge of an element */
    int refine;       /* every count of cells is multiplied by it: the same pattern, finer */
    int32_t material; /* number that the next elements get, 1 at first */
    int failed;       /* no memory, or a size, refinement or count out of range; nothing is added any more */
    int32_t nnodes, nelems;
    point* nodes;           /* (nnodes) */
    int32_t (*elements)[4]; /* (nelems)  nodes from 0, counter-clockwise; the last two equal: a triangle */
    int32_t* materials;     /* (nelems) */
    int32_t node_room, element_room;
} mesh;

mesh begin_mesh(double size, int refine); /* size above 0, refine from 1 to 1000 */
void release_mesh(mesh* m);

/* Cells along a length: the nearest number to length / size, at least 1, times `refine`. */
int cells_along(const mesh* m, double length);

/* Four-sided patch, n1 cells along the first and third side and n2 along the others. Corners in either sense. Side k
 * goes from corner k to the next; bulge[k] is the tangent of a quarter of its arc's angle, positive where the arc lies
 * to the right of the way, 0 for a straight side. Points inside by transfinite interpolation (W. J. Gordon,
 * C. A. Hall, 1973). */
void add_patch(mesh* m, const point corners[4], const double bulge[4], int n1, int n2);

void add_rectangle(mesh* m, point from, point to);
void add_triangle(mesh* m, const point corners[3], int n); /* n * n equal triangles; n is taken as it is */
void add_sector(mesh* m, point centre, double inner, double outer, double from, double to); /* 0 to 360: a tube */
void add_disc(mesh* m, point centre, double a, double b); /* ellipse with half axes a along Y, b along Z */

/* Rolled profiles; radius 0: a sharp corner. Several layers through each wall want a size of that fraction.
 *   I       centred at half its height, web along Z; b, tf the upper flange, b2, tf2 the lower one
 *   U       flanges towards +Y, the outer face of the web on Y = 0, centred on Z = 0
 *   L       heel at the origin, leg b along +Y, leg h along +Z; r1 root, r2 toes
 *   hollow  centred; ro, ri outer and inner corner radius */
void add_i_profile(mesh* m, double h, double b, double tw, double tf, double r, double b2, double tf2);
void add_u_profile(mesh* m, double h, double b, double tw, double tf, double r);
void add_l_profile(mesh* m, double h, double b, double t, double r1, double r2);
void add_hollow_profile(mesh* m, double h, double b, double t, double ro, double ri);

void split_in_triangles(mesh* m);                     /* every quadrilateral in two */
void turn_and_shift(mesh* m, double angle, point by); /* about the origin first */

/* Joins nodes that coincide, from node `first` on. */
void join_nodes(mesh* m, int32_t first);

/* Makes elements from `first` on more nearly square; nodes of the outline and between materials stay. */
void smooth_mesh(mesh* m, int32_t first, int sweeps);

/* Joins what is not yet joined, and splits quadrilaterals with a corner that is nearly straight. Returns 0, or -1 when
 * the mesh has failed. */
int end_mesh(mesh* m);

/* The tables as vq_velquor takes them: column after column, counted from 1. nodes (nnodes, 2), elements (nelems, 4) */
void fill_tables(const mesh* m, double* nodes, int32_t* elements);

#ifdef __cplusplus
}
#endif

#endif
