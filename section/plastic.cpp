// The plastic neutral axis by bisection, every element clipped exactly by the line. In a pass the line stands at p = L;
// p runs along the direction's axis, q along the other, and "above" is the side of larger p.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <initializer_list>

#include "section/angle.h"
#include "section/basicchar.h"

namespace BASICCHAR_MOD {

namespace {

constexpr double ONLINE = 1e-12;           // a corner this near to the line lies on it
constexpr double MINCOEFFICIENT = 1e-12f;  // single precision on purpose: compared as 9.99999996004197e-13
constexpr double MINSTEP = 1e-9;           // the bisection ends when the line moves by less

// The section as one call sees it: the working frame, and of each element that takes part what does not depend on the
// line.
struct PlasticSection {
    Table<double, 1> p, q;  // (NNODES)
    double lo, hi;          // bounds of p over all nodes, also of those that nothing uses
    std::int32_t count;     // elements that take part, in table order; only so many entries of the following are filled
    Table<std::int32_t, 1> element;
    Table<double, 1> C;               // centroid along p
    Table<double, 1> PMIN, PMAX;      // least and largest p of its corners, ONLINE towards the inside
    Table<double, 1> FABOVE, FBELOW;  // strengths above and below the line
    Table<double, 1> UP, DOWN;        // its whole area times these
};

// What a cut element adds. m1 and m2 go into the sum of first moments one after the other; m2 is 0 where there is one
// sum.
struct CutShares {
    double FUP, FDOWN;
    double m1, m2;
    double SUMM;
};

// By the formula of Heron. Of a sliver the radicand may come out below 0 and counts as 0.
double heron(double a, double b, double d) {
    const double s = (a + b + d) * 0.5;
    const double radicand = (s - a) * s * (s - b) * (s - d);
    return radicand < 0.0 ? 0.0 : std::sqrt(radicand);
}

double hypotenuse(double a, double b) { return std::sqrt(a * a + b * b); }

// What is left of an element after the cut, of area R and signed first moment M about the line: its area and its
// absolute first moment. Within rounding of a corner on the line nothing may be left.
void remainder_of(double R, double M, double& area, double& moment) {
    area = moment = 0.0;
    if (R <= 0.0) return;
    const double r = M / R;
    area = R;
    moment = std::fabs(r) * R;
}

// Where edges cross the line, held as q: X(1) on the first edge in node order, X(2) on the second.
Real<2> crossings(const Real<4>& p, const Real<4>& q, const Integer<4>& above, int corners, double L) {
    Real<2> X{{0.0, 0.0}};
    int found = 0;
    for (int a = 1; a <= corners && found < 2; ++a) {
        const int b = a % corners + 1;
        if (above(a) == above(b)) continue;
        const bool upright = std::fabs(p(b) - p(a)) < ONLINE || std::fabs(q(b) - q(a)) < ONLINE;
        X(++found) = upright ? (corners == 3 ? q(a) : q(b)) : q(a) + (L - p(a)) / ((p(b) - p(a)) / (q(b) - q(a)));
    }
    return X;
}

// One corner alone on its side: every cut triangle, and a quadrilateral with one or three corners above.
CutShares cut_one_corner(const Real<4>& p, const Real<4>& q, const Integer<4>& above, int corners, int NUP, double L,
                         double A, double C, double FABOVE, double FBELOW) {
    const bool alone_above = NUP == 1;
    int T = 1;
    while (T < corners && (above(T) != 0) != alone_above) ++T;

    const Real<2> X = crossings(p, q, above, corners, L);
    const double h = L - p(T);
    const double a = std::fabs(X(1) - X(2)), b = hypotenuse(X(1) - q(T), h), d = hypotenuse(X(2) - q(T), h);
    double AT = heron(a, b, d);
    const double t = -h / 3.0;
    const double m1 = std::fabs(t) * AT;
    if (corners == 3 && AT < ONLINE) AT = 0.0;
    double R, m2;
    remainder_of(A - AT, A * (C - L) - t * AT, R, m2);

    // The whole moment takes one strength, not each part its own.
    const double strength = corners == 3 && alone_above ? FBELOW : FABOVE;
    if (alone_above) return {AT * FABOVE, R * FBELOW, m1, m2, (m1 + m2) * strength};
    return {R * FABOVE, AT * FBELOW, m1, m2, (m1 + m2) * strength};
}

// A quadrilateral with two corners on each side. P is the corner above next to the first crossing, Q the other one; the
// part above, (X1, X2, Q, P), is split along the diagonal from X2 to P.
CutShares cut_two_corners(const Real<4>& p, const Real<4>& q, const Integer<4>& above, double L, double A, double C,
                          double FABOVE, double FBELOW, double FPOS) {
    int U1 = 1;
    while (U1 < 3 && above(U1) == 0) ++U1;
    int U2 = U1 + 1;
    while (U2 < 4 && above(U2) == 0) ++U2;
    const bool first_two = U1 == 1 && U2 == 2;
    const int P = first_two ? U2 : U1, Q = first_two ? U1 : U2;

    const Real<2> X = crossings(p, q, above, 4, L);
    const double a = std::fabs(X(1) - X(2));
    const double b = hypotenuse(X(1) - q(P), L - p(P));
    const double g = hypotenuse(X(2) - q(P), L - p(P));
    const double d = hypotenuse(p(P) - p(Q), q(P) - q(Q));
    const double f = hypotenuse(X(2) - q(Q), L - p(Q));
    const double A1 = heron(a, b, g), A2 = heron(g, d, f);
    const double t1 = (p(P) - L) / 3.0, t2 = ((p(Q) - L) - L + p(P)) / 3.0;
    double R, mR;
    remainder_of(A - A1 - A2, A * (C - L) - t1 * A1 - t2 * A2, R, mR);
    const double m = std::fabs(t1) * A1 + std::fabs(t2) * A2 + mR;
    return {(A1 + A2) * FABOVE, R * FBELOW, m, 0.0, m * FPOS};  // FPOS for both signs of the direction
}

CutShares cut_element(const VARIABLES_T& VARS, const PlasticSection& section, std::int32_t n, double L) {
    const std::int32_t e = section.element(n);
    const int corners = VQ_DATA_MOD::is_triangle(VARS, e) ? 3 : 4;
    Real<4> p{}, q{};
    Integer<4> above{};
    int NUP = 0;
    for (int i = 1; i <= corners; ++i) {
        p(i) = section.p(VARS.ELEMNODES(e, i));
        q(i) = section.q(VARS.ELEMNODES(e, i));
        above(i) = p(i) + ONLINE > L ? 1 : 0;
        NUP += above(i);
    }
    const double A = VARS.ELEMAREA(e), C = section.C(n), FABOVE = section.FABOVE(n), FBELOW = section.FBELOW(n);
    if (corners == 4 && NUP == 2)
        return cut_two_corners(p, q, above, L, A, C, FABOVE, FBELOW, VARS.ELEMPROP(e, VQ_FPOS));
    return cut_one_corner(p, q, above, corners, NUP, L, A, C, FABOVE, FBELOW);
}

// Frame, bounds and the elements that take part.
void set_up(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, std::int32_t DIRECTION, std::int32_t STAGE,
            PlasticSection& section) {
    const auto [c, s] = direction_of(CHAR.ALPHA);
    Real<2, 2> R{{c, -s, s, c}};
    for (double& coefficient : R.data)
        if (std::fabs(coefficient) < MINCOEFFICIENT) coefficient = 0.0;
    const int along = std::abs(DIRECTION), across = 3 - along;
    // Coordinate k of (y, z) in the working frame; the first stage keeps the host's.
    const auto turned = [&](int k, double y, double z) {
        return STAGE == 0 ? (k == 1 ? y : z) : R(k, 1) * y + R(k, 2) * z;
    };

    section.p.allocate(VARS.NNODES);
    section.q.allocate(VARS.NNODES);
    section.lo = 1000000000.0;
    section.hi = -1000000000.0;
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) {
        section.p(i) = turned(along, VARS.XY(i, 1), VARS.XY(i, 2));
        section.q(i) = turned(across, VARS.XY(i, 1), VARS.XY(i, 2));
        if (section.p(i) < section.lo) section.lo = section.p(i);
        if (section.p(i) > section.hi) section.hi = section.p(i);
    }

    section.element.allocate(VARS.NELEMS);
    for (Table<double, 1>* table :
         {&section.C, &section.PMIN, &section.PMAX, &section.FABOVE, &section.FBELOW, &section.UP, &section.DOWN})
        table->allocate(VARS.NELEMS);
    const double ELIM = (CHAR.EREF + 10.0) / 1000000.0;
    const int above = DIRECTION > 0 ? VQ_FPOS : VQ_FNEG, below = DIRECTION > 0 ? VQ_FNEG : VQ_FPOS;
    const double YC = STAGE == 0 ? 0.0 : CHAR.YC, ZC = STAGE == 0 ? 0.0 : CHAR.ZC;
    std::int32_t n = 0;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        if (!(VARS.ELEMPROP(e, VQ_MATFLAG) >= 0.5 && VARS.ELEMPROP(e, VQ_EMOD) >= ELIM)) continue;
        ++n;
        section.element(n) = e;
        // The element centroids are not centred with XY.
        section.C(n) = turned(along, VARS.ELEMYC(e) - YC, VARS.ELEMZC(e) - ZC);
        double pmin = section.p(VARS.ELEMNODES(e, 1)), pmax = pmin;
        for (int i = 2; i <= 4; ++i) {
            const double p = section.p(VARS.ELEMNODES(e, i));
            pmin = std::min(pmin, p);
            pmax = std::max(pmax, p);
        }
        section.PMIN(n) = pmin + ONLINE;
        section.PMAX(n) = pmax - ONLINE;
        section.FABOVE(n) = VARS.ELEMPROP(e, above);
        section.FBELOW(n) = VARS.ELEMPROP(e, below);
        section.UP(n) = VARS.ELEMAREA(e) * section.FABOVE(n);
        section.DOWN(n) = VARS.ELEMAREA(e) * section.FBELOW(n);
    }
    section.count = n;
}

// Strength-weighted areas on the two sides of the line.
void weigh_sides(const VARIABLES_T& VARS, const PlasticSection& section, double L, double& FUP, double& FDOWN) {
    FUP = FDOWN = 0.0;
    for (std::int32_t n = 1; n <= section.count; ++n) {
        if (section.PMIN(n) >= L) {
            FUP += section.UP(n);
        } else if (section.PMAX(n) <= L) {
            FDOWN += section.DOWN(n);
        } else {
            const CutShares cut = cut_element(VARS, section, n, L);
            FUP += cut.FUP;
            FDOWN += cut.FDOWN;
        }
    }
}

// Sums of absolute first moments about the line: of area, and weighted with the strengths.
void sum_moments(const VARIABLES_T& VARS, const PlasticSection& section, double L, double& SUMW, double& SUMM) {
    SUMW = SUMM = 0.0;
    for (std::int32_t n = 1; n <= section.count; ++n) {
        const bool above = section.PMIN(n) >= L;
        if (above || section.PMAX(n) <= L) {
            const double m = std::fabs(section.C(n) - L) * VARS.ELEMAREA(section.element(n));
            SUMW += m;
            SUMM += m * (above ? section.FABOVE(n) : section.FBELOW(n));
        } else {
            const CutShares cut = cut_element(VARS, section, n, L);
            SUMW += cut.m1;
            SUMW += cut.m2;
            SUMM += cut.SUMM;
        }
    }
}

// The middle of the interval, also where the sum of its ends overflows.
double middle(double lo, double hi) {
    const double L = (lo + hi) * 0.5;
    return std::isfinite(L) ? L : lo * 0.5 + hi * 0.5;
}

}  // namespace

void SOLVEPLASTNO(const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, std::int32_t DIRECTION, std::int32_t STAGE) {
    PlasticSection section;
    set_up(VARS, CHAR, DIRECTION, STAGE, section);
    const double TOL = VARS.NELEMS > 0 && std::fabs(VARS.ELEMPROP(1, VQ_FNEG)) >= 10.0 ? 0.0001 : 1e-08;

    double lo = section.lo, hi = section.hi, L, LPREV = 100.0;
    for (;;) {
        L = middle(lo, hi);
        if (std::fabs(L) < ONLINE) L = 0.0;
        double FUP, FDOWN;
        weigh_sides(VARS, section, L, FUP, FDOWN);
        // An interval that cannot shrink any more repeats its middle; one without a middle has no line.
        if (std::fabs(FUP - FDOWN) < TOL || std::fabs(LPREV - L) < MINSTEP || !std::isfinite(L)) break;
        LPREV = L;
        (FUP > FDOWN ? lo : hi) = L;
    }
    double SUMW, SUMM;
    sum_moments(VARS, section, L, SUMW, SUMM);

    const int size = std::abs(DIRECTION), negative = DIRECTION < 0 ? 2 : 0;
    VQ_DATA_MOD::PLASTIC_SLOTS& slots = CHAR.PLASTIC(STAGE == 0 ? 1 : 2);
    slots.PLAXIS(size + negative) = L;
    slots.PLMOD(3 - size + negative) = SUMW;
    slots.PLMOM(3 - size + negative) = SUMM;
}

}  // namespace BASICCHAR_MOD
