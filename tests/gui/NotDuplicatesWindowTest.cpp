#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CompareView.hpp"
#include "app/gui/GroupListModel.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/NotDuplicateActions.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ReviewScreen.hpp"
#include "app/gui/Skins.hpp"
#include "engine/pipeline/DeclaredDifferences.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/review/NotDuplicateStore.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QAction>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;

constexpr int kScanTimeoutMs = 240'000;

// How many of the paths the group holds.
int held(const DuplicateGroup& group, const std::vector<std::string>& paths) {
    return static_cast<int>(std::ranges::count_if(group.members, [&](const PhotoAsset& member) {
        return std::ranges::find(paths, member.path) != paths.end();
    }));
}

// No group holds two of the paths.
bool keptApart(const std::vector<DuplicateGroup>& groups, const std::vector<std::string>& paths) {
    return std::ranges::all_of(groups,
                               [&](const DuplicateGroup& group) { return held(group, paths) < 2; });
}

// The first similar group whose copies all differ in size, so none is an
// identical copy of another; -1 when there is none.
int similarGroup(const ReviewSession& session) {
    for (std::size_t i = 0; i < session.groups().size(); ++i) {
        const DuplicateGroup& group = session.groups()[i];
        std::set<std::int64_t> sizes;
        for (const auto& member : group.members) {
            sizes.insert(member.size());
        }
        if (group.kind == MatchKind::similar && sizes.size() == group.members.size()) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

} // namespace

class NotDuplicatesWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void declaredGroupLeavesTheReviewAndIsRemembered();
    void identicalGroupsCannotBeDeclared();
};

void NotDuplicatesWindowTest::declaredGroupLeavesTheReviewAndIsRemembered() {
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

    std::shared_ptr<ReviewSession> before = model.session();
    int chosen = similarGroup(*before);
    QVERIFY(chosen >= 0);
    std::vector<std::string> paths;
    for (const auto& member : before->groups()[chosen].members) {
        paths.push_back(member.path);
    }
    const std::size_t groupsBefore = before->groups().size();
    review->showGroup(chosen);
    NotDuplicateActions* apart = review->notDuplicates();
    QVERIFY(apart->wholeGroup()->isEnabled());
    QVERIFY(apart->listed().contains(apart->wholeGroup()));

    apart->wholeGroup()->trigger();
    QTRY_VERIFY_WITH_TIMEOUT(model.session() != before, kScanTimeoutMs);
    QCOMPARE(review->noticeText(),
             QStringLiteral("Kept apart: Brevant will not put those pictures in one group again."));

    // Recorded in the data folder, by contents.
    NotDuplicateStore store(platform::DataFolder{fixture.dataFolder()}.notDuplicates());
    QCOMPARE(store.all().size(), std::size_t{1});
    QCOMPARE(store.all().front().photos.size(), paths.size());

    // The group left the review, without a scan, as a rescan shows it.
    QCOMPARE(fixture.calls().scans.load(), 1);
    QCOMPARE(model.session()->groups().size(), groupsBefore - 1);
    QVERIFY(keptApart(model.session()->groups(), paths));
    QCOMPARE(review->groups()->rowCount(), static_cast<int>(groupsBefore - 1));
    const std::vector<DuplicateGroup> declared = model.groups();

    window.overview()->newScanButton()->click();
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(model.groups().size(), declared.size());
    QVERIFY(keptApart(model.groups(), paths));
}

void NotDuplicatesWindowTest::identicalGroupsCannotBeDeclared() {
    SampleLibrary library;
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    Skins skins;
    MainWindow window(model, skins, fixture.store());
    window.show();
    model.setSources({library.root()});
    model.setMode(Mode::identical);
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QTest::mouseClick(window.overview()->reviewButton(), Qt::LeftButton);
    ReviewScreen* review = window.review();
    review->showGroup(0);
    QCOMPARE(model.session()->groups().front().kind, MatchKind::identical);

    NotDuplicateActions* apart = review->notDuplicates();
    QVERIFY(apart->listed().contains(apart->wholeGroup()));
    QVERIFY(!apart->wholeGroup()->isEnabled());
    QCOMPARE(apart->wholeGroup()->toolTip(), qtText(DeclaredDifferences::kIdenticalNotDifferent));

    // Asked all the same, the engine refuses and records nothing.
    std::shared_ptr<ReviewSession> before = model.session();
    QVERIFY(model.declareNotDuplicates(apart->wholeGroupDecisions()));
    QTRY_COMPARE_WITH_TIMEOUT(review->noticeText(),
                              qtText(DeclaredDifferences::kIdenticalNotDifferent), kScanTimeoutMs);
    QCOMPARE(model.session(), before);
    NotDuplicateStore store(platform::DataFolder{fixture.dataFolder()}.notDuplicates());
    QVERIFY(store.all().empty());
}

BREVANT_GUI_TEST(NotDuplicatesWindowTest);

} // namespace brevant::gui::testing

#include "NotDuplicatesWindowTest.moc"
