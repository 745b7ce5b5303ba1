// How the substitute host's process treats memory it has freed.
#pragma once

#include <cstddef>

namespace sim {

// Like a long-running server, the host keeps memory it has freed for its next requests instead of
// handing it back to the system after every large result (and faulting it in afresh on the next
// one). Blocks up to kHeapBlockLimit come from the heap, and up to kRetainedFreeLimit of free
// memory at its top is kept; anything beyond either bound still goes back to the system.
inline constexpr std::size_t kHeapBlockLimit = std::size_t{32} << 20;
inline constexpr std::size_t kRetainedFreeLimit = std::size_t{256} << 20;

// Applies the policy to the C library's allocator (glibc only; elsewhere it does nothing). Called
// once when the host starts.
void retainFreedMemory();

}  // namespace sim
