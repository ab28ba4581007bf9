#define KERNEL baseline
#define VECTOR 2
#include "linalg/ldlt/kernel.inl"
