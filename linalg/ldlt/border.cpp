// The border after the core is eliminated from it.
#include <algorithm>
#include <cmath>

#include "linalg/ldlt/ldlt.h"

namespace LDLT {
namespace {

// Rows of the border that touch nothing but the p primaries: at most p of them are independent, and the rest can not
// hold a pivot. Returns for each whether it stays, chosen by elimination with complete pivoting. rows (count, p), one
// after the other, is used up.
std::vector<std::int8_t> independent(std::vector<double>& rows, std::size_t count, std::size_t p) {
    std::vector<std::int8_t> stays(count, count <= p ? 1 : 0);
    if (count <= p) return stays;
    for (std::size_t i = 0; i < count; ++i) {
        double* row = rows.data() + i * p;
        double largest = 0;
        for (std::size_t z = 0; z < p; ++z) largest = std::max(largest, std::fabs(row[z]));
        if (largest > 0)
            for (std::size_t z = 0; z < p; ++z) row[z] /= largest;
    }
    for (std::size_t step = 0; step < p; ++step) {
        std::size_t pivot = 0, column = 0;
        double largest = 0;
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t z = 0; z < p && !stays[i]; ++z)
                if (std::fabs(rows[i * p + z]) > largest) {
                    largest = std::fabs(rows[i * p + z]);
                    pivot = i;
                    column = z;
                }
        if (largest < NULLBORDER) break;
        stays[pivot] = 1;
        const double* row = &rows[pivot * p];
        for (std::size_t i = 0; i < count; ++i) {
            if (stays[i]) continue;
            const double w = rows[i * p + column] / row[column];
            for (std::size_t z = 0; z < p; ++z) rows[i * p + z] -= w * row[z];
            rows[i * p + column] = 0;
        }
    }
    return stays;
}

}  // namespace

std::int64_t primary_blocks(const Classes& c) {
    return (static_cast<std::int64_t>(c.primary.size()) + LANES - 1) / LANES;
}

Buffer<double> primary_columns(const Classes& c, const Symbolic& S) {
    const std::int64_t block = static_cast<std::int64_t>(S.nodes) * LANES;
    Buffer<double> Y = buffer<double>(block * primary_blocks(c));
    std::fill_n(Y.get(), block * primary_blocks(c), 0.0);
    const auto entry = [&](std::int32_t node, std::int32_t primary) -> double& {
        return Y[primary / LANES * block + static_cast<std::int64_t>(S.position[node]) * LANES + primary % LANES];
    };
    for (std::size_t z = 0; z < c.primary.size(); ++z) {
        const std::int32_t row = c.slim[c.primary[z]];
        for (std::int32_t at = c.rows.start[row]; at < c.rows.start[row + 1]; ++at) {
            const std::int32_t i = c.rows.column[at];
            if (c.kind[i] == Kind::core) entry(c.place[i], static_cast<std::int32_t>(z)) = c.rows.value[at];
        }
    }
    for (const Tie& t : c.ties) {
        const std::int32_t tie = c.slim[t.tie], hung = c.slim[t.hung];
        for (std::int32_t at = c.rows.start[hung]; at < c.rows.start[hung + 1]; ++at) {
            const std::int32_t z = c.rows.column[at];
            if (z == t.tie) continue;
            for (std::int32_t k = c.rows.start[tie]; k < c.rows.start[tie + 1]; ++k) {
                const std::int32_t i = c.rows.column[k];
                if (i != t.hung) entry(c.place[i], c.place[z]) -= c.rows.value[k] / t.s * c.rows.value[at];
            }
        }
    }
    return Y;
}

void factorise_border(const Matrix& A, System& system) {
    const Classes& c = system.classes;
    const Symbolic& S = system.symbolic;
    const std::vector<double>& inverse = system.factor.inverse;
    const std::size_t primaries = c.primary.size(), seconds = c.second.size();
    const std::size_t grounded = static_cast<std::size_t>(S.nodes - S.pivots);
    const std::int64_t block = static_cast<std::int64_t>(S.nodes) * LANES;
    Border& border = system.border;
    const auto column = [&](std::size_t z) { return border.Y.get() + z / LANES * block + z % LANES; };

    // What is left among the grounded nodes; rounding counts as 0.
    std::vector<double> left(grounded), original(grounded);
    std::vector<Remainder> beside;
    std::vector<std::int8_t> bare(grounded, 1);
    for (std::size_t g = 0; g < grounded; ++g) left[g] = original[g] = c.diagonal[S.node[S.pivots + g]];
    for (const Remainder& e : system.factor.remainder) {
        if (e.i == e.j)
            left[e.i] += e.value;
        else
            beside.push_back(e);
    }
    for (std::size_t g = 0; g < grounded; ++g) {
        const std::int32_t v = S.node[S.pivots + g];
        for (std::int32_t at = c.graph.start[v]; at < c.graph.start[v + 1]; ++at) {
            const std::int32_t h = S.position[c.graph.column[at]] - S.pivots;
            if (h >= 0 && h < static_cast<std::int32_t>(g))
                beside.push_back({static_cast<std::int32_t>(g), h, c.graph.value[at]});
        }
        if (left[g] < -ROUNDING * original[g]) {
            border.negative = true;
            return;
        }
        if (left[g] <= ROUNDING * original[g]) left[g] = 0;
        if (left[g] != 0) bare[g] = 0;
    }
    for (const Remainder& e : beside) bare[e.i] = bare[e.j] = 0;

    // Which grounded nodes and seconds stay.
    std::vector<double> rows;
    std::vector<std::size_t> from;
    border.place.assign(grounded + primaries + seconds, 0);
    const auto keep_independent = [&] {
        const std::vector<std::int8_t> stays = independent(rows, from.size(), primaries);
        for (std::size_t i = 0; i < from.size(); ++i)
            if (!stays[i]) border.place[from[i]] = -1;
        rows.clear();
        from.clear();
    };
    for (std::size_t g = 0; g < grounded; ++g) {
        if (!bare[g]) continue;
        from.push_back(g);
        for (std::size_t z = 0; z < primaries; ++z) rows.push_back(column(z)[(S.pivots + g) * LANES]);
    }
    keep_independent();
    for (std::size_t k = 0; k < seconds; ++k) {
        const std::int32_t row = c.slim[c.second[k]];
        std::vector<double> values(primaries);
        bool alone = true;
        for (std::int32_t at = c.rows.start[row]; at < c.rows.start[row + 1]; ++at) {
            const std::int32_t i = c.rows.column[at];
            alone = alone && c.kind[i] == Kind::primary;
            if (alone) values[c.place[i]] = c.rows.value[at];
        }
        if (!alone) continue;
        from.push_back(grounded + primaries + k);
        rows.insert(rows.end(), values.begin(), values.end());
    }
    keep_independent();
    std::size_t size = 0;
    for (std::int32_t& place : border.place)
        if (place == 0) place = static_cast<std::int32_t>(size++);

    // The dense matrix
    if (size > MAXBORDER) {
        border.negative = true;
        return;
    }
    std::vector<double> D(size * size);
    std::vector<std::int8_t> late(size);
    std::vector<double> core_left(size);  // of a constraint, what elimination of the core leaves on its diagonal; else 0
    const auto add = [&](std::size_t i, std::size_t j, double value) {
        const std::int32_t p = border.place[i], q = border.place[j];
        if (p < 0 || q < 0) return;
        D[p * size + q] += value;
        if (i != j) D[q * size + p] += value;
    };
    for (std::size_t g = 0; g < grounded; ++g) {
        add(g, g, left[g]);
        for (std::size_t z = 0; z < primaries; ++z) add(g, grounded + z, column(z)[(S.pivots + g) * LANES]);
    }
    for (const Remainder& e : beside) add(e.i, e.j, e.value);
    for (std::size_t z = 0; z < primaries; ++z)
        for (std::size_t y = 0; y <= z; ++y) {
            const double *u = column(y), *v = column(z);
            double sum = 0;
            for (std::int32_t p = 0; p < S.pivots; ++p)
                sum += u[static_cast<std::int64_t>(p) * LANES] * inverse[p] * v[static_cast<std::int64_t>(p) * LANES];
            add(grounded + y, grounded + z, -sum);
            if (y == z && border.place[grounded + z] >= 0) core_left[border.place[grounded + z]] = sum;
        }
    for (std::size_t k = 0; k < primaries + seconds; ++k) {
        const std::int32_t row = c.slim[k < primaries ? c.primary[k] : c.second[k - primaries]];
        for (std::int32_t at = c.rows.start[row]; at < c.rows.start[row + 1]; ++at) {
            const std::int32_t i = c.rows.column[at];
            if (c.kind[i] != Kind::primary && c.kind[i] != Kind::second) continue;
            const std::size_t l = c.kind[i] == Kind::primary ? c.place[i] : primaries + c.place[i];
            if (l < k) add(grounded + k, grounded + l, c.rows.value[at]);
        }
        if (k >= primaries && border.place[grounded + k] >= 0) late[border.place[grounded + k]] = 1;
    }
    border.dense = factorise_dense(std::move(D), late, core_left);

    // dead unknowns
    std::vector<std::int8_t> null(size);
    for (std::size_t p = 0; p < size; ++p)
        if (border.dense.block[p] == Pivot::null) null[border.dense.row[p]] = 1;
    system.dead.assign(A.n, 0);
    for (std::int32_t i = 0; i < A.n; ++i) system.dead[i] = c.kind[i] == Kind::empty;
    for (std::size_t k = 0; k < border.place.size(); ++k) {
        const std::int32_t unknown = k < grounded               ? c.core[S.node[S.pivots + k]]
                                     : k < grounded + primaries ? c.primary[k - grounded]
                                                                : c.second[k - grounded - primaries];
        if (border.place[k] < 0 || null[border.place[k]]) system.dead[unknown] = 1;
    }
}

}  // namespace LDLT
