// The lock file is read back at every start, and may have been damaged on
// disk: any bytes must give the locks or an error, never a crash. Decoding
// works on the bytes alone, so nothing here touches the disk.
#include "engine/review/LockStore.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view document(reinterpret_cast<const char*>(data), size);
    if (auto locks = brevant::LockStore::decode(document)) {
        // What decodes must encode and decode back to the same locks.
        auto again = brevant::LockStore::decode(brevant::LockStore::encode(*locks));
        if (!again || *again != *locks) {
            __builtin_trap();
        }
    }
    return 0;
}
