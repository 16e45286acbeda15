#pragma once

namespace brevant::platform {

// Decoding and scoring a picture allocate buffers of a few megabytes each and
// free them right after. By default the C library hands blocks of that size
// back to the system and maps them in again for the next picture; those page
// faults cost more than the BRISQUE arithmetic itself, and a fifth of a
// thumbnail decode.
struct BufferReuse {
    // Keeps freed blocks below 32 MB in the process for the next picture.
    // Larger blocks (the similarity index's lists of pairs) still go straight
    // back to the system when freed. Idempotent.
    static void keepFreedBuffers();

    // After a large structure was freed (a replaced result of a million
    // pictures): gathers its millions of small freed blocks now, on the
    // calling thread, which the C library would otherwise do in the next
    // large allocation of whichever thread comes next, the interface's
    // included, and gives what it can back to the system.
    static void settleFreed();
};

} // namespace brevant::platform
