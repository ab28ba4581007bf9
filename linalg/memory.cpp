#include "linalg/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace LINALG {
namespace {

constexpr std::size_t LARGE_PAGE = std::size_t{1} << 21;
// Pieces are kept from the one size on, below which the C library keeps what is freed by itself, up to the other: on
// the large meshes that need more, the rest of a run needs the room.
constexpr std::size_t LEAST_KEPT = std::size_t{1} << 15, MOST_KEPT = std::size_t{1} << 22;
constexpr std::size_t LARGE = 4 * LARGE_PAGE;  // from which pages of 2 MB are worth their rounding

void* allocate(std::size_t bytes) {
    void* start = nullptr;
    if (bytes < LARGE) {
        start = std::malloc(bytes);
    } else {
        const std::size_t pages = (bytes + LARGE_PAGE - 1) / LARGE_PAGE;
        start = std::aligned_alloc(LARGE_PAGE, pages * LARGE_PAGE);
        // A wish for pages of 2 MB: the first touch of every small page costs a tenth of a large solution.
        if (start != nullptr) (void)madvise(start, pages * LARGE_PAGE, MADV_HUGEPAGE);
    }
    if (start == nullptr) throw std::bad_alloc();
    return start;
}

}  // namespace

// The smallest piece that is large enough and no more than twice as large, or a new one.
void* take(Memory& memory, std::size_t bytes) {
    if (bytes < LEAST_KEPT || bytes >= MOST_KEPT) return allocate(bytes);
    Memory::Piece* best = nullptr;
    for (Memory::Piece& piece : memory.pieces)
        if (!piece.taken && piece.bytes >= bytes && piece.bytes / 2 <= bytes &&
            (best == nullptr || piece.bytes < best->bytes))
            best = &piece;
    if (best == nullptr) {
        memory.pieces.push_back({nullptr, 0, true});  // fits nothing, should there be no memory for it
        best = &memory.pieces.back();
        best->start.reset(allocate(bytes));
        best->bytes = bytes;
    }
    best->taken = true;
    return best->start.get();
}

void give_back(Memory& memory, void* start) {
    for (Memory::Piece& piece : memory.pieces)
        if (piece.start.get() == start) {
            piece.taken = false;
            return;
        }
    std::free(start);
}

}  // namespace LINALG
