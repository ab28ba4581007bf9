#include "levels/extrapolate.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

namespace levels {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

// Between two levels an error falls by 2^p. The orders p that are believed, 0.9 to 2.2, as these powers: sharp
// re-entrant corners tend to 4/3, all else to 2.
constexpr double MINFALL = 1.866065983073615, MAXFALL = 4.59479341998814;
// Share of a correction that is always in the bound.
constexpr double DOUBT = 0.3;
// Rounding of a slot beside its natural size: of closed integrals, and of solutions.
constexpr double EXACT = 1e-13, SOLVED = 1e-11;
// The plastic search, in the host's units: its last step, and the balance of forces at which it ends.
constexpr double PLASTICSTEP = 1e-9, PLASTICBALANCE = 1e-4;

struct Direction {
    double c, s;  // cosine and sine of ALPHA
};

// Without the functions of the C library, whose last bits differ between processors:
// tan ALPHA = -DYZ / (I1 - IYY) = -(I1 - IZZ) / DYZ.
Direction direction(const Slots& slots) {
    const double ALPHA = slots[VQ_ALPHA];
    if (ALPHA == 0) return {1, 0};
    if (std::fabs(slots[VQ_DYZ]) < 1e-4 * (slots[VQ_IYY] + slots[VQ_IZZ])) return {0, std::copysign(1.0, ALPHA)};
    const bool along_z = slots[VQ_IYY] > slots[VQ_IZZ];
    const double c = along_z ? std::fabs(slots[VQ_DYZ]) : slots[VQ_I1] - slots[VQ_IYY];
    const double s = along_z ? slots[VQ_I1] - slots[VQ_IZZ] : std::fabs(slots[VQ_DYZ]);
    const double h = std::sqrt(c * c + s * s);
    return {c / h, std::copysign(s / h, -slots[VQ_DYZ])};
}

double largest(std::initializer_list<double> values) { return std::max(values); }

// The factor by which a field's error falls from level to level, in the mean; 0 where it does not. `each(visit)` visits
// the field's values on the last three levels.
template <class Each>
double fall_of(Each each) {
    double before = 0, both = 0;
    each([&](double v0, double v1, double v2) {
        before += (v1 - v0) * (v2 - v1);
        both += (v2 - v1) * (v2 - v1);
    });
    const double fall = before / both;
    return fall > 1 ? std::clamp(fall, MINFALL, MAXFALL) : 0;
}

}  // namespace

Estimate estimate(const double* values, int count, double floor) {
    int first = count;
    while (first > 0 && std::isfinite(values[first - 1])) --first;
    const int finite = count - first;
    const double v2 = values[count - 1];
    if (finite == 0) return {v2, infinity};
    if (finite == 1) return {v2, count == 1 ? unknown : infinity};
    const double v1 = values[count - 2], d2 = v2 - v1;
    if (finite == 2) return {v2 + d2 / 3, largest({std::fabs(d2), floor})};
    const double d1 = v1 - values[count - 3];
    if (largest({std::fabs(d1), std::fabs(d2)}) <= floor) return {v2, floor};
    if (d2 == 0 || !(d1 / d2 > 1)) return {v2, largest({std::fabs(d1), std::fabs(d2), floor})};
    const double fall = std::clamp(d1 / d2, MINFALL, MAXFALL), c = d2 / (fall - 1);
    const double e = v2 + c, second_order = v2 + d2 / 3, before = v1 + d1 / (fall - 1);
    return {e, largest({std::fabs(e - second_order), std::fabs(e - before) / 2, DOUBT * std::fabs(c), floor})};
}

void extrapolate_slots(const std::vector<LevelResults>& levels, const Unlimited& unlimited, Slots& values,
                       Slots& bounds) {
    const int count = static_cast<int>(levels.size());
    const Slots& finest = levels.back().slots;
    values = finest;
    const auto estimate_of = [&](const auto& value_of, double floor, int used) {
        double v[VQ_MAXLEVELS] = {};
        for (int k = 0; k < used; ++k) v[k] = value_of(levels[static_cast<std::size_t>(count - used + k)].slots);
        return estimate(v, used, floor);
    };
    const auto set = [&](int slot, const Estimate& e) {
        values[static_cast<std::size_t>(slot)] = e.value;
        bounds[static_cast<std::size_t>(slot)] = e.bound;
    };
    const auto scalar = [&](int slot, double floor) {
        set(slot, estimate_of([slot](const Slots& s) { return s[static_cast<std::size_t>(slot)]; }, floor, count));
    };

    // natural sizes: radius of gyration, distance from the origin, second moments and area about it
    const double EA = std::fabs(finest[VQ_EA]), IP = std::fabs(finest[VQ_IYY]) + std::fabs(finest[VQ_IZZ]);
    const double radius = std::sqrt(IP / EA);
    const double away = std::fabs(finest[VQ_YC]) + std::fabs(finest[VQ_ZC]) + radius, moment = IP + EA * away * away;
    const double G = largest({std::fabs(finest[VQ_GAY]), std::fabs(finest[VQ_GAZ])});
    const double skew = radius * radius * std::sqrt(EA / std::fabs(finest[VQ_IW]));

    scalar(VQ_EA, EXACT * EA);
    for (int slot : {VQ_IYY, VQ_IZZ, VQ_DYZ, VQ_I1, VQ_I2}) scalar(slot, EXACT * moment);
    for (int slot : {VQ_YC, VQ_ZC}) scalar(slot, EXACT * away);
    for (int slot : {VQ_SCY, VQ_SCZ, VQ_RY, VQ_RZ}) scalar(slot, SOLVED * away);
    for (int slot : {VQ_GJ, VQ_IW, VQ_IWS, VQ_WT})
        scalar(slot, SOLVED * std::fabs(finest[static_cast<std::size_t>(slot)]));
    for (int slot : {VQ_GAY, VQ_GAZ}) scalar(slot, SOLVED * G);
    for (int slot : {VQ_WR1, VQ_WR2}) scalar(slot, std::isfinite(skew) ? SOLVED * skew : 0);
    for (int slot : {VQ_ANET, VQ_WEIGHT}) scalar(slot, EXACT * std::fabs(finest[static_cast<std::size_t>(slot)]));
    bounds[VQ_EREF] = bounds[VQ_GREF] = count == 1 ? unknown : 0;

    // ALPHA stays the finest level's; directions and tensors are turned to it.
    const auto [c, s] = direction(finest);
    scalar(VQ_ALPHA, EXACT * moment / std::fabs(finest[VQ_I1] - finest[VQ_I2]));
    bounds[VQ_ALPHA] += std::fabs(values[VQ_ALPHA] - finest[VQ_ALPHA]);
    values[VQ_ALPHA] = finest[VQ_ALPHA];
    const auto turned = [c = c, s = s](double y, double z) { return Direction{c * y + s * z, c * z - s * y}; };
    const auto turned_bound = [c = std::fabs(c), s = std::fabs(s)](double y, double z) {
        return Direction{c * y + s * z, c * z + s * y};
    };
    const auto set_pair = [&](int u, int v, double y, double z, double y_bound, double z_bound) {
        const Direction value = turned(y, z), bound = turned_bound(y_bound, z_bound);
        set(u, {value.c, bound.c});
        set(v, {value.s, bound.s});
    };
    set_pair(VQ_SCU, VQ_SCV, values[VQ_SCY], values[VQ_SCZ], bounds[VQ_SCY], bounds[VQ_SCZ]);

    const double SY = finest[VQ_IYY], SZ = finest[VQ_IZZ];
    set_pair(VQ_RU, VQ_RV, values[VQ_RY] * SY, values[VQ_RZ] * SZ, bounds[VQ_RY] * SY, bounds[VQ_RZ] * SZ);
    values[VQ_RU] /= finest[VQ_I2];
    bounds[VQ_RU] /= finest[VQ_I2];
    values[VQ_RV] /= finest[VQ_I1];
    bounds[VQ_RV] /= finest[VQ_I1];

    const Estimate YZ = estimate_of(
        [](const Slots& of) {
            const auto [a, b] = direction(of);
            return (of[VQ_GAU] - of[VQ_GAV]) * a * b + of[VQ_GAUV] * (a * a - b * b);
        },
        SOLVED * G, count);
    const double cc = c * c, ss = s * s, cs = c * s;
    const double Y = bounds[VQ_GAY], Z = bounds[VQ_GAZ];
    set(VQ_GAU, {cc * values[VQ_GAY] + ss * values[VQ_GAZ] + 2 * cs * YZ.value,
                 cc * Y + ss * Z + 2 * std::fabs(cs) * YZ.bound});
    set(VQ_GAV, {ss * values[VQ_GAY] + cc * values[VQ_GAZ] - 2 * cs * YZ.value,
                 ss * Y + cc * Z + 2 * std::fabs(cs) * YZ.bound});
    set(VQ_GAUV, {cs * (values[VQ_GAZ] - values[VQ_GAY]) + (cc - ss) * YZ.value,
                  std::fabs(cs) * (Y + Z) + std::fabs(cc - ss) * YZ.bound});

    // the centre of coupled groups, turned crosswise where ALPHA is not 0
    const auto centre = [&](bool along_z) {
        return estimate_of(
            [along_z](const Slots& of) {
                const auto [a, b] = direction(of);
                return along_z ? a * of[VQ_COUP2] - b * of[VQ_COUP1] : a * of[VQ_COUP1] + b * of[VQ_COUP2];
            },
            EXACT * away, count);
    };
    const Estimate yc = centre(false), zc = centre(true);
    set(VQ_COUP1, {c * yc.value - s * zc.value, std::fabs(c) * yc.bound + std::fabs(s) * zc.bound});
    set(VQ_COUP2, {c * zc.value + s * yc.value, std::fabs(c) * zc.bound + std::fabs(s) * yc.bound});

    // Plastic slots, in principal axes from the levels that have these in common.
    int alike = 0;
    while (alike < count) {
        const auto [a, b] = direction(levels[static_cast<std::size_t>(count - 1 - alike)].slots);
        if (!(std::fabs(a * s - b * c) < 0.01 && a * c + b * s > 0)) break;
        ++alike;
    }
    for (int slot = VQ_PLAXIS_Y; slot <= VQ_PLMOM_U_NEG; ++slot) {
        const int in_frame = (slot - VQ_PLAXIS_Y) % 12, frame = slot - in_frame;
        double moments = 0;
        for (int k = 8; k < 12; ++k)
            moments = std::max(moments, std::fabs(finest[static_cast<std::size_t>(frame + k)]));
        const double size = std::fabs(finest[static_cast<std::size_t>(slot)]);
        // A moment of plastic forces N is at most N radius or so, and dN = 2 N dL / radius or more.
        const double floor = in_frame >= 4 ? SOLVED * size
                             : moments > 0
                                 ? PLASTICSTEP + EXACT * size + 10 * PLASTICBALANCE * radius * radius / moments
                                 : 0;
        set(slot, estimate_of([slot](const Slots& of) { return of[static_cast<std::size_t>(slot)]; }, floor,
                              frame == VQ_PLAXIS_Y ? count : std::max(alike, 1)));
    }

    if (count == 1) return;
    if (unlimited.warping)
        for (int slot : {VQ_SCY, VQ_SCZ, VQ_SCU, VQ_SCV, VQ_GJ, VQ_IW, VQ_IWS, VQ_WT, VQ_WR1, VQ_WR2})
            bounds[static_cast<std::size_t>(slot)] = infinity;
    if (unlimited.warping || unlimited.shear)
        for (int slot : {VQ_GAY, VQ_GAZ, VQ_GAU, VQ_GAV, VQ_GAUV}) bounds[static_cast<std::size_t>(slot)] = infinity;
    if (unlimited.stress) bounds[VQ_WT] = infinity;
}

void extrapolate_fields(std::vector<LevelResults>& levels, const Unlimited& unlimited,
                        const std::vector<std::int8_t>& sharp) {
    const std::size_t n = levels.size();
    if (n == 1) return;
    const auto [c, s] = direction(levels.back().slots);
    for (std::size_t k = 0; k + 1 < n; ++k) {
        const auto [a, b] = direction(levels[k].slots);
        const double cosine = c * a + s * b, sine = s * a - c * b;
        if (cosine == 1) continue;
        const auto turn = [&](double& u, double& v) {
            const double u_before = u;
            u = cosine * u_before + sine * v;
            v = cosine * v - sine * u_before;
        };
        std::vector<double>& w = levels[k].nodeout;
        for (std::size_t i = w.size() / 3; i < 2 * (w.size() / 3); ++i) turn(w[i], w[i + w.size() / 3]);
        std::vector<double>& e = levels[k].elemout;
        for (std::size_t at = 0; at < e.size(); at += 12)
            for (const auto& [u, v] : {std::pair{2, 4}, {3, 5}, {9, 10}}) turn(e[at + u], e[at + v]);
        std::vector<double>& bar = levels[k].stress;
        for (std::size_t at = 0; at < bar.size(); at += 4) turn(bar[at + 1], bar[at + 2]);
    }
    if (unlimited.warping) return;

    LevelResults& last = levels[n - 1];
    const LevelResults &v1 = levels[n - 2], &v0 = levels[n > 2 ? n - 3 : 0];
    // Warping, and with it the axial stress of a bimoment, by one order for all of a field.
    const auto correct = [&](std::vector<double> LevelResults::*field, std::size_t begin, std::size_t end,
                             std::size_t step) {
        std::vector<double>& v2 = last.*field;
        double fall = 4;
        if (n > 2)
            fall = fall_of([&](const auto& visit) {
                for (std::size_t i = begin; i < end; i += step) visit((v0.*field)[i], (v1.*field)[i], v2[i]);
            });
        if (fall == 0) return;
        for (std::size_t i = begin; i < end; i += step) v2[i] += (v2[i] - (v1.*field)[i]) / (fall - 1);
    };
    const std::size_t nodes = last.nodeout.size() / 3;
    for (std::size_t column = 0; column < 3; ++column)
        correct(&LevelResults::nodeout, column * nodes, (column + 1) * nodes, 1);
    correct(&LevelResults::elemout, 11, last.elemout.size(), 12);
    correct(&LevelResults::stress, 3, last.stress.size(), 4);
    // Shear stresses at corners are of the first order and regular in the second: (8 v2 - 6 v1 + v0) / 3 by
    // Richardson's extrapolation.
    for (std::size_t corner = 0; corner < last.elemout.size() / 12; ++corner) {
        if (sharp[corner]) continue;
        for (std::size_t i = 12 * corner; i < 12 * corner + 8; ++i) {
            const double v2 = last.elemout[i], d2 = v2 - v1.elemout[i];
            last.elemout[i] = n > 2 ? v2 + (5 * d2 - v1.elemout[i] + v0.elemout[i]) / 3 : v2 + d2;
        }
    }
}

}  // namespace levels
