#include "engine/scan/ContentReader.hpp"

#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::TempTree;
using Kind = ContentReader::Failure::Kind;

FileSnapshot snapshotOf(const std::string& path) {
    auto snapshot = FileSnapshot::read(path);
    if (!snapshot) {
        throw std::runtime_error("no snapshot of " + path);
    }
    return *snapshot;
}

std::expected<std::string, ContentReader::Failure>
hash(const std::string& path, std::optional<std::int64_t> limit = std::nullopt) {
    return ContentReader::sha256(path, snapshotOf(path), limit, nullptr);
}

std::expected<bool, ContentReader::Failure> same(const std::string& a, const std::string& b) {
    CancellationFlag cancel;
    return ContentReader::sameBytes(a, snapshotOf(a), b, snapshotOf(b), cancel);
}

// Bytes that differ from one position to the next, over more than one
// read buffer.
std::string patterned(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 2654435761U) >> 13);
    }
    return bytes;
}

TEST(ContentReader, HashesAsLowercaseHexWithinTheBudget) {
    TempTree tree;
    std::string abc = tree.file("abc.jpg", "abc");
    EXPECT_EQ(hash(abc), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hash(abc, 2), "fb8e20fc2e4c3f248c60c39bd652f3c1347298bb977b8b4d5903b85055620603");
    EXPECT_EQ(hash(abc, 100), hash(abc));
    // Beyond one buffer the digest is still that of the whole file.
    std::string big = patterned(3 * ContentReader::kBufferSize + 17);
    std::string a = tree.file("a.jpg", big);
    std::string b = tree.file("b.jpg", big);
    ASSERT_TRUE(hash(a).has_value());
    EXPECT_EQ(hash(a)->size(), 64u);
    EXPECT_EQ(hash(a), hash(b));
}

TEST(ContentReader, LastByteDifferenceEscapesThePartialHashOnly) {
    TempTree tree;
    std::string bytes = patterned(200'000);
    std::string a = tree.file("a.jpg", bytes);
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    std::string b = tree.file("b.jpg", bytes);

    EXPECT_EQ(hash(a, 65'536), hash(b, 65'536));
    ASSERT_TRUE(hash(a) && hash(b));
    EXPECT_NE(*hash(a), *hash(b));
    EXPECT_EQ(same(a, b), false);
    EXPECT_EQ(same(a, a), true);
}

TEST(ContentReader, ComparesByteByByteAcrossBuffers) {
    TempTree tree;
    std::string bytes = patterned(2 * ContentReader::kBufferSize + 5);
    std::string a = tree.file("a.jpg", bytes);
    std::string copy = tree.file("copy.jpg", bytes);
    bytes[ContentReader::kBufferSize + 3] ^= 0x10;
    std::string middle = tree.file("middle.jpg", bytes);
    EXPECT_EQ(same(a, copy), true);
    EXPECT_EQ(same(a, middle), false);
    // Hashing the first file on the way gives its digest only when it was
    // read to the end.
    CancellationFlag cancel;
    auto copied =
        ContentReader::compareHashingFirst(a, snapshotOf(a), copy, snapshotOf(copy), cancel);
    ASSERT_TRUE(copied.has_value());
    EXPECT_EQ(copied->same, true);
    EXPECT_EQ(copied->digestOfA, hash(a).value_or(""));
    auto differing =
        ContentReader::compareHashingFirst(a, snapshotOf(a), middle, snapshotOf(middle), cancel);
    EXPECT_EQ(differing, ContentReader::Comparison{});
}

TEST(ContentReader, DifferentSizesAreNeverOpened) {
    FileSnapshot small;
    small.size = 10;
    FileSnapshot large;
    large.size = 11;
    CancellationFlag cancel;
    // Neither file exists: an answer rather than a failure shows nothing was
    // opened.
    EXPECT_EQ(ContentReader::sameBytes("/nonexistent/a", small, "/nonexistent/b", large, cancel),
              false);
}

TEST(ContentReader, AFileThatChangedIsNotTrusted) {
    TempTree tree;
    std::string a = tree.file("a.jpg", patterned(70'000));
    std::string b = tree.file("b.jpg", patterned(70'000));
    FileSnapshot before = snapshotOf(b);
    testing::rewriteKeepingSize(b);

    auto hashed = ContentReader::sha256(b, before, std::nullopt, nullptr);
    ASSERT_FALSE(hashed.has_value());
    EXPECT_EQ(hashed.error().kind, Kind::changed);

    CancellationFlag cancel;
    auto compared = ContentReader::sameBytes(a, snapshotOf(a), b, before, cancel);
    ASSERT_FALSE(compared.has_value());
    EXPECT_EQ(compared.error().kind, Kind::changed);
    EXPECT_EQ(compared.error().path, b);
}

TEST(ContentReader, RefusesLinksAndMissingFilesAndStopsWhenCancelled) {
    TempTree tree;
    std::string photo = tree.file("photo.jpg", "contents");
    std::string link = tree.symbolicLink(photo, "link.jpg");
    FileSnapshot snapshot = snapshotOf(photo);

    auto throughLink = ContentReader::sha256(link, snapshot, std::nullopt, nullptr);
    ASSERT_FALSE(throughLink.has_value());
    EXPECT_EQ(throughLink.error().kind, Kind::unreadable);
    EXPECT_EQ(throughLink.error().detail, "Too many levels of symbolic links");

    auto missing = ContentReader::sha256(tree.path("gone.jpg"), snapshot, std::nullopt, nullptr);
    ASSERT_FALSE(missing.has_value());
    EXPECT_EQ(missing.error().kind, Kind::unreadable);
    EXPECT_EQ(missing.error().detail, "No such file or directory");

    CancellationFlag cancel;
    cancel.cancel();
    auto hashed = ContentReader::sha256(photo, snapshot, std::nullopt, &cancel);
    ASSERT_FALSE(hashed.has_value());
    EXPECT_EQ(hashed.error().kind, Kind::cancelled);
    auto compared = ContentReader::sameBytes(photo, snapshot, photo, snapshot, cancel);
    ASSERT_FALSE(compared.has_value());
    EXPECT_EQ(compared.error().kind, Kind::cancelled);
}

} // namespace
} // namespace brevant
