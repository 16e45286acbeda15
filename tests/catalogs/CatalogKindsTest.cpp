#include "engine/catalogs/CatalogKinds.hpp"

#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/LightroomScanner.hpp"
#include "engine/cleanup/ExecutionRefusal.hpp"
#include "engine/platform/ProcessInfo.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// The catalog kinds as the programs use them: one marking procedure for
// every kind, run under the data folder's change lock, one history and one
// undo over all of them.
namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::namesIn;
using testing::TempTree;
using Application = CatalogSource::Application;

const Date kNow = Date::fromUnixSeconds(1714555815.0);
const Date kLater = Date::fromUnixSeconds(1714555815.0 + 3600);

// Two copies of one photo in a Lightroom Classic catalog and two of another
// in a Capture One catalog, with the data folder beside them.
struct TwoCatalogs {
    TempTree tree;
    std::string a = tree.file("Lightroom/a.jpg", testing::photoOfSize(1, 20'000));
    std::string b = tree.file("Lightroom/b.jpg", testing::readFile(a));
    std::string c = tree.file("CaptureOne/c.jpg", testing::photoOfSize(2, 20'000));
    std::string d = tree.file("CaptureOne/d.jpg", testing::readFile(c));
    std::string lightroom = tree.path("Lightroom/Family.lrcat");
    platform::DataFolder data{tree.path("Data")};
    testing::LightroomCatalogFixture lightroomFixture{lightroom};
    testing::CaptureOneCatalogFixture captureOneFixture{tree.path("Family.cocatalog")};

    TwoCatalogs() {
        lightroomFixture.setVersion("1504001");
        lightroomFixture.addPhotoAt(a);
        lightroomFixture.addPhotoAt(b);
        captureOneFixture.addImageAt(c);
        captureOneFixture.addImageAt(d);
    }

    [[nodiscard]] CatalogKinds kinds() const {
        return CatalogKinds(data, {}, [](const std::string&) { return false; });
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval> lightroomPlan() const {
        auto read = LightroomCatalog::read(lightroom);
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return testing::approvedPlan(LightroomScanner::scan(*read, false, cancel, nullptr), {b});
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval> captureOnePlan() const {
        auto read = CaptureOneCatalog::read(captureOneFixture.package());
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return testing::approvedPlan(CaptureOneScanner::scan(*read, false, cancel, nullptr), {d});
    }
};

TEST(CatalogKinds, MarksEachKindAndListsBothNewestFirst) {
    TwoCatalogs catalogs;
    auto kinds = catalogs.kinds();
    auto [lightroomPlan, lightroomApproval] = catalogs.lightroomPlan();
    auto [captureOnePlan, captureOneApproval] = catalogs.captureOnePlan();

    auto rejected = kinds.mark(Application::lightroom, lightroomPlan, lightroomApproval,
                               catalogs.lightroom, kNow);
    auto tagged = kinds.mark(Application::captureOne, captureOnePlan, captureOneApproval,
                             catalogs.captureOneFixture.package(), kLater);

    ASSERT_TRUE(rejected.has_value()) << rejected.error().text();
    ASSERT_TRUE(tagged.has_value()) << tagged.error().text();
    EXPECT_THAT(rejected->marked, ElementsAre(catalogs.b));
    EXPECT_THAT(tagged->marked, ElementsAre(catalogs.d));
    ASSERT_TRUE(rejected->record && tagged->record);
    auto history = kinds.history();
    ASSERT_EQ(history.size(), 2u);
    EXPECT_EQ(history[0], *tagged->record);
    EXPECT_EQ(history[1], *rejected->record);
    EXPECT_EQ(history[0].application, Application::captureOne);
    EXPECT_EQ(history[1].count, 1u);
    EXPECT_THAT(namesIn(catalogs.data.markings()), ElementsAre("Capture One", "Lightroom Classic"));
}

TEST(CatalogKinds, WhileAnotherRunHoldsTheChangeLockNothingIsMarked) {
    TwoCatalogs catalogs;
    auto [plan, approval] = catalogs.lightroomPlan();
    catalogs.lightroomFixture.close();
    std::string digest = testing::fileDigest(catalogs.lightroom);
    auto other = ChangeLock::tryTake(catalogs.data);
    ASSERT_TRUE(other.has_value());

    auto marked =
        catalogs.kinds().mark(Application::lightroom, plan, approval, catalogs.lightroom, kNow);

    ASSERT_FALSE(marked.has_value());
    EXPECT_EQ(marked.error().kind, CatalogRefusal::Kind::changesBusy);
    auto holder = ChangeLock::holder(catalogs.data);
    ASSERT_TRUE(holder.has_value());
    EXPECT_EQ(marked.error().text(), holder->message());
    EXPECT_EQ(testing::fileDigest(catalogs.lightroom), digest);
    EXPECT_THAT(namesIn(catalogs.tree.path("Lightroom/Brevant Backups")), IsEmpty());
    EXPECT_THAT(catalogs.kinds().history(), IsEmpty());
}

TEST(CatalogKinds, UndoFindsTheMarkingByItsIdOnce) {
    TwoCatalogs catalogs;
    auto kinds = catalogs.kinds();
    auto [plan, approval] = catalogs.lightroomPlan();
    auto marked = kinds.mark(Application::lightroom, plan, approval, catalogs.lightroom, kNow);
    ASSERT_TRUE(marked && marked->record);
    const Uuid id = marked->record->id;

    auto unknown = kinds.undo(Uuid::make());
    auto undone = kinds.undo(id);
    auto again = kinds.undo(id);

    ASSERT_TRUE(unknown.has_value());
    EXPECT_FALSE(unknown->has_value());
    ASSERT_TRUE(undone.has_value() && undone->has_value()) << undone.error().text();
    EXPECT_FALSE((*undone)->already);
    EXPECT_TRUE((*undone)->marking.restored);
    ASSERT_TRUE(again.has_value() && again->has_value());
    EXPECT_TRUE((*again)->already);
    EXPECT_TRUE(kinds.history().front().restored);
}

TEST(CatalogKinds, UndoWhileAnotherRunHoldsTheChangeLockIsRefused) {
    TwoCatalogs catalogs;
    auto kinds = catalogs.kinds();
    auto [plan, approval] = catalogs.lightroomPlan();
    auto marked = kinds.mark(Application::lightroom, plan, approval, catalogs.lightroom, kNow);
    ASSERT_TRUE(marked && marked->record);
    auto other = ChangeLock::tryTake(catalogs.data);
    ASSERT_TRUE(other.has_value());

    auto undone = kinds.undo(marked->record->id);

    ASSERT_FALSE(undone.has_value());
    EXPECT_EQ(undone.error().kind, CatalogRefusal::Kind::changesBusy);
    EXPECT_FALSE(kinds.history().front().restored);
}

// Every kind has each of its sentences, and the programs' sentences are
// made from them as the kinds word them.
TEST(CatalogKinds, EveryKindHasItsSentences) {
    TwoCatalogs catalogs;
    auto kinds = catalogs.kinds();
    for (auto application : EnumCases<Application>::kAll) {
        const CatalogKindTexts& texts = kinds.of(application).texts();
        SCOPED_TRACE(std::string(texts.name));
        for (std::string_view text : {texts.key,
                                      texts.name,
                                      texts.alreadyMarkedHeading,
                                      texts.notCatalogPhotos,
                                      texts.applicationOpen,
                                      texts.finishNote,
                                      texts.undoNote,
                                      texts.question,
                                      texts.marked,
                                      texts.planned,
                                      texts.stillMarked,
                                      texts.givenBack,
                                      texts.undone,
                                      texts.command,
                                      texts.verb,
                                      texts.done,
                                      texts.untestedNotice,
                                      texts.trashRefused,
                                      texts.settingsKey,
                                      texts.chooseTip,
                                      texts.reading}) {
            EXPECT_FALSE(text.empty());
        }
        EXPECT_EQ(kinds.of(application).application(), application);
        EXPECT_EQ(CatalogSource::name(application), texts.name);
        // The kind is found by its catalog's name, and looked for under home.
        EXPECT_TRUE(CatalogSource::defaultFolder(application).starts_with(platform::homeFolder()));
        // A planned photo of this kind is never moved to the Trash.
        EXPECT_EQ(ExecutionRefusal::catalogPhotos(application).message(), texts.trashRefused);
    }
    EXPECT_EQ(CatalogSource::applicationOf("/p/Family.LRCAT"), Application::lightroom);
    EXPECT_EQ(CatalogSource::applicationOf("/p/Work.cocatalog/"), Application::captureOne);
    EXPECT_EQ(CatalogSource::applicationOf("/p/digikam4.db"), Application::digikam);
    const CatalogKindTexts& lightroom = CatalogKindTexts::of(Application::lightroom);
    EXPECT_EQ(lightroom.questionText("3 photos"),
              "Mark 3 photos Rejected in Lightroom Classic? [y/N]");
    EXPECT_EQ(CatalogKindTexts::of(Application::captureOne).markedText("1 photo"),
              "Tagged 1 photo Red in Capture One.");
}

} // namespace
} // namespace brevant
