#include "system/system_variables.h"

namespace SYSTEM_VARIABLES {

void place_stresses(double* ELEMOUT, std::int32_t NELEMS, SYSTEM_VARIABLES_T& SYSVARS) {
    SYSVARS.TAUY = Spread<double, 48, 12, 2>(ELEMOUT, NELEMS, 4, 4);
    SYSVARS.TAUZ = Spread<double, 48, 12, 2>(ELEMOUT + 1, NELEMS, 4, 4);
    SYSVARS.SIGMA = Spread<double, 48, 12, 1>(ELEMOUT + 8, NELEMS, 4, 4);
}

void REALEASE_SYSTEMDATA(SYSTEM_VARIABLES_T& SYSVARS) {
    SPARSEMATRIX_MOD::RELEASESPARSEMATRIX(SYSVARS.KG);
    SYSVARS.memory.pieces.clear();
    SYSVARS.RIGHTSIDE.release();
    SYSVARS.RIGHTSIDEQ.release();
    SYSVARS.CONSTRAINT.release();
    SYSVARS.NODEFIELD.release();
    SYSVARS.SECFIELD.release();
    SYSVARS.TAUY = SYSVARS.TAUZ = {};
    SYSVARS.SIGMA = {};
    SYSVARS.base_field.release();
    SYSVARS.near_bar.release();
}

}  // namespace SYSTEM_VARIABLES
