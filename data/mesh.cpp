// Mesh definition and checks: from the host's tables to XY and ELEMNODES.
#include <algorithm>
#include <cmath>
#include <limits>

#include "data/vq_data_mod.h"

namespace VQ_DATA_MOD {

namespace {

// Single precision on purpose, compared as their 64-bit values.
constexpr double MODULUSFACTOR = 1.01e-6f;  // elements below EREF times this are not tested
constexpr double MINEDGE = 1e-8f;           // a longest edge below this counts as vanished
constexpr double MINEDGERATIO = 1e-5f;      // smallest allowed shortest to longest edge
constexpr double MINSINE = 0.08;            // smallest allowed sine of the turning angle at a corner, 4.6 degrees

// Edges of a quadrilateral with corners (y, z): lengths L, and the smallest of 1 and the sines of the turning angles.
double smallest_sine(const Real<4>& y, const Real<4>& z, Real<4>& L) {
    Real<4> uy, uz;  // unit vectors along the edges
    for (int i = 1; i <= 4; ++i) {
        const int j = i % 4 + 1;
        const double dy = y(j) - y(i), dz = z(j) - z(i);
        L(i) = std::sqrt(dy * dy + dz * dz);
        uy(i) = dy / L(i);
        uz(i) = dz / L(i);
    }
    double S = 1.0;
    for (int i = 1; i <= 4; ++i) {
        const int j = i % 4 + 1;
        S = std::min(S, uy(i) * uz(j) - uz(i) * uy(j));
    }
    return S;
}

bool is_good_triangle(const VARIABLES_T& VARS, std::int32_t e) {
    const std::int32_t a = VARS.ELEMNODES(e, 1), b = VARS.ELEMNODES(e, 2), c = VARS.ELEMNODES(e, 3);
    if (a == b || b == c || a == c) return false;
    const double ya = VARS.XY(a, 1), yb = VARS.XY(b, 1), yc = VARS.XY(c, 1);
    const double za = VARS.XY(a, 2), zb = VARS.XY(b, 2), zc = VARS.XY(c, 2);
    const double ab = std::sqrt((yb - ya) * (yb - ya) + (zb - za) * (zb - za));
    const double bc = std::sqrt((yc - yb) * (yc - yb) + (zc - zb) * (zc - zb));
    const double ca = std::sqrt((ya - yc) * (ya - yc) + (za - zc) * (za - zc));
    const double LMAX = std::max({ab, bc, ca}), LMIN = std::min({ab, bc, ca});
    if (LMAX < MINEDGE) return false;
    if (LMIN / LMAX < MINEDGERATIO) return false;
    // Twice the signed area; exactly 0 passes.
    return !((ya - yc) * zb + (yc - yb) * za + (yb - ya) * zc < 0.0);
}

bool is_good_quadrilateral(const VARIABLES_T& VARS, std::int32_t e) {
    Integer<4> node;
    Real<8> Q;
    for (int i = 1; i <= 4; ++i) {
        node(i) = VARS.ELEMNODES(e, i);
        Q(i) = VARS.XY(node(i), 1);
        Q(i + 4) = VARS.XY(node(i), 2);
    }
    if (node(1) == node(2) || node(1) == node(3) || node(1) == node(4)) return false;
    if (node(2) == node(3) || node(2) == node(4)) return false;
    return TESTQUADGEO(Q) == 0;
}

}  // namespace

void DEFINEMESH(std::int32_t& STATUS, View<const double, 2> NODES, View<const std::int32_t, 2> ELEMENTS,
                VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR) {
    const std::int32_t NNODES = static_cast<std::int32_t>(NODES.extent(1));
    const std::int32_t NELEMS = static_cast<std::int32_t>(ELEMENTS.extent(1));

    std::int32_t smallest = std::numeric_limits<std::int32_t>::max();
    std::int32_t largest = std::numeric_limits<std::int32_t>::min();
    for (int k = 1; k <= 4; ++k) {
        for (std::int32_t e = 1; e <= NELEMS; ++e) {
            smallest = std::min(smallest, ELEMENTS(e, k));
            largest = std::max(largest, ELEMENTS(e, k));
        }
    }
    if (NNODES < largest || smallest < 1) {
        STATUS = -3;
        return;
    }
    STATUS = 0;

    // Node numbers stay the host's, so an element's numbers need no translation; only the nodes in use get coordinates.
    VARS.NODEUSED.allocate(NNODES);
    for (int k = 1; k <= 4; ++k)
        for (std::int32_t e = 1; e <= NELEMS; ++e) VARS.NODEUSED(ELEMENTS(e, k)) = LOGICAL_TRUE;

    VARS.NNODES = NNODES;
    VARS.XY.allocate(NNODES, 2);
    for (std::int32_t i = 1; i <= NNODES; ++i) {
        if (!is_true(VARS.NODEUSED(i))) continue;
        VARS.XY(i, 1) = NODES(i, 1);
        VARS.XY(i, 2) = NODES(i, 2);
    }

    VARS.NELEMS = NELEMS;
    VARS.ELEMAREA.allocate(NELEMS);
    VARS.ELEMYC.allocate(NELEMS);
    VARS.ELEMZC.allocate(NELEMS);
    VARS.ELEMNODES.allocate_uncleared(NELEMS, 4);
    for (int k = 1; k <= 4; ++k)
        for (std::int32_t e = 1; e <= NELEMS; ++e) VARS.ELEMNODES(e, k) = ELEMENTS(e, k);

    CHECKMESH(STATUS, VARS, CHAR);
}

void CHECKMESH(std::int32_t& STATUS, VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR) {
    VARS.NNODES = static_cast<std::int32_t>(VARS.XY.extent(1));
    VARS.NELEMS = static_cast<std::int32_t>(VARS.ELEMNODES.extent(1));
    const double THRESHOLD = CHAR.EREF * MODULUSFACTOR;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        if (VARS.ELEMPROP(e, VQ_EMOD) < THRESHOLD) continue;
        if (!(is_triangle(VARS, e) ? is_good_triangle(VARS, e) : is_good_quadrilateral(VARS, e))) {
            STATUS = e;
            return;
        }
    }
    STATUS = 0;
}

std::int32_t TESTQUADGEO(const Real<8>& Q) {
    Real<4> y{{Q(1), Q(2), Q(3), Q(4)}}, z{{Q(5), Q(6), Q(7), Q(8)}}, L;
    double S = smallest_sine(y, z, L);
    const double A2 = (y(1) - y(3)) * (z(2) - z(4)) - (z(1) - z(3)) * (y(2) - y(4));
    std::int32_t result = 0;
    if (!(A2 > 0.0)) {
        // Clockwise: judged in the opposite order, whose area is not tested again.
        std::swap(y(2), y(4));
        std::swap(z(2), z(4));
        S = smallest_sine(y, z, L);
        result = 1;
    }
    const double LMAX = std::max({L(1), L(2), L(3), L(4)}), LMIN = std::min({L(1), L(2), L(3), L(4)});
    if (LMAX < MINEDGE || LMIN / LMAX < MINEDGERATIO || S < MINSINE) result = 2;
    return result;
}

}  // namespace VQ_DATA_MOD
