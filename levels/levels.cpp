#include "levels/velquor_levels.h"
extern "C" void vq_levels(int32_t* STATUS, const double*, int32_t, const int32_t*, int32_t, const double*, int32_t,
                          VYZTUZE_INFO*, double*, double*, double*, int32_t*, double*, int32_t*, vq_place, void*) {
    if (STATUS) *STATUS = VQ_REFUSED;
}
