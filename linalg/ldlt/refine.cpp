// Iterative refinement on the matrix as it was given, and the whole of a solution.
#include <algorithm>
#include <cmath>

#include "linalg/ldlt/kernel.h"
#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

// What an equation says of a solution. Those of unknowns that are not dead count, and so does every constraint, that is
// a row without a diagonal that touches rows with one: one that depends on others is met with them, and one that is not
// met must not be passed over. A dead row that touches several multipliers alone, as that of a node without stiffness,
// gives cause for doubt where it is not met. One that touches a single multiplier, as that of a bar's node in the
// secondary system, contradicts the mesh by design.
enum class Role : std::int8_t { passed_over, counts, doubted };

struct Equations {
    const Matrix& A;
    // Unknowns with a diagonal and those without, warping and multipliers, differ in units: their sizes must not be
    // mixed.
    std::vector<double> largest[2];  // (n)  entry of each row in columns with a diagonal, in others
    std::vector<Role> role;          // (n)
};

Equations equations_of(const Matrix& A, const std::vector<std::int8_t>& dead) {
    Equations e{A, {std::vector<double>(A.n), std::vector<double>(A.n)}, std::vector<Role>(A.n, Role::counts)};
    for (std::int32_t i = 0; i < A.n; ++i)
        for (std::int32_t at = A.ia[i] - 1; at < A.ia[i + 1] - 1; ++at) {
            const double a = std::fabs(A.a[at]);
            const std::int32_t j = A.ja[at] - 1;
            double &of_i = e.largest[A.a[A.ia[j] - 1] == 0][i], &of_j = e.largest[A.a[A.ia[i] - 1] == 0][j];
            of_i = std::max(of_i, a);
            of_j = std::max(of_j, a);
        }
    if (std::find(dead.begin(), dead.end(), 1) == dead.end()) return e;
    std::vector<std::int8_t> touched(A.n);  // by dead rows: 0, 1, 2 and more
    for_each_entry(A, [&](std::int32_t i, std::int32_t j, double) {
        if (dead[i]) touched[i] = std::min<std::int8_t>(touched[i] + 1, 2);
        if (dead[j]) touched[j] = std::min<std::int8_t>(touched[j] + 1, 2);
    });
    for (std::int32_t i = 0; i < A.n; ++i) {
        const bool diagonal = A.a[A.ia[i] - 1] != 0;
        if (!dead[i] || (!diagonal && e.largest[0][i] > 0)) continue;
        e.role[i] = !diagonal && touched[i] > 1 ? Role::doubted : Role::passed_over;
    }
    return e;
}

// R = B - A X, 0 where an equation does not count, and the componentwise backward error of each lane (Oettli and
// Prager; Arioli, Demmel and Duff): the largest |r_i| / (|A| |x| + |b|)_i. work (n, LANES)
void residual(const Equations& e, const double* B, const double* X, double* R, double* work, Quality& quality,
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
    quality = Quality();
    for (std::int64_t i = 0; i < n; ++i) {
        double(&largest)[LANES] = e.role[i] == Role::doubted ? quality.doubt : quality.error;
        for (int q = 0; q < LANES; ++q) {
            double& r = R[i * LANES + q];
            if (e.role[i] == Role::passed_over) r = 0;
            double size = work[i * LANES + q];
            const double bound = std::max(e.largest[0][i] * most[0][q], e.largest[1][i] * most[1][q]);
            if (size < TINY * bound) size += bound;
            const double ratio = r == 0 ? 0 : std::fabs(r) / size;
            largest[q] = ratio <= largest[q] ? largest[q] : ratio;  // keeps a ratio that is not a number
            if (e.role[i] == Role::doubted) r = 0;
        }
    }
}

}  // namespace

Quality solve_refined(const Matrix& A, const System& system, const double* B, double* X, const Kernel& kernel) {
    const std::int64_t size = static_cast<std::int64_t>(A.n) * LANES;
    const Equations e = equations_of(A, system.dead);
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
    Quality quality;
    residual(e, B, X, R.get(), work.get(), quality, kernel);
    bool active[LANES] = {true, true, true, true};  // lanes that gain from another step
    for (int step = 0; step < MAXSTEPS && (active[0] || active[1] || active[2] || active[3]); ++step) {
        solve_for(R.get(), correction.get());
        for (std::int64_t i = 0; i < size; ++i) correction[i] += X[i];
        Quality corrected;
        residual(e, B, correction.get(), R.get(), work.get(), corrected, kernel);
        for (int q = 0; q < LANES; ++q) {
            const double before = quality.error[q], after = corrected.error[q];
            const bool better = active[q] && after < before;
            active[q] = better && after < 0.5 * before && after > ACCURATE;
            if (!better) continue;
            quality.error[q] = after;
            quality.doubt[q] = corrected.doubt[q];
            for (std::int64_t i = q; i < size; i += LANES) X[i] = correction[i];
        }
    }
    return quality;
}

}  // namespace LDLT
