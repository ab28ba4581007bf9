// Compiled with -mavx512f, whose fused operations -ffp-contract=off keeps out.
#define KERNEL avx512
#define VECTOR 8
#include "linalg/ldlt/kernel.inl"
