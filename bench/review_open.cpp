// How fast the review screen opens on a large result, and how smoothly the
// list moves.
//
//   bench_review_open [--groups N] [--steps S]
//
// Builds N groups (default 50,000; two to four copies each, no files
// behind them, so nothing is decoded) and hands them to the window as a
// scan's result. Then it times opening the review screen until it has
// painted, S steps down the list (default 2,000; each step shows the next
// group in the compare view and inspector and paints), a jump to the end of
// the list, each filter and order over all groups, "Mark Suggested Copies in
// Every Group" (its longest stall: the window marks a slice at a time), one
// mark after it, paging down the list, and a second scan's result taking
// the first one's place. Where a step spans several events, the longest
// single event is what the user feels as a stall.
#include "app/gui/GroupListModel.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ReviewScreen.hpp"
#include "app/gui/Skins.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QListView>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using brevant::DuplicateGroup;
using brevant::MatchKind;
using brevant::PhotoAsset;
using brevant::gui::PhotoCleanupModel;
using brevant::gui::ReviewScreen;
using Filter = brevant::gui::GroupListModel::Filter;
using Sort = brevant::gui::GroupListModel::Sort;

std::vector<DuplicateGroup> makeGroups(int count) {
    std::vector<DuplicateGroup> groups;
    groups.reserve(count);
    std::uint64_t inode = 1;
    for (int g = 0; g < count; ++g) {
        int members = 2 + g % 3;
        std::int64_t size = 8'000'000 - static_cast<std::int64_t>(g) * 100;
        std::vector<PhotoAsset> assets;
        for (int m = 0; m < members; ++m) {
            PhotoAsset asset;
            asset.root = "/nonexistent/library";
            asset.path = fmt::format("/nonexistent/library/{}/{:03}/IMG_{:06}{}.jpg",
                                     m == 0 ? "Photos" : "Backup", g % 700, g,
                                     m == 0 ? "" : fmt::format(" copy {}", m));
            asset.snapshot = {.identity = {.device = 1, .inode = ++inode},
                              .size = size,
                              .modifiedSeconds = 1'500'000'000 + g * 60 + m,
                              .linkCount = 1,
                              .isRegularFile = true};
            asset.format = brevant::PhotoFormat::jpeg;
            asset.pixelWidth = 4000;
            asset.pixelHeight = 3000;
            assets.push_back(std::move(asset));
        }
        groups.push_back(DuplicateGroup::make(fmt::format("{:064x}", g), size, std::move(assets),
                                              MatchKind::identical));
    }
    return groups;
}

// Runs what is queued, paints included, until nothing is left.
void settle() {
    for (int i = 0; i < 3; ++i) {
        QApplication::processEvents(QEventLoop::AllEvents);
    }
}

double ms(const QElapsedTimer& clock) {
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

// Times the events the interface thread handles, the outermost ones only:
// the longest is how long the window could not answer.
class TimedApplication : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        if (depth_ > 0) {
            return QApplication::notify(receiver, event);
        }
        QElapsedTimer clock;
        clock.start();
        depth_ += 1;
        bool handled = QApplication::notify(receiver, event);
        depth_ -= 1;
        longest_ = std::max(longest_, ms(clock));
        return handled;
    }

    // The longest event since the last call.
    double takeLongest() { return std::exchange(longest_, 0.0); }

private:
    int depth_ = 0;
    double longest_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    int count = 50'000;
    int steps = 2'000;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string option = argv[i];
        if (option == "--groups") {
            count = std::atoi(argv[i + 1]);
        } else if (option == "--steps") {
            steps = std::atoi(argv[i + 1]);
        }
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    TimedApplication application(argc, argv);
    QTemporaryDir scratch;
    QSettings store(scratch.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);

    PhotoCleanupModel::Engine engine = PhotoCleanupModel::Engine::standard();
    // Shared: the engine is copied with every scan, and a copy of a
    // million pictures freed on the interface thread would be timed too.
    engine.scan = [groups = std::make_shared<const std::vector<DuplicateGroup>>(makeGroups(count))](
                      const std::vector<std::string>& folders, bool,
                      const brevant::CancellationFlag&, const brevant::ExactMatcher::Progress&) {
        brevant::ScanResult result;
        result.roots = folders;
        result.groups = *groups;
        return result;
    };
    brevant::gui::Skins skins;
    skins.apply(QStringLiteral("classic"));
    PhotoCleanupModel model(store, scratch.filePath(QStringLiteral("data")).toStdString(), {},
                            engine);
    brevant::gui::MainWindow window(model, skins, store);
    window.resize(1280, 860);
    window.show();
    model.setSources({"/nonexistent/library"});
    model.startScan();
    while (model.phase() != PhotoCleanupModel::Phase::reviewing) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    settle();
    std::printf("%zu groups, %d steps\n", model.groups().size(), steps);
    // The scan's result reaches the window as one event: the overview's
    // figures and the list's new session.
    std::printf("%-34s %9.1f ms longest event\n", "the result handed to the window",
                application.takeLongest());

    QElapsedTimer clock;
    clock.start();
    window.showReview();
    double shown = ms(clock);
    window.repaint();
    settle();
    std::printf("%-34s %9.1f ms, longest piece %.1f ms\n", "open the review screen", ms(clock),
                std::max(shown, application.takeLongest()));

    ReviewScreen* review = window.review();
    QAction* next = review->action(ReviewScreen::Command::nextGroup);
    std::vector<double> step;
    step.reserve(steps);
    QElapsedTimer all;
    all.start();
    for (int i = 0; i < steps; ++i) {
        clock.restart();
        next->trigger();
        review->repaint();
        settle();
        step.push_back(ms(clock));
    }
    double total = ms(all);
    std::ranges::sort(step);
    std::printf("%-34s %9.2f ms mean %7.2f ms median %7.2f ms 99th %7.2f ms longest\n",
                "one step down the list", total / steps, step[step.size() / 2],
                step[step.size() * 99 / 100], step.back());

    clock.restart();
    review->showGroup(static_cast<int>(model.groups().size()) - 1);
    review->repaint();
    settle();
    std::printf("%-34s %9.1f ms\n", "jump to the last group", ms(clock));

    const std::pair<Filter, const char*> filters[] = {{Filter::notReviewed, "filter: not reviewed"},
                                                      {Filter::withMarks, "filter: with marks"},
                                                      {Filter::all, "filter: all groups"}};
    for (auto [filter, name] : filters) {
        QComboBox* choice = review->filterChoice();
        int index = choice->findData(static_cast<int>(filter));
        clock.restart();
        choice->setCurrentIndex(index);
        Q_EMIT choice->activated(index);
        review->repaint();
        settle();
        std::printf("%-34s %9.1f ms\n", name, ms(clock));
    }
    const std::pair<Sort, const char*> sorts[] = {{Sort::folder, "order: by folder"},
                                                  {Sort::date, "order: newest first"},
                                                  {Sort::bytesToFree, "order: most space first"}};
    for (auto [sort, name] : sorts) {
        QComboBox* choice = review->sortChoice();
        int index = choice->findData(static_cast<int>(sort));
        clock.restart();
        choice->setCurrentIndex(index);
        Q_EMIT choice->activated(index);
        review->repaint();
        settle();
        std::printf("%-34s %9.1f ms\n", name, ms(clock));
    }
    // The engine's share: the same command on a copy of the session.
    brevant::ReviewSession copy = *model.session();
    clock.restart();
    int marked = copy.markAllSuggested();
    std::printf("%-34s %9.1f ms (%d marked)\n", "  of which the engine", ms(clock), marked);

    // The window marks a slice at a time; what counts is the longest the
    // interface thread is held at once before the marking is done.
    QElapsedTimer whole;
    whole.start();
    clock.restart();
    review->action(ReviewScreen::Command::markAllSuggested)->trigger();
    double longest = ms(clock);
    while (!review->action(ReviewScreen::Command::markAllSuggested)->isEnabled()) {
        clock.restart();
        QApplication::processEvents(QEventLoop::AllEvents);
        longest = std::max(longest, ms(clock));
    }
    review->repaint();
    std::printf("%-34s %9.1f ms in all, longest stall %.1f ms (%zu marked)\n",
                "mark suggested in every group", ms(whole), longest,
                model.session()->marks().size());

    // One more mark with every suggested copy marked: the running total.
    QAction* toggle = review->action(ReviewScreen::Command::toggleMark);
    clock.restart();
    toggle->trigger();
    review->repaint();
    settle();
    std::printf("%-34s %9.1f ms\n", "one mark more, total shown", ms(clock));

    // The review is saved a second after the last change, taken a slice at
    // a time between events; the longest the thread is held until it is.
    auto savedAt = [&model] {
        return model.lastReview() ? model.lastReview()->saved.unixSeconds() : 0.0;
    };
    double before = savedAt();
    whole.restart();
    double longestSave = 0;
    while (savedAt() == before && whole.elapsed() < 60'000) {
        clock.restart();
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        longestSave = std::max(longestSave, ms(clock));
    }
    std::printf("%-34s %9.1f ms after the pause, longest stall %.1f ms%s\n",
                "save the review (resume later)", ms(whole) - 1000, longestSave,
                savedAt() == before ? " (not saved within a minute)" : "");

    // Scrolling the list a page at a time from top to bottom, painted.
    QScrollBar* bar = review->list()->verticalScrollBar();
    std::vector<double> pages;
    bar->setValue(0);
    settle();
    for (int i = 0; i < 400 && bar->value() < bar->maximum(); ++i) {
        clock.restart();
        bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
        review->list()->repaint();
        settle();
        pages.push_back(ms(clock));
    }
    if (!pages.empty()) {
        std::ranges::sort(pages);
        std::printf("%-34s %9.2f ms median %7.2f ms longest (%zu pages)\n",
                    "scroll the list a page down", pages[pages.size() / 2], pages.back(),
                    pages.size());
    }

    // Scanning again: the new result takes the old one's place, and the
    // old million pictures are let go.
    model.startScan();
    application.takeLongest();
    while (model.phase() != PhotoCleanupModel::Phase::reviewing) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    settle();
    std::printf("%-34s %9.1f ms longest event\n", "a new result in place of the last",
                application.takeLongest());
    return 0;
}
