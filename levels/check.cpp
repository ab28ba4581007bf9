#include "levels/velquor_levels.h"
extern "C" int32_t vq_check(int32_t, const double*, int32_t, const int32_t*, int32_t, const double*, int32_t,
                            const VYZTUZE_INFO*, double, int32_t, vq_finding*) {
    return -1;
}
extern "C" const char* vq_reason(int32_t) { return ""; }
