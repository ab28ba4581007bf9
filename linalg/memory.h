// Memory for the large arrays of the solver, and its way from one solution of a run to the next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace LINALG {

// Pieces that solutions of one run take in turn, so that what the first frees serves the second: memory that goes back
// to the system between them is cleared page by page when it is touched again. All pieces end with the record; it must
// outlive the buffers that were taken from it.
struct Memory {
    struct Free {
        void operator()(void* start) const { std::free(start); }
    };
    struct Piece {
        std::unique_ptr<void, Free> start;
        std::size_t bytes;
        bool taken;
    };
    std::vector<Piece> pieces;
};

// Memory that is not cleared, for arrays whose every entry is assigned, or whose unused part should cost nothing.
// Throws std::bad_alloc.
void* take(Memory& memory, std::size_t bytes);
void give_back(Memory& memory, void* start);

struct GiveBack {
    Memory* memory = nullptr;
    void operator()(void* start) const { give_back(*memory, start); }
};
template <class T>
using Buffer = std::unique_ptr<T[], GiveBack>;
template <class T>
Buffer<T> buffer(Memory& memory, std::int64_t size) {
    return Buffer<T>(static_cast<T*>(take(memory, sizeof(T) * static_cast<std::size_t>(size > 0 ? size : 1))),
                     {&memory});
}

}  // namespace LINALG
