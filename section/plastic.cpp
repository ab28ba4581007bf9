// The plastic neutral axis by bisection, every element clipped exactly by the line. In a pass the line stands at p = L;
// p runs along the direction's axis, q along the other, and "above" is the side of larger p.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

#include "section/angle.h"
#include "section/basicchar.h"

namespace BASICCHAR_MOD {

namespace {

constexpr double ONLINE = 1e-12;           // a corner this near to the line lies on it
constexpr double MINCOEFFICIENT = 1e-12f;  // single precision on purpose: compared as 9.99999996004197e-13
constexpr double MINSTEP = 1e-9;           // the bisection ends when the line moves by less

// An element that the line cuts. X1 and X2 are where the first and the second edge in node order cross the line. P is
// the corner alone on its side, which every cut triangle has and a quadrilateral with one or three corners above. With
// two corners on each side, P is the one above next to X1, Q the other one above, and the part (X1, X2, Q, P) is split
// along the diagonal from X2 to P; otherwise Q is P, and the second triangle has no area.
struct Clip {
    double LOW, HIGH;  // what follows holds for lines between these: the same corners are above
    bool triangle, has_Q, P_above;
    double p1, q1, slope1;  // X1 = q1 + (L - p1) / slope1
    double p2, q2, slope2;
    double pP, qP, pQ, qQ, PQ;  // PQ is the distance between P and Q
    double A1, A2;              // triangles (X1, X2, P) and (X2, P, Q) at the latest line
};

// The section as one call sees it.
struct PlasticSection {
    Real<2, 2> R;                    // p = R(1,1) y + R(1,2) z, q = R(2,1) y + R(2,2) z
    double YC, ZC;                   // by which the element centroids, unlike XY, are still to be centred
    int above_column, below_column;  // of the strengths on the two sides of the line
    Table<double, 1> p;              // (NNODES)
    double lo, hi;                   // bounds of p over all nodes, also of those that nothing uses

    Table<double, 1> PMIN, PMAX;  // (NELEMS)     least and largest p of the corners, ONLINE towards the inside
    Table<double, 2> addends;     // (2, NELEMS)  of FUP and FDOWN at the latest line; 0 where an element takes no part
    // Elements in table order, so many as the counts say: whose addends may still change, and that the latest line
    // cuts.
    Table<std::int32_t, 1> open, clipped;
    std::int32_t open_count, clipped_count;
    Table<std::int32_t, 1> clip;  // (NELEMS)     number among the clips, 0 before the first cut
    std::vector<Clip> clips;
    std::int32_t summed;  // so many elements stand before the first open one,
    double FUP, FDOWN;    // with these sums of their addends
};

bool takes_part(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, std::int32_t e) {
    const double ELIM = (CHAR.EREF + 10.0) / 1000000.0;
    return VARS.ELEMPROP(e, VQ_MATFLAG) >= 0.5 && VARS.ELEMPROP(e, VQ_EMOD) >= ELIM;
}

// Frame, bounds and the elements that take part.
void set_up(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, std::int32_t DIRECTION, std::int32_t STAGE,
            PlasticSection& section) {
    const auto [c, s] = direction_of(CHAR.ALPHA);
    Real<2, 2> R{{c, -s, s, c}};
    for (double& coefficient : R.data)
        if (std::fabs(coefficient) < MINCOEFFICIENT) coefficient = 0.0;
    if (STAGE == 0) R = {{1.0, 0.0, 0.0, 1.0}};
    section.R = std::abs(DIRECTION) == 1 ? R : Real<2, 2>{{R(2, 1), R(1, 1), R(2, 2), R(1, 2)}};
    section.YC = STAGE == 0 ? 0.0 : CHAR.YC;
    section.ZC = STAGE == 0 ? 0.0 : CHAR.ZC;
    section.above_column = DIRECTION > 0 ? VQ_FPOS : VQ_FNEG;
    section.below_column = DIRECTION > 0 ? VQ_FNEG : VQ_FPOS;

    section.p.allocate(VARS.NNODES);
    section.lo = 1000000000.0;
    section.hi = -1000000000.0;
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) {
        const double p = section.R(1, 1) * VARS.XY(i, 1) + section.R(1, 2) * VARS.XY(i, 2);
        section.p(i) = p;
        if (p < section.lo) section.lo = p;
        if (p > section.hi) section.hi = p;
    }

    section.PMIN.allocate(VARS.NELEMS);
    section.PMAX.allocate(VARS.NELEMS);
    section.addends.allocate(2, VARS.NELEMS);
    section.open.allocate(VARS.NELEMS);
    section.clipped.allocate(VARS.NELEMS);
    section.clip.allocate(VARS.NELEMS);
    section.open_count = section.clipped_count = section.summed = 0;
    section.FUP = section.FDOWN = 0.0;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        if (!takes_part(VARS, CHAR, e)) continue;
        double pmin = section.p(VARS.ELEMNODES(e, 1)), pmax = pmin;
        for (int i = 2; i <= 4; ++i) {
            const double p = section.p(VARS.ELEMNODES(e, i));
            pmin = std::min(pmin, p);
            pmax = std::max(pmax, p);
        }
        section.PMIN(e) = pmin + ONLINE;
        section.PMAX(e) = pmax - ONLINE;
        section.open(++section.open_count) = e;
    }
}

enum class Side { above, below, both };

Side side_of(const PlasticSection& section, std::int32_t e, double L) {
    return section.PMIN(e) >= L ? Side::above : section.PMAX(e) <= L ? Side::below : Side::both;
}

double hypotenuse(double a, double b) { return std::sqrt(a * a + b * b); }

// By the formula of Heron. Of a sliver the radicand may come out below 0 and counts as 0.
double heron(double a, double b, double d) {
    const double s = (a + b + d) * 0.5;
    const double radicand = (s - a) * s * (s - b) * (s - d);
    return std::sqrt(radicand < 0.0 ? 0.0 : radicand);
}

// What of a cut element does not depend on L: all of the record but its areas.
void form_clip(const VARIABLES_T& VARS, const PlasticSection& section, std::int32_t e, double L, Clip& clip) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    clip.triangle = VQ_DATA_MOD::is_triangle(VARS, e);
    const int corners = clip.triangle ? 3 : 4;
    Real<4> p{}, q{};
    Integer<4> above{};
    int NUP = 0;
    clip.LOW = -infinity;
    clip.HIGH = section.PMAX(e);
    for (int i = 1; i <= corners; ++i) {
        const std::int32_t node = VARS.ELEMNODES(e, i);
        p(i) = section.p(node);
        q(i) = section.R(2, 1) * VARS.XY(node, 1) + section.R(2, 2) * VARS.XY(node, 2);
        above(i) = p(i) + ONLINE > L ? 1 : 0;
        NUP += above(i);
        if (above(i))
            clip.HIGH = std::min(clip.HIGH, p(i) + ONLINE);
        else
            clip.LOW = std::max(clip.LOW, p(i) + ONLINE);
    }

    // An upright edge crosses at one of its ends, whatever L.
    clip.p1 = clip.q1 = clip.p2 = clip.q2 = 0.0;
    clip.slope1 = clip.slope2 = infinity;
    int found = 0;
    for (int i = 1; i <= corners && found < 2; ++i) {
        const int j = i % corners + 1;
        if (above(i) == above(j)) continue;
        ++found;
        const bool upright = std::fabs(p(j) - p(i)) < ONLINE || std::fabs(q(j) - q(i)) < ONLINE;
        (found == 1 ? clip.p1 : clip.p2) = p(i);
        (found == 1 ? clip.q1 : clip.q2) = upright && !clip.triangle ? q(j) : q(i);
        if (!upright) (found == 1 ? clip.slope1 : clip.slope2) = (p(j) - p(i)) / (q(j) - q(i));
    }

    clip.has_Q = corners == 4 && NUP == 2;
    clip.P_above = clip.has_Q || NUP == 1;
    int P = 1;
    while (P < corners && (above(P) != 0) != clip.P_above) ++P;
    int Q = P;
    if (clip.has_Q) {
        for (++Q; Q < 4 && above(Q) == 0;) ++Q;
        if (P == 1 && Q == 2) std::swap(P, Q);
    }
    clip.pP = p(P);
    clip.qP = q(P);
    clip.pQ = p(Q);
    clip.qQ = q(Q);
    clip.PQ = hypotenuse(p(P) - p(Q), q(P) - q(Q));
}

// The first triangle as it counts for the part at P, and what both triangles leave of an element of area A: within
// rounding of a corner on the line nothing.
double first_of(const Clip& clip) { return clip.triangle && clip.A1 < ONLINE ? 0.0 : clip.A1; }
double rest_of(const Clip& clip, double A) {
    const double rest = A - first_of(clip) - clip.A2;
    return rest <= 0.0 ? 0.0 : rest;
}

// Addends of the elements on one side of the line; the others are listed.
void classify(const VARIABLES_T& VARS, PlasticSection& section, double L) {
    section.clipped_count = 0;
    for (std::int32_t k = 1; k <= section.open_count; ++k) {
        const std::int32_t e = section.open(k);
        const Side side = side_of(section, e, L);
        const double A = VARS.ELEMAREA(e);
        section.addends(1, e) = side == Side::above ? A * VARS.ELEMPROP(e, section.above_column) : 0.0;
        section.addends(2, e) = side == Side::below ? A * VARS.ELEMPROP(e, section.below_column) : 0.0;
        if (side == Side::both) section.clipped(++section.clipped_count) = e;
    }
}

// Areas and addends of the elements that the line cuts.
void clip_elements(const VARIABLES_T& VARS, PlasticSection& section, double L) {
    constexpr int BLOCK = 64;
    Integer<BLOCK> number;
    Real<BLOCK> A1, A2;
    for (std::int32_t done = 0; done < section.clipped_count; done += BLOCK) {
        const int length = std::min<std::int32_t>(section.clipped_count - done, BLOCK);
        for (int k = 1; k <= length; ++k) {
            const std::int32_t e = section.clipped(done + k);
            if (section.clip(e) == 0) {
                section.clips.emplace_back();
                section.clip(e) = static_cast<std::int32_t>(section.clips.size());
            }
            number(k) = section.clip(e) - 1;
            Clip& clip = section.clips[number(k)];
            if (!(clip.LOW < L && L < clip.HIGH)) form_clip(VARS, section, e, L, clip);
        }

        // Most of the square roots of a search are here. The loop has no branch and fills nothing but its own blocks,
        // so that compilers take several elements at a time, and is filled up to a multiple of four, so that none is
        // left over.
        const int filled = (length + 3) / 4 * 4;
        for (int k = length + 1; k <= filled; ++k) number(k) = number(length);
        const Clip* clips = section.clips.data();
        for (int k = 1; k <= filled; ++k) {
            const Clip& clip = clips[number(k)];
            const double X1 = clip.q1 + (L - clip.p1) / clip.slope1, X2 = clip.q2 + (L - clip.p2) / clip.slope2;
            const double h = L - clip.pP;
            const double a = std::fabs(X1 - X2), b = hypotenuse(X1 - clip.qP, h), g = hypotenuse(X2 - clip.qP, h);
            const double f = hypotenuse(X2 - clip.qQ, L - clip.pQ);
            A1(k) = heron(a, b, g);
            A2(k) = heron(g, clip.PQ, f);
        }

        for (int k = 1; k <= length; ++k) {
            const std::int32_t e = section.clipped(done + k);
            Clip& clip = section.clips[number(k)];
            clip.A1 = A1(k);
            clip.A2 = A2(k);
            const double part = first_of(clip) + clip.A2, rest = rest_of(clip, VARS.ELEMAREA(e));
            section.addends(1, e) = (clip.P_above ? part : rest) * VARS.ELEMPROP(e, section.above_column);
            section.addends(2, e) = (clip.P_above ? rest : part) * VARS.ELEMPROP(e, section.below_column);
        }
    }
}

// Strength-weighted areas on the two sides of the line.
void weigh_sides(const VARIABLES_T& VARS, PlasticSection& section, double L, double& FUP, double& FDOWN) {
    classify(VARS, section, L);
    clip_elements(VARS, section, L);
    const std::int32_t first = section.open_count > 0 ? section.open(1) : VARS.NELEMS + 1;
    while (section.summed + 1 < first) {
        const std::int32_t e = ++section.summed;
        section.FUP += section.addends(1, e);
        section.FDOWN += section.addends(2, e);
    }
    double up = section.FUP, down = section.FDOWN;
    for (std::int32_t e = first; e <= VARS.NELEMS; ++e) {
        up += section.addends(1, e);
        down += section.addends(2, e);
    }
    FUP = up;
    FDOWN = down;
}

// All lines to come lie on one side of L: the elements on the other, `side`, stay there.
void settle(PlasticSection& section, double L, Side side) {
    std::int32_t kept = 0;
    for (std::int32_t k = 1; k <= section.open_count; ++k) {
        const std::int32_t e = section.open(k);
        if (side_of(section, e, L) != side) section.open(++kept) = e;
    }
    section.open_count = kept;
}

// Sums of absolute first moments about the latest line: of area, and weighted with the strengths.
void sum_moments(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, const PlasticSection& section, double L,
                 double& SUMW, double& SUMM) {
    SUMW = SUMM = 0.0;
    std::int32_t next = 1;  // in the list of cut elements
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        if (!takes_part(VARS, CHAR, e)) continue;
        const double y = VARS.ELEMYC(e) - section.YC, z = VARS.ELEMZC(e) - section.ZC;
        const double A = VARS.ELEMAREA(e), C = section.R(1, 1) * y + section.R(1, 2) * z;
        const double FABOVE = VARS.ELEMPROP(e, section.above_column), FBELOW = VARS.ELEMPROP(e, section.below_column);
        if (next > section.clipped_count || section.clipped(next) != e) {
            const double m = std::fabs(C - L) * A;
            SUMW += m;
            SUMM += m * (side_of(section, e, L) == Side::above ? FABOVE : FBELOW);
            continue;
        }
        ++next;
        const Clip& clip = section.clips[section.clip(e) - 1];
        // t1, t2 and r are signed distances of centroids from the line.
        const double t1 = (clip.pP - L) / 3.0, t2 = ((clip.pQ - L) - L + clip.pP) / 3.0;
        const double rest = rest_of(clip, A);
        const double r = rest == 0.0 ? 0.0 : (A * (C - L) - t1 * first_of(clip) - t2 * clip.A2) / rest;
        const double m1 = std::fabs(t1) * clip.A1 + std::fabs(t2) * clip.A2, m2 = std::fabs(r) * rest;
        // The whole moment takes one strength, not each part its own.
        if (clip.has_Q) {
            SUMW += m1 + m2;
            SUMM += (m1 + m2) * VARS.ELEMPROP(e, VQ_FPOS);  // for both signs of the direction
        } else {
            SUMW += m1;
            SUMW += m2;
            SUMM += (m1 + m2) * (clip.triangle && clip.P_above ? FBELOW : FABOVE);
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
        settle(section, L, FUP > FDOWN ? Side::below : Side::above);
    }
    double SUMW, SUMM;
    sum_moments(VARS, CHAR, section, L, SUMW, SUMM);

    const int axis = std::abs(DIRECTION), negative = DIRECTION < 0 ? 2 : 0;
    VQ_DATA_MOD::PLASTIC_SLOTS& slots = CHAR.PLASTIC(STAGE == 0 ? 1 : 2);
    slots.PLAXIS(axis + negative) = L;
    slots.PLMOD(3 - axis + negative) = SUMW;
    slots.PLMOM(3 - axis + negative) = SUMM;
}

bool mirror_plastic(const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, std::int32_t STAGE) {
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e)
        if (takes_part(VARS, CHAR, e) && VARS.ELEMPROP(e, VQ_FPOS) != VARS.ELEMPROP(e, VQ_FNEG)) return false;
    VQ_DATA_MOD::PLASTIC_SLOTS& slots = CHAR.PLASTIC(STAGE == 0 ? 1 : 2);
    for (int k = 1; k <= 2; ++k) {
        slots.PLAXIS(k + 2) = slots.PLAXIS(k);
        slots.PLMOD(k + 2) = slots.PLMOD(k);
        slots.PLMOM(k + 2) = slots.PLMOM(k);
    }
    return true;
}

}  // namespace BASICCHAR_MOD
