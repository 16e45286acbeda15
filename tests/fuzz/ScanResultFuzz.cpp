// Stored scan results are read back from disk, where they may be damaged:
// any bytes must give a result or an error, never a crash.
#include "engine/scan/ScanResult.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view document(reinterpret_cast<const char*>(data), size);
    if (auto result = brevant::ScanResult::decode(document)) {
        // What decodes must encode and decode back to the same value.
        auto again = brevant::ScanResult::decode(result->encoded());
        if (!again || !(*again == *result)) {
            __builtin_trap();
        }
    }
    return 0;
}
