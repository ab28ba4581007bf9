// Int E w^2 of a warping field over the section.
#include "element/quad.h"
#include "element/triangle.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

void SOLVEWARPINGCONSTANT(LOGICAL FLAG, const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, const SYSTEM_VARIABLES_T& SYSVARS,
                          POINTTABLE POINTS) {
    const bool about_origin = VQ_DATA_MOD::is_true(FLAG);
    const Table<double, 2>& field = about_origin ? SYSVARS.SECFIELD : SYSVARS.NODEFIELD;
    const int column = about_origin ? 2 : 1;

    double sum = 0.0;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const Real<3> MAT = material_of(VARS, e);
        if (VQ_DATA_MOD::is_triangle(VARS, e)) {
            const Integer<3> node = nodes_of<3>(VARS, e);
            sum +=
                TRIANGLE_MOD::TRIANGLEWARPINGCONSTANT(coordinates_of(VARS, node), MAT, values_at(field, column, node));
        } else {
            const Integer<4> node = nodes_of<4>(VARS, e);
            sum += QUAD_MOD::QUADWARPINGCONSTANT(coordinates_of(VARS, node), MAT, values_at(field, column, node));
        }
    }
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        const VYZTUZE_INFO& bar = POINTS(b);
        if (!VQ_DATA_MOD::is_in_system(bar)) continue;
        const double w = field(bar.NODE, column);
        sum += bar.EMODUL * bar.AREA * (w * w);
    }
    (about_origin ? CHAR.IWS : CHAR.IW) = sum;
}

}  // namespace VQ_SYSTEM_MOD
