#include "linalg/ldlt/kernel.h"

#include "linalg/ldlt/steps.h"

namespace LDLT {

bool supported(Instructions instructions) {
#ifdef VQ_KERNEL_X86
    if (instructions == Instructions::avx2) return __builtin_cpu_supports("avx2");
    // The first processors with AVX-512 lower their clock for it; those with the byte permutations do not.
    if (instructions == Instructions::avx512)
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vbmi");
#endif
    return instructions == Instructions::baseline;
}

Instructions best_instructions() {
    if (supported(Instructions::avx512)) return Instructions::avx512;
    return supported(Instructions::avx2) ? Instructions::avx2 : Instructions::baseline;
}

const Kernel& kernel_of(Instructions instructions) {
#ifdef VQ_KERNEL_X86
    if (instructions == Instructions::avx512) return avx512::kernel;
    if (instructions == Instructions::avx2) return avx2::kernel;
#endif
    (void)instructions;
    return baseline::kernel;
}

}  // namespace LDLT
