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
    // back to the system when freed.
    //
    // Also merges a freed small block with its free neighbours at once
    // instead of keeping it aside in a fast list: when a worker frees a
    // replaced result of a million pictures, the C library would otherwise
    // gather those millions of blocks later, holding its heap's lock, in the
    // first large allocation of whichever thread comes next, the interface's
    // included. Idempotent.
    static void keepFreedBuffers();
};

} // namespace brevant::platform
