// The walk over elements and bars that gives areas, centroids, stiffness sums and second moments.
#include "section/basicchar.h"

#include <cmath>
#include <initializer_list>

namespace BASICCHAR_MOD {

namespace {

constexpr double MINCOUPLING = 1e-8f;  // single precision on purpose: compared as 9.99999993922529e-09
constexpr double MINGROUPAREA = 1e-18;

// Sums over the whole section, in the host's coordinates, w = E A / EREF the transformed area, c the coupling factor.
struct SectionSums {
    double EA = 0.0, ANET = 0.0, WEIGHT = 0.0;
    double W = 0.0, SY = 0.0, SZ = 0.0;      // w, w y, w z
    double WC = 0.0, CY = 0.0, CZ = 0.0;     // c w, c w y, c w z
    double QYY = 0.0, QZZ = 0.0, QYZ = 0.0;  // E A y^2, E A z^2, E A y z of the element centroids
    double TYY = 0.0, TZZ = 0.0, TYZ = 0.0;  // the elements about their own centroids
    double BYY = 0.0, BZZ = 0.0, BYZ = 0.0;  // the bars' excess over their host elements
};

// Whether the groups' coupling factors define a common centre (CY / WC, CZ / WC).
bool has_common_centre(const SectionSums& s) { return s.WC > MINCOUPLING; }

// Sums of each group about the origin, the second moments divided by EREF.
struct GroupSums {
    Table<double, 1> GROUPSY, GROUPSZ, GROUPIYY, GROUPIZZ, GROUPDYZ;
    Table<double, 1> GROUPCOUPLING;  // of the group's last element: a group is taken to have one factor
};

// Corners Y, Z of element e; a triangle's third node stands twice.
Real<4, 2> corners_of(const VARIABLES_T& VARS, std::int32_t e) {
    Real<4, 2> C;
    for (int i = 1; i <= 4; ++i) {
        const std::int32_t node = VARS.ELEMNODES(e, i);
        C(i, 1) = VARS.XY(node, 1);
        C(i, 2) = VARS.XY(node, 2);
    }
    return C;
}

// Area and centroid as of the two triangles (1, 2, 4) and (2, 3, 4); of a triangle the second has none. An element
// without area, which the mesh checks let through in two cases, gets the mean of its corners, so that its shares are 0.
void area_and_centroid(const Real<4, 2>& C, double& A, double& yc, double& zc) {
    const double y1 = C(1, 1), y2 = C(2, 1), y3 = C(3, 1), y4 = C(4, 1);
    const double z1 = C(1, 2), z2 = C(2, 2), z3 = C(3, 2), z4 = C(4, 2);
    const double A1 = std::fabs((-y1 * (z2 - z4) + (z1 - z4) * y2 + (z2 - z1) * y4) * 0.5);
    const double A2 = std::fabs(((z4 - z3) * y2 + (z2 - z4) * y3 + (z3 - z2) * y4) * 0.5);
    A = A1 + A2;
    if (!(A > 0.0)) {
        yc = (y1 + y2 + y3 + y4) * 0.25;
        zc = (z1 + z2 + z3 + z4) * 0.25;
        return;
    }
    yc = (A1 * (y1 + y2 + y4) / 3.0 + A2 * (y2 + y3 + y4) / 3.0) / A;
    zc = (A1 * (z1 + z2 + z4) / 3.0 + A2 * (z2 + z3 + z4) / 3.0) / A;
}

void add_element(VARIABLES_T& VARS, const double EREF, std::int32_t e, SectionSums& s, GroupSums& groups) {
    const double E = VARS.ELEMPROP(e, VQ_EMOD), c = VARS.ELEMPROP(e, VQ_COUPLING);
    if (c < 1.0) VARS.COUPLEDFLAG = 1;

    const Real<4, 2> C = corners_of(VARS, e);
    double A, yc, zc;
    area_and_centroid(C, A, yc, zc);
    VARS.ELEMAREA(e) = A;
    VARS.ELEMYC(e) = yc;
    VARS.ELEMZC(e) = zc;

    const double w = E * A / EREF;
    s.EA += E * A;
    s.W += w;
    s.WC += c * w;
    s.SY += w * yc;
    s.SZ += w * zc;
    s.CY += c * w * yc;
    s.CZ += c * w * zc;
    if (VARS.ELEMPROP(e, VQ_GROUP) > 0.0) {
        s.ANET += A;
        s.WEIGHT += VARS.ELEMPROP(e, VQ_UNITWEIGHT) * A;
    }

    double IY, IZ, DZY;  // named by their axis: IY belongs to IZZ, IZ to IYY
    IYIZDZY(A, yc, zc, C, IY, IZ, DZY);
    s.QYY += E * A * (yc * yc);
    s.QZZ += E * A * (zc * zc);
    s.QYZ += E * A * yc * zc;
    s.TYY += E * IZ;
    s.TZZ += E * IY;
    s.TYZ += E * DZY;

    const std::int32_t g = VQ_DATA_MOD::group_of(VARS, e);
    VARS.GROUPAREA(g) += w;
    groups.GROUPSY(g) += w * yc;
    groups.GROUPSZ(g) += w * zc;
    groups.GROUPIYY(g) += (E * IZ + E * A * (yc * yc)) / EREF;
    groups.GROUPIZZ(g) += (E * IY + E * A * (zc * zc)) / EREF;
    groups.GROUPDYZ(g) += (E * DZY + E * A * yc * zc) / EREF;
    groups.GROUPCOUPLING(g) = c;
}

// A bar takes the place of material and adds its excess over it: over EREF for axial stiffness and first moments, over
// its host element for second moments, over the unit weight of the table's first element for the weight.
void add_bar(const VARIABLES_T& VARS, const double EREF, const VYZTUZE_INFO& bar, SectionSums& s) {
    const double Es = bar.EMODUL, As = bar.AREA, Ee = VARS.ELEMPROP(bar.ELEMENT, VQ_EMOD);
    const double y = VARS.XY(bar.NODE, 1), z = VARS.XY(bar.NODE, 2);
    s.W += Es * As / EREF - EREF * As / EREF;
    s.EA += (Es - EREF) * As;
    s.SY += y * Es * As / EREF - As * y;
    s.SZ += z * Es * As / EREF - As * z;
    s.BYY += (Es - Ee) * As * (y * y);
    s.BZZ += (Es - Ee) * As * (z * z);
    s.BYZ += (Es - Ee) * As * y * z;
    s.WEIGHT += (bar.BARWEIGHT - VARS.ELEMPROP(1, VQ_UNITWEIGHT)) * As;
}

// Each group from the origin to its own centre, plus its distance from the common centre reduced by its coupling
// factor.
void set_coupled_moments(VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, const SectionSums& s, const GroupSums& groups) {
    double IYY = 0.0, IZZ = 0.0, DYZ = 0.0;
    for (std::int32_t g = 1; g <= VARS.NGROUPS; ++g) {
        const double wg = VARS.GROUPAREA(g), cg = groups.GROUPCOUPLING(g);
        if (wg > MINGROUPAREA) {
            VARS.GROUPZC(g) = groups.GROUPSZ(g) / wg;
            VARS.GROUPYC(g) = groups.GROUPSY(g) / wg;
        }
        if (has_common_centre(s)) {
            VARS.GROUPDY(g) = VARS.GROUPYC(g) - s.CY / s.WC;
            VARS.GROUPDZ(g) = VARS.GROUPZC(g) - s.CZ / s.WC;
        }
        const double yg = VARS.GROUPYC(g), zg = VARS.GROUPZC(g), dy = VARS.GROUPDY(g), dz = VARS.GROUPDZ(g);
        IYY += groups.GROUPIYY(g) + (dy * dy * cg - yg * yg) * wg;
        IZZ += groups.GROUPIZZ(g) + (dz * dz * cg - zg * zg) * wg;
        DYZ += groups.GROUPDYZ(g) + (dy * dz * cg - yg * zg) * wg;
    }
    CHAR.IYY = IYY * CHAR.EREF;
    CHAR.IZZ = IZZ * CHAR.EREF;
    CHAR.DYZ = DYZ * CHAR.EREF;
}

// Sums of E y r^2 and E z r^2 about (YC, ZC); a bar counts with its whole modulus, nothing is displaced.
void set_skew_sums(const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, POINTTABLE POINTS) {
    double RY = 0.0, RZ = 0.0;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const double dy = VARS.ELEMYC(e) - CHAR.YC, dz = VARS.ELEMZC(e) - CHAR.ZC;
        const double t = (dy * dy + dz * dz) * VARS.ELEMPROP(e, VQ_EMOD) * VARS.ELEMAREA(e);
        RY += dy * t;
        RZ += dz * t;
    }
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        const VYZTUZE_INFO& bar = POINTS(b);
        if (!VQ_DATA_MOD::is_in_sums(bar)) continue;
        const double dy = VARS.XY(bar.NODE, 1) - CHAR.YC, dz = VARS.XY(bar.NODE, 2) - CHAR.ZC;
        RY += dy * bar.AREA * bar.EMODUL * (dy * dy + dz * dz);
        RZ += dz * bar.AREA * bar.EMODUL * (dy * dy + dz * dz);
    }
    CHAR.RY = RY;
    CHAR.RZ = RZ;
}

}  // namespace

void SOLVEBASICCHAR(VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, POINTTABLE POINTS) {
    const double EREF = CHAR.EREF;
    VARS.COUPLEDFLAG = 0;
    SectionSums s;
    GroupSums groups;
    for (Table<double, 1>* table : {&groups.GROUPSY, &groups.GROUPSZ, &groups.GROUPIYY, &groups.GROUPIZZ,
                                    &groups.GROUPDYZ, &groups.GROUPCOUPLING})
        table->allocate(VARS.NGROUPS);
    for (std::int32_t g = 1; g <= VARS.NGROUPS; ++g) VARS.GROUPAREA(g) = 0.0;

    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) add_element(VARS, EREF, e, s, groups);
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b)
        if (VQ_DATA_MOD::is_in_sums(POINTS(b))) add_bar(VARS, EREF, POINTS(b), s);

    CHAR.EA = s.EA;
    CHAR.ANET = s.ANET;
    CHAR.WEIGHT = s.WEIGHT;
    CHAR.COUP1 = has_common_centre(s) ? s.CY / s.WC : 0.0;
    CHAR.COUP2 = has_common_centre(s) ? s.CZ / s.WC : 0.0;
    CHAR.YC = CHAR.ZC = 0.0;
    if (VARS.COUPLEDFLAG == 0) {
        CHAR.YC = s.SY / s.W;
        CHAR.ZC = s.SZ / s.W;
        CHAR.IYY = EREF * (s.QYY / EREF + (s.TYY + s.BYY) / EREF - s.W * (CHAR.YC * CHAR.YC));
        CHAR.IZZ = EREF * (s.QZZ / EREF + (s.TZZ + s.BZZ) / EREF - s.W * (CHAR.ZC * CHAR.ZC));
        CHAR.DYZ = EREF * (s.QYZ / EREF + (s.TYZ + s.BYZ) / EREF - s.W * CHAR.YC * CHAR.ZC);
    } else {
        set_coupled_moments(VARS, CHAR, s, groups);
    }
    set_skew_sums(VARS, CHAR, POINTS);
}

}  // namespace BASICCHAR_MOD
