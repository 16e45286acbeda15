#include "ReviewScreen.hpp"

#include "app/gui/CompareView.hpp"
#include "app/gui/GroupListModel.hpp"
#include "app/gui/GroupListView.hpp"
#include "app/gui/Inspector.hpp"
#include "app/gui/NotDuplicateActions.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ReviewTexts.hpp"
#include "app/gui/SceneZoom.hpp"
#include "app/gui/ScreenParts.hpp"
#include "app/gui/SuggestedMarking.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/platform/LocaleDate.hpp"
#include "engine/review/CopyLabels.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/similarity/QualityHints.hpp"

#include <QAction>
#include <QComboBox>
#include <QDateTime>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QUrl>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

using Command = ReviewScreen::Command;
using Filter = GroupListModel::Filter;
using Sort = GroupListModel::Sort;

constexpr int kListWidth = 230;
constexpr int kInspectorWidth = 250;
// Narrower than this, the review starts with the inspector hidden, so that
// the pictures get its room.
constexpr int kRoomForInspector = 1400;

QString text(const char* words) {
    return QString::fromUtf8(words);
}

// Marks made for identical copies may now stand in a similar group: said,
// lest they go unnoticed. Empty when the scan before was of the same mode.
QString carriedMarksText(const PhotoCleanupModel& model) {
    int carried = model.marksFromOtherMode();
    if (carried == 0) {
        return {};
    }
    return ReviewScreen::tr("%1 in the previous scan stay marked here.")
        .arg(countText(carried, "copy marked", "copies marked"));
}

} // namespace

ReviewScreen::ReviewScreen(PhotoCleanupModel& model, QWidget* parent)
    : QWidget(parent)
    , model_(model)
    , thumbnails_(new ThumbnailLoader(this))
    , groups_(new GroupListModel(this))
    , filter_(new QComboBox(this))
    , sort_(new QComboBox(this))
    , preset_(new QComboBox(this))
    , presetLabel_(parts::label(tr("Similarity"), "muted", this))
    , list_(new GroupListView(this))
    , count_(parts::label({}, "muted", this))
    , compare_(new CompareView(*thumbnails_, this))
    , inspector_(new Inspector(this))
    , total_(parts::label({}, "section", this))
    , notice_(parts::label({}, "muted", this))
    , markAll_(new QPushButton(text(texts::kMarkAllSuggested), this))
    , marking_(new SuggestedMarking(this))
    , back_(new QPushButton(text(texts::kBackToOverview), this))
    // A button reads "&" as the mark of its access key.
    , cleanup_(parts::accentButton(
          text(texts::kCleanup).replace(QLatin1Char('&'), QStringLiteral("&&")), this))
    , notDuplicates_(new NotDuplicateActions(
          [this](NotDuplicateActions::Decisions decisions) {
              if (model_.declareNotDuplicates(std::move(decisions))) {
                  setNotice(tr("Keeping these pictures apart…"));
              }
          },
          this)) {
    groups_->setThumbnails(thumbnails_);
    for (auto [filter, name] : {std::pair{Filter::all, texts::kAllGroups},
                                {Filter::withMarks, texts::kWithMarks},
                                {Filter::withLockedCopies, texts::kWithLockedCopies},
                                {Filter::notReviewed, texts::kNotReviewed}}) {
        filter_->addItem(text(name), static_cast<int>(filter));
    }
    for (auto [sort, name] : {std::pair{Sort::bytesToFree, texts::kByBytesToFree},
                              {Sort::folder, texts::kByFolder},
                              {Sort::date, texts::kByDate}}) {
        sort_->addItem(text(name), static_cast<int>(sort));
    }
    for (SimilarityPreset preset : EnumCases<SimilarityPreset>::kAll) {
        preset_->addItem(qtText(displayName(preset)), static_cast<int>(preset));
    }
    list_->setModel(groups_);
    notice_->setWordWrap(true);
    total_->setWordWrap(false);

    auto* top = new QHBoxLayout;
    top->addWidget(parts::label(tr("Review"), "title", this));
    top->addWidget(count_, 1, Qt::AlignBottom);
    inspectorButton_ = new QPushButton(tr("Details"), this);
    inspectorButton_->setCheckable(true);
    inspectorButton_->setChecked(true);
    inspectorButton_->setToolTip(tr("Show or hide the details of the chosen copy (Ctrl+I)"));
    inspectorButton_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    inspectorButton_->setFocusPolicy(Qt::NoFocus);
    top->addWidget(inspectorButton_);
    top->addWidget(back_);

    auto* left = new QWidget(this);
    auto* leftColumn = new QVBoxLayout(left);
    leftColumn->setContentsMargins(0, 0, 0, 0);
    leftColumn->addWidget(filter_);
    leftColumn->addWidget(sort_);
    auto* presetRow = new QHBoxLayout;
    presetRow->addWidget(presetLabel_);
    presetRow->addWidget(preset_, 1);
    leftColumn->addLayout(presetRow);
    leftColumn->addWidget(list_, 1);

    auto* inspectorScroll = new QScrollArea(this);
    inspectorScroll->setWidget(inspector_);
    inspectorScroll->setWidgetResizable(true);
    inspectorScroll->setFrameShape(QFrame::NoFrame);

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(left);
    splitter->addWidget(compare_);
    splitter->addWidget(inspectorScroll);
    // The list widens with the window too, so its rows keep their words.
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 4);
    splitter->setSizes({kListWidth, 600, kInspectorWidth});
    splitter->setChildrenCollapsible(false);
    inspectorPane_ = inspectorScroll;
    connect(inspectorButton_, &QPushButton::toggled, this, [this](bool shown) {
        inspectorChosen_ = true;
        inspectorPane_->setVisible(shown);
    });

    auto* bottom = new QHBoxLayout;
    auto* totals = new QVBoxLayout;
    totals->addWidget(total_);
    totals->addWidget(notice_);
    bottom->addLayout(totals, 1);
    bottom->addWidget(markAll_);
    bottom->addWidget(cleanup_);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 10, 16, 10);
    column->addLayout(top);
    column->addWidget(splitter, 1);
    column->addLayout(bottom);

    buildActions();
    connect(list_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& now) { rowChanged(now.row()); });
    connect(filter_, &QComboBox::activated, this, [this](int index) {
        int shown = currentGroup_;
        groups_->setFilter(static_cast<Filter>(filter_->itemData(index).toInt()));
        showGroup(shown);
    });
    connect(sort_, &QComboBox::activated, this, [this](int index) {
        int shown = currentGroup_;
        groups_->setSort(static_cast<Sort>(sort_->itemData(index).toInt()));
        showGroup(shown);
    });
    connect(preset_, &QComboBox::activated, this, [this](int index) {
        model_.setPreset(static_cast<SimilarityPreset>(preset_->itemData(index).toInt()));
    });
    connect(thumbnails_, &ThumbnailLoader::loaded, this, [this](const QString&) {
        list_->viewport()->update();
        updateInspector();
    });
    connect(compare_, &CompareView::currentChanged, this, &ReviewScreen::updateInspector);
    connect(compare_, &CompareView::currentChanged, this, &ReviewScreen::updateNotDuplicates);
    connect(&model_, &PhotoCleanupModel::notDuplicatesDeclared, this, [this] {
        setNotice(tr("Kept apart: Brevant will not put those pictures in one group again."));
    });
    connect(&model_, &PhotoCleanupModel::declareRefused, this, &ReviewScreen::setNotice);
    connect(compare_, &CompareView::markClicked, this, [this] { run(Command::toggleMark); });
    connect(compare_, &CompareView::lockClicked, this, [this] {
        const PhotoAsset* asset = compare_->currentAsset();
        bool locked = asset != nullptr && session_ != nullptr && session_->isLocked(asset->path);
        run(locked ? Command::unlock : Command::lock);
    });
    connect(compare_, &CompareView::menuRequested, this, &ReviewScreen::showMenu);
    connect(inspector_, &Inspector::openFolderRequested, this, &ReviewScreen::openFolder);
    connect(markAll_, &QPushButton::clicked, this, [this] { run(Command::markAllSuggested); });
    connect(marking_, &SuggestedMarking::progressed, this, &ReviewScreen::markingProgressed);
    connect(marking_, &SuggestedMarking::finished, this, &ReviewScreen::markingFinished);
    connect(back_, &QPushButton::clicked, this, &ReviewScreen::overviewRequested);
    connect(cleanup_, &QPushButton::clicked, this, &ReviewScreen::cleanupRequested);
    connect(&model_, &PhotoCleanupModel::resultChanged, this, &ReviewScreen::resultChanged);
    connect(&model_, &PhotoCleanupModel::marksChanged, this, &ReviewScreen::refresh);
    // Protecting a folder unmarks its copies and changes keepers.
    connect(&model_, &PhotoCleanupModel::settingsChanged, this, &ReviewScreen::refresh);
    resultChanged();
}

ReviewScreen::~ReviewScreen() = default;

QAction* ReviewScreen::addCommand(Command command, const QString& name, const QKeySequence& key) {
    auto* action = new QAction(name, this);
    action->setShortcut(key);
    // Single keys work only while the review screen has the focus, so they
    // never fire while typing elsewhere.
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    action->setEnabled(false);
    addAction(action);
    connect(action, &QAction::triggered, this, [this, command] { run(command); });
    actions_[command] = action;
    return action;
}

void ReviewScreen::buildActions() {
    for (QAction*& separator : separators_) {
        separator = new QAction(this);
        separator->setSeparator(true);
    }
    addCommand(Command::mark, text(texts::kMark), QKeySequence(Qt::Key_M));
    addCommand(Command::unmark, text(texts::kUnmark), QKeySequence(Qt::Key_U));
    addCommand(Command::toggleMark, text(texts::kToggleMark), QKeySequence(Qt::Key_Space));
    addCommand(Command::lock, text(texts::kLock), QKeySequence(Qt::Key_L));
    addCommand(Command::unlock, text(texts::kUnlock), QKeySequence(Qt::SHIFT | Qt::Key_L));
    addCommand(Command::markSuggested, text(texts::kMarkSuggested),
               QKeySequence(Qt::CTRL | Qt::Key_M));
    addCommand(Command::markAllSuggested, text(texts::kMarkAllSuggested),
               QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M));
    addCommand(Command::clearMarks, text(texts::kClearMarks),
               QKeySequence(Qt::CTRL | Qt::Key_Backspace));
    addCommand(Command::nextGroup, text(texts::kNextGroup), QKeySequence(Qt::Key_Down));
    addCommand(Command::previousGroup, text(texts::kPreviousGroup), QKeySequence(Qt::Key_Up));
    addCommand(Command::nextCopy, text(texts::kNextCopy), QKeySequence(Qt::Key_Right));
    addCommand(Command::previousCopy, text(texts::kPreviousCopy), QKeySequence(Qt::Key_Left));
    addCommand(Command::flip, text(texts::kFlip), QKeySequence(Qt::Key_F));
    addCommand(Command::sideBySide, text(texts::kSideBySide), QKeySequence(Qt::Key_Escape));
    addCommand(Command::zoomIn, text(texts::kZoomIn), QKeySequence(Qt::Key_Plus));
    addCommand(Command::zoomOut, text(texts::kZoomOut), QKeySequence(Qt::Key_Minus));
    addCommand(Command::fit, text(texts::kFit), QKeySequence(Qt::Key_0));
    // "=" shares its key with "+" on most keyboards.
    actions_[Command::zoomIn]->setShortcuts(
        {QKeySequence(Qt::Key_Plus), QKeySequence(Qt::Key_Equal)});
}

QList<QAction*> ReviewScreen::markingActions() const {
    const std::initializer_list<Command> sections[] = {
        {Command::mark, Command::unmark, Command::toggleMark, Command::lock, Command::unlock},
        {Command::markSuggested, Command::clearMarks, Command::markAllSuggested},
        {Command::nextGroup, Command::previousGroup, Command::nextCopy, Command::previousCopy},
        {Command::flip, Command::sideBySide, Command::zoomIn, Command::zoomOut, Command::fit},
    };
    QList<QAction*> listed;
    std::size_t next = 0;
    for (const auto& section : sections) {
        if (!listed.isEmpty()) {
            listed << separators_.at(next++);
        }
        for (Command command : section) {
            listed << actions_.at(command);
        }
    }
    return listed;
}

void ReviewScreen::setInspectorShown(bool shown) {
    inspectorButton_->setChecked(shown);
    inspectorChosen_ = true;
    inspectorPane_->setVisible(shown);
}

bool ReviewScreen::isInspectorShown() const {
    return !inspectorPane_->isHidden();
}

void ReviewScreen::showEvent(QShowEvent* event) {
    for (const auto& [command, action] : actions_) {
        action->setEnabled(true);
    }
    if (!inspectorChosen_) {
        QWidget* top = window();
        bool room = top == nullptr || top->width() >= kRoomForInspector;
        inspectorButton_->setChecked(room);
        inspectorPane_->setVisible(room);
        inspectorChosen_ = false;
    }
    QWidget::showEvent(event);
}

void ReviewScreen::hideEvent(QHideEvent* event) {
    for (const auto& [command, action] : actions_) {
        action->setEnabled(false);
    }
    QWidget::hideEvent(event);
}

void ReviewScreen::open() {
    resultChanged();
    if (currentGroup_ < 0 && groups_->rowCount() > 0) {
        list_->setCurrentIndex(groups_->index(0));
    }
    // Showing the first group cleared the notice.
    if (QString carried = carriedMarksText(model_); !carried.isEmpty()) {
        setNotice(carried);
    }
    list_->setFocus();
}

void ReviewScreen::resultChanged() {
    std::shared_ptr<ReviewSession> session = model_.session();
    bool similar = session != nullptr && model_.resultMode() == CleanupSettings::Mode::similar;
    preset_->setVisible(similar);
    presetLabel_->setVisible(similar);
    preset_->setCurrentIndex(preset_->findData(static_cast<int>(model_.groupedPreset())));
    if (session == session_) {
        return;
    }
    // The user's place: the copy shown, found again among the new groups.
    std::string place;
    if (const PhotoAsset* asset = compare_->currentAsset()) {
        place = asset->path;
    }
    // Marks asked of the old groups have no place among the new ones.
    markingStopped();
    session_ = session;
    currentGroup_ = -1;
    // Before the session, so the "Not reviewed" filter already knows them.
    groups_->addReviewed(model_.reviewedGroups());
    groups_->setSession(session);
    compare_->showGroup(std::nullopt);
    updateInspector();
    updateTotal();
    setNotice({});
    if (session == nullptr) {
        return;
    }
    if (QString carried = carriedMarksText(model_); !carried.isEmpty()) {
        setNotice(carried);
    }
    count_->setText(
        countText(static_cast<std::int64_t>(session->groups().size()), "group", "groups"));
    const DuplicateGroup* holder = place.empty() ? nullptr : session->group(place);
    int groupIndex = holder != nullptr ? static_cast<int>(holder - session->groups().data()) : 0;
    if (!place.empty()) {
        showGroup(groupIndex);
        if (holder != nullptr) {
            for (int i = 0; i < compare_->count(); ++i) {
                if (holder->members[i].path == place) {
                    compare_->setCurrent(i);
                }
            }
        }
    }
}

void ReviewScreen::showGroup(int groupIndex) {
    std::optional<int> row = groupIndex >= 0 ? groups_->rowOf(groupIndex) : std::nullopt;
    if (!row && groups_->rowCount() > 0) {
        row = 0;
    }
    if (!row) {
        rowChanged(-1);
        return;
    }
    QModelIndex wanted = groups_->index(*row);
    if (list_->currentIndex() == wanted) {
        rowChanged(*row);
        return;
    }
    list_->setCurrentIndex(wanted);
    list_->scrollTo(wanted);
}

void ReviewScreen::rowChanged(int row) {
    int groupIndex = groups_->groupIndex(row);
    const ReviewSession* session = session_.get();
    if (groupIndex == currentGroup_ && groupIndex >= 0) {
        return;
    }
    currentGroup_ = groupIndex;
    setNotice({});
    if (session == nullptr || groupIndex < 0) {
        compare_->showGroup(std::nullopt);
        updateInspector();
        updateNotDuplicates();
        return;
    }
    compare_->showGroup(session->groups()[groupIndex]);
    groups_->markReviewed(groupIndex);
    model_.noteReviewed(session->groups()[groupIndex].id);
    updateFacts();
    updateInspector();
    updateNotDuplicates();
}

void ReviewScreen::updateNotDuplicates() {
    notDuplicates_->setGroup(shownGroup(), compare_->current());
}

const DuplicateGroup* ReviewScreen::shownGroup() const {
    const ReviewSession* session = session_.get();
    if (session == nullptr || currentGroup_ < 0 ||
        currentGroup_ >= static_cast<int>(session->groups().size())) {
        return nullptr;
    }
    return &session->groups()[currentGroup_];
}

void ReviewScreen::run(Command command) {
    switch (command) {
    case Command::mark:
    case Command::unmark:
    case Command::toggleMark:
    case Command::lock:
    case Command::unlock:
        markCurrent(command);
        return;
    case Command::markAllSuggested:
    case Command::markSuggested:
    case Command::clearMarks:
        markIn(command);
        return;
    case Command::nextGroup:
        moveGroup(1);
        return;
    case Command::previousGroup:
        moveGroup(-1);
        return;
    case Command::nextCopy:
        compare_->nextMember();
        return;
    case Command::previousCopy:
        compare_->previousMember();
        return;
    case Command::flip:
        compare_->flip();
        return;
    case Command::sideBySide:
        compare_->sideBySide();
        return;
    case Command::zoomIn:
        compare_->zoom()->zoomIn();
        return;
    case Command::zoomOut:
        compare_->zoom()->zoomOut();
        return;
    case Command::fit:
        compare_->zoom()->fit();
        return;
    }
}

void ReviewScreen::moveGroup(int step) {
    int row = list_->currentIndex().row() + step;
    if (row >= groups_->rowCount() && groups_->canFetchMore({})) {
        groups_->fetchMore({});
    }
    if (row < 0 || row >= groups_->rowCount()) {
        return;
    }
    QModelIndex wanted = groups_->index(row);
    list_->setCurrentIndex(wanted);
    list_->scrollTo(wanted);
}

void ReviewScreen::markCurrent(Command command) {
    ReviewSession* session = session_.get();
    const PhotoAsset* asset = compare_->currentAsset();
    if (session == nullptr || asset == nullptr) {
        return;
    }
    std::string path = asset->path;
    std::expected<void, MarkRefusal> done;
    if (command == Command::mark) {
        done = session->mark(path);
    } else if (command == Command::unmark) {
        session->unmark(path);
    } else if (command == Command::toggleMark) {
        done = session->toggle(path);
    } else if (command == Command::lock) {
        done = session->lock(path);
    } else if (command == Command::unlock) {
        done = session->unlock(path);
    }
    compare_->setRefusal(compare_->current(), done ? QString() : qtText(done.error().message()));
    marksChanged();
}

void ReviewScreen::markIn(Command command) {
    ReviewSession* session = session_.get();
    if (session == nullptr) {
        return;
    }
    compare_->clearRefusals();
    if (command == Command::markAllSuggested) {
        if (!marking_->isRunning()) {
            markAll_->setEnabled(false);
            actions_.at(Command::markAllSuggested)->setEnabled(false);
            marking_->start(session_);
        }
        return;
    }
    const DuplicateGroup* group = shownGroup();
    if (group == nullptr) {
        return;
    }
    if (command == Command::markSuggested) {
        int marked = session->markSuggested(*group);
        setNotice(marked == 0 ? tr("Nothing more to mark in this group.")
                              : tr("Marked %1 in this group.")
                                    .arg(countText(marked, "more copy", "more copies")));
    } else {
        session->clearMarks(*group);
        setNotice({});
    }
    marksChanged();
}

void ReviewScreen::finishMarking() {
    marking_->finish();
}

void ReviewScreen::markingProgressed(std::size_t groupsDone, std::size_t groups) {
    QLocale locale;
    setNotice(tr("Marking the suggested copies… %1 of %2 groups")
                  .arg(locale.toString(static_cast<qulonglong>(groupsDone)),
                       locale.toString(static_cast<qulonglong>(groups))));
    updateTotal();
}

void ReviewScreen::markingFinished(int marked) {
    markingStopped();
    setNotice(marked == 0 ? qtText(ReviewSession::kNothingMoreToMark)
                          : tr("Marked %1.").arg(countText(marked, "more copy", "more copies")));
    marksChanged();
}

void ReviewScreen::markingStopped() {
    marking_->stop();
    markAll_->setEnabled(true);
    actions_.at(Command::markAllSuggested)->setEnabled(true);
}

void ReviewScreen::marksChanged() {
    // The model tells every view, this one included (refresh).
    model_.noteMarksChanged();
}

void ReviewScreen::refresh() {
    if (session_ == nullptr || model_.session() != session_) {
        return;
    }
    // A mark, a lock or a protected folder may change any group's state and
    // keeper; only the rows on screen are drawn again.
    groups_->refreshAll();
    updateFacts();
    updateInspector();
    updateTotal();
}

void ReviewScreen::updateFacts() {
    const ReviewSession* session = session_.get();
    const DuplicateGroup* group = shownGroup();
    if (session == nullptr || group == nullptr) {
        return;
    }
    auto suggestion = session->suggestion(*group);
    QualityHints::ByPath hints;
    std::unordered_map<std::string, int> scores;
    QualityHints::ByPath faces;
    if (auto index = model_.index()) {
        hints = QualityHints::hints(*group, *index);
        scores = QualityHints::scores(*group, *index);
        faces = QualityHints::faceNotes(*group, *index);
    }
    std::vector<MemberFacts> facts;
    for (const auto& member : group->members) {
        MemberFacts fact{.isKeeper = suggestion && suggestion->keeperID == member.path,
                         .keeperReason = suggestion ? qtText(suggestion->reason) : QString(),
                         .isMarked = session->isMarked(member.path),
                         .isLocked = session->isLocked(member.path),
                         .orientation = qtText(group->orientationOf(member.path).words())};
        if (auto found = hints.find(member.path); found != hints.end()) {
            fact.hint = qtText(found->second);
        }
        if (auto found = scores.find(member.path); found != scores.end()) {
            fact.qualityScore = found->second;
        }
        if (auto found = faces.find(member.path); found != faces.end()) {
            fact.faceNote = qtText(found->second);
        }
        facts.push_back(fact);
    }
    compare_->setFacts(facts);
}

void ReviewScreen::updateInspector() {
    const ReviewSession* session = session_.get();
    const PhotoAsset* asset = compare_->currentAsset();
    const DuplicateGroup* group = shownGroup();
    if (session == nullptr || asset == nullptr || group == nullptr) {
        inspector_->showAsset(nullptr, {});
        return;
    }
    Inspector::Facts facts;
    if (auto suggestion = session->suggestion(*group)) {
        const PhotoAsset* keeper = session->asset(suggestion->keeperID);
        facts.isKeeper = suggestion->keeperID == asset->path;
        facts.keeperName =
            keeper != nullptr ? qtText(CopyLabels::distinctName(*keeper, *group)) : QString();
        facts.keeperReason = qtText(suggestion->reason);
    }
    facts.orientation = qtText(group->orientationOf(asset->path).words());
    if (auto index = model_.index()) {
        auto hints = QualityHints::hints(*group, *index);
        auto scores = QualityHints::scores(*group, *index);
        auto faces = QualityHints::faceNotes(*group, *index);
        if (auto found = hints.find(asset->path); found != hints.end()) {
            facts.hint = qtText(found->second);
        }
        if (auto found = scores.find(asset->path); found != scores.end()) {
            facts.qualityScore = found->second;
        }
        if (auto found = faces.find(asset->path); found != faces.end()) {
            facts.faceNote = qtText(found->second);
        }
    }
    // EXIF writes "2023:07:05 09:30:00"; shown as the other dates are. A
    // date that is no date ("0000:00:00 00:00:00", blanks) is not shown.
    QString taken = thumbnails_->captureDate(*asset);
    QDateTime when = QDateTime::fromString(taken, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    facts.captureDate = when.isValid() && when.date().year() > 1
                            ? qtText(platform::shortDateTime(when.toSecsSinceEpoch()))
                            : QString();
    inspector_->showAsset(asset, facts);
}

void ReviewScreen::updateTotal() {
    const ReviewSession* session = session_.get();
    std::size_t marked = session != nullptr ? session->marks().size() : 0;
    cleanup_->setEnabled(marked > 0);
    if (marked == 0) {
        total_->setText(text(texts::kNothingMarked));
        return;
    }
    std::int64_t bytes = session->markedBytes();
    total_->setText(tr("%1 marked · %2")
                        .arg(countText(static_cast<std::int64_t>(marked), "picture", "pictures"),
                             byteText(bytes)));
}

QString ReviewScreen::totalText() const {
    return total_->text();
}

QString ReviewScreen::noticeText() const {
    return notice_->text();
}

void ReviewScreen::setNotice(const QString& text) {
    notice_->setText(text);
    notice_->setVisible(!text.isEmpty());
}

void ReviewScreen::showMenu(int member, const QPoint& global) {
    compare_->setCurrent(member);
    const ReviewSession* session = session_.get();
    const PhotoAsset* asset = compare_->currentAsset();
    if (session == nullptr || asset == nullptr) {
        return;
    }
    QMenu menu(this);
    bool marked = session->isMarked(asset->path);
    bool locked = session->isLocked(asset->path);
    menu.addAction(actions_.at(marked ? Command::unmark : Command::mark));
    menu.addAction(actions_.at(locked ? Command::unlock : Command::lock));
    menu.addSeparator();
    menu.addAction(actions_.at(Command::markSuggested));
    menu.addAction(actions_.at(Command::clearMarks));
    menu.addSeparator();
    updateNotDuplicates();
    if (QList<QAction*> apart = notDuplicates_->listed(); !apart.isEmpty()) {
        menu.addActions(apart);
        menu.addSeparator();
    }
    // A disabled "not duplicates" says why in its tooltip.
    menu.setToolTipsVisible(true);
    QString folder = qtText(asset->folder());
    menu.addAction(text(texts::kOpenFolder), this, [this, folder] { openFolder(folder); });
    menu.exec(global);
}

void ReviewScreen::openFolder(const QString& folder) {
    if (!folder.isEmpty()) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
    }
}

} // namespace brevant::gui
