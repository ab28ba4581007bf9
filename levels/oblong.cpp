// Oblong quadrilaterals in thin walls: from an element through the layers beside it to the free edges on both sides.
#include <algorithm>
#include <tuple>

#include "levels/check.h"

namespace levels {

namespace {

constexpr double MINERROR = 0.05;  // of GJ
constexpr int MAXLAYERS = 64;
constexpr double THIN = 3.0;        // a wall is thin below the section's extent over this
constexpr double MINSTIFF = 0.001;  // of the largest GMOD: softer elements carry no torsion worth a warning

// Mean lengths of the sides 0 and 2 of a quadrilateral, and of the sides 1 and 3; side s runs from corner s to the
// next.
struct Sides {
    double mean[2];
};
Sides sides_of(const Host& t, std::int32_t e) {
    const Corners c = corners_of(t, e);
    double L[4];
    for (int s = 0; s < 4; ++s) L[s] = distance(place_of(t, c.node[s]), place_of(t, c.node[(s + 1) % 4]));
    return {{(L[0] + L[2]) * 0.5, (L[1] + L[3]) * 0.5}};
}

// Quadrilaterals that carry torsion, one for each element.
std::vector<bool> stiff_quadrilaterals(const Host& t) {
    double GMAX = 0.0;
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) GMAX = std::max(GMAX, std::fabs(property(t, e, VQ_GMOD)));
    std::vector<bool> stiff(static_cast<std::size_t>(t.NELEMS));
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
        const double G = std::fabs(property(t, e, VQ_GMOD));
        stiff[e - 1] = corners_of(t, e).n == 4 && G > 0.0 && G >= MINSTIFF * GMAX;
    }
    return stiff;
}

// (4, NELEMS)  the element across each side, 0 where none is. Sides are brought together by their smaller node.
std::vector<std::int32_t> elements_beside(const Host& t, const std::vector<bool>& stiff) {
    struct Side {
        std::int32_t larger, e, s;
    };
    std::vector<std::int64_t> start(static_cast<std::size_t>(t.NNODES) + 1);
    const auto each_side = [&](auto work) {
        for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
            if (!stiff[e - 1]) continue;
            const Corners c = corners_of(t, e);
            for (std::int32_t s = 0; s < 4; ++s) {
                const auto [smaller, larger] = std::minmax({c.node[s], c.node[(s + 1) % 4]});
                work(smaller, Side{larger, e, s});
            }
        }
    };
    each_side([&](std::int32_t smaller, const Side&) { ++start[smaller]; });
    for (std::size_t n = 1; n < start.size(); ++n) start[n] += start[n - 1];
    std::vector<Side> sides(static_cast<std::size_t>(start.back()));
    each_side([&](std::int32_t smaller, const Side& side) { sides[--start[smaller]] = side; });
    std::vector<std::int32_t> beside(4 * stiff.size());
    for (std::size_t n = 1; n < start.size(); ++n) {
        const auto first = sides.begin() + start[n];
        const auto last = n + 1 < start.size() ? sides.begin() + start[n + 1] : sides.end();
        std::sort(first, last,
                  [](const Side& a, const Side& b) { return std::tie(a.larger, a.e) < std::tie(b.larger, b.e); });
        for (auto a = first; last - a > 1; ++a) {
            const auto b = a + 1;
            if (a->larger != b->larger) continue;
            beside[4 * std::size_t(a->e - 1) + a->s] = b->e;
            beside[4 * std::size_t(b->e - 1) + b->s] = a->e;
        }
    }
    return beside;
}

struct Layers {
    int n;
    double thickness;
};

// Adds the layers from element e across its side s to the free edge, at most so many that there are `most`.
void walk(const Host& t, const std::vector<std::int32_t>& beside, std::int32_t e, int s, int most, Layers& layers) {
    while (layers.n < most) {
        const std::int32_t next = beside[4 * std::size_t(e - 1) + s];
        if (next == 0) return;
        const std::int32_t* around = &beside[4 * std::size_t(next - 1)];
        const int entry = static_cast<int>(std::find(around, around + 4, e) - around) % 4;  // % where three meet
        ++layers.n;
        layers.thickness += sides_of(t, next).mean[(entry + 1) % 2];
        e = next;
        s = (entry + 2) % 4;
    }
}

}  // namespace

std::int32_t find_oblong(const Host& t, const std::vector<unsigned char>& used) {
    Point lo{HUGE_VAL, HUGE_VAL}, hi{-HUGE_VAL, -HUGE_VAL};
    for (std::int32_t n = 1; n <= t.NNODES; ++n) {
        if (!(used[n - 1] & BY_ELEMENT)) continue;
        const Point at = place_of(t, n);
        lo = {std::min(lo.y, at.y), std::min(lo.z, at.z)};
        hi = {std::max(hi.y, at.y), std::max(hi.z, at.z)};
    }
    const double extent = std::max(hi.y - lo.y, hi.z - lo.z);
    const std::vector<bool> stiff = stiff_quadrilaterals(t);
    std::vector<std::int32_t> beside;
    std::int32_t found = 0;
    double worst = MINERROR;
    for (std::int32_t e = 1; e <= t.NELEMS; ++e) {
        if (!stiff[e - 1]) continue;
        const Sides sides = sides_of(t, e);
        for (int s = 0; s < 2; ++s) {  // the sides that may run along the wall
            const double rho = sides.mean[s] / sides.mean[1 - s], error = std::fabs(rho * rho - 1.0);
            if (!(error > worst)) continue;
            if (beside.empty()) beside = elements_beside(t, stiff);
            // With more layers the error is below the worst one: the walk may end.
            const int most = static_cast<int>(std::min<double>(MAXLAYERS, std::sqrt(error / worst))) + 1;
            Layers layers{1, sides.mean[1 - s]};
            walk(t, beside, e, s, most, layers);
            walk(t, beside, e, s + 2, most, layers);
            const double n2 = static_cast<double>(layers.n) * layers.n;
            if (layers.n == most || layers.thickness * THIN >= extent || error / n2 <= worst) continue;
            worst = error / n2;
            found = e;
        }
    }
    return found;
}

}  // namespace levels
