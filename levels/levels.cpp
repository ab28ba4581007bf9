// The levels from coarse to fine, a call each.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>

#include "levels/boundary.h"
#include "levels/extrapolate.h"
#include "levels/mesh.h"
#include "levels/pieces.h"
#include "levels/plastic.h"
#include "levels/sharp.h"

namespace levels {
namespace {

// A search for a plastic axis that begins here ends here.
constexpr double TRAP = 100.0, TRAPPED = 1e-9;

// One call on a level of its own.
struct Call {
    Slots slots{};
    std::unique_ptr<double[]> nodeout, elemout;  // uncleared: the library fills all of them
};

std::int32_t solve(const Tables& mesh, std::int32_t NGROUPS, double mode, std::vector<VYZTUZE_INFO>& bars, Call& call) {
    std::int32_t STATUS = NGROUPS;
    call.slots = {};
    call.slots[VQ_MODE_SLOT] = mode;
    call.nodeout.reset(new double[3 * static_cast<std::size_t>(mesh.NNODES)]);
    call.elemout.reset(new double[48 * static_cast<std::size_t>(mesh.NELEMS)]);
    vq_velquor(&STATUS, mesh.NODES, mesh.NNODES, mesh.ELEMENTS, mesh.NELEMS, mesh.PROPS,
               static_cast<std::int32_t>(bars.size()), bars.data(), call.slots.data(), call.nodeout.get(),
               call.elemout.get());
    return STATUS;
}

bool has_axis_in_trap(const Slots& slots) {
    for (const int first : {VQ_PLAXIS_Y, VQ_PLAXIS_U})
        for (int k = 0; k < 4; ++k)
            if (std::fabs(slots[static_cast<std::size_t>(first + k)] - TRAP) <= TRAPPED) return true;
    return false;
}

// Adds a bar that takes no part, on a node of its own beyond the section: it widens the intervals of the plastic
// searches, which begin in another middle then. It stands away from the axes through the middle of the nodes, those of
// the host and the principal ones, in the middle of the wider angle between them.
void widen(const Tables& mesh, const Slots& slots, Mesh& wider, std::vector<VYZTUZE_INFO>& bars) {
    const std::size_t nodes = static_cast<std::size_t>(mesh.NNODES), elements = static_cast<std::size_t>(mesh.NELEMS);
    if (nodes >= INT32_MAX - 1) throw std::bad_alloc();
    double low[2] = {mesh.y(mesh.node(0, 0)), mesh.z(mesh.node(0, 0))}, high[2] = {low[0], low[1]};
    const auto include = [&](std::int32_t node) {
        const double at[2] = {mesh.y(node), mesh.z(node)};
        if (!std::isfinite(at[0] + at[1])) return;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            low[axis] = std::min(low[axis], at[axis]);
            high[axis] = std::max(high[axis], at[axis]);
        }
    };
    for (std::size_t k = 0; k < 4 * elements; ++k) include(mesh.ELEMENTS[k]);
    for (const VYZTUZE_INFO& bar : bars)
        if (bar.NODE >= 1 && bar.NODE <= mesh.NNODES) include(bar.NODE);

    Direction between = direction(slots);
    if (between.c * between.s < 0) std::swap(between.c, between.s);
    between = {std::fabs(between.c), std::fabs(between.s)};
    (between.c < between.s ? between.c : between.s) += 1;
    const double away = 2 * (high[0] - low[0] + high[1] - low[1]);
    const double place[2] = {0.5 * (low[0] + high[0]) + away * between.c, 0.5 * (low[1] + high[1]) + away * between.s};

    Mesh copy;
    for (std::size_t axis = 0; axis < 2; ++axis) {
        const double* column = mesh.NODES + axis * nodes;
        copy.nodes.insert(copy.nodes.end(), column, column + nodes);
        copy.nodes.push_back(place[axis]);
    }
    copy.elements.assign(mesh.ELEMENTS, mesh.ELEMENTS + 4 * elements);
    copy.props.assign(mesh.PROPS, mesh.PROPS + VQ_NCOLUMNS * elements);
    VYZTUZE_INFO bar{};
    bar.NODE = mesh.NNODES + 1;
    bars.push_back(bar);
    wider = std::move(copy);
}

// The reciprocal of the largest shear stress of a unit torque over all corners of a mesh. In quadrilaterals these come
// with the motion of the opposite corner, which makes the largest a first-order one; with the motion of the corner
// itself it is of second order.
double torsional_modulus(const Tables& mesh, const Call& call) {
    double largest = 0;
    for (std::size_t e = 0; e < static_cast<std::size_t>(mesh.NELEMS); ++e) {
        const int n = mesh.corners(e);
        const double share = n == 4 ? mesh.property(e, VQ_GMOD) / call.slots[VQ_GJ] : 0;
        for (int p = 0; p < n; ++p) {
            const double* tau = &call.elemout[48 * e + 12 * static_cast<std::size_t>(p)];
            const std::int32_t at = mesh.node(e, p), opposite = mesh.node(e, (p + 2) % 4);
            const double y = tau[0] - share * (mesh.z(at) - mesh.z(opposite));
            const double z = tau[1] + share * (mesh.y(at) - mesh.y(opposite));
            largest = std::max(largest, y * y + z * z);
        }
    }
    return 1 / std::sqrt(largest);
}

// What the host's nodes, corners and bars have of a call on a mesh `level` refinements below the host's.
// `alone`: slots as the library gave them, for want of another level.
LevelResults at_host(const Tables& host, std::int32_t NPOINTS, int level, const Tables& mesh, const Call& call,
                     const std::vector<VYZTUZE_INFO>& bars, double mode, bool alone) {
    LevelResults results;
    results.slots = call.slots;
    if (!alone) {
        results.slots[VQ_WT] = torsional_modulus(mesh, call);
        part_plastic_moments(mesh, mode, results.slots);
    }
    for (std::size_t column = 0; column < 3; ++column) {
        const double* from = call.nodeout.get() + column * static_cast<std::size_t>(mesh.NNODES);
        results.nodeout.insert(results.nodeout.end(), from, from + host.NNODES);
    }
    results.elemout.reserve(48 * static_cast<std::size_t>(host.NELEMS));
    for (std::size_t e = 0; e < static_cast<std::size_t>(host.NELEMS); ++e)
        for (int p = 0; p < 4; ++p) {
            const int corner = std::min(p, host.corners(e) - 1);
            const std::size_t part = part_at_corner(e, corner, level);
            const double* from = call.elemout.get() + 48 * part + 12 * corner;
            results.elemout.insert(results.elemout.end(), from, from + 12);
        }
    results.stress.resize(4 * static_cast<std::size_t>(NPOINTS));
    for (std::size_t b = 0; b < static_cast<std::size_t>(NPOINTS); ++b)
        if (takes_part(bars[b])) std::copy_n(bars[b].STRESS, 4, &results.stress[4 * b]);
    return results;
}

// Everything that a run makes before it writes to the host's tables.
struct Run {
    std::int32_t status = VQ_DONE;      // of the level that did not go well
    std::vector<LevelResults> levels;   // those that did
    std::vector<VYZTUZE_INFO> bars;     // as the host's own mesh fills them
    std::vector<std::int8_t> exponent;  // (NNODES)  see sharp.h
};

struct Watcher {
    vq_watch watch;
    void* watcher;
};

// One level's results are added to the run, or its status is set.
void run_level(const Tables& host, std::int32_t NGROUPS, std::int32_t NPOINTS, double mode, int level, bool alone,
               Tables& mesh, Mesh& owned, std::vector<VYZTUZE_INFO>& bars, const Watcher& watcher, Run& run) {
    Call call;
    run.status = solve(mesh, NGROUPS, mode, bars, call);
    if (run.status == VQ_DONE && has_axis_in_trap(call.slots) && bars.size() == static_cast<std::size_t>(NPOINTS)) {
        Mesh wider;
        widen(mesh, call.slots, wider, bars);
        owned = std::move(wider);
        mesh = owned.tables();
        run.status = solve(mesh, NGROUPS, mode, bars, call);
    }
    if (run.status != VQ_DONE) return;
    if (level == 0) run.bars.assign(bars.begin(), bars.begin() + NPOINTS);
    std::vector<std::int8_t> exponent = alone || level > 0 ? exponents(host, mesh, level) : std::vector<std::int8_t>();
    run.levels.push_back(at_host(host, NPOINTS, level, mesh, call, bars, mode, alone));
    run.exponent = std::move(exponent);
    if (watcher.watch)
        watcher.watch(watcher.watcher, mesh.NODES, mesh.NNODES, mesh.ELEMENTS, mesh.NELEMS, mesh.PROPS,
                      call.slots.data(), call.nodeout.get(), call.elemout.get());
}

Run run_levels(const Tables& host, std::int32_t NGROUPS, std::int32_t NPOINTS, const VYZTUZE_INFO* POINTS, double mode,
               int wanted, vq_place place, void* context, const Watcher& watcher) {
    Run run;
    try {
        run.levels.reserve(static_cast<std::size_t>(wanted));
        std::vector<VYZTUZE_INFO> bars(POINTS, POINTS + NPOINTS);
        std::vector<Arc> arcs;
        Mesh owned;
        Tables mesh = host;
        for (int level = 0; level < wanted; ++level) {
            if (level == 1 && place) arcs = arcs_of(host);
            if (level > 0) {
                Mesh finer = refined(mesh, arcs, place, context);
                owned = std::move(finer);
                mesh = owned.tables();
                for (VYZTUZE_INFO& bar : bars)
                    if (takes_part(bar)) bar.ELEMENT = part_with(mesh, bar.ELEMENT, mesh.y(bar.NODE), mesh.z(bar.NODE));
            }
            run_level(host, NGROUPS, NPOINTS, mode, level, wanted == 1, mesh, owned, bars, watcher, run);
            if (run.status != VQ_DONE) break;
        }
    } catch (...) {
        run.status = VQ_OUT_OF_MEMORY;
    }
    return run;
}

// The largest amount of the shear stress of a unit torque at corners that are not sharp, as its reciprocal.
double largest_elsewhere(const std::vector<double>& elemout, const std::vector<std::int8_t>& sharp_corner) {
    double largest = 0;
    for (std::size_t corner = 0; corner < sharp_corner.size(); ++corner) {
        const double *tau = &elemout[12 * corner], squared = tau[0] * tau[0] + tau[1] * tau[1];
        if (!sharp_corner[corner]) largest = std::max(largest, squared);
    }
    return 1 / std::sqrt(largest);
}

}  // namespace
}  // namespace levels

extern "C" void vq_levels(std::int32_t* STATUS, const double* NODES, std::int32_t NNODES, const std::int32_t* ELEMENTS,
                          std::int32_t NELEMS, const double* PROPS, std::int32_t NPOINTS, VYZTUZE_INFO* POINTS,
                          double* RESULT, double* NODEOUT, double* ELEMOUT, std::int32_t* LEVELS, double* BOUNDS,
                          std::int32_t* SHARP, vq_place place, void* context) {
    vq_levels_watched(STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, NPOINTS, POINTS, RESULT, NODEOUT, ELEMOUT, LEVELS,
                      BOUNDS, SHARP, place, context, nullptr, nullptr);
}

extern "C" void vq_levels_watched(std::int32_t* STATUS, const double* NODES, std::int32_t NNODES,
                                  const std::int32_t* ELEMENTS, std::int32_t NELEMS, const double* PROPS,
                                  std::int32_t NPOINTS, VYZTUZE_INFO* POINTS, double* RESULT, double* NODEOUT,
                                  double* ELEMOUT, std::int32_t* LEVELS, double* BOUNDS, std::int32_t* SHARP,
                                  vq_place place, void* context, vq_watch watch, void* watcher) {
    using namespace levels;
    if (!STATUS) return;
    const std::int32_t NGROUPS = *STATUS, wanted = LEVELS ? *LEVELS : 0;
    *STATUS = VQ_REFUSED;
    if (LEVELS) *LEVELS = 0;
    const bool complete =
        NODES && ELEMENTS && PROPS && RESULT && NODEOUT && ELEMOUT && BOUNDS && (POINTS || NPOINTS == 0);
    const bool counted = NGROUPS >= 0 && NNODES >= 0 && NELEMS >= 0 && NPOINTS >= 0 && NNODES < INT32_MAX &&
                         NELEMS < INT32_MAX && NPOINTS < INT32_MAX;
    if (!complete || !counted || wanted < 1 || wanted > VQ_MAXLEVELS) return;

    const ThreadState state;
    const Tables host{NODES, NNODES, ELEMENTS, NELEMS, PROPS};
    Run run =
        run_levels(host, NGROUPS, NPOINTS, POINTS, RESULT[VQ_MODE_SLOT], wanted, place, context, {watch, watcher});
    const std::int32_t good = static_cast<std::int32_t>(run.levels.size());
    *LEVELS = good;
    if (good < std::min(wanted, 2)) {
        *STATUS = run.status;
        return;
    }
    try {
        Nature nature;
        for (std::int32_t b = 0; b < NPOINTS; ++b) {
            nature.bars = nature.bars || takes_part(POINTS[b]);
            nature.stiff_bars = nature.stiff_bars || (takes_part(POINTS[b]) && POINTS[b].GMODUL != 0);
        }
        nature.pieces = count_pieces(host) > 1;
        for (std::size_t e = 0; e < static_cast<std::size_t>(NELEMS) && !nature.triangles; ++e)
            nature.triangles = host.corners(e) == 3;
        for (const std::int8_t k : run.exponent) {
            if (k == HINGE) nature.pieces = true;
            if (k > HINGE && k <= levels::SHARP)
                nature.exponent = nature.exponent == 0 ? k : std::min(nature.exponent, k);
        }
        std::vector<std::int8_t> sharp_corner(4 * static_cast<std::size_t>(NELEMS));
        for (std::size_t k = 0; k < sharp_corner.size(); ++k)
            sharp_corner[k] =
                run.exponent[static_cast<std::size_t>(host.node(k / 4, static_cast<int>(k % 4))) - 1] <= levels::SHARP;

        Slots values, bounds;
        values = run.levels.back().slots;
        bounds.fill(std::numeric_limits<double>::quiet_NaN());
        if (good > 1)
            extrapolate_fields(run.levels, nature, extrapolate_slots(run.levels, nature, values, bounds), sharp_corner);
        const LevelResults& finest = run.levels.back();
        if (nature.exponent > 0 && good > 1) values[VQ_WT] = largest_elsewhere(finest.elemout, sharp_corner);

        std::copy(values.begin(), values.end(), RESULT);
        std::copy(bounds.begin(), bounds.end(), BOUNDS);
        std::copy(finest.nodeout.begin(), finest.nodeout.end(), NODEOUT);
        std::copy(finest.elemout.begin(), finest.elemout.end(), ELEMOUT);
        for (std::size_t b = 0; b < run.bars.size(); ++b) {
            if (takes_part(run.bars[b])) std::copy_n(&finest.stress[4 * b], 4, run.bars[b].STRESS);
            POINTS[b] = run.bars[b];
        }
        for (std::size_t n = 0; SHARP && n < run.exponent.size(); ++n) SHARP[n] = run.exponent[n] <= levels::SHARP;
        *STATUS = VQ_DONE;
    } catch (...) {
        *STATUS = VQ_OUT_OF_MEMORY;
        *LEVELS = 0;
    }
}
