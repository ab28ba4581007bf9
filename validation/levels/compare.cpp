#include "compare.h"

Levels calculate(const Host& host, int levels) {
    Levels out;
    Watch watch;
    std::vector<double> nodeout(3 * static_cast<size_t>(host.nnodes));
    std::vector<VYZTUZE_INFO> bars = host.bars;
    out.elemout.resize(48 * static_cast<size_t>(host.nelems));
    out.sharp.resize(host.nnodes);
    out.status = host.groups, out.levels = levels;
    out.value[VQ_MODE_SLOT] = host.mode;
    watch_calls(&watch);
    vq_levels(&out.status, host.nodes.data(), host.nnodes, host.elements.data(), host.nelems, host.props.data(),
              static_cast<int32_t>(bars.size()), bars.data(), out.value.data(), nodeout.data(), out.elemout.data(),
              &out.levels, out.bound.data(), out.sharp.data(), host.curved.empty() ? nullptr : place_on_curve,
              const_cast<Host*>(&host));
    watch_calls(nullptr);
    out.of_level = watch.results;
    return out;
}

std::vector<Value> compare(const Shape& shape, std::uint64_t seed, int levels, int finer) {
    const Levels tested = calculate(shape.host, levels), reference = calculate(shape.host, finer);
    if (tested.status != VQ_DONE || reference.status != VQ_DONE || tested.levels != levels) return {};
    auto values =
        beside(shape.host.name, seed, {tested.value, tested.bound}, {reference.value, reference.bound}, shape.exact);
    for (Value& v : values)
        for (const Slots& level : reference.of_level) v.of_level.push_back(level[v.slot]);
    return values;
}
