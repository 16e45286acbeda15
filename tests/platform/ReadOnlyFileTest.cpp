#include "engine/platform/ReadOnlyFile.hpp"

#include "tests/fixtures/TempTree.hpp"

#include "engine/platform/Sha256.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <vector>

namespace brevant::platform {
namespace {

using testing::TempTree;

TEST(ReadOnlyFile, OpensForReadingOnlyAndNeverThroughALink) {
    TempTree tree;
    std::string photo = tree.file("photo.jpg", "0123456789");
    std::string link = tree.symbolicLink(photo, "link.jpg");

    auto throughLink = ReadOnlyFile::open(link);
    ASSERT_FALSE(throughLink.has_value());
    EXPECT_EQ(throughLink.error(), ELOOP);
    EXPECT_EQ(ReadOnlyFile::open(tree.path("none.jpg")).error(), ENOENT);

    auto file = ReadOnlyFile::open(photo);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(::fcntl(file->descriptor(), F_GETFL) & O_ACCMODE, O_RDONLY);
    EXPECT_NE(::fcntl(file->descriptor(), F_GETFD) & FD_CLOEXEC, 0);

    std::vector<std::byte> buffer(4);
    EXPECT_EQ(file->fill(buffer), 4u);
    std::vector<std::byte> rest(100);
    EXPECT_EQ(file->fill(rest), 6u);
    EXPECT_EQ(file->read(rest), 0u);
    // The open file's status is the path's.
    ASSERT_TRUE(file->status());
    EXPECT_EQ(FileSnapshot::from(*file->status()), FileSnapshot::read(photo));
    EXPECT_EQ(file->status()->size, 10);
}

TEST(Sha256, DigestsInPieces) {
    Sha256 empty;
    EXPECT_EQ(empty.hexDigest(),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    Sha256 pieces;
    std::string text = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    pieces.update(std::as_bytes(std::span(text).first(10)));
    pieces.update(std::as_bytes(std::span(text).subspan(10)));
    EXPECT_EQ(pieces.hexDigest(),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

} // namespace
} // namespace brevant::platform
