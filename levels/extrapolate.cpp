// The slots. What belongs to principal axes, which may change from level to level, is extrapolated in the host's and
// turned once.
#include "levels/extrapolate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "levels/estimate.h"

namespace levels {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// Rounding of a slot beside its natural size: of closed integrals, and of solutions; and the share in it of what is
// large only because the origin is far away.
constexpr double EXACT = 1e-12, SOLVED = 1e-11, FAR = 0.01;
// The plastic search, in the host's units: its last step, and the balance of forces at which it ends.
constexpr double PLASTICSTEP = 1e-9, PLASTICBALANCE = 1e-4;
// Shares in bounds, found on random meshes: of the correction of stiffnesses, in warping constants and the shear
// centre, in the sums of warping times distance; of the change of the largest stress between the levels before the
// finest.
constexpr double COARSE = 0.006, COARSESKEW = 0.18, MOVED = 1;
// The sum of warping times distance, in the host's units, below which WR1 and WR2 are 0.
constexpr double MINSKEWSUM = 0.0001;
// A change of ALPHA beyond this is a change of axes; what is not known of ALPHA beyond this is taken seriously.
constexpr double SAMEAXES = 0.01, ANYAXES = 0.1;
// By which a change of a plastic line may differ from a quarter of the one before.
constexpr double REGULAR = 0.05;

constexpr int on_warping[] = {VQ_SCY, VQ_SCZ, VQ_SCU,  VQ_SCV, VQ_GJ, VQ_GAY, VQ_GAZ, VQ_IW,
                              VQ_GAU, VQ_GAV, VQ_GAUV, VQ_IWS, VQ_WT, VQ_WR1, VQ_WR2};
constexpr int of_shear[] = {VQ_GAY, VQ_GAZ, VQ_GAU, VQ_GAV, VQ_GAUV};

// 2^(n / 32) by square roots, which all processors round alike.
double power(int n) {
    double base = 2, result = 1;
    for (int bit = 32; bit > 0; bit /= 2, base = std::sqrt(base))
        if (n & bit) result *= base;
    return result;
}

// The slots of a run on their way, read and written by their numbers.
struct Work {
    const std::vector<LevelResults>& levels;
    Slots &values, &bounds;
    // natural sizes: radius of gyration, distance from the origin, second moments as far as that has a share in their
    // rounding, shear stiffness
    double radius, away, moments, shear;

    const Slots& level(int back) const { return levels[levels.size() - 1 - static_cast<std::size_t>(back)].slots; }
    int count() const { return static_cast<int>(levels.size()); }
    double finest(int slot) const { return level(0)[static_cast<std::size_t>(slot)]; }
    double& bound(int slot) { return bounds[static_cast<std::size_t>(slot)]; }
    Estimate got(int slot, double factor = 1) const {
        return {values[static_cast<std::size_t>(slot)] * factor,
                bounds[static_cast<std::size_t>(slot)] * std::fabs(factor)};
    }
    void set(int slot, const Estimate& e) {
        values[static_cast<std::size_t>(slot)] = e.value;
        bound(slot) = e.bound;
    }
};

// Of what value_of(slots) tells of a level, from the finest `used` levels.
template <class Value>
Estimate estimate_of(const Work& w, Value value_of, const Falls& falls, double floor, int used = VQ_MAXLEVELS) {
    double v[VQ_MAXLEVELS] = {};
    used = std::min(used, w.count());
    for (int k = 0; k < used; ++k) v[used - 1 - k] = value_of(w.level(k));
    return estimate(v, used, falls, floor);
}

void set_slot(Work& w, int slot, const Falls& falls, double floor, int used = VQ_MAXLEVELS) {
    w.set(slot, estimate_of(
                    w, [slot](const Slots& of) { return of[static_cast<std::size_t>(slot)]; }, falls, floor, used));
}

void outline_slots(Work& w) {
    for (const int slot : {VQ_EA, VQ_ANET, VQ_WEIGHT})
        set_slot(w, slot, OUTLINE, EXACT * (1 + FAR * w.away / w.radius) * std::fabs(w.finest(slot)));
    for (const int slot : {VQ_IYY, VQ_IZZ, VQ_DYZ, VQ_I1, VQ_I2}) set_slot(w, slot, MOMENTS, EXACT * w.moments);
    for (const int slot : {VQ_YC, VQ_ZC}) set_slot(w, slot, OUTLINE, EXACT * (w.radius + FAR * w.away));
    for (const auto& [slot, moment] : {std::pair{VQ_RY, VQ_IYY}, {VQ_RZ, VQ_IZZ}})
        set_slot(w, slot, MIXED,
                 SOLVED * w.away + EXACT * w.moments / std::fabs(w.finest(moment)) * std::fabs(w.finest(slot)));
    for (const int slot : {VQ_EREF, VQ_GREF}) w.set(slot, {w.finest(slot), 0});
}

void warping_slots(Work& w, const Falls& warped, bool triangles) {
    // Warping itself is better known than its gradients.
    const Falls moments{warped.first, warped.second, 0.13 * warped.share};
    set_slot(w, VQ_GJ, warped, SOLVED * std::fabs(w.finest(VQ_GJ)));
    for (const int slot : {VQ_IW, VQ_IWS}) set_slot(w, slot, moments, SOLVED * std::fabs(w.finest(slot)));
    for (const int slot : {VQ_GAY, VQ_GAZ}) set_slot(w, slot, warped, SOLVED * w.shear);
    for (const int slot : {VQ_SCY, VQ_SCZ}) set_slot(w, slot, warped, SOLVED * w.away);
    const double skew = w.radius * w.radius * std::sqrt(std::fabs(w.finest(VQ_EA) / w.finest(VQ_IW)));
    for (const int slot : {VQ_WR1, VQ_WR2}) set_slot(w, slot, warped, std::isfinite(skew) ? SOLVED * skew : 0);

    // Two levels of a mesh of one layer can agree because neither warps.
    for (const int slot : {VQ_GJ, VQ_GAY, VQ_GAZ})
        if (w.count() == 2 && std::fabs(w.level(0)[slot] - w.level(1)[slot]) <= SOLVED * std::fabs(w.finest(slot)))
            w.bound(slot) = std::fabs(w.finest(slot));

    // Where the parts of an error cancel by chance, what the levels still change of the stiffnesses tells how coarse
    // the mesh is. What is 0 by symmetry stays exact.
    double coarse = 0;
    for (const int slot : {VQ_GJ, VQ_GAY, VQ_GAZ})
        coarse = std::max(coarse, std::fabs(w.got(slot).value / w.finest(slot) - 1));
    coarse = std::min(coarse, 1.0);
    const auto at_least = [&](int slot, double bound, double floor) {
        if (w.bound(slot) > 2 * floor) w.bound(slot) = std::max(w.bound(slot), bound);
    };
    for (const int slot : {VQ_IW, VQ_IWS}) at_least(slot, COARSE * coarse * std::fabs(w.finest(slot)), 0);
    for (const int slot : {VQ_SCY, VQ_SCZ}) at_least(slot, COARSE * coarse * w.radius, SOLVED * w.away);
    for (const int slot : {VQ_WR1, VQ_WR2})
        at_least(slot, COARSESKEW * coarse * std::fabs(w.finest(slot)), SOLVED * skew);
    // A bound should not depend on the host's axes: two components have it in common.
    const auto share = [&](int y, int z, double floor) {
        const double largest = std::max(w.bound(y), w.bound(z));
        at_least(y, largest, floor);
        at_least(z, largest, floor);
    };
    share(VQ_SCY, VQ_SCZ, SOLVED * w.away);
    share(VQ_GAY, VQ_GAZ, SOLVED * w.shear);

    // By definition both are 0 where the sum is below a limit, which its extrapolated value can be, too.
    const double IWS = std::fabs(w.got(VQ_IWS).value), sum = std::fabs(w.got(VQ_WR2).value) * IWS;
    for (const int slot : {VQ_WR1, VQ_WR2}) {
        const Estimate e = w.got(slot);
        if (std::fabs(sum - MINSKEWSUM) <= w.bound(VQ_WR2) * IWS) w.bound(slot) = e.bound + std::fabs(e.value);
        if (sum < MINSKEWSUM) w.set(slot, {0, w.bound(slot)});
    }

    // The largest stress is of the first order in triangles, and may change its place from level to level.
    set_slot(w, VQ_WT, triangles ? Falls{2, 4, 0.2} : SMOOTH, SOLVED * std::fabs(w.finest(VQ_WT)));
    const auto change = [&](int back) { return std::fabs(w.level(back)[VQ_WT] - w.level(back + 1)[VQ_WT]); };
    w.bound(VQ_WT) = std::max({w.bound(VQ_WT), change(0), w.count() > 2 ? MOVED * change(1) : 0});
}

// The direction that is turned from `from` by a small angle.
Direction turned(const Direction& from, double angle) {
    const double s = angle * (1 - angle * angle / 6), c = std::sqrt(1 - s * s);
    return {c * from.c - s * from.s, s * from.c + c * from.s};
}

// `swing` becomes what is not known of ALPHA.
Direction principal_slots(Work& w, const Falls& warped, double& swing) {
    set_slot(w, VQ_ALPHA, MOMENTS, EXACT * w.moments / std::fabs(w.finest(VQ_I1) - w.finest(VQ_I2)));
    // Axes whose moments differ by little more than what is not known of them are as good as any.
    const double unknown = std::max(w.bound(VQ_IYY), w.bound(VQ_IZZ)) + w.bound(VQ_DYZ);
    const double any = unknown / std::fabs(w.finest(VQ_I1) - w.finest(VQ_I2));
    if (any > ANYAXES) {
        w.bound(VQ_ALPHA) = std::max(w.bound(VQ_ALPHA), any);
        for (const int slot : {VQ_I1, VQ_I2}) w.bound(slot) = std::max(w.bound(slot), unknown);
    }
    const Estimate ALPHA = w.got(VQ_ALPHA);
    swing = std::min(ALPHA.bound, 1.0);
    const double correction =
        std::fabs(ALPHA.value - w.finest(VQ_ALPHA)) < SAMEAXES ? ALPHA.value - w.finest(VQ_ALPHA) : 0;
    const double corrected = w.finest(VQ_ALPHA) + correction;
    w.set(VQ_ALPHA, {corrected, ALPHA.bound + std::fabs(ALPHA.value - corrected)});
    const Direction to = turned(direction(w.level(0)), correction);
    const double c = to.c, s = to.s, C = std::fabs(c), S = std::fabs(s);
    const auto set_pair = [&](int u, int v, const Estimate& y, const Estimate& z) {
        const double along_u = c * y.value + s * z.value, along_v = c * z.value - s * y.value;
        w.set(u, {along_u, C * y.bound + S * z.bound + swing * (std::fabs(along_v) + swing * std::fabs(along_u))});
        w.set(v, {along_v, C * z.bound + S * y.bound + swing * (std::fabs(along_u) + swing * std::fabs(along_v))});
    };
    set_pair(VQ_SCU, VQ_SCV, w.got(VQ_SCY), w.got(VQ_SCZ));
    set_pair(VQ_RU, VQ_RV, w.got(VQ_RY, w.got(VQ_IYY).value), w.got(VQ_RZ, w.got(VQ_IZZ).value));
    w.set(VQ_RU, w.got(VQ_RU, 1 / w.got(VQ_I2).value));
    w.set(VQ_RV, w.got(VQ_RV, 1 / w.got(VQ_I1).value));

    const auto beside_diagonal = [](const Slots& of) {
        const auto [a, b] = direction(of);
        return (of[VQ_GAU] - of[VQ_GAV]) * a * b + of[VQ_GAUV] * (a * a - b * b);
    };
    const Estimate Y = w.got(VQ_GAY), Z = w.got(VQ_GAZ);
    const Estimate YZ = estimate_of(w, beside_diagonal, warped, SOLVED * w.shear);
    const double cc = c * c, ss = s * s, cs = c * s;
    const double GAU = cc * Y.value + ss * Z.value + 2 * cs * YZ.value;
    const double GAV = ss * Y.value + cc * Z.value - 2 * cs * YZ.value;
    const double GAUV = cs * (Z.value - Y.value) + (cc - ss) * YZ.value;
    const double common = 2 * C * S * YZ.bound + swing * (2 * std::fabs(GAUV) + swing * std::fabs(GAU - GAV));
    w.set(VQ_GAU, {GAU, cc * Y.bound + ss * Z.bound + common});
    w.set(VQ_GAV, {GAV, ss * Y.bound + cc * Z.bound + common});
    w.set(VQ_GAUV, {GAUV, C * S * (Y.bound + Z.bound) + std::fabs(cc - ss) * YZ.bound +
                              swing * (std::fabs(GAU - GAV) + 2 * swing * std::fabs(GAUV))});

    // The centre of coupled groups is turned crosswise.
    const auto centre = [&](bool along_z) {
        const auto component = [along_z](const Slots& of) {
            const auto [a, b] = direction(of);
            return along_z ? a * of[VQ_COUP2] - b * of[VQ_COUP1] : a * of[VQ_COUP1] + b * of[VQ_COUP2];
        };
        return estimate_of(w, component, MOMENTS, EXACT * (w.radius + FAR * w.away));
    };
    set_pair(VQ_COUP2, VQ_COUP1, centre(true), centre(false));
    return to;
}

// Whether a plastic line moves from level to level as the outline does, or does not move: then it cuts no curved edge,
// whose chords would give its values an error of no order.
bool moves_regularly(const Work& w, int slot, double floor, int used) {
    if (std::min(used, w.count()) < 3) return false;
    const auto at = [&](int back) { return w.level(back)[static_cast<std::size_t>(slot)]; };
    const double d1 = at(1) - at(2), d2 = at(0) - at(1);
    if (std::max(std::fabs(d1), std::fabs(d2)) <= floor) return true;
    return std::fabs(d1 / OUTLINE.first - d2) <= REGULAR * std::fabs(d2);
}

// In principal axes from the levels that have these in common.
void plastic_slots(Work& w, const Direction& to, double swing) {
    int alike = 0;
    for (; alike < w.count(); ++alike) {
        const auto [a, b] = direction(w.level(alike));
        if (!(std::fabs(a * to.s - b * to.c) < SAMEAXES && a * to.c + b * to.s > 0)) break;
    }
    for (const int frame : {VQ_PLAXIS_Y, VQ_PLAXIS_U}) {
        const bool principal = frame == VQ_PLAXIS_U;
        double moment = 0, least = infinity, most = 0;  // of PLMOM over PLMOD
        for (int slot = frame + 8; slot < frame + 12; ++slot) {
            moment = std::max(moment, std::fabs(w.finest(slot)));
            const double strength = std::fabs(w.finest(slot) / w.finest(slot - 4));
            if (!(strength > 0)) continue;
            least = std::min(least, strength);
            most = std::max(most, strength);
        }
        // A moment of plastic forces N is at most N radius or so, and dN = 2 N dL / radius or more. The line is not
        // further off than the nodes' extent.
        const double step =
            moment > 0 ? std::min(PLASTICSTEP + 10 * PLASTICBALANCE * w.radius * w.radius / moment, 4 * w.radius) : 0;
        // By the forces that do not balance, PLMOM changes as the line moves; so does PLMOD with one strength, else by
        // the areas.
        const double of_moment = step * PLASTICBALANCE, one = 1 + 1e-9;
        for (int slot = frame; slot < frame + 12; ++slot) {
            const double size = std::fabs(w.finest(slot));
            const double stopped = slot < frame + 4        ? step
                                   : size == 0             ? 0
                                   : slot >= frame + 8     ? of_moment
                                   : !(most > least * one) ? of_moment / least
                                                           : step * size / w.radius;
            // Lines come in the order 1, 2, -1, -2 of directions, what belongs to them as 2, 1, -2, -1.
            const int line = frame + ((slot - frame) % 4 ^ 1), used = principal ? std::max(alike, 1) : w.count();
            const bool series = slot >= frame + 4 && moves_regularly(w, line, step, used);
            set_slot(w, slot, series ? MIXED : slot < frame + 4 ? CUT : SMOOTH, stopped + SOLVED * size, used);
            if (principal) w.bound(slot) += swing * size;
        }
    }
}

void without_limit(Work& w, const Nature& nature) {
    if (nature.pieces || nature.stiff_bars)
        for (const int slot : on_warping) w.set(slot, {w.finest(slot), infinity});
    if (nature.bars)
        for (const int slot : of_shear) w.bound(slot) = infinity;
    if (nature.exponent > 0) w.bound(VQ_WT) = infinity;
}

}  // namespace

// Without the functions of the C library, whose last bits differ between processors:
// tan ALPHA = -DYZ / (I1 - IYY) = -(I1 - IZZ) / DYZ.
Direction direction(const Slots& slots) {
    const double ALPHA = slots[VQ_ALPHA], DYZ = slots[VQ_DYZ];
    if (ALPHA == 0) return {1, 0};
    if (std::fabs(DYZ) < 1e-4 * (slots[VQ_IYY] + slots[VQ_IZZ])) return {0, std::copysign(1.0, ALPHA)};
    const bool along_z = slots[VQ_IYY] > slots[VQ_IZZ];
    const double c = along_z ? std::fabs(DYZ) : slots[VQ_I1] - slots[VQ_IYY];
    const double s = along_z ? slots[VQ_I1] - slots[VQ_IZZ] : std::fabs(DYZ);
    const double h = std::sqrt(c * c + s * s);
    return {c / h, std::copysign(s / h, -DYZ)};
}

Direction extrapolate_slots(const std::vector<LevelResults>& levels, const Nature& nature, Slots& values,
                            Slots& bounds) {
    const Slots& finest = levels.back().slots;
    const double EA = std::fabs(finest[VQ_EA]), polar = std::fabs(finest[VQ_IYY]) + std::fabs(finest[VQ_IZZ]);
    const double radius = std::sqrt(polar / EA);
    // a coupled section has its place in COUP1 and COUP2 alone
    const double away = std::max(std::fabs(finest[VQ_YC]) + std::fabs(finest[VQ_ZC]),
                                 std::fabs(finest[VQ_COUP1]) + std::fabs(finest[VQ_COUP2])) +
                        radius;
    Work w{levels,
           values,
           bounds,
           radius,
           away,
           polar + FAR * EA * away * away,
           std::max(std::fabs(finest[VQ_GAY]), std::fabs(finest[VQ_GAZ]))};
    // A sharp corner adds an error of energy of order 2 k. Nothing is known of bars.
    const Falls warped = nature.bars            ? Falls{0, 0, 0}
                         : nature.exponent == 0 ? SMOOTH
                                                : Falls{power(nature.exponent), 4, 0.2};
    double swing;
    outline_slots(w);
    warping_slots(w, warped, nature.triangles);
    const Direction to = principal_slots(w, warped, swing);
    plastic_slots(w, to, swing);
    without_limit(w, nature);
    // no share of what is infinite
    for (double& bound : bounds)
        if (std::isnan(bound)) bound = infinity;
    return to;
}

}  // namespace levels
