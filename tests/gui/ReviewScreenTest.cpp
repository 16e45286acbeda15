#include "app/gui/ReviewScreen.hpp"

#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CompareView.hpp"
#include "app/gui/GroupListModel.hpp"
#include "app/gui/Inspector.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/MemberTile.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/PictureView.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/SceneZoom.hpp"
#include "app/gui/Skins.hpp"
#include "engine/review/CleanupGroups.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QComboBox>
#include <QDialog>
#include <QListView>
#include <QPaintEvent>
#include <QPushButton>
#include <QRegion>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <set>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;
using Filter = GroupListModel::Filter;

constexpr int kScanTimeoutMs = 240'000;

// A copy that exists only in the result handed to the window.
PhotoAsset copy(const std::string& root, const std::string& relative, std::int64_t size,
                int width = 4000, int height = 3000) {
    static std::uint64_t inode = 100;
    PhotoAsset asset;
    asset.path = root + "/" + relative;
    asset.root = root;
    asset.snapshot = {.identity = {.device = 1, .inode = ++inode},
                      .size = size,
                      .modifiedSeconds = 1'700'000'000,
                      .linkCount = 1,
                      .isRegularFile = true};
    asset.format = PhotoFormat::jpeg;
    asset.pixelWidth = width;
    asset.pixelHeight = height;
    return asset;
}

// Five groups, most bytes to free first: three plain copies; a copy in a
// protected folder; a copy on a read-only volume; two copies to lock; and
// a picture with its half-size copy.
std::vector<DuplicateGroup> generatedGroups(const std::string& root) {
    PhotoAsset fixed = copy(root, "Card/f.jpg", 3'000'000);
    fixed.isReadOnlyVolume = true;
    fixed.volumeName = "CARD";
    PhotoAsset half = copy(root, "Web/k.jpg", 400'000, 500, 400);
    return {
        DuplicateGroup::make("g0", 5'000'000,
                             {copy(root, "A/a.jpg", 5'000'000), copy(root, "A/b.jpg", 5'000'000),
                              copy(root, "A/c.jpg", 5'000'000)},
                             MatchKind::identical),
        DuplicateGroup::make(
            "g1", 4'000'000,
            {copy(root, "Protected/d.jpg", 4'000'000), copy(root, "B/e.jpg", 4'000'000)},
            MatchKind::identical),
        DuplicateGroup::make("g2", 3'000'000, {fixed, copy(root, "B/g.jpg", 3'000'000)},
                             MatchKind::identical),
        DuplicateGroup::make("g3", 2'000'000,
                             {copy(root, "C/h.jpg", 2'000'000), copy(root, "C/i.jpg", 2'000'000)},
                             MatchKind::identical),
        DuplicateGroup::make("g4", 1'000'000, {copy(root, "Web/j.jpg", 1'000'000, 1000, 800), half},
                             MatchKind::identical),
    };
}

// Two copies of each of many pictures, the older one kept.
std::vector<DuplicateGroup> manyGroups(const std::string& root) {
    std::vector<DuplicateGroup> groups;
    for (int i = 0; i < 40'000; ++i) {
        std::string name = std::to_string(i) + ".jpg";
        PhotoAsset kept = testing::copy(root, "Photos/" + name, 2000);
        PhotoAsset newer = testing::copy(root, "Backup/" + name, 2000);
        newer.snapshot.modifiedSeconds += 60;
        groups.push_back(
            DuplicateGroup::make(std::to_string(i), 2000, {kept, newer}, MatchKind::identical));
    }
    return groups;
}

// What a widget paints from the moment this is made.
struct PaintedRegion : QObject {
    QRegion region;

    explicit PaintedRegion(QWidget* widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            region += static_cast<QPaintEvent*>(event)->region();
        }
        return QObject::eventFilter(watched, event);
    }
};

// A window whose scans give the generated groups, opened on the review.
struct ReviewFixture {
    TempTree tree;
    std::string library = tree.folder("library");
    QSettings store{QString::fromStdString(tree.path("settings.ini")), QSettings::IniFormat};
    std::unique_ptr<PhotoCleanupModel> model;
    Skins skins;
    std::unique_ptr<MainWindow> window;
    ReviewScreen* review = nullptr;

    explicit ReviewFixture(const std::function<std::vector<DuplicateGroup>(const std::string&)>&
                               make = generatedGroups) {
        PhotoCleanupModel::Engine engine = PhotoCleanupModel::Engine::standard();
        engine.scan = [groups = make(library)](const std::vector<std::string>& folders, bool,
                                               const CancellationFlag&,
                                               const ExactMatcher::Progress&) {
            ScanResult result;
            result.roots = folders;
            result.groups = groups;
            return result;
        };
        model = std::make_unique<PhotoCleanupModel>(store, tree.folder("data"),
                                                    tree.folder("Downloads"), engine);
        model->setSources({library});
        model->setProtectedFolders({library + "/Protected"});
        window = std::make_unique<MainWindow>(*model, skins, store);
        window->show();
        window->activateWindow();
        (void)QTest::qWaitForWindowActive(window.get());
        model->startScan();
        QTRY_COMPARE_WITH_TIMEOUT(model->phase(), Phase::reviewing, kScanTimeoutMs);
        QTest::mouseClick(window->overview()->reviewButton(), Qt::LeftButton);
        review = window->review();
    }

    // A key pressed where the focus is, as a user would.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        QWidget* focus = QApplication::focusWidget();
        QTest::keyClick(focus != nullptr ? focus : review, key, modifiers);
    }

    [[nodiscard]] std::string path(const std::string& relative) const {
        return library + "/" + relative;
    }

    [[nodiscard]] QString currentName() const {
        const PhotoAsset* asset = review->compare()->currentAsset();
        return asset != nullptr ? qtText(asset->name()) : QString();
    }

    [[nodiscard]] QString refusal() const {
        return review->compare()->tile(review->compare()->current())->refusal();
    }

    // The ids of the groups the list shows, fetching every row.
    [[nodiscard]] QStringList listed() const {
        GroupListModel* groups = review->groups();
        while (groups->canFetchMore({})) {
            groups->fetchMore({});
        }
        QStringList ids;
        for (int row = 0; row < groups->rowCount(); ++row) {
            ids << qtText(model->session()->groups()[groups->groupIndex(row)].id);
        }
        return ids;
    }

    void choose(Filter filter) const {
        QComboBox* choice = review->filterChoice();
        int index = choice->findData(static_cast<int>(filter));
        choice->setCurrentIndex(index);
        Q_EMIT choice->activated(index);
    }
};

} // namespace

class ReviewScreenTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void opensOnTheFirstGroupWithItsKeeper();
    void filterShowsTheRightGroups();
    void keyboardMarkingFollowsTheRefusalRules();
    void markingSuggestedCopiesMarksWhatTheEngineSuggests();
    void markingEveryGroupLeavesTheWindowFree();
    void zoomStaysInStepBetweenDifferentSizes();
    void presetChangeKeepsAllowedMarksAndThePlace();
    void listHandsOutRowsInBatchesInEachOrder();
    void markedRowIsDrawnAgainInPlace();
    void inspectorShowsOtherNamesAndCatalogWork();
};

void ReviewScreenTest::opensOnTheFirstGroupWithItsKeeper() {
    ReviewFixture f;
    QCOMPARE(f.window->currentScreen(), f.review);
    QCOMPARE(f.review->groups()->rowCount(), 5);
    QCOMPARE(f.review->currentGroup(), 0);
    CompareView* compare = f.review->compare();
    QCOMPARE(compare->count(), 3);
    // All three are equal, so the first by name is kept.
    QCOMPARE(compare->tile(0)->badge(), QStringLiteral("Suggested keeper"));
    QCOMPARE(compare->tile(1)->badge(), QString());
    QCOMPARE(f.review->totalText(), QStringLiteral("Nothing marked yet"));
    QVERIFY(!f.review->cleanupButton()->isEnabled());
    QCOMPARE(f.review->inspector()->field(QStringLiteral("Path")),
             QString::fromStdString(f.path("A/a.jpg")));
    QCOMPARE(f.review->inspector()->field(QStringLiteral("Keeper")),
             QStringLiteral("Suggested to keep: All copies are equal; the first by name is "
                            "suggested."));
    // The Edit menu carries the marking commands.
    QVERIFY(f.window->action(QStringLiteral("Mark Suggested Copies in Every Group")) != nullptr);
    QVERIFY(f.window->action(QStringLiteral(
                "Lock: always keep this copy, in this scan and later ones")) != nullptr);

    // The way on to the cleanup only asks for it.
    QSignalSpy cleanup(f.review, &ReviewScreen::cleanupRequested);
    f.press(Qt::Key_Right);
    f.press(Qt::Key_M);
    QVERIFY(f.review->cleanupButton()->isEnabled());
    QTest::mouseClick(f.review->cleanupButton(), Qt::LeftButton);
    QCOMPARE(cleanup.count(), 1);
}

void ReviewScreenTest::filterShowsTheRightGroups() {
    ReviewFixture f;
    std::shared_ptr<ReviewSession> session = f.model->session();
    QVERIFY(session->mark(f.path("A/b.jpg")).has_value());
    QVERIFY(session->lock(f.path("C/h.jpg")).has_value());
    // g0 is shown on opening; g1 is shown next.
    f.press(Qt::Key_Down);
    QCOMPARE(f.review->currentGroup(), 1);

    f.choose(Filter::notReviewed);
    QCOMPARE(f.listed(),
             (QStringList{QStringLiteral("g2"), QStringLiteral("g3"), QStringLiteral("g4")}));
    // The group shown is left out, so the first listed is shown instead.
    QCOMPARE(f.review->currentGroup(), 2);
    f.choose(Filter::withMarks);
    QCOMPARE(f.listed(), QStringList{QStringLiteral("g0")});
    f.choose(Filter::withLockedCopies);
    QCOMPARE(f.listed(), QStringList{QStringLiteral("g3")});
    f.choose(Filter::notReviewed);
    QCOMPARE(f.listed(), QStringList{QStringLiteral("g4")});
    f.choose(Filter::all);
    QCOMPARE(f.listed(),
             (QStringList{QStringLiteral("g0"), QStringLiteral("g1"), QStringLiteral("g2"),
                          QStringLiteral("g3"), QStringLiteral("g4")}));
    // The group shown stays shown through a filter that keeps it.
    QCOMPARE(f.review->currentGroup(), 4);
}

void ReviewScreenTest::keyboardMarkingFollowsTheRefusalRules() {
    ReviewFixture f;
    // The last copy: two of three may be marked, the third may not.
    f.press(Qt::Key_M);
    f.press(Qt::Key_Right);
    f.press(Qt::Key_M);
    f.press(Qt::Key_Right);
    QCOMPARE(f.currentName(), QStringLiteral("c.jpg"));
    f.press(Qt::Key_M);
    QCOMPARE(f.refusal(),
             QStringLiteral("Every group keeps at least one copy. Unmark another copy first."));
    QCOMPARE(f.model->session()->marks(),
             (std::set<std::string>{f.path("A/a.jpg"), f.path("A/b.jpg")}));
    QCOMPARE(f.review->totalText(), QStringLiteral("2 pictures marked · 10.0 MB"));
    // Unmarking another first lets it through; the sentence goes.
    f.press(Qt::Key_Left);
    f.press(Qt::Key_U);
    f.press(Qt::Key_Right);
    f.press(Qt::Key_Space);
    QCOMPARE(f.refusal(), QString());
    QVERIFY(f.model->session()->isMarked(f.path("A/c.jpg")));
    QCOMPARE(f.review->compare()->tile(2)->badge(), QStringLiteral("Marked for removal"));

    // A protected folder.
    f.press(Qt::Key_Down);
    QCOMPARE(f.currentName(), QStringLiteral("d.jpg"));
    f.press(Qt::Key_M);
    QCOMPARE(f.refusal(), QStringLiteral("It is in Protected, a folder you protect."));

    // A copy that must stay: on a volume that cannot change.
    f.press(Qt::Key_Down);
    QCOMPARE(f.currentName(), QStringLiteral("f.jpg"));
    f.press(Qt::Key_M);
    QCOMPARE(f.refusal(), QStringLiteral("On a volume this computer cannot change."));
    QCOMPARE(f.review->inspector()->field(QStringLiteral("Volume")),
             QStringLiteral("CARD (read-only)"));
    QCOMPARE(f.review->inspector()->field(QStringLiteral("Always kept")),
             QStringLiteral("On a volume this computer cannot change"));

    // A locked copy, until it is unlocked.
    f.press(Qt::Key_Down);
    QCOMPARE(f.currentName(), QStringLiteral("h.jpg"));
    f.press(Qt::Key_L);
    QCOMPARE(f.review->compare()->tile(0)->badge(), QStringLiteral("Locked"));
    f.press(Qt::Key_M);
    QCOMPARE(f.refusal(), QStringLiteral("You locked this one to keep it. Unlock it first."));
    f.press(Qt::Key_L, Qt::ShiftModifier);
    f.press(Qt::Key_M);
    QCOMPARE(f.refusal(), QString());
    QVERIFY(f.model->session()->isMarked(f.path("C/h.jpg")));
    QCOMPARE(f.model->session()->marks().size(), std::size_t{3});
}

void ReviewScreenTest::markingSuggestedCopiesMarksWhatTheEngineSuggests() {
    ReviewFixture f;
    std::shared_ptr<ReviewSession> session = f.model->session();
    QVERIFY(session->lock(f.path("C/i.jpg")).has_value());
    std::set<std::string> keepers;
    for (const auto& group : session->groups()) {
        keepers.insert(session->suggestion(group)->keeperID);
    }
    f.press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
    // Everything but the keepers, which are the copies that must stay
    // (protected, read-only, locked) where a group has one.
    std::set<std::string> expected{f.path("A/b.jpg"), f.path("A/c.jpg"), f.path("B/e.jpg"),
                                   f.path("B/g.jpg"), f.path("C/h.jpg"), f.path("Web/k.jpg")};
    QVERIFY(keepers.contains(f.path("C/i.jpg")));
    QVERIFY(keepers.contains(f.path("Protected/d.jpg")));
    QVERIFY(keepers.contains(f.path("Card/f.jpg")));
    QCOMPARE(session->marks(), expected);
    for (const auto& keeper : keepers) {
        QVERIFY(!session->isMarked(keeper));
    }
    QCOMPARE(f.review->noticeText(), QStringLiteral("Marked 6 more copies."));
    QCOMPARE(f.review->totalText(), QStringLiteral("6 pictures marked · 19.4 MB"));

    f.press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(session->marks(), expected);
    QCOMPARE(
        f.review->noticeText(),
        QStringLiteral("Nothing more to mark: the rest are kept copies, locked or protected."));

    // Clearing one group leaves the others.
    f.press(Qt::Key_Backspace, Qt::ControlModifier);
    expected.erase(f.path("A/b.jpg"));
    expected.erase(f.path("A/c.jpg"));
    QCOMPARE(session->marks(), expected);
}

void ReviewScreenTest::markingEveryGroupLeavesTheWindowFree() {
    ReviewFixture f(manyGroups);
    QAction* markAll = f.review->action(ReviewScreen::Command::markAllSuggested);
    markAll->trigger();
    // Marking goes on between the window's events; meanwhile it says how far
    // it is and cannot be asked for twice.
    QVERIFY(!markAll->isEnabled());
    QVERIFY(f.review->noticeText().startsWith(QStringLiteral("Marking the suggested copies… ")));
    std::size_t first = f.model->session()->marks().size();
    QVERIFY(first < 40'000);
    QTRY_VERIFY_WITH_TIMEOUT(f.model->session()->marks().size() > first, 10'000);
    QVERIFY(!f.model->session()->isMarked(f.path("Photos/7.jpg")));

    // Going on to the cleanup meanwhile marks the rest first: the card shows
    // every mark asked for.
    f.window->showCleanupCard();
    QCOMPARE(f.model->session()->marks().size(), std::size_t{40'000});
    QVERIFY(f.model->session()->isMarked(f.path("Backup/39999.jpg")));
    QVERIFY(markAll->isEnabled());
    QCOMPARE(f.review->noticeText(),
             QStringLiteral("Marked %1 more copies.").arg(QLocale().toString(40'000)));
    QCOMPARE(f.review->totalText(), QStringLiteral("%1 pictures marked · %2")
                                        .arg(QLocale().toString(40'000), byteText(80'000'000)));
    auto* card = f.window->findChild<QDialog*>();
    QVERIFY(card != nullptr);
    card->reject();

    // Left alone, it ends by itself with the same marks.
    for (const auto& group : f.model->session()->groups()) {
        f.model->session()->clearMarks(group);
    }
    markAll->trigger();
    QTRY_VERIFY_WITH_TIMEOUT(markAll->isEnabled(), 60'000);
    QCOMPARE(f.model->session()->marks().size(), std::size_t{40'000});
    QCOMPARE(f.review->noticeText(),
             QStringLiteral("Marked %1 more copies.").arg(QLocale().toString(40'000)));
}

void ReviewScreenTest::zoomStaysInStepBetweenDifferentSizes() {
    ReviewFixture f;
    f.review->showGroup(4);
    CompareView* compare = f.review->compare();
    QCOMPARE(compare->count(), 2);
    PictureView* large = compare->tile(0)->view();
    PictureView* small = compare->tile(1)->view();
    QCOMPARE(large->visibleSceneRect(), QRectF(0, 0, 1000, 800));
    QCOMPARE(small->visibleSceneRect(), QRectF(0, 0, 500, 400));

    f.press(Qt::Key_Plus);
    QCOMPARE(large->visibleSceneRect(), QRectF(250, 200, 500, 400));
    QCOMPARE(small->visibleSceneRect(), QRectF(125, 100, 250, 200));
    // Panning to the right edge moves both by the same share of the scene.
    compare->zoom()->panBy({1.0, 0.0});
    QCOMPARE(large->visibleSceneRect(), QRectF(500, 200, 500, 400));
    QCOMPARE(small->visibleSceneRect(), QRectF(250, 100, 250, 200));
    f.press(Qt::Key_Plus);
    QCOMPARE(large->visibleSceneRect(), QRectF(625, 300, 250, 200));
    QCOMPARE(small->visibleSceneRect(), QRectF(312.5, 150, 125, 100));

    // The flip shows the other copy in the same place, on the same part.
    f.press(Qt::Key_F);
    QVERIFY(compare->isFlipping());
    QCOMPARE(compare->flipShown(), 0);
    QCOMPARE(compare->flipView()->visibleSceneRect(), QRectF(625, 300, 250, 200));
    f.press(Qt::Key_F);
    QCOMPARE(compare->flipShown(), 1);
    QCOMPARE(compare->flipView()->visibleSceneRect(), QRectF(312.5, 150, 125, 100));
    f.press(Qt::Key_Escape);
    QVERIFY(!compare->isFlipping());

    f.press(Qt::Key_0);
    QCOMPARE(small->visibleSceneRect(), QRectF(0, 0, 500, 400));

    // A double click opens the larger view of that copy, on the same zoom.
    QTest::mouseDClick(small, Qt::LeftButton);
    QVERIFY(compare->largeView() != nullptr);
    QVERIFY(compare->largeView()->isVisible());
    QCOMPARE(compare->largeView()->windowTitle(), QStringLiteral("k.jpg"));
}

void ReviewScreenTest::presetChangeKeepsAllowedMarksAndThePlace() {
    SampleLibrary library;
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    Skins skins;
    MainWindow window(model, skins, fixture.store());
    window.show();
    model.setSources({library.root()});
    model.setMode(Mode::similar);
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QTest::mouseClick(window.overview()->reviewButton(), Qt::LeftButton);
    ReviewScreen* review = window.review();
    QCOMPARE(window.currentScreen(), review);
    QVERIFY(review->presetChoice()->isVisibleTo(review));

    review->action(ReviewScreen::Command::markAllSuggested)->trigger();
    std::set<std::string> before = model.session()->marks();
    QVERIFY(!before.empty());
    // Stand on a marked copy that the conservative groups still hold.
    auto conservative = CleanupGroups::reviewed(ScanMode::similar(SimilarityPreset::conservative),
                                                model.result().groups, model.index().get());
    std::set<std::string> stays;
    for (const auto& group : conservative) {
        for (const auto& member : group.members) {
            stays.insert(member.path);
        }
    }
    std::string place;
    for (const auto& path : before) {
        if (stays.contains(path)) {
            place = path;
        }
    }
    QVERIFY(!place.empty());
    const DuplicateGroup* holder = model.session()->group(place);
    review->showGroup(static_cast<int>(holder - model.session()->groups().data()));
    for (int i = 0; i < review->compare()->count(); ++i) {
        if (holder->members[i].path == place) {
            review->compare()->setCurrent(i);
        }
    }

    QComboBox* preset = review->presetChoice();
    int index = preset->findData(static_cast<int>(SimilarityPreset::conservative));
    preset->setCurrentIndex(index);
    Q_EMIT preset->activated(index);
    QTRY_COMPARE_WITH_TIMEOUT(model.groupedPreset(), SimilarityPreset::conservative,
                              kScanTimeoutMs);
    std::set<std::string> kept;
    for (const auto& path : before) {
        if (stays.contains(path)) {
            kept.insert(path);
        }
    }
    QVERIFY(kept.size() < before.size());
    QCOMPARE(model.session()->marks(), kept);
    QCOMPARE(window.currentScreen(), review);
    QCOMPARE(review->groups()->matchingCount(), static_cast<int>(conservative.size()));
    QCOMPARE(review->compare()->currentAsset()->path, place);
    QCOMPARE(review->compare()->tile(review->compare()->current())->badge(),
             QStringLiteral("Marked for removal"));
}

// Rows are not laid out again when one changes: the changed row must still
// be painted again, in its place, and the rows around it stay put.
void ReviewScreenTest::markedRowIsDrawnAgainInPlace() {
    ReviewFixture f;
    QListView* list = f.review->list();
    f.press(Qt::Key_Right);
    QTest::qWait(100);
    QRect first = list->visualRect(list->model()->index(0, 0));
    QRect second = list->visualRect(list->model()->index(1, 0));
    QVERIFY(!first.isEmpty() && !second.isEmpty());
    PaintedRegion painted(list->viewport());

    f.press(Qt::Key_M);
    QVERIFY(f.model->session()->isMarked(f.path("A/b.jpg")));
    QModelIndex changed = list->model()->index(0, 0);
    QVERIFY(changed.data().toString().contains(QStringLiteral("1 marked")));
    QTRY_VERIFY(painted.region.contains(list->visualRect(changed)));
    // The window may still settle its width; the rows keep their places.
    QCOMPARE(list->visualRect(changed).top(), first.top());
    QCOMPARE(list->visualRect(list->model()->index(1, 0)).top(), second.top());
    QCOMPARE(list->visualRect(list->model()->index(1, 0)).height(), second.height());
}

void ReviewScreenTest::listHandsOutRowsInBatchesInEachOrder() {
    std::vector<DuplicateGroup> groups;
    for (int i = 0; i < 450; ++i) {
        std::string folder = "F" + std::to_string(i % 7);
        PhotoAsset first = copy("/library", folder + "/" + std::to_string(i) + ".jpg", 1000);
        first.snapshot.modifiedSeconds = 1'600'000'000 + (i * 7919) % 450;
        // An older copy, which is the one kept.
        PhotoAsset second = copy("/library", "Copies/" + std::to_string(i) + ".jpg", 1000);
        second.snapshot.modifiedSeconds = first.snapshot.modifiedSeconds - 1;
        groups.push_back(
            DuplicateGroup::make(std::to_string(i), 1000, {first, second}, MatchKind::identical));
    }
    auto session =
        std::make_shared<const ReviewSession>(groups, std::make_shared<LockStore>(std::nullopt),
                                              std::set<std::string>{}, std::vector<std::string>{});
    GroupListModel list;
    list.setSession(session);
    QCOMPARE(list.matchingCount(), 450);
    QCOMPARE(list.rowCount(), GroupListModel::kBatch);
    // Indices only for rows handed out, in the one column, at the top level.
    QCOMPARE(list.index(GroupListModel::kBatch - 1).row(), GroupListModel::kBatch - 1);
    QVERIFY(!list.index(GroupListModel::kBatch).isValid());
    QVERIFY(!list.index(-1).isValid());
    QVERIFY(!list.index(0, 1).isValid());
    QVERIFY(!list.index(0, 0, list.index(0)).isValid());
    QVERIFY(list.canFetchMore({}));
    list.fetchMore({});
    QCOMPARE(list.rowCount(), 400);
    list.fetchMore({});
    QCOMPARE(list.rowCount(), 450);
    QVERIFY(!list.canFetchMore({}));
    QCOMPARE(list.groupIndex(449), 449);
    QCOMPARE(list.data(list.index(0), GroupListModel::keeperRole).toString(),
             QStringLiteral("/library/Copies/0.jpg"));

    // Asking for a row further on hands out the batches up to it.
    list.setSort(GroupListModel::Sort::folder);
    QCOMPARE(list.rowCount(), GroupListModel::kBatch);
    std::optional<int> row = list.rowOf(449);
    QVERIFY(row.has_value());
    QCOMPARE(list.groupIndex(*row), 449);
    QVERIFY(list.rowCount() > *row);
    QCOMPARE(list.rowCount() % GroupListModel::kBatch == 0 || list.rowCount() == 450, true);
    while (list.canFetchMore({})) {
        list.fetchMore({});
    }
    // By folder, and within one folder in the engine's order.
    auto expectByFolder = [&list](const std::vector<DuplicateGroup>& shown) {
        while (list.canFetchMore({})) {
            list.fetchMore({});
        }
        QCOMPARE(list.rowCount(), static_cast<int>(shown.size()));
        for (int row = 1; row < list.rowCount(); ++row) {
            std::string before = shown[list.groupIndex(row - 1)].members.front().folder();
            std::string after = shown[list.groupIndex(row)].members.front().folder();
            QVERIFY(before < after ||
                    (before == after && list.groupIndex(row - 1) < list.groupIndex(row)));
        }
    };
    expectByFolder(groups);
    list.setSort(GroupListModel::Sort::date);
    while (list.canFetchMore({})) {
        list.fetchMore({});
    }
    for (int row = 1; row < 450; ++row) {
        QVERIFY(groups[list.groupIndex(row - 1)].members.front().snapshot.modifiedSeconds >=
                groups[list.groupIndex(row)].members.front().snapshot.modifiedSeconds);
    }

    // The same groups formed again in another order: the orders are worked
    // out afresh, and a group seen before stays seen.
    list.markReviewed(7);
    std::vector<DuplicateGroup> again(groups.rbegin(), groups.rend());
    list.setSession(
        std::make_shared<const ReviewSession>(again, std::make_shared<LockStore>(std::nullopt),
                                              std::set<std::string>{}, std::vector<std::string>{}));
    list.setSort(GroupListModel::Sort::folder);
    expectByFolder(again);
    list.setFilter(GroupListModel::Filter::notReviewed);
    QCOMPARE(list.matchingCount(), 449);
    QCOMPARE(list.rowOf(449 - 7), std::nullopt);
    QVERIFY(list.rowOf(449 - 8).has_value());
}

void ReviewScreenTest::inspectorShowsOtherNamesAndCatalogWork() {
    PhotoAsset asset = copy("/library", "Trip/a.jpg", 2'500'000, 6000, 4000);
    asset.otherNames = {"/library/Best/a.jpg"};
    asset.snapshot.linkCount = 2;
    asset.volumeName = "Photos";
    asset.isExternalVolume = true;
    asset.catalog = CatalogReference{LightroomRef{.rating = 3, .isEdited = true}};
    Inspector inspector;
    inspector.showAsset(&asset, {.isKeeper = false,
                                 .keeperName = QStringLiteral("b.jpg"),
                                 .keeperReason = QStringLiteral("It has the most pixels")});
    QCOMPARE(inspector.field(QStringLiteral("Other names")), QStringLiteral("/library/Best/a.jpg"));
    QCOMPARE(inspector.field(QStringLiteral("Volume")), QStringLiteral("Photos (external)"));
    QCOMPARE(inspector.field(QStringLiteral("Pixels")), QStringLiteral("6000 × 4000"));
    QCOMPARE(inspector.field(QStringLiteral("Catalog work")),
             QStringLiteral("Lightroom Classic: edited, 3 stars"));
    QCOMPARE(inspector.field(QStringLiteral("Keeper")),
             QStringLiteral("b.jpg is suggested to keep: It has the most pixels."));
    QCOMPARE(inspector.field(QStringLiteral("Always kept")),
             QStringLiteral("Has another name on disk (a hard link), so moving it to the Trash "
                            "would free nothing"));
    // Unknown facts are left out rather than shown empty.
    QCOMPARE(inspector.field(QStringLiteral("Quality")), QString());
    QSignalSpy open(&inspector, &Inspector::openFolderRequested);
    QTest::mouseClick(inspector.openFolderButton(), Qt::LeftButton);
    QCOMPARE(open.value(0).value(0).toString(), QStringLiteral("/library/Trip"));
}

BREVANT_GUI_TEST(ReviewScreenTest);

} // namespace brevant::gui::testing

#include "ReviewScreenTest.moc"
