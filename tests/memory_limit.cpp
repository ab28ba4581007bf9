#include "tests/memory_limit.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

thread_local long left = -1;
thread_local bool only_one = false;
thread_local long live = 0;

bool allowed() {
    if (left > 0) --left;
    if (left != 0) return true;
    if (only_one) left = -1;
    errno = ENOMEM;  // as the library's own do
    return false;
}

void* counted(void* memory) {
    if (memory != nullptr) ++live;
    return memory;
}

}  // namespace

void limit_allocations(long allocations) {
    left = allocations < 0 ? -1 : allocations + 1;
    only_one = false;
}

void fail_one_allocation(long after) {
    left = after + 1;
    only_one = true;
}

long live_blocks() { return live; }

// The linker sends every call of malloc to __wrap_malloc and of __real_malloc to the library's, see --wrap.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void __real_free(void* memory);
void* __wrap_malloc(std::size_t size) { return allowed() ? counted(__real_malloc(size)) : nullptr; }
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return allowed() ? counted(__real_calloc(count, size)) : nullptr;
}
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
    return allowed() ? counted(__real_aligned_alloc(alignment, size)) : nullptr;
}
void* __wrap_realloc(void* memory, std::size_t size) {
    if (memory == nullptr) return __wrap_malloc(size);
    return allowed() ? __real_realloc(memory, size) : nullptr;
}
void __wrap_free(void* memory) {
    if (memory != nullptr) --live;
    __real_free(memory);
}
}

void* operator new(std::size_t size) {
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
