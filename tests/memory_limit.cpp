#include "tests/memory_limit.h"

#include <cstdlib>
#include <new>

namespace {
thread_local long left = -1;
}

void limit_allocations(long allocations) { left = allocations; }

void* operator new(std::size_t size) {
    if (left == 0) throw std::bad_alloc();
    if (left > 0) --left;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
