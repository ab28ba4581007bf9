#include <sys/mman.h>

#include <cstdlib>
#include <new>

#include "linalg/ldlt/steps.h"

namespace LDLT {
namespace {

constexpr std::size_t LARGE_PAGE = std::size_t{1} << 21;

}  // namespace

void* take_memory(std::size_t bytes) {
    void* memory = nullptr;
    if (bytes < 4 * LARGE_PAGE) {
        memory = std::malloc(bytes);
    } else {
        const std::size_t pages = (bytes + LARGE_PAGE - 1) / LARGE_PAGE;
        memory = std::aligned_alloc(LARGE_PAGE, pages * LARGE_PAGE);
        // A wish for pages of 2 MB: the first touch of every small page costs a tenth of a large solution.
        if (memory != nullptr) (void)madvise(memory, pages * LARGE_PAGE, MADV_HUGEPAGE);
    }
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void FreeMemory::operator()(void* memory) const { std::free(memory); }

}  // namespace LDLT
