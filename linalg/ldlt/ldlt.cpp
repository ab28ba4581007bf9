// The stages in their order.
#include "linalg/ldlt/steps.h"

#include <algorithm>
#include <cmath>

namespace LDLT {
namespace {

enum class Outcome { done, not_definite, general };

// The path for a semidefinite core in a small border. Null pivots of the core join the border in another attempt.
Outcome factorise_bordered(const Matrix& A, bool definite, System& system, const Kernel& kernel) {
    const Outcome otherwise = definite ? Outcome::not_definite : Outcome::general;
    Classes& c = system.classes;
    c = classify(A, *system.memory);
    if (c.negative) return otherwise;
    if (definite && c.core.size() != static_cast<std::size_t>(A.n)) return otherwise;
    if (c.primary.size() > MAXPRIMARIES) return otherwise;
    ground(c, definite);
    for (int attempt = 0; attempt < MAXATTEMPTS; ++attempt) {
        system.symbolic = analyse(c.graph, c.grounded);
        system.border.Y = primary_columns(c, system.symbolic);
        system.factor = factorise(c, system.symbolic, system.border.Y.get(), primary_blocks(c), kernel);
        if (system.factor.negative) return otherwise;
        if (system.factor.null.empty()) {
            factorise_border(A, system);
            c.graph = Lists();  // a tenth of the memory, and nothing reads it any more
            return system.border.unfit ? otherwise : Outcome::done;
        }
        if (definite || system.factor.null.size() > MAXBORDER) return otherwise;
        for (const std::int32_t v : system.factor.null) c.grounded[v] = 1;
    }
    return otherwise;
}

// Columns of B from b on, for as many lanes; spare lanes are 0, and so are columns that are not finite.
void gather(const double* b, std::int64_t n, std::int32_t lanes, const bool (&given)[LANES], double* B) {
    for (std::int64_t i = 0; i < n; ++i)
        for (std::int32_t q = 0; q < LANES; ++q) B[i * LANES + q] = q < lanes && given[q] ? b[q * n + i] : 0;
}

}  // namespace

bool finite(const double* values, std::int64_t count) {
    double sum = 0;
    for (std::int64_t k = 0; k < count; ++k) sum += values[k] * 0;  // 0, or not a number
    return sum == 0;
}

bool solve_symmetric(const Matrix& A, bool definite, std::int32_t nrhs, const double* b, double* x,
                     Instructions instructions, LINALG::Memory& memory) {
    const Kernel& kernel = kernel_of(instructions);
    System system, fallback;
    system.memory = fallback.memory = &memory;
    const Outcome outcome = factorise_bordered(A, definite, system, kernel);
    if (outcome == Outcome::not_definite) return false;
    if (outcome == Outcome::general) {
        system = System();
        system.memory = &memory;
        factorise_indefinite(A, system);
    }
    const std::int64_t n = A.n, size = n * LANES;
    const Buffer<double> B = LINALG::buffer<double>(memory, size), X = LINALG::buffer<double>(memory, size);
    Buffer<double> other;
    for (std::int32_t column = 0; column < nrhs; column += LANES) {
        const std::int32_t lanes = std::min(nrhs - column, LANES);
        bool given[LANES] = {};
        for (std::int32_t q = 0; q < lanes; ++q) given[q] = finite(b + (column + q) * n, n);
        gather(b + column * n, n, lanes, given, B.get());
        Quality quality = solve_refined(A, system, B.get(), X.get(), kernel);
        const auto worst = [](const Quality& of, std::int32_t q) {
            return std::isnan(of.error[q]) ? INFINITY : std::max(of.error[q], of.doubt[q]);
        };
        bool converged = true;
        for (std::int32_t q = 0; q < lanes; ++q) converged = converged && worst(quality, q) <= CONVERGED;
        if (!converged && !system.general && !definite) {
            if (!fallback.general) factorise_indefinite(A, fallback);
            if (!other) other = LINALG::buffer<double>(memory, size);
            const Quality second = solve_refined(A, fallback, B.get(), other.get(), kernel);
            for (std::int32_t q = 0; q < lanes; ++q) {
                if (worst(quality, q) <= CONVERGED || !(worst(second, q) < worst(quality, q))) continue;
                quality.error[q] = second.error[q];
                for (std::int64_t i = q; i < size; i += LANES) X[i] = other[i];
            }
        }
        for (std::int32_t q = 0; q < lanes; ++q) {
            double* solution = x + (column + q) * n;
            if (!(quality.error[q] <= ACCEPTED)) return false;
            for (std::int64_t i = 0; i < n; ++i) solution[i] = given[q] ? X[i * LANES + q] : NAN;
            if (given[q] && !finite(solution, n)) return false;
        }
    }
    return true;
}

}  // namespace LDLT
