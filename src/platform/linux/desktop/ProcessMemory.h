#pragma once

namespace kestrant {

/// Has all threads of the process take their memory from one heap. Each would otherwise get a heap of its
/// own, which keeps for good what only its busiest moment needed. To be called before there is a second
/// thread.
void useOneHeap();

/// Gives memory that is free in the heap back to the system. Takes some milliseconds, in which no thread of
/// the process can allocate. Thread: any.
void returnFreeMemory();

}  // namespace kestrant
