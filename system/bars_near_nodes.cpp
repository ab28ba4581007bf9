// The bar that each node lies near to, found by cells: sections may have thousands of bars on some hundred thousand
// nodes.
#include <algorithm>
#include <cmath>

#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

namespace {

// Nodes in square cells, about one in each, as chains that nodes leave when they have found their bar.
struct Cells {
    double y0, z0, side;
    std::int32_t ny, nz;
    Table<std::int32_t, 2> first;   // (ny, nz)  a node of the cell, 0 for none
    Table<std::int32_t, 1> next;    // (NNODES)  the next node of its cell
    Table<std::int32_t, 1> in_row;  // (nz)      nodes left in each row of cells
};

// The cell along one axis, 1 to n: never falls with x, so that the cells of two ends hold all that lies between.
std::int32_t cell_of(double x, double x0, double side, std::int32_t n) {
    const double cells = (x - x0) / side;
    return cells >= n - 1 ? n : cells >= 1.0 ? static_cast<std::int32_t>(cells) + 1 : 1;
}

void put_into_cells(const VARIABLES_T& VARS, Cells& cells) {
    const double *y = VARS.XY.column(1), *z = VARS.XY.column(2);
    const auto [ymin, ymax] = std::minmax_element(y, y + VARS.NNODES);
    const auto [zmin, zmax] = std::minmax_element(z, z + VARS.NNODES);
    const std::int32_t n = static_cast<std::int32_t>(std::sqrt(VARS.NNODES)) + 1;
    cells.y0 = *ymin;
    cells.z0 = *zmin;
    cells.side = std::max(*ymax - *ymin, *zmax - *zmin) / n;
    cells.ny = cell_of(*ymax, cells.y0, cells.side, n);
    cells.nz = cell_of(*zmax, cells.z0, cells.side, n);
    cells.first.allocate(cells.ny, cells.nz);
    cells.next.allocate(VARS.NNODES);
    cells.in_row.allocate(cells.nz);
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) {
        const std::int32_t a = cell_of(VARS.XY(i, 1), cells.y0, cells.side, cells.ny);
        const std::int32_t b = cell_of(VARS.XY(i, 2), cells.z0, cells.side, cells.nz);
        cells.next(i) = cells.first(a, b);
        cells.first(a, b) = i;
        ++cells.in_row(b);
    }
}

// Nodes nearer to bar b than its RADIUS take it and leave the cells. Only cells within `reach` are looked at, which
// exceeds the radius by more than the distance can lose to rounding or underflow.
void reach_nodes(const VARIABLES_T& VARS, const VYZTUZE_INFO& bar, std::int32_t b, Cells& cells,
                 Table<std::int32_t, 1>& nearby) {
    const double y = VARS.XY(bar.NODE, 1), z = VARS.XY(bar.NODE, 2);
    const double reach = bar.RADIUS + 1e-9 * (bar.RADIUS + std::fabs(y) + std::fabs(z)) + 1e-150;
    const std::int32_t left = cell_of(y - reach, cells.y0, cells.side, cells.ny);
    const std::int32_t right = cell_of(y + reach, cells.y0, cells.side, cells.ny);
    const std::int32_t top = cell_of(z + reach, cells.z0, cells.side, cells.nz);
    for (std::int32_t row = cell_of(z - reach, cells.z0, cells.side, cells.nz); row <= top; ++row) {
        for (std::int32_t cell = left; cell <= right && cells.in_row(row) > 0; ++cell) {
            std::int32_t* link = &cells.first(cell, row);
            while (*link > 0) {
                const std::int32_t i = *link;
                const double dy = y - VARS.XY(i, 1), dz = z - VARS.XY(i, 2);
                if (std::sqrt(dy * dy + dz * dz) < bar.RADIUS) {
                    nearby(i) = b;
                    *link = cells.next(i);
                    --cells.in_row(row);
                } else {
                    link = &cells.next(i);
                }
            }
        }
    }
}

// A record below the limit of those that take part reaches corners too, but not without a place or a modulus.
bool reaches_corners(const VARIABLES_T& VARS, const VYZTUZE_INFO& bar) {
    return bar.NODE >= 1 && bar.NODE <= VARS.NNODES && VQ_DATA_MOD::is_true(VARS.NODEUSED(bar.NODE)) &&
           bar.RADIUS > 0.0 && !std::isnan(bar.EMODUL);
}

}  // namespace

// The table is walked from its end, so that a node leaves the cells with the bar that counts.
void find_bars_near_nodes(const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS, POINTTABLE POINTS) {
    Cells cells;
    for (std::int32_t b = VARS.NPOINTS; b >= 1; --b) {
        const VYZTUZE_INFO& bar = POINTS(b);
        if (!reaches_corners(VARS, bar)) continue;
        if (!cells.first.allocated()) {
            put_into_cells(VARS, cells);
            SYSVARS.near_bar.allocate(VARS.NNODES);
        }
        reach_nodes(VARS, bar, b, cells, SYSVARS.near_bar);
    }
}

}  // namespace VQ_SYSTEM_MOD
