// Renders every screen of the window in every skin into PNG files, over a
// photo folder, with a real window (run it under xvfb-run; see
// scripts/screenshots).
//
//   gui-screenshots OUTPUT_FOLDER PHOTO_FOLDER [SKIN...]
//
// Settings and the feature cache go to a temporary folder, never the
// user's. Files are named SKIN-SCREEN.png; classic is shown light and dark.
#include "app/gui/AboutPanel.hpp"
#include "app/gui/CompareView.hpp"
#include "app/gui/HomeScreen.hpp"
#include "app/gui/LeftOutList.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ReviewScreen.hpp"
#include "app/gui/SettingsWindow.hpp"
#include "app/gui/Skins.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPixmap>
#include <QRadioButton>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
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
    const brevant::ReviewSession* session = model.session();
    int similar = findGroup(*session, [](const brevant::DuplicateGroup& group) {
        return group.kind == brevant::MatchKind::similar && group.members.size() > 2;
    });
    review->showGroup(similar);
    review->thumbnails()->waitForDone();
    shooter.take(window, label, QStringLiteral("review"));
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

bool shootSkin(const QString& skin, const QString& label, const QString& photos,
               brevant::gui::Skins& skins, PhotoCleanupModel& model, MainWindow& window,
               Shooter& shooter) {
    skins.apply(skin);
    model.setSkin(skin.toStdString());
    model.returnHome();
    model.setMode(Mode::similar);
    shooter.take(window, label, QStringLiteral("home"));

    // The Lightroom Classic page, over a folder without a catalog.
    using Scope = brevant::gui::CleanupSettings::Scope;
    model.setScope(Scope::lightroom);
    window.home()->scopeButton(Scope::lightroom)->setChecked(true);
    bool searched = false;
    QObject search;
    QObject::connect(&model, &PhotoCleanupModel::catalogChanged, &search,
                     [&searched](Scope) { searched = true; });
    model.findCatalog(Scope::lightroom,
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
    return true;
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
    bool ok = true;
    for (const char* scheme : {"light", "dark"}) {
        if (!chosen.contains(QStringLiteral("classic"))) {
            break;
        }
        qputenv("BREVANT_COLOR_SCHEME", scheme);
        ok = ok && shootSkin(QStringLiteral("classic"),
                             QStringLiteral("classic-%1").arg(QLatin1String(scheme)), photos, skins,
                             model, window, shooter);
    }
    for (const QString& skin : brevant::gui::Skins::names()) {
        if (skin != QLatin1String("classic") && chosen.contains(skin)) {
            ok = ok && shootSkin(skin, skin, photos, skins, model, window, shooter);
        }
    }
    return ok && shooter.ok() ? 0 : 1;
}
