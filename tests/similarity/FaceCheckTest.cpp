#include "engine/similarity/FaceCheck.hpp"

#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/platform/ImageDecoder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace brevant {
namespace {

const std::string kTestData = BREVANT_SOURCE_DIR "/../shared/testdata";
const std::string kFaces = kTestData + "/faces";

bool haveFaces() {
    std::error_code ec;
    return std::filesystem::exists(kFaces + "/ground_truth.csv", ec);
}

TEST(FaceCheck, AFaceNarrowerThanOneTwentiethIsNotJudged) {
    if (!haveFaces()) {
        GTEST_SKIP() << "no face photos at " << kFaces;
    }
    testing::TempTree tree;
    // A portrait whose face is about a quarter of the picture's width.
    vips::VImage portrait = testing::openImage(kFaces + "/open/skimage_astronaut.png");
    portrait = portrait.extract_band(0, vips::VImage::option()->set("n", 3));
    std::string near = tree.path("near.png");
    testing::saveImage(portrait, near);
    // The same portrait on a canvas eight times as wide: the face is now
    // about 3 % of the longest side.
    std::string far = tree.path("far.png");
    testing::saveImage(portrait.embed(0, 0, portrait.width() * 8, portrait.height()), far);

    auto close = FaceCheck::reading(near);
    auto distant = FaceCheck::reading(far);
    ASSERT_TRUE(close && distant);
    EXPECT_EQ(close->faces, 1);
    EXPECT_EQ(close->eyesClosed, 0);
    EXPECT_EQ(close->smiling, 1);
    EXPECT_EQ(close->revision, FaceCheck::kRevision);
    EXPECT_EQ(distant->faces, 0);
    EXPECT_EQ(distant->eyesClosed, 0);
}

TEST(FaceCheck, NoReadingForWhatIsNotAPicture) {
    testing::TempTree tree;
    EXPECT_EQ(FaceCheck::reading(tree.file("notes.jpg", "not a picture")), std::nullopt);
    EXPECT_EQ(FaceCheck::reading(tree.path("missing.jpg")), std::nullopt);
    // A picture without people has a reading with no faces.
    auto scene = FaceCheck::reading(testing::writeScene(tree.path("scene.jpg"), 640, 480, 3));
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->faces, 0);
}

struct Truth {
    std::string file;
    int faces = 0;
    int eyesClosed = 0;
    int smiling = 0;
};

// Cases of the labelled photos the detector reads exactly as a person did.
std::vector<Truth> agreedCases() {
    return {
        {"closed/dlib_2008_007676.jpg", 7, 1, 7}, // one of seven with eyes closed
        {"smile-neutral/facerec_obama_smiling.jpg", 1, 0, 1},
        {"open/facerec_two_people.jpg", 2, 0, 0},
        {"open/dlib_2009_004587.jpg", 2, 0, 2},
        {"none/dlib_dogs.jpg", 0, 0, 0}, // dogs are no people
        {"none/mei_Sony_Cybershot_1.jpg", 0, 0, 0},
    };
}

TEST(FaceCheck, ReadsRealPhotosAsAPersonDoes) {
    if (!haveFaces()) {
        GTEST_SKIP() << "no face photos at " << kFaces;
    }
    for (const auto& truth : agreedCases()) {
        auto reading = FaceCheck::reading(kFaces + "/" + truth.file);
        ASSERT_TRUE(reading) << truth.file;
        EXPECT_EQ(reading->faces, truth.faces) << truth.file;
        EXPECT_EQ(reading->eyesClosed, truth.eyesClosed) << truth.file;
        EXPECT_EQ(reading->smiling, truth.smiling) << truth.file;
    }
}

struct FaceCase {
    std::string file; // below the shared test data
    bool blackAndWhite = false;
    int faces = 0;
    int eyesClosed = 0;
};

// Photos in which the face cascade alone found faces that are not there
// (flowers, a car's seats, house fronts, a man seen from behind), and real
// faces, also once the picture is made black and white.
std::vector<FaceCase> confirmedCases() {
    return {
        {"exif-samples/jpg/hdr/iphone_hdr_NO.jpg"},
        {"exif-samples/jpg/hdr/iphone_hdr_YES.jpg"},
        {"exif-samples/jpg/tests/22-canon_tags.jpg"},
        {"exif-samples/jpg/mobile/jolla.jpg"},
        {"libheif/examples/example.heic"},
        {"orientation/Portrait_1.jpg"},
        {"exif-samples/jpg/hdr/iphone_hdr_NO.jpg", true},
        {"faces/smile-neutral/facerec_obama_smiling.jpg", false, 1},
        {"faces/smile-neutral/facerec_obama_smiling.jpg", true, 1},
        {"faces/open/dlib_2009_004587.jpg", true, 2},
    };
}

TEST(FaceCheck, CountsOnlyFacesThatAreThere) {
    if (!haveFaces()) {
        GTEST_SKIP() << "no test photos at " << kTestData;
    }
    testing::TempTree tree;
    for (const auto& test : confirmedCases()) {
        std::string path = kTestData + "/" + test.file;
        if (test.blackAndWhite) {
            path = tree.path(std::filesystem::path(test.file).stem().string() + " grey.png");
            testing::saveImage(testing::openImage(kTestData + "/" + test.file)
                                   .autorot()
                                   .colourspace(VIPS_INTERPRETATION_B_W)
                                   .extract_band(0),
                               path);
        }
        auto reading = FaceCheck::reading(path);
        ASSERT_TRUE(reading) << test.file;
        EXPECT_EQ(reading->faces, test.faces) << test.file << (test.blackAndWhite ? " grey" : "");
        EXPECT_EQ(reading->eyesClosed, test.eyesClosed) << test.file;
    }
}

} // namespace
} // namespace brevant
