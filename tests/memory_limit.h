// Makes allocations fail on purpose: malloc, calloc and aligned_alloc, as they are called in the objects of the test
// program, and operator new.
#pragma once

// The calling thread's next allocations succeed, all later ones fail. A negative number lifts the limit.
void limit_allocations(long allocations);
