#include "BufferReuse.hpp"

#include <malloc.h>

namespace brevant::platform {

void BufferReuse::keepFreedBuffers() {
#ifdef __GLIBC__
    // 32 MB is the largest threshold glibc accepts; setting it also stops
    // glibc from moving it on its own.
    constexpr int kMapped = 32 << 20;
    // Free memory at the top of a heap is only given back beyond this. A
    // worker thread's heap is at most 64 MB: keeping more would keep it
    // whole once a parallel pass is done with it (the index's proposal
    // passes leave tens of megabytes a worker).
    constexpr int kKept = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, kMapped);
    mallopt(M_TRIM_THRESHOLD, kKept);
    mallopt(M_MXFAST, 0);
#endif
}

} // namespace brevant::platform
