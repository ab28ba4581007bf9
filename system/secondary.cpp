// The second system: the warping function over IW as the source of a Poisson problem with the operator KG, and the
// twist about the origin of XY with the constant alone held.
#include <algorithm>

#include "system/bordered.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

void SOLVESECUNDRYSHEARANDIWT(LOGICAL& OK, const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, SYSTEM_VARIABLES_T& SYSVARS,
                              POINTTABLE POINTS) {
    // Scaled for the time of the field pass and the solve; a division, then a multiplication, so back up to rounding
    // alone.
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) SYSVARS.NODEFIELD(i, 1) /= CHAR.IW;
    FILLMATRIXANDRIGHTSIDE(VQ_DATA_MOD::LOGICAL_TRUE, VARS, SYSVARS, POINTS);
    SOLVEWARPINGFROMSECUNDARYANDTOCENTER(OK, VARS, SYSVARS);
    if (!VQ_DATA_MOD::is_true(OK)) return;
    SECUNDARYSHEAROVERELEMENT(VARS, SYSVARS, POINTS);
    CHAR.WT = 1.0 / SYSVARS.largest_torsional_shear;
    SOLVEWARPINGCONSTANT(VQ_DATA_MOD::LOGICAL_TRUE, VARS, CHAR, SYSVARS, POINTS);
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) SYSVARS.NODEFIELD(i, 1) *= CHAR.IW;
}

// The node of a bar that takes part has a zero diagonal here and its constraint entry alone, so that its row says that
// the multiplier is 0: the solver then holds the constant on the mesh by the constraint's weights instead.
void SOLVEWARPINGFROMSECUNDARYANDTOCENTER(LOGICAL& OK, const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS) {
    SPARSEMATRIX bordered;
    border(SYSVARS, 1, 0, {}, bordered);
    Table<double, 2> L;
    L.allocate(bordered.N, 2);
    std::copy_n(SYSVARS.RIGHTSIDEQ.column(1), VARS.NNODES, L.column(1));
    std::copy_n(SYSVARS.RIGHTSIDE.column(1), VARS.NNODES, L.column(2));
    // Nothing reads the system any more, and the solver needs the room.
    RELEASESPARSEMATRIX(SYSVARS.KG);
    SYSVARS.RIGHTSIDE.release();
    SYSVARS.RIGHTSIDEQ.release();
    SYSVARS.CONSTRAINT.release();
    OK = solve_bordered(bordered, L, VARS.NNODES, SYSVARS.SECFIELD) ? VQ_DATA_MOD::LOGICAL_TRUE
                                                                    : VQ_DATA_MOD::LOGICAL_FALSE;
}

}  // namespace VQ_SYSTEM_MOD
