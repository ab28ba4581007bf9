#include "value.h"

#include <algorithm>
#include <cmath>

#include "section_file.h"

namespace {

bool of_principal_frame(int slot) {
    return slot == VQ_SCU || slot == VQ_SCV || (slot >= VQ_ALPHA && slot <= VQ_GAUV) || slot == VQ_RV ||
           slot == VQ_RU || (slot >= VQ_PLAXIS_U && slot <= VQ_COUP2);
}

// Slots whose 0 is a matter of the axes or of chance.
bool has_free_zero(int slot) {
    return slot == VQ_DYZ || (slot >= VQ_YC && slot <= VQ_SCV) || slot == VQ_ALPHA || slot == VQ_GAUV ||
           (slot >= VQ_RZ && slot <= VQ_WR2) || (slot >= VQ_PLAXIS_Y && slot <= VQ_PLAXIS_Z_NEG) ||
           (slot >= VQ_PLAXIS_U && slot <= VQ_PLAXIS_V_NEG) || slot == VQ_COUP1 || slot == VQ_COUP2;
}

bool frames_agree(const Slots& a, const Slots& b) {
    return std::fabs(b[VQ_I1] - b[VQ_I2]) > 1e-6 * (b[VQ_I1] + b[VQ_I2]) && std::fabs(a[VQ_ALPHA] - b[VQ_ALPHA]) < 0.1;
}

}  // namespace

double Value::error() const { return std::fabs(value - reference); }

double Value::relative_error() const {
    const double amount = std::fabs(reference);
    return error() / (has_free_zero(slot) ? std::max(amount, size) : amount);
}

Slots natural_sizes(const Slots& r) {
    Slots sizes;
    for (int k = 0; k < VQ_NSLOTS; ++k) sizes[k] = std::fabs(r[k]);
    const double moments = r[VQ_IYY] + r[VQ_IZZ], radius = std::sqrt(moments / r[VQ_EA]);
    const double shear = r[VQ_GAY] + r[VQ_GAZ];
    for (int k = 0; k < VQ_NSLOTS; ++k)
        if (has_free_zero(k)) sizes[k] = radius;
    for (const int k : {VQ_IYY, VQ_IZZ, VQ_DYZ, VQ_I1, VQ_I2}) sizes[k] = moments;
    for (const int k : {VQ_GAY, VQ_GAZ, VQ_GAU, VQ_GAV, VQ_GAUV}) sizes[k] = shear;
    sizes[VQ_IW] = sizes[VQ_IWS] = moments * radius * radius;
    sizes[VQ_ALPHA] = 1;
    sizes[VQ_WR1] = moments / std::sqrt(r[VQ_EA] * r[VQ_IW]);
    sizes[VQ_WR2] = moments / std::sqrt(r[VQ_EA] * r[VQ_IWS]);
    return sizes;
}

std::vector<Value> beside(const std::string& section, std::uint64_t seed, const Bounded& tested,
                          const Bounded& reference, const std::vector<Exact>& exact) {
    std::vector<Value> values;
    const Slots sizes = natural_sizes(reference.value);
    const bool frames = frames_agree(tested.value, reference.value);
    const bool warps = reference.value[VQ_IW] > 1e-8 * sizes[VQ_IW] && reference.value[VQ_IWS] > 1e-8 * sizes[VQ_IWS];
    for (int k = 0; k < VQ_NSLOTS; ++k) {
        if (of_principal_frame(k) && !frames) continue;
        if ((k == VQ_WR1 || k == VQ_WR2) && !warps) continue;
        Value v;
        v.section = section, v.seed = seed, v.slot = k, v.size = sizes[k];
        v.value = tested.value[k], v.bound = tested.bound[k];
        v.reference = reference.value[k], v.reference_bound = reference.bound[k];
        for (const Exact& known : exact)
            if (known.slot == k) v.reference = known.value, v.reference_bound = 0;
        values.push_back(v);
    }
    return values;
}

const char* name_of(int slot) {
    for (const auto& name : slot_names())
        if (name.second == slot) return name.first;
    return "";
}
