// The shear stress that goes with the axial stress of a bimoment: the gradient of the secondary warping.
#include "element/quad.h"
#include "element/triangle.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

void SECUNDARYSHEAROVERELEMENT(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE) {
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const Real<3> MAT = material_of(VARS, e);
        Real<4> TY, TZ;
        if (VQ_DATA_MOD::is_triangle(VARS, e)) {
            const Integer<3> node = nodes_of<3>(VARS, e);
            Real<3> ty, tz;
            TRIANGLE_MOD::TRIANGLESHEARSECUNDARY(coordinates_of(VARS, node), MAT, values_at(SYSVARS.SECFIELD, 1, node),
                                                 ty, tz);
            TY = {{ty(1), ty(2), ty(3), ty(3)}};
            TZ = {{tz(1), tz(2), tz(3), tz(3)}};
        } else {
            const Integer<4> node = nodes_of<4>(VARS, e);
            QUAD_MOD::QUADSHEARSECUNDARY(coordinates_of(VARS, node), MAT, values_at(SYSVARS.SECFIELD, 1, node), TY, TZ);
        }
        for (int c = 1; c <= 4; ++c) {
            SYSVARS.TAUY(e, c, 4) = TY(c);
            SYSVARS.TAUZ(e, c, 4) = TZ(c);
        }
    }
}

}  // namespace VQ_SYSTEM_MOD
