// Shear centre, torsional and shear stiffnesses from the three base fields: k = 1 unit twist about the origin of XY,
// 2 unit shear strain along y, 3 along z.
#include <utility>

#include "element/quad.h"
#include "element/suportbase.h"
#include "element/triangle.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

using SUPORTBASE::INVMAT;

namespace {

using QUAD_MOD::resultants, QUAD_MOD::sample;
using TRIANGLE_MOD::resultants, TRIANGLE_MOD::sample;

// The element's share of the section matrix K.
template <int n>
void add_element(const VARIABLES_T& VARS, std::int32_t e, const SYSTEM_VARIABLES_T& SYSVARS, Real<3, 3>& K) {
    const Integer<n> node = nodes_of<n>(VARS, e);
    Real<3, 3> ACC;
    resultants(sample(coordinates_of(VARS, node)), material_of(VARS, e), motions_at(SYSVARS.NODEFIELD, node), ACC);
    for (int k = 1; k <= 3; ++k)
        for (int j = 1; j <= 3; ++j) K(k, j) += ACC(k, j);
}

// The bar's node value itself stands in both stress components, not a gradient.
void add_bar(const VARIABLES_T& VARS, const SYSTEM_VARIABLES_T& SYSVARS, const VYZTUZE_INFO& bar, Real<3, 3>& K) {
    const double y = VARS.XY(bar.NODE, 1), z = VARS.XY(bar.NODE, 2), a = bar.AREA;
    for (int k = 1; k <= 3; ++k) {
        const double t = bar.GMODUL * SYSVARS.NODEFIELD(bar.NODE, k);
        K(k, 1) += a * (y * t - z * t);
        K(k, 2) += a * t;
        K(k, 3) += a * t;
    }
}

// The amplitudes s1, s2 of the two shear motions in a unit twist that has no coupling with them: the shear centre lies
// at (s2, -s1) from the origin of XY.
void uncoupled_twist(const Real<3, 3>& K, double& s1, double& s2) {
    const Real<2, 2> D{{K(2, 2), K(3, 2), K(2, 3), K(3, 3)}};
    Real<2, 2> DINV;
    INVMAT(2, D.data, 1, 2, DINV.data);
    s1 = DINV(1, 1) * K(2, 1) + DINV(1, 2) * K(3, 1);
    s2 = DINV(2, 1) * K(2, 1) + DINV(2, 2) * K(3, 1);
}

// R = C^T K C with C the unit matrix but C(2,1) = -s1, C(3,1) = -s2: the section matrix about the shear centre.
Real<3, 3> about_shear_centre(const Real<3, 3>& K, double s1, double s2) {
    Real<3, 3> R = K;
    R(2, 1) = K(2, 1) - s1 * K(2, 2) - s2 * K(2, 3);
    R(3, 1) = K(3, 1) - s1 * K(3, 2) - s2 * K(3, 3);
    R(1, 1) = K(1, 1) - s1 * K(1, 2) - s2 * K(1, 3) - s1 * R(2, 1) - s2 * R(3, 1);
    R(1, 2) = K(1, 2) - s1 * K(2, 2) - s2 * K(3, 2);
    R(1, 3) = K(1, 3) - s1 * K(2, 3) - s2 * K(3, 3);
    return R;
}

// M = C R^-1: column q holds the amplitudes of the three motions under unit load q, a torque about the shear centre or
// a shear force through it along y or z.
Real<3, 3> motions_of_unit_loads(const Real<3, 3>& R, double s1, double s2) {
    Real<3, 3> F;
    INVMAT(3, R.data, 1, 3, F.data);
    Real<3, 3> M = F;
    for (int q = 1; q <= 3; ++q) {
        M(2, q) = F(2, q) - s1 * F(1, q);
        M(3, q) = F(3, q) - s2 * F(1, q);
    }
    return M;
}

void set_slots(const Real<3, 3>& R, double s1, double s2, const Real<2, 2>& TRANS, VELQUOR_CHAR& CHAR) {
    const double T11 = TRANS(1, 1), T12 = TRANS(1, 2), T21 = TRANS(2, 1), T22 = TRANS(2, 2);
    CHAR.SCY = s2 + CHAR.YC;
    CHAR.SCZ = -s1 + CHAR.ZC;
    CHAR.SCU = T11 * CHAR.SCY + T12 * CHAR.SCZ;
    CHAR.SCV = T21 * CHAR.SCY + T22 * CHAR.SCZ;
    CHAR.GJ = R(1, 1);
    CHAR.GAY = R(2, 2);
    CHAR.GAZ = R(3, 3);

    // The pair turns with its second slot as the first coordinate.
    const double COUP1 = CHAR.COUP1, COUP2 = CHAR.COUP2;
    CHAR.COUP2 = T11 * COUP2 + T12 * COUP1;
    CHAR.COUP1 = T21 * COUP2 + T22 * COUP1;

    const double a = T11 * R(2, 2) + T12 * R(2, 3), b = T11 * R(3, 2) + T12 * R(3, 3);
    const double c = T21 * R(2, 2) + T22 * R(2, 3), d = T21 * R(3, 2) + T22 * R(3, 3);
    CHAR.GAU = T11 * a + T12 * b;
    CHAR.GAV = T21 * c + T22 * d;
    CHAR.GAUV = T11 * c + T12 * d;

    // All four from the undivided sums.
    const double RY = CHAR.RY, RZ = CHAR.RZ;
    CHAR.RV = (T21 * RY + T22 * RZ) / CHAR.I1;
    CHAR.RU = (T11 * RY + T12 * RZ) / CHAR.I2;
    CHAR.RY = RY / CHAR.IYY;
    CHAR.RZ = RZ / CHAR.IZZ;
}

void turn(const Real<2, 2>& TRANS, double& y, double& z) {
    const double u = TRANS(1, 1) * y + TRANS(1, 2) * z, v = TRANS(2, 1) * y + TRANS(2, 2) * z;
    y = u;
    z = v;
}

}  // namespace

void SHEARCENTERANDELEMENT(VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, SYSTEM_VARIABLES_T& SYSVARS, const Real<2, 2>& TRANS,
                           POINTTABLE POINTS) {
    // K(k, j): resultant j of motion k; 1 torque about the origin of XY, 2 force along y, 3 force along z.
    Real<3, 3> K{};
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        if (VQ_DATA_MOD::is_triangle(VARS, e))
            add_element<3>(VARS, e, SYSVARS, K);
        else
            add_element<4>(VARS, e, SYSVARS, K);
    }
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b)
        if (VQ_DATA_MOD::is_in_system(POINTS(b))) add_bar(VARS, SYSVARS, POINTS(b), K);

    double s1, s2;
    uncoupled_twist(K, s1, s2);
    const Real<3, 3> R = about_shear_centre(K, s1, s2);
    SYSVARS.motions = motions_of_unit_loads(R, s1, s2);
    SYSVARS.axes = TRANS;
    set_slots(R, s1, s2, TRANS, CHAR);

    for (std::int32_t g = 1; g <= VARS.NGROUPS; ++g) {
        turn(TRANS, VARS.GROUPYC(g), VARS.GROUPZC(g));
        turn(TRANS, VARS.GROUPDY(g), VARS.GROUPDZ(g));
    }
    // The twist moves to the shear centre, still of unit size; the shears turn to u and v.
    SYSVARS.base_field = std::move(SYSVARS.NODEFIELD);
    SYSVARS.NODEFIELD.allocate_uncleared(VARS.NNODES, 3);
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) {
        const double w1 = SYSVARS.base_field(i, 1);
        double w2 = SYSVARS.base_field(i, 2), w3 = SYSVARS.base_field(i, 3);
        SYSVARS.NODEFIELD(i, 1) = w1 - s1 * w2 - s2 * w3;
        turn(TRANS, w2, w3);
        SYSVARS.NODEFIELD(i, 2) = w2;
        SYSVARS.NODEFIELD(i, 3) = w3;
    }
}

}  // namespace VQ_SYSTEM_MOD
