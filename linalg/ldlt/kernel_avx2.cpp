// Compiled with -mavx2, and without -mfma.
#define KERNEL avx2
#define VECTOR 4
#include "linalg/ldlt/kernel.inl"
