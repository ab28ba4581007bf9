// Time of three levels beside that of the finest call alone, in one process, the two in turn.
#include <algorithm>

#include "rows.h"

namespace {

constexpr int LEVELS = 3;

struct Times {
    int32_t elements;
    double ratio;  // median of the pairs
    double low, high;
    double share;  // own work of vq_levels over its calls, median
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

Times measure(const Host& host) {
    Watch finest;
    finest.keep = true;
    std::vector<double> nodeout(3L * host.nnodes), elemout(48L * host.nelems);
    std::vector<double> ratios, shares;
    const int pairs = std::clamp(40000 / host.nelems, 9, 41);
    for (int i = -1; i < pairs; ++i) {  // the first warms up, and keeps the tables of the finest level
        Watch watch;
        Slots result{}, bound{};
        int32_t status = host.groups, levels = LEVELS;
        watch_calls(i < 0 ? &finest : &watch);
        const double start = thread_seconds();
        vq_levels(&status, host.nodes.data(), host.nnodes, host.elements.data(), host.nelems, host.props.data(), 0,
                  nullptr, result.data(), nodeout.data(), elemout.data(), &levels, bound.data(), nullptr,
                  host.curved.empty() ? nullptr : place_on_curve, const_cast<Host*>(&host));
        const double whole = thread_seconds() - start;
        watch_calls(nullptr);
        if (status != VQ_DONE) return {host.nelems, 0, 0, 0, 0};
        const double alone = repeat_call(finest);
        if (i < 0) continue;
        ratios.push_back(whole / alone);
        shares.push_back(whole / watch.seconds - 1);
    }
    const auto [low, high] = std::minmax_element(ratios.begin(), ratios.end());
    return {host.nelems, median(ratios), *low, *high, median(shares)};
}

}  // namespace

std::vector<Row> time_rows() {
    std::vector<Times> all;
    for (const bool triangles : {false, true}) {
        for (const double size : {4.6, 2.3, 1.2}) all.push_back(measure(rolled_profile(size, triangles)));
        for (const int n : {24, 48, 68}) all.push_back(measure(plate(triangles ? n * 7 / 10 : n, triangles)));
    }
    std::sort(all.begin(), all.end(), [](const Times& a, const Times& b) { return a.elements < b.elements; });
    std::string ratios;
    std::vector<double> medians, shares;
    for (const Times& t : all) {
        ratios += formatted("%s%.2f (%.2f to %.2f) at %d", ratios.empty() ? "" : ", ", t.ratio, t.low, t.high,
                            static_cast<int>(t.elements));
        medians.push_back(t.ratio), shares.push_back(t.share);
    }
    const auto [low, high] = std::minmax_element(medians.begin(), medians.end());
    const auto [least, most] = std::minmax_element(shares.begin(), shares.end());
    return {{"time of three levels over that of the finest call alone", "1.35", "1.5",
             formatted("%.2f to %.2f. Medians and ranges of alternating runs, by elements of the host: ", *low, *high) +
                 ratios},
            {"splitting, tables and extrapolation over the calls", "", "10 %",
             formatted("%.1f to %.1f %%", 100 * *least, 100 * *most)}};
}
