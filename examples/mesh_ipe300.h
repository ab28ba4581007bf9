/* Quadrilateral mesh of a rolled IPE 300: h 300, b 150, tw 7.1, tf 10.7, root radius 15 mm, centred at the origin, web
 * along Z. The mesh is symmetric about both axes to the last bit, and its elements are as nearly square as the outline
 * allows: torsion of thin walls is sensitive to their aspect ratio. */
#ifndef MESH_IPE300_H
#define MESH_IPE300_H

#include <stdint.h>

/* The two tables as vq_velquor takes them: column after column, node numbers from 1, elements counter-clockwise. */
typedef struct ipe300_mesh {
    int32_t nnodes, nelems;
    double* nodes;     /* (nnodes, 2)  Y, Z in mm */
    int32_t* elements; /* (nelems, 4)  node numbers */
} ipe300_mesh;

/* Meshes the section with 4 s layers of elements through the web and 6 s through the flanges, s from 1. Returns 0, or
 * -1 when memory could not be had; the mesh is then empty. */
int mesh_ipe300(int s, ipe300_mesh* mesh);

void release_mesh(ipe300_mesh* mesh);

#endif
