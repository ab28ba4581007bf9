#include "tests/memory_limit.h"

#include <cstdlib>
#include <new>

namespace {

thread_local long left = -1;

bool allowed() {
    if (left > 0) --left;
    return left != 0;
}

}  // namespace

void limit_allocations(long allocations) { left = allocations < 0 ? -1 : allocations + 1; }

// The linker sends every call of malloc to __wrap_malloc and of __real_malloc to the library's, see --wrap.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);
void* __wrap_malloc(std::size_t size) { return allowed() ? __real_malloc(size) : nullptr; }
void* __wrap_calloc(std::size_t count, std::size_t size) { return allowed() ? __real_calloc(count, size) : nullptr; }
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
    return allowed() ? __real_aligned_alloc(alignment, size) : nullptr;
}
}

void* operator new(std::size_t size) {
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
