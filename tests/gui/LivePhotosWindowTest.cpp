#include "tests/fixtures/LivePhotoFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QTest>

#include <filesystem>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;

// Scans under sanitizers take a while; a result must come in the end.
constexpr int kScanTimeoutMs = 240'000;

} // namespace

class LivePhotosWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The window's Live Photos choice reviews each pair with its photo kept
    // and its movie offered; halves whose identifiers differ stay apart.
    void reviewsTheMoviesOfLivePhotos();
};

void LivePhotosWindowTest::reviewsTheMoviesOfLivePhotos() {
    TempTree tree;
    std::string folder = tree.folder("Phone");
    auto pair = brevant::testing::writeLivePair(
        folder, {.photoIdentifier = "A1B2", .movieIdentifier = "A1B2"});
    brevant::testing::writeLivePair(folder, {.photoIdentifier = "C3",
                                             .movieIdentifier = "D4",
                                             .photoName = "IMG_0002.JPG",
                                             .movieName = "IMG_0002.MOV",
                                             .seed = 2});

    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    model.setSources({folder});
    model.setMode(Mode::livePhotos);
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(model.resultMode(), Mode::livePhotos);

    QCOMPARE(model.groups().size(), std::size_t{1});
    const DuplicateGroup& group = model.groups().front();
    QCOMPARE(group.kind, MatchKind::liveMovie);
    QCOMPARE(group.members.size(), std::size_t{2});
    QCOMPARE(group.members[0].path, pair.photo);
    QCOMPARE(group.members[1].path, pair.movie);
    auto movieSize = static_cast<std::int64_t>(std::filesystem::file_size(pair.movie));
    QCOMPARE(model.bytesToFree(), movieSize);

    auto session = model.session();
    QVERIFY(session);
    QCOMPARE(session->markAllSuggested(), 1);
    QVERIFY(session->isMarked(pair.movie));
    QVERIFY(!session->isMarked(pair.photo));
    QVERIFY(!session->mark(pair.photo).has_value());
}

BREVANT_GUI_TEST(LivePhotosWindowTest);

} // namespace brevant::gui::testing

#include "LivePhotosWindowTest.moc"
