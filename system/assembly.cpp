// From element arrays to the global system: KG, the load columns and the constraint columns.
#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "element/quad.h"
#include "element/suportbase.h"
#include "element/triangle.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

namespace {

constexpr double LOCATETOLERANCE = 1e-6;

using QUAD_MOD::field_load;
using TRIANGLE_MOD::field_load;

void element_arrays(const Real<4, 2>& XYE, const Real<3>& MAT, const Real<4>& Q, Real<4, 4>& K, Real<4, 3>& F,
                    Real<4>& R, Real<4, 3>& S) {
    QUAD_MOD::QUADKANDRIGHTSIDE(XYE, MAT, Q, K, F, R, S);
}
void element_arrays(const Real<3, 2>& XYE, const Real<3>& MAT, const Real<3>& Q, Real<3, 3>& K, Real<3, 3>& F,
                    Real<3>& R, Real<3, 3>& S) {
    TRIANGLE_MOD::TRIANGLEKANDRIGHTSIDE(XYE, MAT, Q, K, F, R, S);
}

template <int n>
void add_element(const VARIABLES_T& VARS, std::int32_t e, SYSTEM_VARIABLES_T& SYSVARS) {
    const Integer<n> node = nodes_of<n>(VARS, e);
    Real<n, n> K;
    Real<n, 3> F, S;
    Real<n> R;
    element_arrays(coordinates_of(VARS, node), material_of(VARS, e), Real<n>{}, K, F, R, S);
    ADDSTIFF2KG(K, node, SYSVARS.KG);
    for (int i = 1; i <= n; ++i) {
        for (int k = 1; k <= 3; ++k) {
            SYSVARS.RIGHTSIDE(node(i), k) += F(i, k);
            SYSVARS.CONSTRAINT(node(i), k) += S(i, k);
        }
    }
}

template <int n>
void add_field_load(const VARIABLES_T& VARS, std::int32_t e, SYSTEM_VARIABLES_T& SYSVARS) {
    const Integer<n> node = nodes_of<n>(VARS, e);
    Real<n> R;
    field_load(coordinates_of(VARS, node), material_of(VARS, e), values_at(SYSVARS.NODEFIELD, 1, node), R);
    for (int i = 1; i <= n; ++i) SYSVARS.RIGHTSIDEQ(node(i), 1) += R(i);
}

// Where the bar lies in its host element, as weights of the host's nodes that interpolate a field at the bar.
void locate_bar(const VARIABLES_T& VARS, VYZTUZE_INFO& bar) {
    const std::int32_t e = bar.ELEMENT;
    bar.NELNODES = VQ_DATA_MOD::is_triangle(VARS, e) ? 3 : 4;
    const View<std::int32_t, 1> ELNODES(bar.ELNODES, 4);
    Real<4> y{}, z{};
    for (int i = 1; i <= bar.NELNODES; ++i) {
        ELNODES(i) = VARS.ELEMNODES(e, i);
        y(i) = VARS.XY(VARS.ELEMNODES(e, i), 1);
        z(i) = VARS.XY(VARS.ELEMNODES(e, i), 2);
    }
    const Real<3> point{{VARS.XY(bar.NODE, 1), VARS.XY(bar.NODE, 2), 0.0}};
    Real<3> rst;
    std::int32_t steps;
    RST_ITER(2, bar.NELNODES, point, y, z, Real<4>{}, LOCATETOLERANCE, rst, steps);
    const double r = rst(1), s = rst(2);
    Real<4> N;
    if (bar.NELNODES == 3)
        N = {{1.0 - r - s, r, s, 0.0}};  // r, s are the area coordinates of nodes 2 and 3
    else
        SUPORTBASE::GETBASEN(r, s, N);
    std::copy(N.data, N.data + 4, bar.SHAPE);
    bar.RS[0] = r;
    bar.RS[1] = s;
}

}  // namespace

template <int n>
void ADDSTIFF2KG(const Real<n, n>& KE, const Integer<n>& NODES, SPARSEMATRIX& M) {
    for (int i = 1; i <= n; ++i) {
        const std::int32_t row = NODES(i);
        const std::int32_t* first = &M.JA(M.IA(row));
        const std::int32_t* last = first + (M.IA(row + 1) - M.IA(row));
        for (int j = 1; j <= n; ++j) {
            const std::int32_t column = NODES(j);
            if (row > column) continue;
            const std::int32_t* entry = std::lower_bound(first, last, column);
            if (entry == last || *entry != column)
                throw std::logic_error("Err: adding to undefined index in global sparse matrix");
            M.A(M.IA(row) + (entry - first)) += KE(i, j);
        }
    }
}
template void ADDSTIFF2KG(const Real<3, 3>&, const Integer<3>&, SPARSEMATRIX&);
template void ADDSTIFF2KG(const Real<4, 4>&, const Integer<4>&, SPARSEMATRIX&);

void FILLMATRIXANDRIGHTSIDE(LOGICAL FIELDPASS, const VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS,
                            POINTTABLE POINTS) {
    const bool field_pass = VQ_DATA_MOD::is_true(FIELDPASS);
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const bool triangle = VQ_DATA_MOD::is_triangle(VARS, e);
        if (field_pass && triangle) add_field_load<3>(VARS, e, SYSVARS);
        if (field_pass && !triangle) add_field_load<4>(VARS, e, SYSVARS);
        if (!field_pass && triangle) add_element<3>(VARS, e, SYSVARS);
        if (!field_pass && !triangle) add_element<4>(VARS, e, SYSVARS);
    }

    Table<double, 2>& CONSTRAINT = SYSVARS.CONSTRAINT;
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        VYZTUZE_INFO& bar = POINTS(b);
        if (!VQ_DATA_MOD::is_in_system(bar)) continue;
        locate_bar(VARS, bar);
        const double w = bar.EMODUL * bar.AREA;
        CONSTRAINT(bar.NODE, 1) = w;
        CONSTRAINT(bar.NODE, 2) = VARS.XY(bar.NODE, 1) * w;
        CONSTRAINT(bar.NODE, 3) = VARS.XY(bar.NODE, 2) * w;
    }

    for (int k = 1; k <= 3; ++k) {
        double m = 0.0;
        for (std::int32_t i = 1; i <= VARS.NNODES; ++i) m = std::max(m, std::fabs(CONSTRAINT(i, k)));
        if (m == 0.0) continue;  // a single triangle about its own centroid has no linear parts
        for (std::int32_t i = 1; i <= VARS.NNODES; ++i) CONSTRAINT(i, k) /= m;
    }
}

}  // namespace VQ_SYSTEM_MOD
