#include "engine/scan/FolderSource.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<Relationship> relationshipsIn(std::string_view name,
                                          const FolderSource::NameSet& names) {
    auto stems = FolderSource::stems(names);
    return FolderSource::relationships("/photos/" + std::string(name), names, stems);
}

TEST(Relationships, SidecarInBothForms) {
    EXPECT_THAT(relationshipsIn("a.JPG", {"a.jpg", "a.xmp"}), ElementsAre(Relationship::sidecar));
    EXPECT_THAT(relationshipsIn("a.jpg", {"a.jpg", "a.jpg.xmp"}),
                ElementsAre(Relationship::sidecar));
    EXPECT_THAT(relationshipsIn("IMG_2.HEIC", {"img_2.heic", "img_2.aae"}),
                ElementsAre(Relationship::sidecar));
    EXPECT_THAT(relationshipsIn("a.jpg", {"a.jpg", "ab.xmp", "a.txt"}), IsEmpty());
}

TEST(Relationships, LivePhotoAndRawPairBothWays) {
    EXPECT_THAT(relationshipsIn("IMG_0001.JPG", {"img_0001.jpg", "img_0001.mov"}),
                ElementsAre(Relationship::livePhoto));
    EXPECT_THAT(relationshipsIn("DSC_1.JPG", {"dsc_1.jpg", "dsc_1.nef"}),
                ElementsAre(Relationship::rawPair));
    EXPECT_THAT(relationshipsIn("DSC_1.NEF", {"dsc_1.jpg", "dsc_1.nef"}),
                ElementsAre(Relationship::rawPair));
    // A RAW file alone is not its own pair, nor is a PNG a RAW partner.
    EXPECT_THAT(relationshipsIn("DSC_1.NEF", {"dsc_1.nef"}), IsEmpty());
    EXPECT_THAT(relationshipsIn("DSC_1.NEF", {"dsc_1.nef", "dsc_1.png"}), IsEmpty());
}

TEST(Relationships, EditedAndOriginalBothWays) {
    FolderSource::NameSet names{"img_e0001.heic", "img_0001.heic"};
    EXPECT_THAT(relationshipsIn("IMG_E0001.HEIC", names),
                ElementsAre(Relationship::editedOriginal));
    EXPECT_THAT(relationshipsIn("IMG_0001.HEIC", names), ElementsAre(Relationship::editedOriginal));
    EXPECT_THAT(relationshipsIn("IMG_0002.HEIC", {"img_0002.heic", "img_e0001.heic"}), IsEmpty());
}

TEST(Relationships, ListedOnceInFixedOrder) {
    FolderSource::NameSet names{"img_0001.jpg", "img_0001.mov", "img_0001.dng", "img_0001.xmp",
                                "img_e0001.jpg"};
    EXPECT_THAT(relationshipsIn("IMG_0001.JPG", names),
                ElementsAre(Relationship::sidecar, Relationship::livePhoto, Relationship::rawPair,
                            Relationship::editedOriginal));
}

TEST(Relationships, UnicodeNamesMatchWithoutRegardToCase) {
    EXPECT_THAT(relationshipsIn("\xC3\x89T\xC3\x89.JPG",
                                {"\xC3\xA9t\xC3\xA9.jpg", "\xC3\xA9t\xC3\xA9.xmp"}),
                ElementsAre(Relationship::sidecar));
}

} // namespace
} // namespace brevant
