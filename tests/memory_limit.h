// Makes allocations fail on purpose, and counts what stays allocated: malloc, calloc, aligned_alloc, realloc and free,
// as they are called in the objects of the test program, and operator new and delete.
#pragma once

// The calling thread's next allocations succeed, all later ones fail. A negative number lifts the limit.
void limit_allocations(long allocations);

// The calling thread's next allocations succeed, the one after them fails, all later ones succeed.
void fail_one_allocation(long after);

// Blocks that the calling thread has allocated, less those that it has freed.
long live_blocks();
