// Shear stresses at the corners: of the unit torque and of unit shear forces along the principal axes from those of the
// three motions, and of the unit warping shear from the secondary warping. One walk forms all four, since most of its
// work is the geometry of the elements.
#include <cmath>

#include "element/quad.h"
#include "element/triangle.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

namespace {

// One component of the stress at a corner in the four load cases.
using Cases = Real<4>;

// Stresses of the motions become those of the unit loads, the two forces then along the principal axes. Only the load
// turns; the components stay those along y and z.
Cases of_unit_loads(const SYSTEM_VARIABLES_T& SYSVARS, double t1, double t2, double t3, double of_warping) {
    const Real<3, 3>& M = SYSVARS.motions;
    const Real<2, 2>& TRANS = SYSVARS.axes;
    const double torque = M(1, 1) * t1 + M(2, 1) * t2 + M(3, 1) * t3;
    const double along_y = M(1, 2) * t1 + M(2, 2) * t2 + M(3, 2) * t3;
    const double along_z = M(1, 3) * t1 + M(2, 3) * t2 + M(3, 3) * t3;
    return {{torque, TRANS(1, 1) * along_y + TRANS(1, 2) * along_z, TRANS(2, 1) * along_y + TRANS(2, 2) * along_z,
             of_warping}};
}

void store(SYSTEM_VARIABLES_T& SYSVARS, std::int32_t e, int c, const Cases& ty, const Cases& tz) {
    for (int q = 1; q <= 4; ++q) {
        SYSVARS.TAUY(e, c, q) = ty(q);
        SYSVARS.TAUZ(e, c, q) = tz(q);
    }
}

double square_of_torsional_shear(const Cases& ty, const Cases& tz) { return ty(1) * ty(1) + tz(1) * tz(1); }

// No number stays none.
void raise(double& largest, double square) {
    if (square > largest || std::isnan(square)) largest = square;
}

void form_triangle(const VARIABLES_T& VARS, std::int32_t e, SYSTEM_VARIABLES_T& SYSVARS, double& largest) {
    const Integer<3> node = nodes_of<3>(VARS, e);
    const Real<3> MAT = material_of(VARS, e);
    const TRIANGLE_MOD::Samples at = TRIANGLE_MOD::sample(coordinates_of(VARS, node));
    Real<3> TY, TZ;
    double ty, tz;
    TRIANGLE_MOD::TRIANGLESHEAR(at, MAT, motions_at(SYSVARS.base_field, node), TY, TZ);
    TRIANGLE_MOD::TRIANGLESHEARSECUNDARY(at, MAT, values_at(SYSVARS.SECFIELD, 1, node), ty, tz);
    const Cases y = of_unit_loads(SYSVARS, TY(1), TY(2), TY(3), ty),
                z = of_unit_loads(SYSVARS, TZ(1), TZ(2), TZ(3), tz);
    for (int c = 1; c <= 4; ++c) store(SYSVARS, e, c, y, z);
    raise(largest, square_of_torsional_shear(y, z));
}

void form_quadrilateral(const VARIABLES_T& VARS, std::int32_t e, SYSTEM_VARIABLES_T& SYSVARS, double& largest) {
    const Integer<4> node = nodes_of<4>(VARS, e);
    const Real<3> MAT = material_of(VARS, e);
    const QUAD_MOD::Samples at = QUAD_MOD::sample(coordinates_of(VARS, node));
    Real<4, 3> TY, TZ;
    Real<4> ty, tz;
    QUAD_MOD::QUADSHEAR(at, MAT, motions_at(SYSVARS.base_field, node), TY, TZ);
    QUAD_MOD::QUADSHEARSECUNDARY(at, MAT, values_at(SYSVARS.SECFIELD, 1, node), ty, tz);
    for (int c = 1; c <= 4; ++c) {
        const Cases y = of_unit_loads(SYSVARS, TY(c, 1), TY(c, 2), TY(c, 3), ty(c));
        const Cases z = of_unit_loads(SYSVARS, TZ(c, 1), TZ(c, 2), TZ(c, 3), tz(c));
        store(SYSVARS, e, c, y, z);
        raise(largest, square_of_torsional_shear(y, z));
    }
}

}  // namespace

void SECUNDARYSHEAROVERELEMENT(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE) {
    double largest = 0.0;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e)
        (VQ_DATA_MOD::is_triangle(VARS, e) ? form_triangle : form_quadrilateral)(VARS, e, SYSVARS, largest);
    SYSVARS.largest_torsional_shear = std::sqrt(largest);
}

}  // namespace VQ_SYSTEM_MOD
