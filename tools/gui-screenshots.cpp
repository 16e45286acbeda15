// Renders every screen of the window in every skin into PNG files, over a
// photo folder, with a real window (run it under xvfb-run; see
// scripts/screenshots).
//
//   gui-screenshots OUTPUT_FOLDER PHOTO_FOLDER [SKIN...]
//
// Settings and the feature cache go to a temporary folder, never the
// user's. Files are named SKIN-SCREEN.png; classic is shown light and dark.
// The cleanup screens (card, run, reports, Put Back, history) are shot in
// classic, light and dark, and in nightfall; every picture they move is
// put back.
// The catalog screens mark a Lightroom Classic catalog made here of the
// folder's photos, and undo the marking again; before that the catalog is
// shown as one of a version marking was not tested with.
#include "tests/fixtures/CatalogFixtures.hpp"

#include "app/gui/AboutPanel.hpp"
#include "app/gui/CatalogMarkingCard.hpp"
#include "app/gui/CleanupCard.hpp"
#include "app/gui/CleanupController.hpp"
#include "app/gui/CleanupReportView.hpp"
#include "app/gui/CleanupScreen.hpp"
#include "app/gui/CompareView.hpp"
#include "app/gui/CompressionController.hpp"
#include "app/gui/DetailLoader.hpp"
#include "app/gui/HistoryScreen.hpp"
#include "app/gui/HomeScreen.hpp"
#include "app/gui/LeftOutList.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/MarkingsWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ResumeOffer.hpp"
#include "app/gui/ReviewScreen.hpp"
#include "app/gui/SceneZoom.hpp"
#include "app/gui/SettingsWindow.hpp"
#include "app/gui/Skins.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <functional>

namespace {

using brevant::gui::MainWindow;
using brevant::gui::ModelProgress;
using brevant::gui::PhotoCleanupModel;
using Phase = PhotoCleanupModel::Phase;
using Mode = brevant::gui::CleanupSettings::Mode;

constexpr int kTimeoutMs = 300'000;

bool waitUntil(const std::function<bool()>& done) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > kTimeoutMs) {
            return false;
        }
        QApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(10);
    }
    return true;
}

// Lets layouts and style sheets settle before a picture is taken.
void settle() {
    for (int i = 0; i < 5; ++i) {
        QApplication::processEvents();
        QThread::msleep(20);
    }
}

class Shooter {
public:
    explicit Shooter(QString folder)
        : folder_(std::move(folder)) {}

    void take(QWidget& widget, const QString& skin, const QString& screen) {
        settle();
        QString path = QStringLiteral("%1/%2-%3.png").arg(folder_, skin, screen);
        if (!widget.grab().save(path)) {
            std::fprintf(stderr, "could not write %s\n", qPrintable(path));
            ok_ = false;
            return;
        }
        std::printf("%s\n", qPrintable(path));
    }

    [[nodiscard]] bool ok() const { return ok_; }

private:
    QString folder_;
    bool ok_ = true;
};

// Moves pictures to the Trash slowly enough for the run to be caught.
class SlowTrasher final : public brevant::Trasher {
public:
    [[nodiscard]] std::expected<std::string, brevant::TrashError>
    reserve(const std::string& path) const override {
        return brevant::FileManagerTrasher().reserve(path);
    }

    [[nodiscard]] std::expected<void, brevant::TrashError>
    moveInto(const std::string& path, const std::string& trashPath) const override {
        QThread::msleep(700);
        return brevant::FileManagerTrasher().moveInto(path, trashPath);
    }

    [[nodiscard]] std::expected<void, brevant::TrashError>
    putBack(const std::string& trashPath, const std::string& destination) const override {
        return brevant::FileManagerTrasher().putBack(trashPath, destination);
    }
};

// Puts everything of the report shown back, so the next skin scans the
// same library.
bool putAllBack(brevant::gui::CleanupReportView& report,
                brevant::gui::CleanupController& cleanups) {
    if (report.putBackAllButton()->isEnabled()) {
        report.putBackAllButton()->click();
    }
    return waitUntil([&] { return !cleanups.isPuttingBack(); });
}

// The review card, a run in progress, its report, Put Back over an
// occupied place, the history, and the report of an interrupted cleanup.
// Every picture is put back afterwards.
bool shootCleanup(const QString& label, PhotoCleanupModel& model, MainWindow& window,
                  Shooter& shooter) {
    brevant::gui::CleanupController& cleanups = *window.cleanups();
    brevant::gui::CleanupScreen& screen = *window.cleanupScreen();
    cleanups.setTrasher(std::make_shared<SlowTrasher>());
    model.session()->markAllSuggested();
    window.showCleanupCard();
    brevant::gui::CleanupCard* card = window.cleanupCard();
    if (card == nullptr || !card->hasPlan()) {
        return false;
    }
    shooter.take(*card, label, QStringLiteral("cleanup-card"));
    card->confirmButton()->click();
    if (!waitUntil([&] { return cleanups.handled() >= 2; })) {
        return false;
    }
    shooter.take(window, label, QStringLiteral("cleanup-run"));
    if (!waitUntil([&] { return screen.showsReport(); })) {
        return false;
    }
    shooter.take(window, label, QStringLiteral("cleanup-report"));

    // A file has taken the first picture's place since.
    brevant::gui::CleanupReportView& report = *screen.reportView();
    const auto& shown = report.report();
    if (!shown || shown->items.empty()) {
        return false;
    }
    const std::string firstPath = shown->items.front().removal.path;
    QString first = QFile::decodeName(firstPath.c_str());
    QFile occupant(first);
    if (!occupant.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        return false;
    }
    occupant.write("a newer file");
    occupant.close();
    report.select({firstPath});
    report.putBackButton()->click();
    if (!waitUntil([&] { return !cleanups.isPuttingBack(); })) {
        return false;
    }
    shooter.take(window, label, QStringLiteral("cleanup-putback-occupied"));
    QFile::remove(first);
    if (!putAllBack(report, cleanups)) {
        return false;
    }

    window.showHistory();
    brevant::gui::HistoryScreen& history = *window.historyScreen();
    if (!waitUntil([&] { return history.list()->topLevelItemCount() > 0; })) {
        return false;
    }
    shooter.take(window, label, QStringLiteral("history"));
    history.open(0);
    shooter.take(window, label, QStringLiteral("history-cleanup"));

    // A run that stopped after moving its first picture, before recording it.
    model.session()->markAllSuggested();
    auto plan = brevant::CleanupPlanner::plan(*model.session());
    if (!plan) {
        return false;
    }
    const std::string& moved = plan->removals.front().path;
    {
        // The run's lock on its journal goes with it.
        auto journal = brevant::CleanupJournal::create(*plan, cleanups.journalDirectory());
        if (!journal ||
            !journal->write(
                brevant::CleanupJournal::Entry::ofIntent(moved, brevant::Date::now())) ||
            !brevant::platform::FreedesktopTrash::moveToTrash(moved)) {
            return false;
        }
    }
    window.recoverInterruptedCleanups();
    if (!waitUntil([&] { return screen.showsReport() && report.report()->reconciled; })) {
        return false;
    }
    shooter.take(window, label, QStringLiteral("cleanup-interrupted"));
    bool back = putAllBack(report, cleanups);
    for (const auto& group : model.session()->groups()) {
        model.session()->clearMarks(group);
    }
    screen.doneButton()->click();
    return back;
}

using Scope = brevant::gui::CleanupSettings::Scope;
using State = brevant::gui::CatalogMarkingCard::State;

// A catalog of each application listing every JPEG under the folder.
struct Catalogs {
    std::string lightroom;
    std::string captureOne;
};

Catalogs makeCatalogs(const QString& photos, const QString& scratch) {
    std::vector<std::string> files;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(QFile::encodeName(photos).toStdString())) {
        std::string extension = entry.path().extension().string();
        if (entry.is_regular_file() && (extension == ".jpg" || extension == ".JPG")) {
            files.push_back(entry.path().string());
        }
    }
    std::ranges::sort(files);
    Catalogs catalogs{
        QFile::encodeName(scratch + QStringLiteral("/Lightroom/Sample.lrcat")).toStdString(),
        QFile::encodeName(scratch + QStringLiteral("/Capture One/Sample.cocatalog")).toStdString()};
    brevant::testing::LightroomCatalogFixture lightroom(catalogs.lightroom);
    brevant::testing::CaptureOneCatalogFixture captureOne(catalogs.captureOne);
    for (const auto& file : files) {
        lightroom.addPhotoAt(file);
        captureOne.addImageAt(file);
    }
    lightroom.close();
    captureOne.close();
    return catalogs;
}

// Scans the scope's catalog, marks the suggested copies and opens the card.
brevant::gui::CatalogMarkingCard* openCard(Scope scope, const std::string& catalog,
                                           PhotoCleanupModel& model, MainWindow& window) {
    model.returnHome();
    model.setScope(scope);
    model.setMode(Mode::identical);
    std::string folder = std::filesystem::path(catalog).parent_path().string();
    model.setCatalog(*scope.catalog, catalog, folder);
    if (!model.startScan() || !waitUntil([&] { return model.phase() != Phase::scanning; }) ||
        model.session() == nullptr) {
        return nullptr;
    }
    model.session()->markAllSuggested();
    window.showCatalogMarkingCard();
    return window.catalogMarkingCard();
}

bool confirmed(brevant::gui::CatalogMarkingCard* card) {
    card->confirm();
    return waitUntil([card] { return card->state() != State::marking; });
}

bool undoAll(brevant::gui::MarkingsWindow* markings) {
    bool undone = false;
    QObject context;
    QObject::connect(markings, &brevant::gui::MarkingsWindow::undoFinished, &context,
                     [&undone] { undone = true; });
    for (int row = 0; row < markings->count(); ++row) {
        if (markings->marking(row).restored()) {
            continue;
        }
        undone = false;
        markings->undo(row);
        if (!waitUntil([&undone] { return undone; })) {
            return false;
        }
    }
    return true;
}

// The overview and the marking card of a catalog whose version marking was
// not tested with, one of its photos already Rejected; the catalog is as it
// was afterwards.
bool shootUntestedCatalog(const QString& label, const Catalogs& catalogs, PhotoCleanupModel& model,
                          MainWindow& window, Shooter& shooter) {
    brevant::testing::SQLiteFile db(catalogs.lightroom);
    auto setState = [&db](const char* version, const char* pick) {
        db.exec(fmt::format(
            "UPDATE Adobe_variablesTable SET value = '{}' WHERE name = 'Adobe_DBVersion';"
            "UPDATE Adobe_images SET pick = {} WHERE id_local = (SELECT max(id_local) FROM "
            "Adobe_images)",
            version, pick));
    };
    setState("1504002", "-1.0");
    brevant::gui::CatalogMarkingCard* card = openCard(
        Scope::of(brevant::CatalogApplication::lightroom), catalogs.lightroom, model, window);
    bool ok = card != nullptr;
    if (ok) {
        card->hide();
        shooter.take(window, label, QStringLiteral("overview-catalog-untested"));
        card->show();
        shooter.take(*card, label, QStringLiteral("catalog-card-untested"));
        card->close();
    }
    setState("1504001", "0.0");
    return ok;
}

// The marking card before, refused and after marking (Lightroom Classic),
// the tagging card (Capture One), and the list of markings before and
// after undo, which leaves both catalogs as they were for the next skin.
bool shootCatalogMarking(const QString& label, const Catalogs& catalogs, PhotoCleanupModel& model,
                         MainWindow& window, Shooter& shooter) {
    if (!shootUntestedCatalog(label, catalogs, model, window, shooter)) {
        return false;
    }
    brevant::gui::CatalogMarkingCard* card = openCard(
        Scope::of(brevant::CatalogApplication::lightroom), catalogs.lightroom, model, window);
    if (card == nullptr) {
        return false;
    }
    shooter.take(*card, label, QStringLiteral("catalog-card"));
    // Refused while Lightroom holds its lock file, then marked.
    QFile lock(QFile::decodeName(catalogs.lightroom.c_str()) + QStringLiteral(".lock"));
    if (!lock.open(QIODevice::WriteOnly)) {
        return false;
    }
    lock.close();
    if (!confirmed(card)) {
        return false;
    }
    shooter.take(*card, label, QStringLiteral("catalog-card-refused"));
    lock.remove();
    if (!confirmed(card)) {
        return false;
    }
    shooter.take(*card, label, QStringLiteral("catalog-card-marked"));
    card->close();

    card = openCard(Scope::of(brevant::CatalogApplication::captureOne), catalogs.captureOne, model,
                    window);
    if (card == nullptr || !confirmed(card)) {
        return false;
    }
    shooter.take(*card, label, QStringLiteral("catalog-card-captureone-marked"));
    card->close();

    window.showMarkings();
    brevant::gui::MarkingsWindow* markings = window.markingsWindow();
    shooter.take(*markings, label, QStringLiteral("markings"));
    if (!undoAll(markings)) {
        return false;
    }
    shooter.take(*markings, label, QStringLiteral("markings-undone"));
    markings->hide();
    model.returnHome();
    model.setScope(Scope::folders);
    model.setMode(Mode::similar);
    return true;
}

// The first group that the test picks, as a session index; -1 when none.
int findGroup(const brevant::ReviewSession& session,
              const std::function<bool(const brevant::DuplicateGroup&)>& test) {
    const auto& groups = session.groups();
    for (int i = 0; i < static_cast<int>(groups.size()); ++i) {
        if (test(groups[i])) {
            return i;
        }
    }
    return -1;
}

// The review screen on a similar group, its inspector on a copy that is not
// the keeper, the flip zoomed in, and a mark refused in a protected folder.
void shootReview(const QString& label, const QString& photos, MainWindow& window,
                 PhotoCleanupModel& model, Shooter& shooter) {
    using brevant::gui::ReviewScreen;
    using Command = ReviewScreen::Command;
    window.showReview();
    ReviewScreen* review = window.review();
    std::shared_ptr<const brevant::ReviewSession> session = model.session();
    int similar = findGroup(*session, [](const brevant::DuplicateGroup& group) {
        return group.kind == brevant::MatchKind::similar && group.members.size() > 2;
    });
    review->showGroup(similar);
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("review"));

    // A group with a turned copy, and its menu with the "not duplicates"
    // commands (the menu is caught while it is open).
    int turned = findGroup(
        *session, [](const brevant::DuplicateGroup& group) { return !group.orientations.empty(); });
    review->showGroup(turned);
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("review-turned"));
    QTimer::singleShot(400, &window, [&shooter, &label] {
        if (QWidget* popup = QApplication::activePopupWidget()) {
            shooter.take(*popup, label, QStringLiteral("review-menu"));
            popup->close();
        }
    });
    Q_EMIT review->compare()->menuRequested(0, window.mapToGlobal(QPoint(400, 300)));
    review->showGroup(similar);
    review->action(Command::nextCopy)->trigger();
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("review-inspector"));
    review->action(Command::zoomIn)->trigger();
    review->action(Command::flip)->trigger();
    review->action(Command::flip)->trigger();
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("review-flip"));
    review->action(Command::sideBySide)->trigger();
    review->action(Command::fit)->trigger();

    std::string backup = QFile::encodeName(photos + QStringLiteral("/Backup/")).toStdString();
    int guarded = findGroup(*session, [&backup](const brevant::DuplicateGroup& group) {
        return std::ranges::any_of(group.members, [&backup](const brevant::PhotoAsset& member) {
            return member.path.starts_with(backup);
        });
    });
    review->showGroup(guarded);
    brevant::gui::CompareView* compare = review->compare();
    for (int i = 0; i < compare->count(); ++i) {
        if (compare->group()->members[i].path.starts_with(backup)) {
            compare->setCurrent(i);
        }
    }
    review->action(Command::mark)->trigger();
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("review-refused"));
}

// Real-size photos (REAL_PHOTO_FOLDER, made by scripts/screenshots): the
// review of a group of two, three and five copies at the first window size
// and on a large screen, then the overview and the review after a cleanup
// and after Put Back All. Nothing of it stays moved.
bool shootRealSize(const QString& label, const QString& folder, const QString& photos,
                   PhotoCleanupModel& model, MainWindow& window, Shooter& shooter) {
    using brevant::gui::ReviewScreen;
    model.returnHome();
    model.setSources({QFile::encodeName(folder).toStdString()});
    model.setMode(Mode::identical);
    if (!model.startScan() || !waitUntil([&] { return model.phase() != Phase::scanning; }) ||
        model.session() == nullptr) {
        return false;
    }
    ReviewScreen* review = window.review();
    for (QSize size : {QSize(1080, 780), QSize(2560, 1400)}) {
        window.resize(size);
        window.showReview();
        for (std::size_t copies : {2U, 3U, 5U}) {
            int group = findGroup(*model.session(), [copies](const brevant::DuplicateGroup& g) {
                return g.members.size() == copies;
            });
            if (group < 0) {
                continue;
            }
            review->showGroup(group);
            review->thumbnails()->waitForDone();
            settle();
            shooter.take(window, label,
                         QStringLiteral("real-%1copies-%2").arg(copies).arg(size.width()));
        }
    }
    window.resize(1080, 780);
    // Zoomed to the file's own pixels on the group of two.
    int pair = findGroup(*model.session(),
                         [](const brevant::DuplicateGroup& g) { return g.members.size() == 2; });
    review->showGroup(pair);
    review->thumbnails()->waitForDone();
    settle();
    review->compare()->actualPixels();
    waitUntil([&] { return review->compare()->details()->pending() == 0; });
    QThread::msleep(300);
    waitUntil([&] { return review->compare()->details()->pending() == 0; });
    shooter.take(window, label, QStringLiteral("real-100percent"));
    review->compare()->zoom()->fit();

    brevant::gui::CleanupController& cleanups = *window.cleanups();
    brevant::gui::HistoryScreen& history = *window.historyScreen();
    // The cleanups shot before; this one is to be read as the newest.
    const int earlier = history.list()->topLevelItemCount();
    cleanups.setTrasher(nullptr);
    model.session()->markAllSuggested();
    window.showCleanupCard();
    brevant::gui::CleanupCard* card = window.cleanupCard();
    if (card == nullptr || !card->hasPlan()) {
        return false;
    }
    card->confirmButton()->click();
    brevant::gui::CleanupScreen& screen = *window.cleanupScreen();
    if (!waitUntil([&] { return screen.showsReport(); })) {
        return false;
    }
    screen.doneButton()->click();
    shooter.take(window, label, QStringLiteral("after-cleanup-overview"));
    window.showReview();
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("after-cleanup-review"));

    window.showHistory();
    if (!waitUntil([&] { return history.list()->topLevelItemCount() > earlier; })) {
        return false;
    }
    history.open(0);
    if (!putAllBack(*history.reportView(), cleanups)) {
        return false;
    }
    shooter.take(window, label, QStringLiteral("after-putback-history"));
    window.showReview();
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("after-putback-review"));
    model.returnHome();
    model.setSources({QFile::encodeName(photos).toStdString()});
    model.setMode(Mode::similar);
    return true;
}

bool shootSkin(const QString& skin, const QString& label, const QString& photos,
               brevant::gui::Skins& skins, PhotoCleanupModel& model, MainWindow& window,
               Shooter& shooter, const Catalogs& catalogs) {
    skins.apply(skin);
    model.setSkin(skin.toStdString());
    model.returnHome();
    model.setMode(Mode::similar);
    shooter.take(window, label, QStringLiteral("home"));

    // The files compression would give smaller copies, over the same folder;
    // nothing is written.
    if (window.compressions()->find(0)) {
        if (!waitUntil([&] { return window.compressions()->candidates().has_value(); })) {
            return false;
        }
        shooter.take(window, label, QStringLiteral("compress-list"));
        window.compressions()->close();
    }

    // The Lightroom Classic page, over a folder without a catalog.
    model.setScope(Scope::of(brevant::CatalogApplication::lightroom));
    window.home()->scopeButton(Scope::of(brevant::CatalogApplication::lightroom))->setChecked(true);
    bool searched = false;
    QObject search;
    QObject::connect(&model, &PhotoCleanupModel::catalogChanged, &search,
                     [&searched](Scope) { searched = true; });
    model.findCatalog(Scope::of(brevant::CatalogApplication::lightroom),
                      QFile::encodeName(QDir::tempPath()).toStdString() + "/no-catalog-here");
    if (!waitUntil([&] { return searched; })) {
        return false;
    }
    shooter.take(window, label, QStringLiteral("home-lightroom"));
    model.setScope(Scope::folders);

    // The progress screen, caught while measuring.
    bool caught = false;
    QObject context;
    QObject::connect(
        &model, &PhotoCleanupModel::progressChanged, &context, [&](const ModelProgress& progress) {
            if (!caught && progress.scan.stage == brevant::ScanProgress::Stage::measuring) {
                caught = true;
                shooter.take(window, label, QStringLiteral("progress"));
            }
        });
    if (!model.startScan() || !waitUntil([&] { return model.phase() != Phase::scanning; })) {
        return false;
    }
    if (!caught) {
        shooter.take(window, label, QStringLiteral("progress-missed"));
    }
    shooter.take(window, label, QStringLiteral("overview"));
    window.overview()->showSkipped();
    brevant::gui::LeftOutList* leftOut = window.overview()->leftOut();
    for (int i = 0; i < leftOut->count(); ++i) {
        leftOut->setOpen(i, true);
    }
    shooter.take(window, label, QStringLiteral("overview-skipped"));
    shootReview(label, photos, window, model, shooter);
    // The cleanup screens and the real-size reviews in the default skin,
    // light and dark, and one dark skin of another colour.
    bool cleanupSkin = skin == QLatin1String("classic") || skin == QLatin1String("nightfall");
    if (cleanupSkin && !shootCleanup(label, model, window, shooter)) {
        return false;
    }
    QString real = qEnvironmentVariable("REAL_PHOTO_FOLDER");
    if (cleanupSkin && !real.isEmpty() &&
        !shootRealSize(label, real, photos, model, window, shooter)) {
        return false;
    }

    brevant::gui::SettingsWindow* settings = window.settingsWindow();
    settings->show();
    for (int page = 0; page < settings->pages()->count(); ++page) {
        settings->pages()->setCurrentIndex(page);
        shooter.take(*settings, label,
                     QStringLiteral("settings-%1").arg(settings->pages()->tabText(page).toLower()));
    }
    settings->hide();

    brevant::gui::AboutPanel about(&window);
    about.show();
    shooter.take(about, label, QStringLiteral("about"));
    about.hide();

    // Home again, with the review just made offered to resume.
    model.returnHome();
    static_cast<void>(waitUntil([&window] { return window.home()->resumeOffer()->isVisible(); }));
    shooter.take(window, label, QStringLiteral("home-resume"));
    return shootCatalogMarking(label, catalogs, model, window, shooter);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: gui-screenshots OUTPUT_FOLDER PHOTO_FOLDER [SKIN...]\n");
        return 2;
    }
    QApplication application(argc, argv);
    QString output = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    QString photos = QDir(QString::fromLocal8Bit(argv[2])).absolutePath();
    QDir().mkpath(output);
    QTemporaryDir scratch;
    QSettings store(scratch.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);

    // Measuring waits a moment before it starts, so that the progress screen
    // can be caught even when the feature cache makes measuring instant.
    PhotoCleanupModel::Engine engine = PhotoCleanupModel::Engine::standard();
    engine.measure = [measure = engine.measure](
                         std::vector<brevant::PhotoAsset> pictures, brevant::FeatureCache* cache,
                         const brevant::CancellationFlag& cancel,
                         const brevant::SimilarityMatcher::Progress& progress) {
        QThread::msleep(1500);
        return measure(std::move(pictures), cache, cancel, progress);
    };

    brevant::gui::Skins skins;
    PhotoCleanupModel model(
        store, QFile::encodeName(scratch.filePath(QStringLiteral("data"))).toStdString(),
        QFile::encodeName(scratch.filePath(QStringLiteral("Downloads"))).toStdString(), engine);
    model.setSources({QFile::encodeName(photos).toStdString()});
    model.setProtectedFolders(
        {QFile::encodeName(photos + QStringLiteral("/Backup")).toStdString()});
    skins.apply(QStringLiteral("classic"));
    MainWindow window(model, skins, store);
    window.resize(1080, 780);
    window.show();

    QStringList chosen = QApplication::arguments().mid(3);
    if (chosen.isEmpty()) {
        chosen = brevant::gui::Skins::names();
    }
    Shooter shooter(output);
    // The catalog's backups and the marking records stay in the scratch
    // folder too.
    Catalogs catalogs = makeCatalogs(photos, scratch.path());
    qputenv("BREVANT_DATA_DIR", QFile::encodeName(scratch.filePath(QStringLiteral("data"))));
    bool ok = true;
    for (const char* scheme : {"light", "dark"}) {
        if (!chosen.contains(QStringLiteral("classic"))) {
            break;
        }
        qputenv("BREVANT_COLOR_SCHEME", scheme);
        ok = ok && shootSkin(QStringLiteral("classic"),
                             QStringLiteral("classic-%1").arg(QLatin1String(scheme)), photos, skins,
                             model, window, shooter, catalogs);
    }
    for (const QString& skin : brevant::gui::Skins::names()) {
        if (skin != QLatin1String("classic") && chosen.contains(skin)) {
            ok = ok && shootSkin(skin, skin, photos, skins, model, window, shooter, catalogs);
        }
    }
    return ok && shooter.ok() ? 0 : 1;
}
