#include "tests/fixtures/TempTree.hpp"

#include "engine/scan/FolderSource.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/support/PathText.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using testing::TempTree;
using ::testing::UnorderedElementsAre;
using Kind = ExcludedItem::Kind;

FolderSource::Walk walkAll(const std::vector<std::string>& roots,
                           const FolderSource::OnlyPaths& only = std::nullopt) {
    CancellationFlag cancel;
    return FolderSource::walk(roots, only, cancel, nullptr);
}

std::vector<std::string> foundPaths(const FolderSource::Walk& walk) {
    std::vector<std::string> paths;
    paths.reserve(walk.found.size());
    for (const auto& found : walk.found) {
        paths.push_back(found.path);
    }
    return paths;
}

const SkippedFile* skippedAt(const FolderSource::Walk& walk, const std::string& path) {
    auto it = std::ranges::find(walk.skipped, path, &SkippedFile::path);
    return it == walk.skipped.end() ? nullptr : &*it;
}

TEST(FolderSourceWalk, SortsFilesAndLeavesOutWhatIsNotAPhoto) {
    TempTree tree;
    std::string b = tree.file("b.JPG", "bbb");
    std::string a = tree.file("a/IMG_1.heif", "aaa");
    tree.file("notes.txt", "hello");
    tree.file("README", "no extension");
    std::string psd = tree.file("a.PSD", "8BPS");
    std::string empty = tree.file("x.jpg", "");

    auto walk = walkAll({tree.root()});

    EXPECT_THAT(foundPaths(walk), ElementsAre(a, b));
    EXPECT_EQ(walk.found[0].format, PhotoFormat::heic);
    EXPECT_EQ(walk.found[0].root, tree.root());
    EXPECT_EQ(walk.found[0].snapshot.size, 3);
    EXPECT_EQ(walk.found[1].format, PhotoFormat::jpeg);
    EXPECT_EQ(walk.otherFiles, 2);
    EXPECT_EQ(walk.discovered, 6);
    ASSERT_NE(skippedAt(walk, psd), nullptr);
    EXPECT_EQ(skippedAt(walk, psd)->reason, SkipReason::unsupportedFormat);
    EXPECT_EQ(skippedAt(walk, psd)->detail, "PSD");
    ASSERT_NE(skippedAt(walk, empty), nullptr);
    EXPECT_EQ(skippedAt(walk, empty)->reason, SkipReason::empty);
    EXPECT_EQ(walk.skipped.size(), 2u);
    EXPECT_FALSE(walk.cancelled);
    EXPECT_THAT(walk.namesByFolder[tree.root()],
                UnorderedElementsAre("b.jpg", "notes.txt", "readme", "a.psd", "x.jpg"));
}

TEST(FolderSourceWalk, NeverEntersLibrariesOrPackages) {
    TempTree tree;
    tree.file("Family.photoslibrary/originals/1.jpg", "1");
    tree.file("Session/CaptureOne/Cache/2.jpg", "2");
    tree.file("Keynote.key/Data/3.jpg", "3");
    std::string kept = tree.file("Session/4.jpg", "4");

    auto walk = walkAll({tree.root()});

    EXPECT_THAT(foundPaths(walk), ElementsAre(kept));
    ASSERT_EQ(walk.excluded.size(), 3u);
    EXPECT_EQ(walk.excluded[0].path, tree.path("Family.photoslibrary"));
    EXPECT_EQ(walk.excluded[0].kind, Kind::managedLibrary);
    EXPECT_EQ(walk.excluded[0].detail, "A photo library or catalogue. Its app manages these "
                                       "files, so they are never opened here.");
    EXPECT_EQ(walk.excluded[1].path, tree.path("Keynote.key"));
    EXPECT_EQ(walk.excluded[1].kind, Kind::package);
    EXPECT_EQ(walk.excluded[1].detail, "A package is one thing, not a folder of photos.");
    EXPECT_EQ(walk.excluded[2].path, tree.path("Session/CaptureOne"));
    EXPECT_EQ(walk.excluded[2].kind, Kind::managedLibrary);
    EXPECT_EQ(walk.discovered, 1);
}

TEST(FolderSourceWalk, FoldsHardLinksIntoOnePicture) {
    TempTree tree;
    std::string first = tree.file("a/photo.jpg", "same file");
    std::string second = tree.hardLink("a/photo.jpg", "b/again.jpg");

    auto walk = walkAll({tree.root()});

    EXPECT_THAT(foundPaths(walk), ElementsAre(first));
    EXPECT_EQ(walk.hardLinksFolded, 1);
    ASSERT_EQ(walk.otherNames.size(), 1u);
    EXPECT_THAT(walk.otherNames.at(walk.found[0].snapshot.identity), ElementsAre(second));
    EXPECT_EQ(walk.found[0].snapshot.linkCount, 2u);
}

TEST(FolderSourceWalk, NeverFollowsSymbolicLinks) {
    TempTree tree;
    // Opening a FIFO for reading would block, so a walk that followed the
    // link would never finish.
    std::string target = tree.fifo("outside/photo.jpg");
    std::string folderTarget = tree.folder("outside/more");
    tree.file("outside/more/hidden.jpg", "x");
    std::string root = tree.folder("inside");
    std::string link = tree.symbolicLink(target, "inside/link.jpg");
    std::string folderLink = tree.symbolicLink(folderTarget, "inside/more");

    auto walk = walkAll({root});

    EXPECT_TRUE(walk.found.empty());
    ASSERT_EQ(walk.skipped.size(), 2u);
    EXPECT_EQ(walk.skipped[0].path, link);
    EXPECT_EQ(walk.skipped[0].reason, SkipReason::symbolicLink);
    EXPECT_EQ(walk.skipped[1].path, folderLink);
    EXPECT_EQ(walk.discovered, 0);
}

TEST(FolderSourceWalk, OnlyWalksTheGivenPaths) {
    TempTree tree;
    std::string wanted = tree.file("a/1.jpg", "1");
    tree.file("a/2.jpg", "2");
    tree.file("a/1.xmp", "sidecar");

    auto walk = walkAll({tree.root()}, FolderSource::NameSet{wanted});

    EXPECT_THAT(foundPaths(walk), ElementsAre(wanted));
    EXPECT_EQ(walk.discovered, 1);
    EXPECT_EQ(walk.otherFiles, 0);
    // Neighbours are still seen, so relationships of the wanted file hold.
    EXPECT_THAT(walk.namesByFolder[tree.path("a")],
                UnorderedElementsAre("1.jpg", "2.jpg", "1.xmp"));
}

TEST(FolderSourceWalk, CancellationReturnsThePartialWalk) {
    TempTree tree;
    for (int i = 0; i < 1200; ++i) {
        tree.file("many/" + std::to_string(10000 + i) + ".jpg", "x");
    }
    CancellationFlag cancel;
    std::vector<int> reported;
    auto walk = FolderSource::walk({tree.root()}, std::nullopt, cancel, [&](int count) {
        reported.push_back(count);
        cancel.cancel();
    });

    EXPECT_TRUE(walk.cancelled);
    EXPECT_EQ(reported, std::vector<int>{500});
    EXPECT_EQ(walk.discovered, 500);
    EXPECT_EQ(walk.found.size(), 500u);
    EXPECT_EQ(walk.found.back().path, tree.path("many/10499.jpg"));
}

TEST(FolderSourceWalk, ReportsProgressEveryFiveHundredEntries) {
    TempTree tree;
    for (int i = 0; i < 1001; ++i) {
        tree.file("n/" + std::to_string(i) + ".txt", "");
    }
    CancellationFlag cancel;
    std::vector<int> reported;
    auto walk = FolderSource::walk({tree.root()}, std::nullopt, cancel,
                                   [&](int count) { reported.push_back(count); });
    EXPECT_EQ(reported, (std::vector<int>{500, 1000}));
    EXPECT_EQ(walk.otherFiles, 1001);
}

TEST(FolderSourceWalk, OddNamesAndSpecialFilesNeitherCrashNorHang) {
    TempTree tree;
    std::string latin1 = tree.file("caf\xE9.jpg", "latin-1 name");
    std::string newline = tree.file("two\nlines.png", "line feed");
    std::string fifo = tree.fifo("pipe.jpg");
    std::string socket = tree.socket("s.png");
    tree.socket("plain-socket");
    std::string deep;
    for (int level = 0; level < 300; ++level) {
        deep += "d/";
    }
    std::string deepPhoto = tree.file(deep + "deep.jpg", "deep");

    auto walk = walkAll({tree.root()});

    EXPECT_THAT(foundPaths(walk), UnorderedElementsAre(latin1, newline, deepPhoto));
    for (const auto& special : {fifo, socket}) {
        const SkippedFile* skipped = skippedAt(walk, special);
        ASSERT_NE(skipped, nullptr) << special;
        EXPECT_EQ(skipped->reason, SkipReason::unreadable);
        EXPECT_EQ(skipped->detail, "It disappeared or is not a plain file.");
    }
    EXPECT_EQ(walk.otherFiles, 0); // a socket is not a regular file
    EXPECT_TRUE(walk.excluded.empty());

    // Stored and read back, the exact bytes of every name come back.
    auto result = ScanResult::make({tree.root()}, {});
    result.skipped = walk.skipped;
    for (const auto& found : walk.found) {
        result.pictures.push_back({.path = found.path,
                                   .root = found.root,
                                   .snapshot = found.snapshot,
                                   .format = found.format});
    }
    std::string document = result.encoded();
    EXPECT_TRUE(path_text::isValidUtf8(document));
    EXPECT_EQ(std::ranges::count(document, '\n'), 0);
    auto decoded = ScanResult::decode(document);
    ASSERT_TRUE(decoded.has_value()) << decoded.error();
    EXPECT_EQ(*decoded, result);
}

// Permissions do not bind root, so as root the walk runs in a child process
// that has given up root for the unprivileged "nobody" account and sends its
// exclusions back as JSON.
std::string excludedAsNobody(const std::string& root) {
    int channel[2];
    if (::pipe(channel) != 0) {
        return "";
    }
    pid_t child = ::fork();
    if (child == 0) {
        ::close(channel[0]);
        constexpr uid_t kNobody = 65534;
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) {
            std::_Exit(3);
        }
        nlohmann::ordered_json excluded = walkAll({root}).excluded;
        std::string text = excluded.dump();
        bool written =
            ::write(channel[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
        std::_Exit(written ? 0 : 4);
    }
    ::close(channel[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = ::read(channel[0], buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(channel[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    return text;
}

TEST(FolderSourceWalk, UnreadableFolderIsExcluded) {
    TempTree tree;
    tree.file("open/a.jpg", "a");
    tree.file("locked/b.jpg", "b");
    std::string locked = tree.path("locked");
    std::vector<ExcludedItem> excluded;
    if (::geteuid() == 0) {
        ASSERT_EQ(testing::runCommand("chmod -R go+rX '" + tree.root() + "'"), 0);
        ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
        excluded = nlohmann::ordered_json::parse(excludedAsNobody(tree.root()))
                       .get<std::vector<ExcludedItem>>();
    } else {
        ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
        excluded = walkAll({tree.root()}).excluded;
    }
    ASSERT_EQ(excluded.size(), 1u);
    EXPECT_EQ(excluded[0].path, locked);
    EXPECT_EQ(excluded[0].kind, Kind::unreadableFolder);
    EXPECT_EQ(excluded[0].detail, "Linux would not open this folder.");
}

} // namespace
} // namespace brevant
