// Axial stress at the corners and the bars for unit normal force, unit moments about the principal axes and unit
// bimoment.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

namespace {

// For each node the bar whose modulus the corners there take, 0 for none: of the bars nearer than their RADIUS the last
// in the table. Bars that do not take part count here too. Nodes are visited in strips across y, of which only those
// within a bar's radius are measured; `reach` exceeds it by more than the distance can lose to rounding or underflow.
Table<std::int32_t, 1> bars_near_nodes(const VARIABLES_T& VARS, POINTTABLE POINTS) {
    Table<std::int32_t, 1> nearby;
    nearby.allocate(VARS.NNODES);
    std::vector<std::int32_t> by_y;
    const auto less_y = [&](std::int32_t i, std::int32_t j) { return VARS.XY(i, 1) < VARS.XY(j, 1); };
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        const VYZTUZE_INFO& bar = POINTS(b);
        if (bar.NODE < 1 || bar.NODE > VARS.NNODES || !(bar.RADIUS > 0.0)) continue;
        if (by_y.empty()) {
            by_y.resize(static_cast<std::size_t>(VARS.NNODES));
            std::iota(by_y.begin(), by_y.end(), 1);
            std::sort(by_y.begin(), by_y.end(), less_y);
        }
        const double y = VARS.XY(bar.NODE, 1), z = VARS.XY(bar.NODE, 2);
        const double reach = bar.RADIUS + 1e-9 * (bar.RADIUS + std::fabs(y)) + 1e-150;
        auto node = std::lower_bound(by_y.begin(), by_y.end(), y - reach,
                                     [&](std::int32_t i, double limit) { return VARS.XY(i, 1) < limit; });
        for (; node != by_y.end() && VARS.XY(*node, 1) <= y + reach; ++node) {
            const double dy = y - VARS.XY(*node, 1), dz = z - VARS.XY(*node, 2);
            if (std::fabs(dz) > reach) continue;
            if (std::sqrt(dy * dy + dz * dz) < bar.RADIUS) nearby(*node) = b;
        }
    }
    return nearby;
}

}  // namespace

void SOLVEAXIALSTRESS(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, SYSTEM_VARIABLES_T& SYSVARS,
                      const Real<2, 2>& TRANS, POINTTABLE POINTS) {
    SYSVARS.SIGMA.allocate(VARS.NELEMS, 4, 4);
    const Table<std::int32_t, 1> nearby = bars_near_nodes(VARS, POINTS);
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        // In a section that is not coupled the group terms are 0.
        const std::int32_t g = VQ_DATA_MOD::group_of(VARS, e);
        const double coupling = VARS.ELEMPROP(e, VQ_COUPLING);
        const double ug = VARS.GROUPYC(g), vg = VARS.GROUPZC(g), du = VARS.GROUPDY(g), dv = VARS.GROUPDZ(g);
        for (int c = 1; c <= 4; ++c) {
            const std::int32_t node = VARS.ELEMNODES(e, c);  // a triangle's fourth is its third
            const double y = VARS.XY(node, 1), z = VARS.XY(node, 2);
            const double u = TRANS(1, 1) * y + TRANS(1, 2) * z, v = TRANS(2, 1) * y + TRANS(2, 2) * z;
            const double E = nearby(node) > 0 ? POINTS(nearby(node)).EMODUL : VARS.ELEMPROP(e, VQ_EMOD);
            SYSVARS.SIGMA(e, c, 1) = E / CHAR.EA;
            SYSVARS.SIGMA(e, c, 2) = ((v - vg) * E) / CHAR.I1 + (coupling * dv * E) / CHAR.I1;
            SYSVARS.SIGMA(e, c, 3) = -(((u - ug) * E) / CHAR.I2 + (coupling * du * E) / CHAR.I2);
            SYSVARS.SIGMA(e, c, 4) = (SYSVARS.NODEFIELD(node, 1) * E) / CHAR.IW;
        }
    }

    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        VYZTUZE_INFO& bar = POINTS(b);
        if (!VQ_DATA_MOD::takes_part(bar)) continue;
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
