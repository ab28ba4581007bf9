// Errors of the values themselves, on outlines whose true course is known.
#include <algorithm>
#include <cmath>

#include "rows.h"

namespace {

constexpr int FINER = 6;            // levels of the reference
constexpr double NOTHING = 1e-6;    // share of the natural size below which a value is 0 by symmetry
constexpr double ROUNDING = 1e-10;  // the same for a difference

// Neither 0 by symmetry nor exact on every level.
bool depends_on_mesh(const Value& v) {
    double largest = 0;
    for (const double value : v.of_level) largest = std::max(largest, std::fabs(value - v.reference));
    return std::fabs(v.reference) > NOTHING * v.size && largest > ROUNDING * v.size;
}

double largest_stress(const std::vector<double>& elemout) {  // of the unit torque
    double largest = 0;
    for (size_t corner = 0; corner < elemout.size(); corner += 12)
        largest = std::max(largest, std::hypot(elemout[corner], elemout[corner + 1]));
    return largest;
}

}  // namespace

std::vector<Row> smooth_rows(std::vector<Value>& seen) {
    Errors values, stresses;
    values.must = 1e-3;
    for (const Shape& shape : smooth_shapes()) {
        const auto all = compare(shape, 0, 3, FINER);
        ++values.sections, ++stresses.sections;
        if (all.empty()) ++values.failed;
        for (const Value& v : all)
            if (depends_on_mesh(v)) add(v.slot == VQ_WT ? stresses : values, v, seen);
    }
    return {{"smooth outlines, three levels from two elements through the wall, triangles or quadrilaterals, every "
             "value against the converged one",
             "1e-4", "1e-3", text_of(values, "meshes")},
            {"the same: `WT`, a largest corner stress", "", "", text_of(stresses, "meshes")}};
}

Row sharp_row(std::vector<Value>& seen) {
    Errors errors;
    errors.must = 2e-3;
    for (const Shape& shape : sharp_shapes()) {
        const auto all = compare(shape, 0, 3, FINER);
        ++errors.sections;
        if (all.empty()) ++errors.failed;
        for (const Value& v : all)
            if (v.slot != VQ_WT && depends_on_mesh(v)) add(errors, v, seen);
    }
    return {"sharp re-entrant corners, three levels from two elements through the wall, all values but `WT`", "3e-4",
            "2e-3", text_of(errors, "meshes")};
}

Row oblong_row(std::vector<Value>& seen) {
    int holding = 0, meshes = 0;
    double ratio = 0, error = 0, plain = 0;
    for (const Shape& shape : oblong_shapes()) {
        ++meshes;
        for (const Value& v : compare(shape, 0, 4, FINER)) {
            if (v.slot != VQ_GJ) continue;
            seen.push_back(v);
            if (v.error() <= v.bound) ++holding;
            ratio = std::max(ratio, ratio_of(v)), error = std::max(error, v.relative_error());
            plain = std::max(plain, std::fabs(v.of_level[0] / v.reference - 1));
        }
    }
    return {"oblongs 4 : 1 in one layer, four levels: `GJ`", "bound holds", "the same",
            formatted("holds on %d of %d meshes; error over bound at most %.2f, error at most %.1e, of the plain call "
                      "%.0f %%",
                      holding, meshes, ratio, error, 100 * plain)};
}

Row stress_row() {
    double error[2] = {}, plain[2] = {}, modulus[2] = {};
    for (int triangles = 0; triangles < 2; ++triangles) {
        const Host host = strip_40(2, triangles == 1).host;
        const Levels three = calculate(host, 3), one = calculate(host, 1);
        if (three.status != VQ_DONE || one.status != VQ_DONE)
            return {"torsional corner stress", "1 %", "3 %", "no results"};
        error[triangles] = largest_stress(three.elemout) / strip_40_stress() - 1;
        plain[triangles] = largest_stress(one.elemout) / strip_40_stress() - 1;
        modulus[triangles] = three.value[VQ_WT] * strip_40_stress() - 1;
    }
    return {
        "torsional corner stress of a 40 : 1 strip at the host's nodes, three levels from two layers", "1 %", "3 %",
        formatted("squares %+.2f %% (`WT` %+.2f %%), triangles %+.2f %% (`WT` %+.2f %%); a plain call %+.1f and "
                  "%+.1f %%",
                  100 * error[0], 100 * modulus[0], 100 * error[1], 100 * modulus[1], 100 * plain[0], 100 * plain[1])};
}
