#include "engine/support/Boxed.hpp"

#include "engine/scan/PhotoAsset.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

namespace brevant {
namespace {

PhotoAsset libraryItem() {
    PhotoAsset asset;
    asset.path = "/photos/IMG_0001.JPG";
    asset.volumeName = "Archive";
    asset.library = LibraryRef{"id/1", "IMG_0001.JPG", true, false, false, false};
    asset.catalog = CatalogReference{CaptureOneRef{7, 8, 2, 5, {1, 0}, true, 1, 1}};
    return asset;
}

TEST(Boxed, ACopyOwnsItsOwnValueAndComparesByValue) {
    PhotoAsset original = libraryItem();
    PhotoAsset copy = original;
    EXPECT_EQ(copy, original);
    EXPECT_EQ(std::hash<PhotoAsset>{}(copy), std::hash<PhotoAsset>{}(original));

    copy.library->filename = "IMG_0002.JPG";
    EXPECT_EQ(original.library->filename, "IMG_0001.JPG");
    EXPECT_NE(copy, original);

    copy = original;
    EXPECT_EQ(copy, original);
    copy.catalog.reset();
    EXPECT_TRUE(original.catalog);
    EXPECT_NE(copy, original);
    EXPECT_EQ(copy.catalog, std::nullopt);

    PhotoAsset moved = std::move(copy);
    EXPECT_EQ(moved.library->filename, "IMG_0001.JPG");
    EXPECT_FALSE(moved.catalog);
}

TEST(Boxed, ReadsAndHashesAsTheSameOptional) {
    Boxed<std::string> empty;
    Boxed<std::string> named = std::string("Archive");
    EXPECT_FALSE(empty.hasValue());
    EXPECT_EQ(empty, Boxed<std::string>(std::nullopt));
    EXPECT_NE(empty, named);
    EXPECT_EQ(empty.get(), std::nullopt);
    EXPECT_EQ(named.get(), "Archive");

    std::optional<std::string> asOptional = named;
    EXPECT_EQ(asOptional, "Archive");
    EXPECT_EQ(Boxed<std::string>(asOptional), named);
    EXPECT_EQ(std::optional<std::string>(empty), std::nullopt);

    // A record's hash lists its fields as optionals did, so an absent and a
    // present empty name still hash apart.
    EXPECT_EQ(hashing::of(named), hashing::of(asOptional));
    EXPECT_EQ(hashing::of(empty), hashing::of(std::optional<std::string>()));
    EXPECT_NE(hashing::of(empty), hashing::of(Boxed<std::string>(std::string())));
}

} // namespace
} // namespace brevant
