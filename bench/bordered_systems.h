// The two equation systems of a run, from a generated mesh straight to what the solver receives: a compact assembly of
// its own, independent of the library's, so that the solver can be tested and measured alone.
#pragma once

#include "bench/meshes.h"
#include "system/sparsematrix.h"

namespace meshes {

using SPARSEMATRIX_MOD::SPARSEMATRIX;

// Element sums over a mesh.
struct Warping {
    SPARSEMATRIX KG;              // int G grad Ni . grad Nj
    Table<double, 2> RIGHTSIDE;   // (NNODES, 3)  - int G grad Ni . T(:,k)
    Table<double, 1> RIGHTSIDEQ;  // (NNODES)     - int E q Ni
    Table<double, 2> CONSTRAINT;  // (NNODES, 3)  int E Ni (1, y, z), not normalised and without the bars
};

struct System {
    SPARSEMATRIX M;
    Table<double, 2> B;  // (M.N, load columns)
};

// q (NNODES) is the field of RIGHTSIDEQ; it may be null, and RIGHTSIDEQ is 0 then.
Warping assemble(const Mesh& mesh, const double* q);

// Order NNODES + 3 + bars, three loads: twist, shift along y, shift along z. The warping is held orthogonal to E, E y
// and E z, and each bar's node to the interpolation of its host.
System base_system(const Mesh& mesh);

// Order NNODES + 1, two loads: the field q, and twist. The warping is held orthogonal to E alone, and nothing ties the
// bars' nodes: the row of such a node holds a zero diagonal and its entry in the last column.
System second_system(const Mesh& mesh, const double* q);

}  // namespace meshes
