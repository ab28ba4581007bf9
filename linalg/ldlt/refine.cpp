// Iterative refinement on the matrix as it was given, and the whole of a solution.
#include <algorithm>
#include <cmath>

#include "linalg/ldlt/kernel.h"
#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

// The equations that count: those of unknowns that are not dead, and every constraint, that is a row without a diagonal
// that touches rows with one. A constraint that depends on others is met with them, and one that is not met must not be
// passed over.
struct Equations {
    const Matrix& A;
    const std::vector<std::int8_t>& dead;
    // Unknowns with a diagonal and those without, warping and multipliers, differ in units: their sizes must not be
    // mixed.
    std::vector<double> largest[2];  // (n)  entry of each row in columns with a diagonal, in others
};

// R = B - A X and the componentwise backward error of each lane (Oettli and Prager; Arioli, Demmel and Duff): the
// largest |r_i| / (|A| |x| + |b|)_i. work (n, LANES)
void residual(const Equations& e, const double* B, const double* X, double* R, double* work, double (&error)[LANES],
              const Kernel& kernel) {
    const Matrix& A = e.A;
    const std::int64_t n = A.n;
    double most[2][LANES] = {};
    for (std::int64_t i = 0; i < n; ++i)
        for (int q = 0; q < LANES; ++q) {
            R[i * LANES + q] = B[i * LANES + q];
            work[i * LANES + q] = std::fabs(B[i * LANES + q]);
            double& m = most[A.a[A.ia[i] - 1] == 0][q];
            m = std::max(m, std::fabs(X[i * LANES + q]));
        }
    kernel.subtract_product(A.n, A.a, A.ia, A.ja, X, R, work);
    for (int q = 0; q < LANES; ++q) error[q] = 0;
    for (std::int64_t i = 0; i < n; ++i) {
        for (int q = 0; q < LANES; ++q) {
            double& r = R[i * LANES + q];
            if (e.dead[i] && !(A.a[A.ia[i] - 1] == 0 && e.largest[0][i] > 0)) r = 0;
            double size = work[i * LANES + q];
            const double bound = std::max(e.largest[0][i] * most[0][q], e.largest[1][i] * most[1][q]);
            if (size < TINY * bound) size += bound;
            const double ratio = r == 0 ? 0 : std::fabs(r) / size;
            error[q] = ratio <= error[q] ? error[q] : ratio;  // keeps a ratio that is not a number
        }
    }
}

}  // namespace

void solve_refined(const Matrix& A, const System& system, const double* B, double* X, double (&error)[LANES],
                   const Kernel& kernel) {
    const std::int64_t size = static_cast<std::int64_t>(A.n) * LANES;
    Equations e{A, system.dead, {std::vector<double>(A.n), std::vector<double>(A.n)}};
    for (std::int32_t i = 0; i < A.n; ++i)
        for (std::int32_t at = A.ia[i] - 1; at < A.ia[i + 1] - 1; ++at) {
            const double a = std::fabs(A.a[at]);
            const std::int32_t j = A.ja[at] - 1;
            double &of_i = e.largest[A.a[A.ia[j] - 1] == 0][i], &of_j = e.largest[A.a[A.ia[i] - 1] == 0][j];
            of_i = std::max(of_i, a);
            of_j = std::max(of_j, a);
        }
    const Buffer<double> R = LINALG::buffer<double>(*system.memory, size);
    const Buffer<double> correction = LINALG::buffer<double>(*system.memory, size);
    const Buffer<double> work = LINALG::buffer<double>(*system.memory, size);
    const auto solve_for = [&](const double* load, double* solution) {
        if (system.general)
            solve_indefinite(system, load, solution, work.get());
        else
            solve(system, load, solution, work.get(), kernel);
    };
    solve_for(B, X);
    residual(e, B, X, R.get(), work.get(), error, kernel);
    bool active[LANES] = {true, true, true, true};  // lanes that gain from another step
    for (int step = 0; step < MAXSTEPS && (active[0] || active[1] || active[2] || active[3]); ++step) {
        solve_for(R.get(), correction.get());
        for (std::int64_t i = 0; i < size; ++i) correction[i] += X[i];
        double corrected[LANES];
        residual(e, B, correction.get(), R.get(), work.get(), corrected, kernel);
        for (int q = 0; q < LANES; ++q) {
            const bool better = active[q] && corrected[q] < error[q];
            active[q] = better && corrected[q] < 0.5 * error[q] && corrected[q] > ACCURATE;
            if (!better) continue;
            error[q] = corrected[q];
            for (std::int64_t i = q; i < size; i += LANES) X[i] = correction[i];
        }
    }
}

}  // namespace LDLT
