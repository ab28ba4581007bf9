#include "system/system_variables.h"

namespace SYSTEM_VARIABLES {

void REALEASE_SYSTEMDATA(SYSTEM_VARIABLES_T& SYSVARS) {
    SPARSEMATRIX_MOD::RELEASESPARSEMATRIX(SYSVARS.KG);
    SYSVARS.memory.pieces.clear();
    SYSVARS.RIGHTSIDE.release();
    SYSVARS.RIGHTSIDEQ.release();
    SYSVARS.CONSTRAINT.release();
    SYSVARS.NODEFIELD.release();
    SYSVARS.SECFIELD.release();
    SYSVARS.TAUY.release();
    SYSVARS.TAUZ.release();
    SYSVARS.SIGMA.release();
}

}  // namespace SYSTEM_VARIABLES
