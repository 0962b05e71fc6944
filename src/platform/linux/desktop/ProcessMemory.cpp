#include "platform/linux/desktop/ProcessMemory.h"

#include <cstdlib>

// Only the C library that has these functions has heaps of that kind.
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace kestrant {

void useOneHeap() {
#ifdef __GLIBC__
    mallopt(M_ARENA_MAX, 1);  // NOLINT(concurrency-mt-unsafe): there is no other thread yet
#endif
}

void returnFreeMemory() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

}  // namespace kestrant
