// The run: the host's tables in, stage after stage, results out.
#include <algorithm>
#include <cerrno>
#include <cfenv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

#include "api/velquor.h"
#include "data/vq_data_mod.h"
#include "section/basicchar.h"
#include "system/vq_system_mod.h"

namespace {

using namespace BASICCHAR_MOD;
using namespace VQ_DATA_MOD;
using namespace VQ_SYSTEM_MOD;
using SYSTEM_VARIABLES::place_stresses;
using SYSTEM_VARIABLES::REALEASE_SYSTEMDATA;

// The host's tables as one call hands them over.
struct HostTables {
    View<const double, 2> NODES;           // (NNODES, 2)
    View<const std::int32_t, 2> ELEMENTS;  // (NELEMS, 4)
    View<const double, 2> PROPS;           // (NELEMS, 10)
    POINTTABLE POINTS;                     // (NPOINTS)
    double* RESULT;                        // 58 slots, counted from 0
    View<double, 2> NODEOUT;               // (NNODES, 3)
    double* ELEMOUT;                       // 48 for each element
};

// Single precision on purpose: a triangle's mean is taken with 0.3333300054073334, not 1/3.
constexpr double THIRD = 0.33333f;
constexpr double MINSKEWSUM = 0.0001;

// Loops over rows go one beyond a count.
bool is_count(std::int32_t count) { return count >= 0 && count < std::numeric_limits<std::int32_t>::max(); }

bool is_plastic(std::int32_t CALCMODE) {
    return CALCMODE == VQ_PLASTIC || CALCMODE == VQ_PLASTIC_TWO || CALCMODE == VQ_PLASTIC_TWO_21;
}

// In all columns that the calculation reads; the third and the tenth are carried along.
bool has_finite_properties(const VARIABLES_T& VARS, std::int32_t CALCMODE) {
    for (int column : {VQ_EMOD, VQ_GMOD, VQ_COUPLING, VQ_GROUP, VQ_MATFLAG, VQ_FNEG, VQ_FPOS, VQ_UNITWEIGHT}) {
        if ((column == VQ_FNEG || column == VQ_FPOS) && !is_plastic(CALCMODE)) continue;
        for (std::int32_t e = 1; e <= VARS.NELEMS; ++e)
            if (!std::isfinite(VARS.ELEMPROP(e, column))) return false;
    }
    return true;
}

// The highest group in use; 0 where one is outside 1 to NGROUPS, or there is none.
std::int32_t highest_group(const VARIABLES_T& VARS, std::int32_t NGROUPS) {
    std::int32_t highest = 0;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const std::int32_t g = group_of(VARS, e);
        if (g < 1 || g > NGROUPS) return 0;
        highest = std::max(highest, g);
    }
    return highest;
}

// Moduli of the first element marked for them; they stay 0 without one.
void take_reference_moduli(const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR) {
    std::int32_t e = 1;
    while (e <= VARS.NELEMS && VARS.ELEMPROP(e, VQ_MATFLAG) != 1.0) ++e;
    if (e > VARS.NELEMS) return;
    CHAR.EREF = VARS.ELEMPROP(e, VQ_EMOD);
    CHAR.GREF = VARS.ELEMPROP(e, VQ_GMOD);
}

// Numbers the groups in use from 1 on, in their order and with their signs. A host's numbers may be as large as it
// likes, and groups without elements add nothing to any sum.
void renumber_groups(VARIABLES_T& VARS) {
    std::vector<std::int32_t> used;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) used.push_back(group_of(VARS, e));
    std::sort(used.begin(), used.end());
    used.erase(std::unique(used.begin(), used.end()), used.end());
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        double& GROUP = VARS.ELEMPROP(e, VQ_GROUP);
        const auto place = std::lower_bound(used.begin(), used.end(), group_of(VARS, e)) - used.begin();
        GROUP = std::copysign(static_cast<double>(place + 1), GROUP);
    }
    VARS.NGROUPS = static_cast<std::int32_t>(used.size());
}

// The property table, the group arrays and the reference moduli. False where a run cannot use the table. The host's
// NGROUPS is only an upper bound; the groups in use never outnumber the elements.
bool take_properties(const HostTables& host, std::int32_t NGROUPS, std::int32_t CALCMODE, VARIABLES_T& VARS,
                     VELQUOR_CHAR& CHAR) {
    VARS.NELEMS = static_cast<std::int32_t>(host.PROPS.extent(1));
    VARS.ELEMPROP.allocate_uncleared(VARS.NELEMS, VQ_NCOLUMNS);
    std::copy_n(host.PROPS.data, host.PROPS.extent(1) * VQ_NCOLUMNS, VARS.ELEMPROP.memory());
    take_reference_moduli(VARS, CHAR);
    VARS.NGROUPS = highest_group(VARS, NGROUPS);
    if (!has_finite_properties(VARS, CALCMODE) || VARS.NGROUPS == 0 || !(CHAR.EREF > 0.0)) return false;

    if (VARS.NGROUPS > VARS.NELEMS) renumber_groups(VARS);
    for (Table<double, 1>* table : {&VARS.GROUPAREA, &VARS.GROUPZC, &VARS.GROUPYC, &VARS.GROUPDZ, &VARS.GROUPDY})
        table->allocate(VARS.NGROUPS);
    return true;
}

// A bar that takes part needs a node, a host element of distinct nodes to be tied to, and finite values. RADIUS may be
// any: it is only compared, so an infinite one reaches every corner and one that is no number none.
bool is_usable(const VARIABLES_T& VARS, const VYZTUZE_INFO& bar) {
    if (bar.NODE > VARS.NNODES || bar.ELEMENT < 1 || bar.ELEMENT > VARS.NELEMS) return false;
    const int n = is_triangle(VARS, bar.ELEMENT) ? 3 : 4;
    for (int i = 1; i <= n; ++i)
        for (int j = 1; j < i; ++j)
            if (VARS.ELEMNODES(bar.ELEMENT, i) == VARS.ELEMNODES(bar.ELEMENT, j)) return false;
    return std::isfinite(bar.AREA) && std::isfinite(bar.EMODUL) && std::isfinite(bar.GMODUL) &&
           std::isfinite(bar.BARWEIGHT);
}

bool is_finite_place(const HostTables& host, std::int32_t node) {
    return std::isfinite(host.NODES(node, 1)) && std::isfinite(host.NODES(node, 2));
}

// Coordinates of the bars' nodes, which no element has brought into XY. A bar that takes part needs a node of its own;
// one that does not may name any, and where it has no finite place the node stays unused. False where a run cannot use
// a bar.
bool take_bar_nodes(const HostTables& host, VARIABLES_T& VARS) {
    Table<LOGICAL, 1> taken;  // by an element or by a bar that takes part
    taken.allocate(VARS.NNODES);
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) taken(i) = VARS.NODEUSED(i);

    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        const VYZTUZE_INFO& bar = host.POINTS(b);
        if (bar.NODE < 1) continue;
        if (is_in_system(bar)) {
            if (!is_usable(VARS, bar) || is_true(taken(bar.NODE))) return false;
            taken(bar.NODE) = LOGICAL_TRUE;
        } else if (bar.NODE > VARS.NNODES || !is_finite_place(host, bar.NODE)) {
            continue;
        }
        VARS.NODEUSED(bar.NODE) = LOGICAL_TRUE;
        for (int k = 1; k <= 2; ++k) VARS.XY(bar.NODE, k) = host.NODES(bar.NODE, k);
    }
    return true;
}

bool has_finite_coordinates(const VARIABLES_T& VARS) {
    for (int k = 1; k <= 2; ++k)
        for (std::int32_t i = 1; i <= VARS.NNODES; ++i)
            if (!std::isfinite(VARS.XY(i, k))) return false;
    return true;
}

void run_plastic_stage(std::int32_t CALCMODE, const VARIABLES_T& VARS, VELQUOR_CHAR& CHAR, std::int32_t STAGE) {
    if (!is_plastic(CALCMODE)) return;
    SOLVEPLASTNO(VARS, CHAR, 2, STAGE);
    SOLVEPLASTNO(VARS, CHAR, 1, STAGE);
    if (CALCMODE != VQ_PLASTIC || mirror_plastic(VARS, CHAR, STAGE)) return;
    SOLVEPLASTNO(VARS, CHAR, -2, STAGE);
    SOLVEPLASTNO(VARS, CHAR, -1, STAGE);
}

// Sum of E r^2 w over the section, w = NODEFIELD(:,1) by its mean over each element, r the distance from the centroid.
// The element centroids are still in the host's coordinates, the bars' nodes are centred.
double skew_sum_of_warping(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, const SYSTEM_VARIABLES_T& SYSVARS,
                           POINTTABLE POINTS) {
    double S = 0.0;
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const auto w = [&](int i) { return SYSVARS.NODEFIELD(VARS.ELEMNODES(e, i), 1); };
        const double W = is_triangle(VARS, e) ? (w(1) + w(2) + w(3)) * THIRD : (w(1) + w(2) + w(3) + w(4)) * 0.25;
        const double dy = VARS.ELEMYC(e) - CHAR.YC, dz = VARS.ELEMZC(e) - CHAR.ZC;
        S += VARS.ELEMAREA(e) * W * VARS.ELEMPROP(e, VQ_EMOD) * (dy * dy + dz * dz);
    }
    for (std::int32_t b = 1; b <= VARS.NPOINTS; ++b) {
        const VYZTUZE_INFO& bar = POINTS(b);
        if (!is_in_system(bar)) continue;
        const double Y = VARS.XY(bar.NODE, 1), Z = VARS.XY(bar.NODE, 2);
        S += bar.AREA * SYSVARS.NODEFIELD(bar.NODE, 1) * bar.EMODUL * (Y * Y + Z * Z);
    }
    return S;
}

void copy_results(const VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR, const SYSTEM_VARIABLES_T& SYSVARS,
                  const HostTables& host) {
    std::memcpy(host.RESULT, &CHAR, sizeof CHAR);
    for (int k = 1; k <= 3; ++k)
        for (std::int32_t i = 1; i <= VARS.NNODES; ++i) host.NODEOUT(i, k) = SYSVARS.NODEFIELD(i, k);
}

// One calculation; returns the status. The host's tables are read here and, once nothing can fail any more, written:
// ELEMOUT by the stages that form stresses, the others at the end. The output fields of the bars are written along the
// way.
std::int32_t run(std::int32_t NGROUPS, const HostTables& host, VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS) {
    const POINTTABLE POINTS = host.POINTS;
    VARS.NPOINTS = static_cast<std::int32_t>(POINTS.extent(1));
    place_stresses(host.ELEMOUT, static_cast<std::int32_t>(host.ELEMENTS.extent(1)), SYSVARS);
    const std::int32_t CALCMODE = integer_part(host.RESULT[VQ_MODE_SLOT], VQ_ELASTIC);
    VELQUOR_CHAR CHAR;
    INIT_VQCHAR(CHAR);
    Real<2, 2> TRANS{{1.0, 0.0, 0.0, 1.0}};
    LOGICAL OK = LOGICAL_FALSE;

    if (!take_properties(host, NGROUPS, CALCMODE, VARS, CHAR)) return VQ_REFUSED;
    std::int32_t MESHSTATUS;
    DEFINEMESH(MESHSTATUS, host.NODES, host.ELEMENTS, VARS, CHAR);
    if (MESHSTATUS != 0) return VQ_REFUSED;
    if (!take_bar_nodes(host, VARS) || !has_finite_coordinates(VARS)) return VQ_REFUSED;

    SOLVEBASICCHAR(VARS, CHAR, POINTS);
    run_plastic_stage(CALCMODE, VARS, CHAR, 0);
    SOLVEMAJORCOORDINATESYSTEM(OK, VARS, CHAR, TRANS);
    MOVEGRIDTOMASSCENTER(VARS, CHAR);

    CREATESTRUCTUTREOFSYSTEM(VARS, SYSVARS);
    FILLMATRIXANDRIGHTSIDE(LOGICAL_FALSE, VARS, SYSVARS, POINTS);
    SOLVEBASEWARPING(OK, VARS, SYSVARS, POINTS);
    if (!is_true(OK)) return VQ_NOT_SOLVED;
    run_plastic_stage(CALCMODE, VARS, CHAR, 1);

    // The sum is taken twice, about the centroid here and about the shear centre below.
    CHAR.WR1 = skew_sum_of_warping(VARS, CHAR, SYSVARS, POINTS);
    SHEARCENTERANDELEMENT(VARS, CHAR, SYSVARS, TRANS, POINTS);
    SOLVEWARPINGCONSTANT(LOGICAL_FALSE, VARS, CHAR, SYSVARS, POINTS);
    find_bars_near_nodes(VARS, SYSVARS, POINTS);
    SOLVESECUNDRYSHEARANDIWT(OK, VARS, CHAR, SYSVARS, POINTS);
    if (!is_true(OK)) return VQ_NOT_SOLVED;
    SOLVEAXIALSTRESS(VARS, CHAR, SYSVARS, TRANS, POINTS);

    const double S2 = skew_sum_of_warping(VARS, CHAR, SYSVARS, POINTS);
    if (std::fabs(S2) >= MINSKEWSUM) {
        CHAR.WR2 = S2 / CHAR.IWS;
        CHAR.WR1 = CHAR.WR1 / CHAR.IW;
    } else {
        CHAR.WR2 = 0.0;
        CHAR.WR1 = 0.0;
    }
    copy_results(VARS, CHAR, SYSVARS, host);
    return VQ_DONE;
}

// The run with everything that it can throw turned into a status. A run that ends so has no results at all: what the
// stages wrote into the bars is taken back.
std::int32_t run_guarded(std::int32_t NGROUPS, const HostTables& host, VARIABLES_T& VARS, SYSTEM_VARIABLES_T& SYSVARS) {
    std::vector<VYZTUZE_INFO> bars;
    try {
        bars.assign(host.POINTS.data, host.POINTS.data + host.POINTS.extent(1));
        return run(NGROUPS, host, VARS, SYSVARS);
    } catch (const std::logic_error& inconsistency) {
        std::fprintf(stderr, "%s\n", inconsistency.what());
    } catch (...) {
        // no memory
    }
    std::copy(bars.begin(), bars.end(), host.POINTS.data);
    return VQ_OUT_OF_MEMORY;
}

// What arithmetic and the C library may change of the calling thread's state.
struct ThreadState {
    std::fenv_t environment;
    int error;
};

// A host may round in another direction, flush denormal numbers to zero or let exceptions trap. The run divides by zero
// and rounds to nearest by design, so it takes the default environment and gives the same bits in any host.
ThreadState enter_default_environment() {
    ThreadState host;
    host.error = errno;
    std::fegetenv(&host.environment);
    std::fesetenv(FE_DFL_ENV);
    return host;
}

// The host's modes, traps and flags again: no flag that the run raised is left, none of the host's is lost.
void leave_default_environment(const ThreadState& host) {
    std::fesetenv(&host.environment);
    errno = host.error;
}

}  // namespace

extern "C" void vq_velquor(int32_t* STATUS, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS,
                           int32_t NELEMS, const double* PROPS, int32_t NPOINTS, VYZTUZE_INFO* POINTS, double* RESULT,
                           double* NODEOUT, double* ELEMOUT) {
    if (!STATUS) return;
    const std::int32_t NGROUPS = *STATUS;
    *STATUS = VQ_DONE;
    const bool given = NODES && ELEMENTS && PROPS && RESULT && NODEOUT && ELEMOUT && (POINTS || NPOINTS == 0);
    if (!given || NGROUPS < 0 || !is_count(NNODES) || !is_count(NELEMS) || !is_count(NPOINTS)) {
        *STATUS = VQ_REFUSED;
        return;
    }

    VARIABLES_T VARS;
    SYSTEM_VARIABLES_T SYSVARS;
    const HostTables host{View<const double, 2>(NODES, NNODES, 2),
                          View<const std::int32_t, 2>(ELEMENTS, NELEMS, 4),
                          View<const double, 2>(PROPS, NELEMS, VQ_NCOLUMNS),
                          POINTTABLE(POINTS, NPOINTS),
                          RESULT,
                          View<double, 2>(NODEOUT, NNODES, 3),
                          ELEMOUT};
    const ThreadState state = enter_default_environment();
    *STATUS = run_guarded(NGROUPS, host, VARS, SYSVARS);
    RELEASEVQDATA(VARS);
    REALEASE_SYSTEMDATA(SYSVARS);
    leave_default_environment(state);
}
