#include "watch.h"

#include <algorithm>
#include <ctime>

// Names given by `LINKER:--wrap` (see the build file), so that the calls of vq_levels come here.
#define VQ_ARGUMENTS                                                                               \
    int32_t *STATUS, const double *NODES, int32_t NNODES, const int32_t *ELEMENTS, int32_t NELEMS, \
        const double *PROPS, int32_t NPOINTS, VYZTUZE_INFO *POINTS, double *RESULT, double *NODEOUT, double *ELEMOUT
void real_call(VQ_ARGUMENTS) asm("__real_vq_velquor");
void watched_call(VQ_ARGUMENTS) asm("__wrap_vq_velquor");

namespace {
Watch* current = nullptr;
}

void watch_calls(Watch* watch) { current = watch; }

double thread_seconds() {
    std::timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

void watched_call(VQ_ARGUMENTS) {
    if (!current)
        return real_call(STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, NPOINTS, POINTS, RESULT, NODEOUT, ELEMOUT);
    Watch& watch = *current;
    if (watch.keep) {
        watch.groups = *STATUS, watch.nnodes = NNODES, watch.nelems = NELEMS, watch.mode = RESULT[VQ_MODE_SLOT];
        watch.nodes.assign(NODES, NODES + 2L * NNODES), watch.props.assign(PROPS, PROPS + 1L * VQ_NCOLUMNS * NELEMS);
        watch.elements.assign(ELEMENTS, ELEMENTS + 4L * NELEMS);
        watch.bars.assign(POINTS, POINTS + NPOINTS);
    }
    const double start = thread_seconds();
    real_call(STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, NPOINTS, POINTS, RESULT, NODEOUT, ELEMOUT);
    watch.seconds += thread_seconds() - start;
    if (*STATUS != VQ_DONE) return;
    watch.results.emplace_back();
    std::copy_n(RESULT, VQ_NSLOTS, watch.results.back().begin());
}

double repeat_call(const Watch& watch) {
    std::vector<double> result(VQ_NSLOTS), nodeout(3L * watch.nnodes), elemout(48L * watch.nelems);
    std::vector<VYZTUZE_INFO> bars = watch.bars;
    int32_t status = watch.groups;
    result[VQ_MODE_SLOT] = watch.mode;
    const double start = thread_seconds();
    real_call(&status, watch.nodes.data(), watch.nnodes, watch.elements.data(), watch.nelems, watch.props.data(),
              static_cast<int32_t>(bars.size()), bars.data(), result.data(), nodeout.data(), elemout.data());
    return thread_seconds() - start;
}
