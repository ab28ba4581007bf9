// Axial stress at the corners and the bars for unit normal force, unit moments about the principal axes and unit
// bimoment.
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

void SOLVEAXIALSTRESS(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, SYSTEM_VARIABLES_T& SYSVARS,
                      const Real<2, 2>& TRANS, POINTTABLE POINTS) {
    const Table<std::int32_t, 1>& near_bar = SYSVARS.near_bar;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        // In a section that is not coupled the group terms are 0.
        const std::int32_t g = VQ_DATA_MOD::group_of(VARS, e);
        const double coupling = VARS.ELEMPROP(e, VQ_COUPLING);
        const double ug = VARS.GROUPYC(g), vg = VARS.GROUPZC(g), du = VARS.GROUPDY(g), dv = VARS.GROUPDZ(g);
        const bool triangle = VQ_DATA_MOD::is_triangle(VARS, e);
        for (int c = 1; c <= (triangle ? 3 : 4); ++c) {
            const std::int32_t node = VARS.ELEMNODES(e, c);
            const double y = VARS.XY(node, 1), z = VARS.XY(node, 2);
            const double u = TRANS(1, 1) * y + TRANS(1, 2) * z, v = TRANS(2, 1) * y + TRANS(2, 2) * z;
            const bool at_bar = near_bar.allocated() && near_bar(node) > 0;
            const double E = at_bar ? POINTS(near_bar(node)).EMODUL : VARS.ELEMPROP(e, VQ_EMOD);
            SYSVARS.SIGMA(e, c, 1) = E / CHAR.EA;
            SYSVARS.SIGMA(e, c, 2) = ((v - vg) * E) / CHAR.I1 + (coupling * dv * E) / CHAR.I1;
            SYSVARS.SIGMA(e, c, 3) = -(((u - ug) * E) / CHAR.I2 + (coupling * du * E) / CHAR.I2);
            SYSVARS.SIGMA(e, c, 4) = (SYSVARS.NODEFIELD(node, 1) * E) / CHAR.IW;
        }
        for (int q = 1; triangle && q <= 4; ++q) SYSVARS.SIGMA(e, 4, q) = SYSVARS.SIGMA(e, 3, q);
    }

    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        VYZTUZE_INFO& bar = POINTS(b);
        if (!VQ_DATA_MOD::is_in_system(bar)) continue;
        const double y = VARS.XY(bar.NODE, 1), z = VARS.XY(bar.NODE, 2);
        const double u = TRANS(1, 1) * y + TRANS(1, 2) * z, v = TRANS(2, 1) * y + TRANS(2, 2) * z;
        const View<double, 1> STRESS(bar.STRESS, 4);
        STRESS(1) = bar.EMODUL / CHAR.EA;
        STRESS(2) = bar.EMODUL * v / CHAR.I1;
        STRESS(3) = -bar.EMODUL * u / CHAR.I2;
        STRESS(4) = (bar.EMODUL / CHAR.IW) * SYSVARS.NODEFIELD(bar.NODE, 1);
    }
}

}  // namespace VQ_SYSTEM_MOD
