#include "kit/analysis/patch.h"

#include <algorithm>
#include <cmath>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double TOLD = 0.03;  // of a term's size, what the terms before it must leave of it

}  // namespace

Neighbours neighbours_of(const std::vector<std::array<std::int32_t, 4>>& elements, std::size_t spots) {
    Neighbours n;
    n.begin.assign(spots + 1, 0);
    const auto corners = [](const std::array<std::int32_t, 4>& c) { return c[2] == c[3] ? 3 : 4; };
    for (const auto& c : elements)
        for (int k = 0; k < corners(c); ++k) ++n.begin[c[k] + 1];
    for (std::size_t i = 0; i < spots; ++i) n.begin[i + 1] += n.begin[i];
    n.element.resize(n.begin.back());
    std::vector<std::int32_t> end(n.begin.begin(), n.begin.end() - 1);
    for (std::size_t e = 0; e < elements.size(); ++e)
        for (int k = 0; k < corners(elements[e]); ++k) n.element[end[elements[e][k]]++] = static_cast<std::int32_t>(e);
    return n;
}

void grow(const Neighbours& around, const std::vector<std::array<std::int32_t, 4>>& elements, Patch& patch) {
    const auto add = [](std::vector<std::int32_t>& list, std::int32_t value) {
        if (std::find(list.begin(), list.end(), value) == list.end()) list.push_back(value);
    };
    const std::size_t spots = patch.spots.size(), before = patch.elements.size();
    for (std::size_t i = 0; i < spots; ++i)
        for (std::int32_t k = around.begin[patch.spots[i]]; k < around.begin[patch.spots[i] + 1]; ++k)
            add(patch.elements, around.element[k]);
    for (std::size_t e = before; e < patch.elements.size(); ++e)
        for (const std::int32_t spot : elements[patch.elements[e]]) add(patch.spots, spot);
}

// Gram and Schmidt's way, column by column and the fields after the terms, twice over for the sake of rounding.
bool fit(int degree, const Point& at, const std::vector<Point>& points, const std::vector<double>& values, int count,
         bool anyway, Fit* fits) {
    const std::size_t rows = points.size(), terms = static_cast<std::size_t>((degree + 1) * (degree + 2) / 2),
                      fields = static_cast<std::size_t>(count);
    if (rows < terms && !anyway) return false;
    double reach = 0;
    for (const Point& p : points) reach = std::max({reach, std::abs(p.y - at.y), std::abs(p.z - at.z)});
    if (reach == 0) reach = 1;
    std::vector<double> a(rows * (terms + fields));
    for (std::size_t i = 0; i < rows; ++i) {
        const double y = (points[i].y - at.y) / reach, z = (points[i].z - at.z) / reach;
        const double of[10] = {1, y, z, y * y, y * z, z * z, y * y * y, y * y * z, y * z * z, z * z * z};
        for (std::size_t k = 0; k < terms; ++k) a[k * rows + i] = of[k];
        for (std::size_t k = 0; k < fields; ++k) a[(terms + k) * rows + i] = values[i * fields + k];
    }
    const auto dot_of = [&](std::size_t j, std::size_t k) {
        double sum = 0;
        for (std::size_t i = 0; i < rows; ++i) sum += a[j * rows + i] * a[k * rows + i];
        return sum;
    };
    std::array<std::array<double, 13>, 10> R{};  // of each term over those before it; columns of fields behind
    for (std::size_t k = 0; k < terms + fields; ++k) {
        const double size = std::sqrt(dot_of(k, k));
        for (int twice = 0; twice < 2; ++twice)
            for (std::size_t j = 0; j < std::min(k, terms); ++j) {
                if (R[j][j] == 0) continue;
                const double share = dot_of(j, k);
                R[j][k] += share;
                for (std::size_t i = 0; i < rows; ++i) a[k * rows + i] -= share * a[j * rows + i];
            }
        if (k >= terms) continue;
        const double left = std::sqrt(dot_of(k, k));
        if (!(left > TOLD * size)) {
            if (!anyway) return false;
            continue;
        }
        R[k][k] = left;
        for (std::size_t i = 0; i < rows; ++i) a[k * rows + i] /= left;
    }
    for (std::size_t f = 0; f < fields; ++f) {
        std::array<double, 10> x{};
        for (std::size_t k = terms; k-- > 0;) {
            if (R[k][k] == 0) continue;
            x[k] = R[k][terms + f];
            for (std::size_t j = k + 1; j < terms; ++j) x[k] -= R[k][j] * x[j];
            x[k] /= R[k][k];
        }
        fits[f] = {x[0], x[1] / reach, x[2] / reach};
    }
    return true;
}

}  // namespace velquor
