// Makes operator new fail on purpose.
#pragma once

// The calling thread's next allocations succeed, all later ones throw std::bad_alloc. A negative number lifts the
// limit.
void limit_allocations(long allocations);
