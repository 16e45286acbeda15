#include "app/gui/PhotoCleanupModel.hpp"

#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <set>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;
using Stage = ScanProgress::Stage;
using Names = std::vector<std::string>;

// Scans under sanitizers take a while; a result must come in the end.
constexpr int kScanTimeoutMs = 240'000;

const std::vector<Stage> kExactStages{Stage::preparing, Stage::discovering, Stage::reading,
                                      Stage::comparing, Stage::verifying,   Stage::finishing};
const std::vector<Stage> kMeasuredStages{Stage::preparing,     Stage::discovering, Stage::reading,
                                         Stage::comparing,     Stage::verifying,   Stage::measuring,
                                         Stage::checkingFaces, Stage::finishing};

std::vector<Names> groupNames(const PhotoCleanupModel& model, const std::string& root) {
    std::vector<Names> names;
    for (const auto& group : model.groups()) {
        names.push_back(memberNames(group, root));
    }
    std::ranges::sort(names);
    return names;
}

} // namespace

class PhotoCleanupModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { library_ = std::make_unique<SampleLibrary>(); }

    void scansIdenticalCopies();
    void scansSimilarVersions();
    void scansSeries();
    void regroupsPresetChangeWithoutMeasuring();
    void cancelsWhileMeasuringAndScansAgain();
    void refusesAScanWithNothingToScan();
    void keepsAReviewSessionThatCarriesMarksOver();

private:
    // Scans the library in the mode and waits for the result.
    void scan(ModelFixture& fixture, Mode mode);

    std::unique_ptr<SampleLibrary> library_;
};

void PhotoCleanupModelTest::scan(ModelFixture& fixture, Mode mode) {
    PhotoCleanupModel& model = fixture.model();
    model.setSources({library_->root()});
    model.setMode(mode);
    QVERIFY(model.startScan());
    QCOMPARE(model.phase(), Phase::scanning);
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QVERIFY(model.hasResult());
    QCOMPARE(model.resultMode(), mode);
}

void PhotoCleanupModelTest::scansIdenticalCopies() {
    ModelFixture fixture;
    StageRecorder recorder(fixture.model());
    scan(fixture, Mode::identical);
    PhotoCleanupModel& model = fixture.model();

    QCOMPARE(recorder.stages(), kExactStages);
    QCOMPARE(groupNames(model, library_->root()),
             (std::vector<Names>{{"Backup/IMG_1001.JPG", "Holidays/IMG_1001.JPG"},
                                 {"Backup/IMG_1003.JPG", "Holidays/IMG_1003.JPG"}}));
    QVERIFY(model.index() == nullptr);
    QCOMPARE(fixture.calls().measures.load(), 0);
    std::int64_t freed = fileSize(library_->path("Holidays/IMG_1001.JPG")) +
                         fileSize(library_->path("Holidays/IMG_1003.JPG"));
    QCOMPARE(model.kinds(), (std::vector<KindSummary>{{MatchKind::identical, 2, 4, freed}}));
    QCOMPARE(model.bytesToFree(), freed);
    QCOMPARE(model.result().examined, 20);
    // The last report is the matcher's own, with the matched count.
    QCOMPARE(recorder.reports().back().scan.matched, 4);
}

void PhotoCleanupModelTest::scansSimilarVersions() {
    ModelFixture fixture;
    StageRecorder recorder(fixture.model());
    scan(fixture, Mode::similar);
    PhotoCleanupModel& model = fixture.model();

    QCOMPARE(recorder.stages(), kMeasuredStages);
    QCOMPARE(fixture.calls().measures.load(), 1);
    QCOMPARE(fixture.calls().faceChecks.load(), 1);
    // Measuring counted up to every picture, with the total known.
    auto measured = std::ranges::find_if(recorder.reports(), [](const ModelProgress& progress) {
        return progress.scan.stage == Stage::measuring && progress.done == 20;
    });
    QVERIFY(measured != recorder.reports().end());
    QCOMPARE(measured->total, std::optional<int>(20));

    QVERIFY(model.index() != nullptr);
    QCOMPARE(model.index()->pictures.size(), std::size_t{20});
    QCOMPARE(model.groupedPreset(), SimilarityPreset::balanced);
    // The identical pairs are inside similar groups, so only those show.
    QCOMPARE(groupNames(model, library_->root()),
             (std::vector<Names>{
                 {"Backup/IMG_1001.JPG", "Exports/IMG_1001 evening.jpg",
                  "Holidays/IMG_1001 small.jpg", "Holidays/IMG_1001.JPG"},
                 {"Backup/IMG_1003.JPG", "Holidays/IMG_1003 turned.jpg", "Holidays/IMG_1003.JPG"},
                 {"Burst/IMG_2001.JPG", "Burst/IMG_2002.JPG"},
                 {"Burst/IMG_2003.JPG", "Burst/IMG_2004.JPG"},
                 {"Exports/IMG_1002 web.jpg", "Holidays/IMG_1002.JPG"},
                 {"Exports/IMG_1004 wide.jpg", "Holidays/IMG_1004.JPG"},
             }));
    QCOMPARE(model.kinds().size(), std::size_t{1});
    QCOMPARE(model.kinds().front().kind, MatchKind::similar);
    // The window measures through the feature cache in the data folder.
    QVERIFY(QFileInfo::exists(QString::fromStdString(fixture.dataFolder() + "/features.plist")));
}

void PhotoCleanupModelTest::scansSeries() {
    ModelFixture fixture;
    StageRecorder recorder(fixture.model());
    scan(fixture, Mode::series);
    QCOMPARE(recorder.stages(), kMeasuredStages);
    // The identical copies outside the burst stay groups of their own.
    QCOMPARE(groupNames(fixture.model(), library_->root()),
             (std::vector<Names>{{"Backup/IMG_1001.JPG", "Holidays/IMG_1001.JPG"},
                                 {"Backup/IMG_1003.JPG", "Holidays/IMG_1003.JPG"},
                                 {"Burst/IMG_2001.JPG", "Burst/IMG_2002.JPG", "Burst/IMG_2003.JPG",
                                  "Burst/IMG_2004.JPG"}}));
    QCOMPARE(fixture.model().groups().front().kind, MatchKind::series);
}

void PhotoCleanupModelTest::regroupsPresetChangeWithoutMeasuring() {
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    scan(fixture, Mode::similar);
    QCOMPARE(model.groups().size(), std::size_t{6});
    QCOMPARE(fixture.calls().measures.load(), 1);
    // Nothing was cached before the first scan.
    QCOMPARE(fixture.calls().cachedBeforeMeasuring.load(), 0);

    QSignalSpy regrouped(&model, &PhotoCleanupModel::resultChanged);
    model.setPreset(SimilarityPreset::conservative);
    QTRY_COMPARE_WITH_TIMEOUT(model.groupedPreset(), SimilarityPreset::conservative,
                              kScanTimeoutMs);
    QCOMPARE(regrouped.count(), 1);
    QCOMPARE(groupNames(model, library_->root()),
             (std::vector<Names>{
                 {"Backup/IMG_1001.JPG", "Exports/IMG_1001 evening.jpg",
                  "Holidays/IMG_1001 small.jpg", "Holidays/IMG_1001.JPG"},
                 {"Backup/IMG_1003.JPG", "Holidays/IMG_1003 turned.jpg", "Holidays/IMG_1003.JPG"},
                 {"Exports/IMG_1002 web.jpg", "Holidays/IMG_1002.JPG"},
             }));
    QCOMPARE(model.phase(), Phase::reviewing);
    QCOMPARE(fixture.calls().measures.load(), 1);
    QCOMPARE(fixture.calls().scans.load(), 1);
    QCOMPARE(model.settings().preset, SimilarityPreset::conservative);

    // Back to balanced gives the six groups again, still without measuring.
    model.setPreset(SimilarityPreset::balanced);
    QTRY_COMPARE_WITH_TIMEOUT(model.groups().size(), std::size_t{6}, kScanTimeoutMs);
    QCOMPARE(fixture.calls().measures.load(), 1);

    // A new scan finds every picture in the cache the first one saved.
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(fixture.calls().measures.load(), 2);
    QCOMPARE(fixture.calls().cachedBeforeMeasuring.load(), 20);
    QCOMPARE(model.groups().size(), std::size_t{6});
}

void PhotoCleanupModelTest::cancelsWhileMeasuringAndScansAgain() {
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    model.setSources({library_->root()});
    model.setMode(Mode::similar);
    QSignalSpy cancelled(&model, &PhotoCleanupModel::scanCancelled);
    QObject context;
    connect(&model, &PhotoCleanupModel::progressChanged, &context,
            [&model](const ModelProgress& progress) {
                if (progress.scan.stage == Stage::measuring) {
                    model.cancelScan();
                }
            });
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::idle, kScanTimeoutMs);
    QCOMPARE(cancelled.count(), 1);
    QVERIFY(!model.hasResult());
    QVERIFY(model.groups().empty());
    QCOMPARE(fixture.calls().faceChecks.load(), 0);
    QVERIFY(!model.isCancelling());

    // Cancelling before the worker starts stops just as cleanly.
    context.disconnect();
    QObject::disconnect(&model, nullptr, &context, nullptr);
    QVERIFY(model.startScan());
    model.cancelScan();
    QTRY_COMPARE_WITH_TIMEOUT(cancelled.count(), 2, kScanTimeoutMs);
    QCOMPARE(model.phase(), Phase::idle);

    // And the next scan runs to its end.
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(model.groups().size(), std::size_t{6});
}

void PhotoCleanupModelTest::refusesAScanWithNothingToScan() {
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    QVERIFY(!model.startScan());
    QCOMPARE(model.phase(), Phase::idle);
    model.setSources({library_->root()});
    QVERIFY(model.startScan());
    // One scan at a time.
    QVERIFY(!model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(fixture.calls().scans.load(), 1);
}

void PhotoCleanupModelTest::keepsAReviewSessionThatCarriesMarksOver() {
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    QVERIFY(model.session() == nullptr);
    scan(fixture, Mode::similar);
    std::shared_ptr<ReviewSession> session = model.session();
    QVERIFY(session != nullptr);
    QCOMPARE(session->groups(), model.groups());
    QCOMPARE(session->priorities(), KeeperPolicy::standardPriorities());
    QVERIFY(model.locks() != nullptr);
    QCOMPARE(model.locks()->path(),
             std::optional<std::string>(fixture.dataFolder() + "/keep-locks.json"));
    for (const auto& group : session->groups()) {
        QVERIFY(session->suggestion(group).has_value());
    }
    // Every group keeps one copy: 15 pictures in 6 groups leave 9 to mark.
    QCOMPARE(session->markAllSuggested(), 9);
    std::set<std::string> before = session->marks();

    // A preset change gives a new session with the marks still in a group.
    model.setPreset(SimilarityPreset::conservative);
    QTRY_COMPARE_WITH_TIMEOUT(model.groupedPreset(), SimilarityPreset::conservative,
                              kScanTimeoutMs);
    std::shared_ptr<ReviewSession> regrouped = model.session();
    QCOMPARE(regrouped->groups(), model.groups());
    std::set<std::string> kept;
    for (const auto& path : before) {
        if (regrouped->group(path) != nullptr) {
            kept.insert(path);
        }
    }
    QVERIFY(kept.size() < before.size());
    QCOMPARE(regrouped->marks(), kept);

    // Protecting a folder unmarks its copies at once.
    model.setProtectedFolders({library_->path("Backup")});
    for (const auto& path : regrouped->marks()) {
        QVERIFY(!path.starts_with(library_->path("Backup/")));
    }
    std::set<std::string> protectedMarks = regrouped->marks();

    // A lock is kept in the data folder's lock store.
    std::string locked = *protectedMarks.begin();
    QVERIFY(regrouped->lock(locked).has_value());
    QVERIFY(QFileInfo::exists(QString::fromStdString(fixture.dataFolder() + "/keep-locks.json")));
    protectedMarks.erase(locked);

    // A rescan keeps the marks that are still allowed, and the same locks.
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(model.session()->marks(), protectedMarks);
    QVERIFY(model.session()->isLocked(locked));
}

BREVANT_GUI_TEST(PhotoCleanupModelTest);

} // namespace brevant::gui::testing

#include "PhotoCleanupModelTest.moc"
