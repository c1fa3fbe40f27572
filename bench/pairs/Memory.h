// What a tree of items with five properties takes, and plain structures of the same data.
#pragma once

#include <cstdint>

namespace kestra::bench {

// Bytes of the heap in use, with what malloc itself adds to each block.
double HeapInUse();

// Bytes of the heap in use for count items. Each is to be the only one that its process measures.
// A query has looked at every value of the tree if isLookedAt.
double TreeBytes(uint32_t count, bool isLookedAt);
double StructBytes(uint32_t count);

}  // namespace kestra::bench
