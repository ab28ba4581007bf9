#include "levels/plastic.h"

namespace levels {
namespace {

// A line in one of its two frames: p = a (y - y0) + b (z - z0) counts towards it.
struct Line {
    double a, b, y0, z0, L;
    int above, below;  // columns of the strengths on its sides
};

// Integrals of p - L over an element: over all of it, and over the part above the line.
struct Moments {
    double all, above;
};

Moments moments(const Tables& mesh, std::size_t e, const Line& line) {
    const int n = mesh.corners(e);
    double y[4], z[4], h[4];
    for (int i = 0; i < n; ++i) {
        y[i] = mesh.y(mesh.node(e, i)) - line.y0;
        z[i] = mesh.z(mesh.node(e, i)) - line.z0;
        h[i] = line.a * y[i] + line.b * z[i] - line.L;
    }
    // Triangles from corner 1; of each the part above the line is itself, nothing, or cut off or kept at one corner.
    Moments sum{};
    for (int i = 1; i + 1 < n; ++i) {
        const double area = 0.5 * ((y[i] - y[0]) * (z[i + 1] - z[0]) - (z[i] - z[0]) * (y[i + 1] - y[0]));
        const double corner[3] = {h[0], h[i], h[i + 1]};
        const double all = area * (corner[0] + corner[1] + corner[2]) / 3;
        int positive = 0, alone = 0;
        for (const double c : corner) positive += c > 0;
        sum.all += all;
        if (positive == 3) sum.above += all;
        if (positive == 0 || positive == 3) continue;
        while ((corner[alone] > 0) != (positive == 1)) ++alone;
        const double c = corner[alone], c1 = corner[(alone + 1) % 3], c2 = corner[(alone + 2) % 3];
        const double cut = area * (c / (c - c1)) * (c / (c - c2)) * c / 3;
        sum.above += positive == 1 ? cut : all - cut;
    }
    return sum;
}

double plastic_moment(const Tables& mesh, double EREF, const Line& line) {
    double sum = 0;
    for (std::size_t e = 0; e < static_cast<std::size_t>(mesh.NELEMS); ++e) {
        if (!(mesh.property(e, VQ_MATFLAG) >= 0.5 && mesh.property(e, VQ_EMOD) >= (EREF + 10) / 1e6)) continue;
        const Moments m = moments(mesh, e, line);
        sum += mesh.property(e, line.above) * m.above + mesh.property(e, line.below) * (m.above - m.all);
    }
    return sum;
}

bool has_equal_strengths(const Tables& mesh) {
    for (std::size_t e = 0; e < static_cast<std::size_t>(mesh.NELEMS); ++e)
        if (mesh.property(e, VQ_FNEG) != mesh.property(e, VQ_FPOS)) return false;
    return true;
}

}  // namespace

bool is_plastic(double mode) {
    for (const double first : {VQ_PLASTIC, VQ_PLASTIC_TWO, VQ_PLASTIC_TWO_21})
        if (mode >= first && mode < first + 1) return true;
    return false;
}

void part_plastic_moments(const Tables& mesh, double mode, Slots& slots) {
    if (!is_plastic(mode) || has_equal_strengths(mesh)) return;
    const bool four = mode < VQ_PLASTIC + 1;
    const auto slot = [&](int k) -> double& { return slots[static_cast<std::size_t>(k)]; };
    const Direction to = direction(slots);
    for (const int first : {VQ_PLAXIS_Y, VQ_PLAXIS_U}) {
        const bool host = first == VQ_PLAXIS_Y;
        const double c = host ? 1 : to.c, s = host ? 0 : to.s, y0 = host ? 0 : slot(VQ_YC), z0 = host ? 0 : slot(VQ_ZC);
        for (int k = 0; k < (four ? 4 : 2); ++k) {  // directions 1, 2, -1, -2, with moments in the other order of axes
            const bool along_z = k % 2 == 1, negative = k >= 2;
            const Line line{along_z ? -s : c,
                            along_z ? c : s,
                            y0,
                            z0,
                            slot(first + k),
                            negative ? VQ_FNEG : VQ_FPOS,
                            negative ? VQ_FPOS : VQ_FNEG};
            slot(first + 8 + (negative ? 2 : 0) + (along_z ? 0 : 1)) = plastic_moment(mesh, slot(VQ_EREF), line);
        }
    }
}

}  // namespace levels
