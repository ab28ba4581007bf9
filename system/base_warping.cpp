// The base warping fields: KG held by three constraints, and by a multiplier for each bar that ties it to its host's
// nodes.
#include <algorithm>

#include "system/bordered.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

namespace {

constexpr double BARFACTOR = 0.9;  // not 1: the bar's share of the diagonal is reduced

// Matrix of the unknowns: warping at the nodes, three multipliers of the constraints, one multiplier for each bar, also
// for one that does not take part and whose row stays empty.
void build_bordered(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE POINTS, SPARSEMATRIX& bordered) {
    Table<std::int32_t, 1> reserve;  // entries of bars in each node row, counted down while they are filled
    reserve.allocate(VARS.NNODES);
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        VYZTUZE_INFO& bar = POINTS(b);
        if (!VQ_DATA_MOD::is_in_system(bar)) continue;
        const View<std::int32_t, 1> ELNODES(bar.ELNODES, 4);
        for (int k = 1; k <= bar.NELNODES; ++k) ++reserve(ELNODES(k));
        ++reserve(bar.NODE);
    }
    border(SYSVARS, 3, VARS.NPOINTS, reserve, bordered);

    // Bars in table order, so that the columns of a row ascend.
    const auto append = [&](std::int32_t row, std::int32_t column, double value) {
        const std::int32_t q = bordered.IA(row + 1) - reserve(row)--;
        bordered.JA(q) = column;
        bordered.A(q) = value;
    };
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        VYZTUZE_INFO& bar = POINTS(b);
        if (!VQ_DATA_MOD::is_in_system(bar)) continue;
        const std::int32_t multiplier = VARS.NNODES + 3 + b;
        const View<std::int32_t, 1> ELNODES(bar.ELNODES, 4);
        const View<double, 1> SHAPE(bar.SHAPE, 4);
        for (int k = 1; k <= bar.NELNODES; ++k) append(ELNODES(k), multiplier, SHAPE(k));
        // The bar's node has nothing but its diagonal in KG.
        bordered.A(bordered.IA(bar.NODE)) = bar.GMODUL * BARFACTOR * bar.AREA;
        append(bar.NODE, multiplier, -1.0);
    }
}

}  // namespace

void SOLVEBASEWARPING(LOGICAL& OK, const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE POINTS) {
    SPARSEMATRIX bordered;
    build_bordered(VARS, SYSVARS, POINTS, bordered);
    Table<double, 2> L;
    L.allocate(bordered.N, 3);
    for (int k = 1; k <= 3; ++k) std::copy_n(SYSVARS.RIGHTSIDE.column(k), VARS.NNODES, L.column(k));
    SYSVARS.RIGHTSIDE.release();  // comes back from L: the solver needs the room
    OK = solve_bordered(bordered, L, VARS.NNODES, SYSVARS.NODEFIELD) ? VQ_DATA_MOD::LOGICAL_TRUE
                                                                     : VQ_DATA_MOD::LOGICAL_FALSE;
    if (!VQ_DATA_MOD::is_true(OK)) return;
    SYSVARS.RIGHTSIDE.allocate_uncleared(VARS.NNODES, 3);
    for (int k = 1; k <= 3; ++k) std::copy_n(L.column(k), VARS.NNODES, SYSVARS.RIGHTSIDE.column(k));
}

}  // namespace VQ_SYSTEM_MOD
