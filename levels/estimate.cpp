#include "levels/estimate.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace levels {
namespace {

// Where nothing is known of an error: the orders p that are believed, 0.9 to 2.2, as powers 2^p.
constexpr double MINFALL = 1.866065983073615, MAXFALL = 4.59479341998814;
// Shares in the bound, found on random meshes (docs/levels.md): of the second correction, and of what an order that the
// values show would change.
constexpr double SECOND = 3, DOUBT = 0.3;
constexpr double MOST = 0.1;  // of the correction, where it is a series

// The order that three values show.
Estimate fitted(double v1, double v2, double d1, double d2) {
    if (d2 == 0 || !(d1 / d2 > 1)) return {v2, std::max(std::fabs(d1), std::fabs(d2))};
    const double fall = std::clamp(d1 / d2, MINFALL, MAXFALL), c = d2 / (fall - 1);
    const double e = v2 + c, second_order = v2 + d2 / 3, before = v1 + d1 / (fall - 1);
    return {e, std::max({std::fabs(e - second_order), std::fabs(e - before) / 2, std::fabs(c)})};
}

// Both parts of the error taken out, one after the other (Romberg's scheme).
Estimate known(double v1, double v2, double d1, double d2, const Falls& falls) {
    const double before = v1 + d1 / (falls.first - 1), first = v2 + d2 / (falls.first - 1);
    const double e = first + (first - before) / (falls.second - 1);
    const double otherwise = fitted(v1, v2, d1, d2).value;
    const double not_falling = std::fabs(d2) < std::fabs(d1) ? 0 : std::fabs(d2);
    const double second = std::fabs(e - first), all = std::fabs(e - v2);
    const double rest = falls.third > 0 ? std::min(falls.third * second / all * second, MOST * all)
                                        : std::max(SECOND * second, DOUBT * std::fabs(e - otherwise));
    return {e, std::max({rest, falls.share * all, not_falling})};
}

}  // namespace

Estimate estimate(const double* values, int count, const Falls& falls, double floor) {
    int finite = 0;
    while (finite < count && std::isfinite(values[count - 1 - finite])) ++finite;
    const double v2 = values[count - 1];
    if (finite < 2) return {v2, std::numeric_limits<double>::infinity()};
    const double v1 = values[count - 2], d2 = v2 - v1;
    if (finite == 2) {
        const double first = falls.first > 0 ? falls.first : SMOOTH.first;
        return {v2 + d2 / (first - 1), std::max(std::fabs(d2), floor)};
    }
    const double d1 = v1 - values[count - 3];
    if (std::max(std::fabs(d1), std::fabs(d2)) <= floor) return {v2, floor};
    const Estimate e = falls.first > 0 ? known(v1, v2, d1, d2, falls) : fitted(v1, v2, d1, d2);
    return {e.value, std::max(e.bound, floor)};
}

}  // namespace levels
