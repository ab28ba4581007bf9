// The border after the core is eliminated from it.
#include <algorithm>
#include <cmath>

#include "linalg/ldlt/steps.h"

namespace LDLT {
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

std::int64_t primary_blocks(const Classes& c) {
    return (static_cast<std::int64_t>(c.primary.size()) + LANES - 1) / LANES;
}

Buffer<double> primary_columns(const Classes& c, const Symbolic& S) {
    const std::int64_t block = static_cast<std::int64_t>(S.nodes) * LANES;
    Buffer<double> Y = LINALG::buffer<double>(*c.graph.memory, block * primary_blocks(c));
    std::fill_n(Y.get(), block * primary_blocks(c), 0.0);
    const auto entry = [&](std::int32_t node, std::int32_t primary) -> double& {
        return Y[primary / LANES * block + static_cast<std::int64_t>(S.position[node]) * LANES + primary % LANES];
    };
    for (std::size_t z = 0; z < c.primary.size(); ++z) {
        const std::int32_t row = c.row[c.primary[z]];
        for (std::int32_t at = c.rows.start[row]; at < c.rows.start[row + 1]; ++at) {
            const std::int32_t i = c.rows.column[at];
            if (c.kind[i] == Kind::core) entry(c.place[i], static_cast<std::int32_t>(z)) = c.rows.value[at];
        }
    }
    for (const Tie& t : c.ties) {
        const std::int32_t tie = c.row[t.tie], hung = c.row[t.hung];
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

namespace {

// The border's unknowns are counted as grounded nodes, primaries, seconds.
struct Counts {
    std::size_t grounded, primaries, seconds;
};

Counts count(const System& system) {
    return {static_cast<std::size_t>(system.symbolic.nodes - system.symbolic.pivots), system.classes.primary.size(),
            system.classes.second.size()};
}

// Column z of Y, from one position to the next LANES apart.
double* primary_column(const System& system, std::size_t z) {
    return system.border.Y.get() + z / LANES * lanes_of(system.symbolic.nodes) + z % LANES;
}

// Takes column y - 1 of Y out of those behind it, of each `share` (columns) of it, and gives the products of column y
// with itself and those behind it in the core. For y = 0 there is nothing to take. Lanes are worked on side by side;
// the share of those that stay is 0.
void take_out_before(const System& system, std::size_t y, const std::vector<double>& share,
                     std::vector<double>& product) {
    const std::int64_t pivots = system.symbolic.pivots, nodes = system.symbolic.nodes;
    const double* inverse = system.factor.inverse.data();
    const double *taken = primary_column(system, y > 0 ? y - 1 : 0), *present = primary_column(system, y);
    for (std::size_t block = y / LANES * LANES; block < share.size(); block += LANES) {
        double* Y = system.border.Y.get() + block / LANES * lanes_of(nodes);
        double r[LANES], sum[LANES] = {};
        std::copy_n(&share[block], LANES, r);
        for (std::int64_t p = 0; p < nodes; ++p, Y += LANES) {
            const double t = taken[lanes_of(p)];
            for (int q = 0; q < LANES; ++q) Y[q] -= r[q] * t;
            if (p >= pivots) continue;
            const double u = inverse[p] * present[lanes_of(p)];
            for (int q = 0; q < LANES; ++q) sum[q] += u * Y[q];
        }
        std::copy_n(sum, LANES, &product[block]);
    }
}

// The columns W = D^-1/2 L^-1 C of the primaries as Q R, Q orthogonal and R unit upper triangular, by the modified
// Gram-Schmidt process. Q takes the place of W in Y; at the grounded positions it holds what the same combinations of
// the constraints leave there. Columns that were nearly dependent are orthogonal up to 1e-16 over what was left of
// them, which refinement makes up for.
//
// The multipliers of these combinations are the border's unknowns. Those of the constraints as they were given can be
// so unequal, or so nearly dependent, that products W^T W keep no digit of the weaker ones: on a thin strip at 45
// degrees the two linear constraints differ by (thickness / length)^2. A column that depends on those before it is
// zero in Q and keeps its own length, by which what is left of it at the grounded positions is rounding.
void orthogonalise(const System& system, Border& border) {
    const std::size_t n = system.classes.primary.size();
    std::vector<double> share(static_cast<std::size_t>(primary_blocks(system.classes)) * LANES), product(share.size());
    const auto entry = [n](std::size_t y, std::size_t z) { return z * n + y; };
    border.R.assign(n * n, 0);
    for (std::size_t z = 0; z < n; ++z) border.R[entry(z, z)] = 1;
    border.length.assign(n, 0);
    border.dependent.assign(n, 0);
    for (std::size_t y = 0; y < n; ++y) {
        take_out_before(system, y, share, product);
        std::fill(share.begin(), share.end(), 0.0);
        double whole = product[y];
        for (std::size_t k = 0; k < y; ++k) {
            const double part = border.R[entry(k, y)] * border.length[k];
            whole += part * part;
        }
        whole = std::sqrt(whole);
        border.length[y] = std::sqrt(product[y]);
        if (border.length[y] <= DEPENDENT * whole) {
            border.dependent[y] = 1;
            border.length[y] = whole;
            double* v = primary_column(system, y);
            for (std::int64_t p = 0; p < system.symbolic.pivots; ++p) v[lanes_of(p)] = 0;
            continue;
        }
        for (std::size_t z = y + 1; z < n; ++z) border.R[entry(y, z)] = share[z] = product[z] / product[y];
    }
}

// What elimination of the core leaves among the grounded nodes; rounding counts as 0.
struct CoreRemainder {
    std::vector<double> diagonal;
    std::vector<Remainder> beside;
    bool negative = false;
};

CoreRemainder remainder_of_core(const System& system) {
    const Classes& c = system.classes;
    const Symbolic& S = system.symbolic;
    CoreRemainder rest;
    for (std::int32_t p = S.pivots; p < S.nodes; ++p) rest.diagonal.push_back(c.diagonal[S.node[p]]);
    for (const Remainder& e : system.factor.remainder) {
        if (e.i == e.j)
            rest.diagonal[e.i] += e.value;
        else
            rest.beside.push_back(e);
    }
    for (std::int32_t p = S.pivots; p < S.nodes; ++p) {
        const std::int32_t v = S.node[p];
        for (std::int32_t at = c.graph.start[v]; at < c.graph.start[v + 1]; ++at) {
            const std::int32_t q = S.position[c.graph.column[at]];
            if (q >= S.pivots && q < p) rest.beside.push_back({p - S.pivots, q - S.pivots, c.graph.value[at]});
        }
        double& d = rest.diagonal[p - S.pivots];
        rest.negative = rest.negative || d < -ROUNDING * c.diagonal[v];
        if (d <= ROUNDING * c.diagonal[v]) d = 0;
    }
    return rest;
}

// Brings the column of a primary to length 1.
double scale_of(const Border& border, std::size_t z) { return border.length[z] > 0 ? 1 / border.length[z] : 1; }

// Places in the dense matrix. Grounded nodes and seconds that touch nothing but primaries are thinned out, each kind by
// itself: a second must not take the place of a grounded node. Returns the order of the matrix.
std::size_t choose_places(const System& system, const CoreRemainder& rest, std::vector<std::int32_t>& place) {
    const Classes& c = system.classes;
    const auto [grounded, primaries, seconds] = count(system);
    place.assign(grounded + primaries + seconds, 0);
    std::vector<double> rows;  // of the candidates, one after the other
    std::vector<std::size_t> candidates;
    const auto thin_out = [&, p = primaries] {
        const std::vector<std::int8_t> stays = independent(rows, candidates.size(), p);
        for (std::size_t i = 0; i < candidates.size(); ++i)
            if (!stays[i]) place[candidates[i]] = -1;
        rows.clear();
        candidates.clear();
    };

    std::vector<std::int8_t> coupled(grounded);
    for (const Remainder& e : rest.beside) coupled[e.i] = coupled[e.j] = 1;
    for (std::size_t g = 0; g < grounded; ++g) {
        if (rest.diagonal[g] != 0 || coupled[g]) continue;
        candidates.push_back(g);
        for (std::size_t z = 0; z < primaries; ++z)
            rows.push_back(primary_column(system, z)[lanes_of(system.symbolic.pivots + static_cast<std::int64_t>(g))] *
                           scale_of(system.border, z));
    }
    thin_out();

    std::vector<double> values(primaries);
    for (std::size_t k = 0; k < seconds; ++k) {
        const std::int32_t row = c.row[c.second[k]];
        std::fill(values.begin(), values.end(), 0.0);
        bool alone = true;
        for (std::int32_t at = c.rows.start[row]; at < c.rows.start[row + 1] && alone; ++at) {
            const std::int32_t i = c.rows.column[at];
            alone = c.kind[i] == Kind::primary;
            if (alone) values[c.place[i]] = c.rows.value[at];
        }
        if (!alone) continue;
        solve_transposed(system.border, values.data(), 1);
        for (std::size_t z = 0; z < primaries; ++z) values[z] *= scale_of(system.border, z);
        candidates.push_back(grounded + primaries + k);
        rows.insert(rows.end(), values.begin(), values.end());
    }
    thin_out();

    std::int32_t size = 0;
    for (std::int32_t& p : place)
        if (p == 0) p = size++;
    return static_cast<std::size_t>(size);
}

// The border's matrix less what the core takes from it, both triangles, in the unknowns that `orthogonalise` makes.
std::vector<double> dense_matrix(const System& system, const CoreRemainder& rest, std::size_t size) {
    const Classes& c = system.classes;
    const std::int64_t pivots = system.symbolic.pivots;
    const auto [grounded, primaries, seconds] = count(system);
    std::vector<double> D(size * size);
    const auto add = [&](std::size_t i, std::size_t j, double value) {
        const std::int32_t p = system.border.place[i], q = system.border.place[j];
        if (p < 0 || q < 0) return;
        D[p * size + q] += value;
        if (i != j) D[q * size + p] += value;
    };
    for (std::size_t g = 0; g < grounded; ++g) add(g, g, rest.diagonal[g]);
    for (const Remainder& e : rest.beside) add(e.i, e.j, e.value);
    for (std::size_t z = 0; z < primaries; ++z) {
        const double* v = primary_column(system, z);
        for (std::size_t g = 0; g < grounded; ++g)
            add(g, grounded + z, v[lanes_of(pivots + static_cast<std::int64_t>(g))]);
        if (!system.border.dependent[z])
            add(grounded + z, grounded + z, -system.border.length[z] * system.border.length[z]);
    }

    // entries among primaries and seconds
    std::vector<double> among(primaries * primaries), values(primaries);
    bool any = false;
    for (std::size_t k = 0; k < primaries + seconds; ++k) {
        const std::int32_t row = c.row[k < primaries ? c.primary[k] : c.second[k - primaries]];
        std::fill(values.begin(), values.end(), 0.0);
        for (std::int32_t at = c.rows.start[row]; at < c.rows.start[row + 1]; ++at) {
            const std::int32_t i = c.rows.column[at];
            if (c.kind[i] == Kind::primary) values[c.place[i]] = c.rows.value[at];
            if (c.kind[i] == Kind::second && k >= primaries && primaries + c.place[i] < k)
                add(grounded + k, grounded + primaries + c.place[i], c.rows.value[at]);
        }
        if (k < primaries) {
            any = any || std::any_of(values.begin(), values.end(), [](double v) { return v != 0; });
            std::copy(values.begin(), values.end(), among.begin() + static_cast<std::ptrdiff_t>(k * primaries));
        } else if (system.border.place[grounded + k] >= 0) {
            solve_transposed(system.border, values.data(), 1);
            for (std::size_t z = 0; z < primaries; ++z)
                if (values[z] != 0) add(grounded + k, grounded + z, values[z]);
        }
    }
    if (!any) return D;
    for (std::size_t z = 0; z < primaries; ++z) solve_transposed(system.border, &among[z * primaries], 1);
    for (std::size_t z = 0; z < primaries; ++z) solve_transposed(system.border, &among[z], primaries);
    for (std::size_t z = 0; z < primaries; ++z)
        for (std::size_t y = 0; y <= z; ++y) add(grounded + y, grounded + z, among[y * primaries + z]);
    return D;
}

}  // namespace

void solve_transposed(const Border& border, double* X, std::size_t stride) {
    const std::size_t p = border.length.size();
    for (std::size_t z = 0; z < p; ++z) {
        double& x = X[z * stride];
        for (std::size_t y = 0; y < z; ++y) x -= border.R[z * p + y] * X[y * stride];
    }
}

void solve_upper(const Border& border, double* X, std::size_t stride) {
    const std::size_t p = border.length.size();
    for (std::size_t z = p; z-- > 0;)
        for (std::size_t y = 0; y < z; ++y) X[y * stride] -= border.R[z * p + y] * X[z * stride];
}

void factorise_border(const Matrix& A, System& system) {
    const Classes& c = system.classes;
    const Symbolic& S = system.symbolic;
    const std::size_t grounded = count(system).grounded, primaries = count(system).primaries;
    Border& border = system.border;
    const CoreRemainder rest = remainder_of_core(system);
    orthogonalise(system, border);
    const std::size_t size = choose_places(system, rest, border.place);
    border.unfit = rest.negative || size > MAXBORDER;
    if (border.unfit) return;

    OpenFront f;
    f.n = size;
    f.null = NULLBORDER;
    f.F = dense_matrix(system, rest, size);
    for (std::size_t p = 0; p < size; ++p) f.rows.push_back(static_cast<std::int32_t>(p));
    // The core has given the primaries their scale, unless what they hold of a second is larger than that. A dependent
    // one has nothing but rounding on its diagonal, which must not set it.
    std::vector<double> core(size);  // what the core takes from a diagonal, or took before its column was dependent
    border.scale.assign(size, 1);
    for (std::size_t z = 0; z < primaries; ++z) {
        core[border.place[grounded + z]] = border.length[z] * border.length[z];
        border.scale[border.place[grounded + z]] = scale_of(border, z);
    }
    const auto dead = [](std::int32_t place) { return place < 0; };
    const auto seconds = border.place.begin() + static_cast<std::ptrdiff_t>(grounded + primaries);
    const std::size_t first_second = size - static_cast<std::size_t>(border.place.end() - seconds -
                                                                     std::count_if(seconds, border.place.end(), dead));
    const auto entries = [&](const auto& visit) {
        for (std::size_t j = 0; j < size; ++j)
            for (std::size_t i = j; i < size; ++i)
                visit(i, j, i == j ? std::max(std::fabs(f.F[j * size + i]), core[i]) : f.F[j * size + i]);
    };
    equilibrate(border.scale, entries,
                [&](std::size_t i, std::size_t j) { return core[i] == 0 || i == j || j >= first_second; });
    for (std::size_t j = 0; j < size; ++j)
        for (std::size_t i = 0; i < size; ++i) f.F[j * size + i] *= border.scale[i] * border.scale[j];

    // Seconds last: grounded nodes and primaries by themselves hold the mesh. A second that took a primary away from
    // them, as the node of a bar could in the secondary system, would force a multiplier to 0 and leave the mesh loose.
    f.candidates = f.judged = first_second;
    pivot_front(f, false);
    f.candidates = f.judged = size;
    pivot_front(f, true);
    border.front = closed(f);

    std::vector<std::int8_t> null(size);
    for (std::size_t p = 0; p < size; ++p) null[border.front.rows[p]] = border.front.block[p] == Pivot::null ? 1 : 0;
    system.dead.resize(A.n);
    for (std::int32_t i = 0; i < A.n; ++i) system.dead[i] = c.kind[i] == Kind::empty ? 1 : 0;
    for (std::size_t k = 0; k < border.place.size(); ++k) {
        if (border.place[k] >= 0 && !null[border.place[k]]) continue;
        const std::int32_t unknown = k < grounded               ? c.core[S.node[S.pivots + k]]
                                     : k < grounded + primaries ? c.primary[k - grounded]
                                                                : c.second[k - grounded - primaries];
        system.dead[unknown] = 1;
    }
}

}  // namespace LDLT
