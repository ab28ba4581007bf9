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
    const std::vector<double>*v0, *v1;  // null where there is no such level, or where it shows nothing of the field
    std::vector<double>* v2;
    std::size_t begin, end, step;
};

// Growth of a field towards coarser levels up to which these show anything of it. A mesh that cannot warp divides by a
// warping constant of 0, or of rounding.
constexpr double LARGEST = 8;

// Of the levels, two or more, those that show something of the field. With none but the finest, v1 is null.
Field field_of(std::vector<LevelResults>& levels, std::vector<double> LevelResults::*table, std::size_t begin,
               std::size_t end, std::size_t step) {
    const auto size = [&](const std::vector<double>& of) {
        double sum = 0;
        for (std::size_t i = begin; i < end; i += step) sum += std::fabs(of[i]);
        return sum;
    };
    const std::size_t n = levels.size();
    Field f{nullptr, nullptr, &(levels[n - 1].*table), begin, end, step};
    const std::vector<double>& v1 = levels[n - 2].*table;
    if (!(size(v1) <= LARGEST * size(*f.v2))) return f;
    f.v1 = &v1;
    if (n > 2 && size(levels[n - 3].*table) <= LARGEST * size(v1)) f.v0 = &(levels[n - 3].*table);
    return f;
}

// Corrects the finest by one order for all of the field, that by which it falls in the mean; 2 with two levels.
void correct(const Field& f) {
    if (!f.v1) return;
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

// Shear stresses at corners are of the first order and regular in the second: (8 v2 - 6 v1 + v0) / 3.
void correct_shear(const Field& f, const std::vector<std::int8_t>& sharp) {
    if (!f.v1) return;
    for (std::size_t i = f.begin; i < f.end; i += f.step) {
        if (sharp[i / f.step]) continue;
        const double v2 = (*f.v2)[i], v1 = (*f.v1)[i], d2 = v2 - v1;
        (*f.v2)[i] = f.v0 ? v2 + (5 * d2 - v1 + (*f.v0)[i]) / 3 : v2 + d2;
    }
}

}  // namespace

void extrapolate_fields(std::vector<LevelResults>& levels, const Nature& nature, const Direction& to,
                        const std::vector<std::int8_t>& sharp) {
    for (LevelResults& level : levels) turn(level, to);
    if (nature.pieces || nature.stiff_bars) return;
    const LevelResults& last = levels.back();
    const std::size_t nodes = last.nodeout.size() / 3, corners = last.elemout.size(), bars = last.stress.size();
    for (std::size_t column = 0; column < 3; ++column)
        correct(field_of(levels, &LevelResults::nodeout, column * nodes, (column + 1) * nodes, 1));
    for (std::size_t axial = 0; axial < 4; ++axial) {
        correct(field_of(levels, &LevelResults::elemout, 8 + axial, corners, 12));
        correct(field_of(levels, &LevelResults::stress, axial, bars, 4));
    }
    for (std::size_t shear = 0; shear < 8; ++shear)
        correct_shear(field_of(levels, &LevelResults::elemout, shear, corners, 12), sharp);
}

}  // namespace levels
