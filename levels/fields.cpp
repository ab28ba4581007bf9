// The fields at the host's nodes, corners and bars.
#include <algorithm>
#include <cmath>
#include <utility>

#include "levels/extrapolate.h"

namespace levels {
namespace {

// A level's fields in the axes of `to`: unit shear strains, unit forces and moments about principal axes.
void turn(LevelResults& level, const Direction& to) {
    const auto [a, b] = direction(level.slots);
    const double cosine = to.c * a + to.s * b, sine = to.s * a - to.c * b;
    if (sine == 0 && cosine > 0) return;
    const auto turn_pair = [cosine = cosine, sine = sine](double& u, double& v) {
        const double before = u;
        u = cosine * u + sine * v;
        v = cosine * v - sine * before;
    };
    const std::size_t nodes = level.nodeout.size() / 3;
    for (std::size_t i = nodes; i < 2 * nodes; ++i) turn_pair(level.nodeout[i], level.nodeout[i + nodes]);
    for (std::size_t at = 0; at < level.elemout.size(); at += 12)
        for (const auto& [u, v] : {std::pair{2, 4}, {3, 5}, {9, 10}})
            turn_pair(level.elemout[at + u], level.elemout[at + v]);
    for (std::size_t at = 0; at < level.stress.size(); at += 4) turn_pair(level.stress[at + 1], level.stress[at + 2]);
}

// A field on the last levels: every `step`th value from `begin` on.
struct Field {
    const std::vector<double>*v0, *v1;  // v0 null with two levels
    std::vector<double>* v2;
    std::size_t begin, end, step;
};

// Corrects the finest by one order for all of the field, that by which it falls in the mean; 2 with two levels.
void correct(const Field& f) {
    double fall = 4;
    if (f.v0) {
        double before = 0, after = 0;
        for (std::size_t i = f.begin; i < f.end; i += f.step) {
            const double d2 = (*f.v2)[i] - (*f.v1)[i];
            before += ((*f.v1)[i] - (*f.v0)[i]) * d2;
            after += d2 * d2;
        }
        fall = before / after;
        if (!(fall > 1)) return;
        fall = std::clamp(fall, 2.0, 4.6);
    }
    for (std::size_t i = f.begin; i < f.end; i += f.step) (*f.v2)[i] += ((*f.v2)[i] - (*f.v1)[i]) / (fall - 1);
}

}  // namespace

void extrapolate_fields(std::vector<LevelResults>& levels, const Nature& nature, const Direction& to,
                        const std::vector<std::int8_t>& sharp) {
    for (LevelResults& level : levels) turn(level, to);
    if (nature.pieces || nature.stiff_bars) return;
    LevelResults& last = levels.back();
    const LevelResults& before = levels[levels.size() - 2];
    const LevelResults* first = levels.size() > 2 ? &levels[levels.size() - 3] : nullptr;
    const auto correct_all = [&](std::vector<double> LevelResults::*table, std::size_t begin, std::size_t end,
                                 std::size_t step) {
        correct({first ? &(first->*table) : nullptr, &(before.*table), &(last.*table), begin, end, step});
    };
    const std::size_t nodes = last.nodeout.size() / 3;
    for (std::size_t column = 0; column < 3; ++column)
        correct_all(&LevelResults::nodeout, column * nodes, (column + 1) * nodes, 1);
    for (std::size_t axial = 0; axial < 4; ++axial) {
        correct_all(&LevelResults::elemout, 8 + axial, last.elemout.size(), 12);
        correct_all(&LevelResults::stress, axial, last.stress.size(), 4);
    }
    // Shear stresses at corners are of the first order and regular in the second: (8 v2 - 6 v1 + v0) / 3.
    for (std::size_t corner = 0; corner < last.elemout.size() / 12; ++corner) {
        if (sharp[corner]) continue;
        for (std::size_t i = 12 * corner; i < 12 * corner + 8; ++i) {
            const double v2 = last.elemout[i], v1 = before.elemout[i], d2 = v2 - v1;
            last.elemout[i] = first ? v2 + (5 * d2 - v1 + first->elemout[i]) / 3 : v2 + d2;
        }
    }
}

}  // namespace levels
