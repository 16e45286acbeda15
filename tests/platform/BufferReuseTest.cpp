#include "engine/platform/BufferReuse.hpp"

#include <gtest/gtest.h>

#include <malloc.h>
#include <memory>
#include <vector>

namespace brevant::platform {
namespace {

#if defined(__SANITIZE_ADDRESS__) || !defined(__GLIBC__)
constexpr bool kGlibcAllocator = false;
#else
constexpr bool kGlibcAllocator = true;
#endif

TEST(BufferReuse, FreedSmallBlocksAreNotKeptAsideToBeGatheredLater) {
    if (!kGlibcAllocator) {
        GTEST_SKIP() << "the C library's allocator is not the one in use";
    }
    BufferReuse::keepFreedBuffers();
    // Far more than the per-thread cache holds, as freeing a result does.
    std::vector<std::unique_ptr<char[]>> blocks;
    blocks.reserve(10'000);
    for (int i = 0; i < 10'000; ++i) {
        blocks.push_back(std::make_unique<char[]>(40));
    }
    blocks.clear();
    EXPECT_EQ(mallinfo2().fsmblks, 0U);
}

} // namespace
} // namespace brevant::platform
