// What the two warping systems share: KG with constraint columns behind it, and its solution.
#pragma once

#include <cstdint>

#include "data/table.h"
#include "system/system_variables.h"

namespace VQ_SYSTEM_MOD {

using SPARSEMATRIX_MOD::SPARSEMATRIX;
using SYSTEM_VARIABLES::SYSTEM_VARIABLES_T;

// KG bordered with the first `columns` columns of CONSTRAINT, then with `further` empty unknowns. Each node row has
// `reserve` entries for the caller to fill at its end (none where the table is not allocated), each further row its own
// zero diagonal. Its solution takes turns in the memory of SYSVARS. Throws std::bad_alloc, also where order or entries
// outnumber 32 bits.
void border(SYSTEM_VARIABLES_T& SYSVARS, int columns, std::int32_t further, const Table<std::int32_t, 1>& reserve,
            SPARSEMATRIX& bordered);

// Solves the bordered matrix for the loads L (N, nrhs), zero beyond the nodes, and keeps the node rows of the solution
// in FIELD (NNODES, nrhs); the matrix is released. False: the solver failed, FIELD stays unallocated. Throws
// std::bad_alloc.
bool solve_bordered(SPARSEMATRIX& bordered, const Table<double, 2>& L, std::int32_t NNODES, Table<double, 2>& FIELD);

}  // namespace VQ_SYSTEM_MOD
