#include "kit/analysis/stresses.h"

#include <cmath>

namespace velquor {

double shear(const Stress& s) { return std::hypot(s.tau_y, s.tau_z); }

double von_mises(const Stress& s) {
    const double tau = shear(s);
    return std::sqrt(s.sigma * s.sigma + 3 * tau * tau);
}

std::vector<Stress> stresses_of(const Field& field, const Load& load) {
    const double loads[8] = {load.T, load.Vy, load.Vz, load.Tw, load.N, load.My, load.Mz, load.B};
    std::vector<Stress> stresses(field.spots.size());
    for (std::size_t i = 0; i < stresses.size(); ++i) {
        const std::array<double, 12>& unit = field.unit[i];
        for (std::size_t k = 0; k < 4; ++k) {
            if (loads[k] != 0) {
                stresses[i].tau_y += loads[k] * unit[2 * k];
                stresses[i].tau_z += loads[k] * unit[2 * k + 1];
            }
            if (loads[4 + k] != 0) stresses[i].sigma += loads[4 + k] * unit[8 + k];
        }
    }
    return stresses;
}

}  // namespace velquor
