#include "element/suportbase.h"

#include <cmath>
#include <vector>

#include "linalg/usedlapack.h"

namespace SUPORTBASE {

double TRIANGLEAREA(const Real<3, 2>& XYE) {
    const double y1 = XYE(1, 1), y2 = XYE(2, 1), y3 = XYE(3, 1);
    const double z1 = XYE(1, 2), z2 = XYE(2, 2), z3 = XYE(3, 2);
    return ((z2 - z3) * y1 + (z3 - z1) * y2 + (z1 - z2) * y3) * 0.5;
}

double NORM2(const Real<2>& v) { return std::sqrt(v(1) * v(1) + v(2) * v(2)); }

void INVMAT(std::int32_t n, const double* A, std::ptrdiff_t row, std::ptrdiff_t column, double* INVERSE) {
    if (n <= 0) return;
    for (std::ptrdiff_t j = 0; j < n; ++j)
        for (std::ptrdiff_t i = 0; i < n; ++i) INVERSE[i + n * j] = A[i * row + j * column];
    if (n == 2) return USEDLAPACK::invert_written_out<2>(INVERSE);
    if (n == 3) return USEDLAPACK::invert_written_out<3>(INVERSE);
    std::vector<std::int32_t> pivots(static_cast<std::size_t>(n));
    std::vector<double> work(static_cast<std::size_t>(USEDLAPACK::workspace_of_inverse(n)));
    USEDLAPACK::invert(n, INVERSE, pivots.data(), work.data(), static_cast<std::int32_t>(work.size()));
}

void triangle_gradients(const Real<3, 2>& XYE, Real<3>& dNdy, Real<3>& dNdz) {
    Real<3, 3> M;
    for (int j = 1; j <= 3; ++j) {
        M(1, j) = 1.0;
        M(2, j) = XYE(j, 1);
        M(3, j) = XYE(j, 2);
    }
    USEDLAPACK::invert_written_out<3>(M.data);
    for (int i = 1; i <= 3; ++i) {
        dNdy(i) = M(i, 2);
        dNdz(i) = M(i, 3);
    }
}

}  // namespace SUPORTBASE
