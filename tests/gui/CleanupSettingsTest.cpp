#include "app/gui/CleanupSettings.hpp"

#include "tests/fixtures/TempTree.hpp"
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include <QSettings>
#include <QTest>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Scope = CleanupSettings::Scope;
using Priority = KeeperPolicy::Priority;

QString file(const TempTree& tree) {
    return QString::fromStdString(tree.path("settings.ini"));
}

} // namespace

class CleanupSettingsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void startsFromDefaults();
    void writesAndReadsBackEverySetting();
    void keepsAnEmptiedInboxListEmpty();
    void readsUnknownValuesAsDefaults();
    void upgradesPrioritiesSavedUnderAnOlderRevision();
    void modelSavesEachChangeAtOnce();
};

void CleanupSettingsTest::startsFromDefaults() {
    TempTree tree;
    QSettings store(file(tree), QSettings::IniFormat);
    CleanupSettings settings = CleanupSettings::load(store, "/home/anna/Downloads");
    QVERIFY(settings.sources.empty());
    QVERIFY(settings.protectedFolders.empty());
    QCOMPARE(settings.inboxFolders, std::vector<std::string>{"/home/anna/Downloads"});
    QCOMPARE(settings.preset, SimilarityPreset::balanced);
    QCOMPARE(settings.scope, Scope::folders);
    QCOMPARE(settings.mode, Mode::identical);
    QCOMPARE(settings.skin, std::string("classic"));
    QCOMPARE(settings.priorities, KeeperPolicy::standardPriorities());
}

void CleanupSettingsTest::writesAndReadsBackEverySetting() {
    TempTree tree;
    CleanupSettings written;
    // Linux names are bytes: one that is not UTF-8 and one with a line feed.
    written.sources = {"/srv/Photos", "/srv/caf\xe9", "/srv/two\nlines"};
    written.protectedFolders = {"/srv/Photos/Keep"};
    written.inboxFolders = {"/home/anna/Downloads", "/home/anna/Desktop"};
    written.priorities = {Priority::mostPixels, Priority::oldest};
    written.preset = SimilarityPreset::broad;
    written.scope = Scope::of(CatalogApplication::lightroom);
    written.mode = Mode::series;
    written.catalogs = {{CatalogApplication::lightroom, "/home/anna/Pictures/Lightroom/Main.lrcat"},
                        {CatalogApplication::captureOne, "/home/anna/Pictures/Work.cocatalog"},
                        {CatalogApplication::digikam, "/home/anna/Pictures/digikam4.db"}};
    written.catalogFolders = {{CatalogApplication::lightroom, {"/home/anna/Pictures/Lightroom"}},
                              {CatalogApplication::captureOne, {"/home/anna/Pictures"}}};
    written.skin = "dusk";
    {
        QSettings store(file(tree), QSettings::IniFormat);
        written.save(store);
    }
    QSettings store(file(tree), QSettings::IniFormat);
    QCOMPARE(CleanupSettings::load(store, "/elsewhere"), written);
    // Under the keys every Brevant shares.
    QStringList keys = store.allKeys();
    keys.sort();
    QCOMPARE(
        keys,
        (QStringList{"photoCleanup.captureOneCatalog", "photoCleanup.captureOneFolders",
                     "photoCleanup.darktableCatalog", "photoCleanup.darktableFolders",
                     "photoCleanup.digikamCatalog", "photoCleanup.digikamFolders",
                     "photoCleanup.inboxFolders", "photoCleanup.lightroomCatalog",
                     "photoCleanup.lightroomFolders", "photoCleanup.mode", "photoCleanup.preset",
                     "photoCleanup.priorities", "photoCleanup.prioritiesRevision",
                     "photoCleanup.protected", "photoCleanup.scope", "photoCleanup.shotwellCatalog",
                     "photoCleanup.shotwellFolders", "photoCleanup.skin", "photoCleanup.sources"}));
    QCOMPARE(store.value(QStringLiteral("photoCleanup.preset")).toString(),
             QStringLiteral("broad"));
    QCOMPARE(store.value(QStringLiteral("photoCleanup.scope")).toString(),
             QStringLiteral("lightroom"));
    QCOMPARE(store.value(QStringLiteral("photoCleanup.priorities")).toStringList(),
             (QStringList{"mostPixels", "oldest"}));
    QCOMPARE(store.value(QStringLiteral("photoCleanup.prioritiesRevision")).toInt(),
             KeeperPolicy::kPrioritiesRevision);
}

void CleanupSettingsTest::keepsAnEmptiedInboxListEmpty() {
    TempTree tree;
    CleanupSettings written;
    written.inboxFolders.clear();
    {
        QSettings store(file(tree), QSettings::IniFormat);
        written.save(store);
    }
    QSettings store(file(tree), QSettings::IniFormat);
    QVERIFY(CleanupSettings::load(store, "/home/anna/Downloads").inboxFolders.empty());
}

void CleanupSettingsTest::readsUnknownValuesAsDefaults() {
    TempTree tree;
    {
        QSettings store(file(tree), QSettings::IniFormat);
        // A Photos library does not exist here; it reads back as folders.
        store.setValue(QStringLiteral("photoCleanup.scope"), QStringLiteral("photosLibrary"));
        store.setValue(QStringLiteral("photoCleanup.preset"), QStringLiteral("Broad"));
        store.setValue(QStringLiteral("photoCleanup.mode"), QStringLiteral("liveMovie"));
        store.setValue(QStringLiteral("photoCleanup.priorities"),
                       QStringList{"prettiest", "sharpest", "sharpest"});
        store.setValue(QStringLiteral("photoCleanup.prioritiesRevision"),
                       KeeperPolicy::kPrioritiesRevision);
    }
    QSettings store(file(tree), QSettings::IniFormat);
    CleanupSettings settings = CleanupSettings::load(store, {});
    QCOMPARE(settings.scope, Scope::folders);
    QCOMPARE(settings.preset, SimilarityPreset::balanced);
    QCOMPARE(settings.mode, Mode::identical);
    // Names this version does not know are dropped, and repeats.
    QCOMPARE(settings.priorities, std::vector<Priority>{Priority::sharpest});
    QVERIFY(settings.inboxFolders.empty());
}

void CleanupSettingsTest::upgradesPrioritiesSavedUnderAnOlderRevision() {
    TempTree tree;
    {
        QSettings store(file(tree), QSettings::IniFormat);
        // Saved by a version whose standard order was shorter, reordered by
        // the user: oldest before most pixels.
        store.setValue(QStringLiteral("photoCleanup.priorities"),
                       QStringList{"oldest", "mostPixels"});
        store.setValue(QStringLiteral("photoCleanup.prioritiesRevision"), 1);
    }
    std::vector<Priority> upgraded{
        Priority::eyesOpen,   Priority::bestQuality, Priority::mostSmiles,   Priority::oldest,
        Priority::shallowest, Priority::mostPixels,  Priority::filedNotInbox};
    {
        QSettings store(file(tree), QSettings::IniFormat);
        CleanupSettings settings = CleanupSettings::load(store, {});
        // The new standard entries join at their standard places; the
        // user's own order of the old ones stays.
        QCOMPARE(settings.priorities, upgraded);
        settings.save(store);
    }
    QSettings store(file(tree), QSettings::IniFormat);
    QCOMPARE(store.value(QStringLiteral("photoCleanup.prioritiesRevision")).toInt(),
             KeeperPolicy::kPrioritiesRevision);
    QCOMPARE(CleanupSettings::load(store, {}).priorities, upgraded);

    // Under the current revision a shorter order is the user's choice.
    store.setValue(QStringLiteral("photoCleanup.priorities"), QStringList{"oldest", "mostPixels"});
    QCOMPARE(CleanupSettings::load(store, {}).priorities,
             (std::vector<Priority>{Priority::oldest, Priority::mostPixels}));
}

void CleanupSettingsTest::modelSavesEachChangeAtOnce() {
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    model.addSource("/srv/Photos");
    model.addSource("/srv/Photos");
    model.setPreset(SimilarityPreset::conservative);
    model.setMode(Mode::similar);
    model.setSkin("hibernia");
    model.setPriorities({Priority::largestFile, Priority::newest});
    model.setCatalog(CatalogApplication::lightroom, "/a/One.lrcat", "/a");
    model.setCatalog(CatalogApplication::lightroom, "/b/Two.lrcat", "/b");
    model.setCatalog(CatalogApplication::lightroom, "/a/Three.lrcat", "/a");

    QSettings reread(QString::fromStdString(fixture.settingsPath()), QSettings::IniFormat);
    CleanupSettings settings = CleanupSettings::load(reread, {});
    QCOMPARE(settings.sources, std::vector<std::string>{"/srv/Photos"});
    QCOMPARE(settings.preset, SimilarityPreset::conservative);
    QCOMPARE(settings.mode, Mode::similar);
    QCOMPARE(settings.skin, std::string("hibernia"));
    QCOMPARE(settings.priorities, (std::vector<Priority>{Priority::largestFile, Priority::newest}));
    QCOMPARE(settings.catalogs.at(CatalogApplication::lightroom), std::string("/a/Three.lrcat"));
    // The folders searched for catalogs, most recent first, each once.
    QCOMPARE(settings.catalogFolders.at(CatalogApplication::lightroom),
             (std::vector<std::string>{"/a", "/b"}));
    QCOMPARE(settings, model.settings());
}

BREVANT_GUI_TEST(CleanupSettingsTest);

} // namespace brevant::gui::testing

#include "CleanupSettingsTest.moc"
