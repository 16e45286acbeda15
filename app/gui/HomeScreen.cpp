#include "HomeScreen.hpp"

#include "app/gui/FolderList.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ResumeOffer.hpp"
#include "app/gui/ScreenParts.hpp"
#include "app/gui/WindowTexts.hpp"
#include "engine/catalogs/CatalogKindTexts.hpp"

#include <QButtonGroup>
#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

using Mode = CleanupSettings::Mode;
using Scope = CleanupSettings::Scope;

// Explanations sit under their choice, indented to its text.
constexpr int kExplanationIndent = 26;

QLabel* explanationLabel(const QString& text, QWidget* parent, int indent) {
    QLabel* label = parts::label(text, "muted", parent);
    label->setWordWrap(true);
    label->setContentsMargins(indent, 0, 0, 4);
    return label;
}

QString modeWords(Mode mode, SimilarityPreset preset) {
    switch (mode) {
    case Mode::identical:
        return QStringLiteral("identical copies");
    case Mode::similar:
        return QStringLiteral("similar versions (%1)").arg(qtText(displayName(preset)));
    case Mode::series:
        return QStringLiteral("series");
    case Mode::livePhotos:
        return QStringLiteral("Live Photo movies");
    }
    return {};
}

} // namespace

HomeScreen::HomeScreen(PhotoCleanupModel& model, QWidget* parent)
    : QWidget(parent)
    , model_(model) {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(32, 24, 32, 16);
    column->setSpacing(12);
    column->addWidget(parts::label(QLatin1String(texts::kHomeTitle), "title", content));
    column->addWidget(parts::label(QLatin1String(texts::kHomeSubtitle), "muted", content));
    column->addWidget(parts::titleRule(content));
    resume_ = new ResumeOffer(model_, content);
    column->addWidget(resume_);

    auto* columns = new QHBoxLayout;
    columns->setSpacing(16);
    auto* left = new QVBoxLayout;
    left->setSpacing(16);
    left->addWidget(whereCard());
    left->addWidget(protectedCard());
    left->addStretch();
    auto* right = new QVBoxLayout;
    right->setSpacing(16);
    right->addWidget(whatCard());
    right->addStretch();
    columns->addLayout(left, 3);
    columns->addLayout(right, 2);
    column->addLayout(columns);
    column->addStretch();

    auto* scroll = new QScrollArea(this);
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);

    notice_ = parts::notice({}, this);
    notice_->hide();
    summary_ = parts::label({}, "muted", this);
    summary_->setWordWrap(false);
    scan_ = parts::accentButton(tr("Scan"), this);
    scan_->setObjectName(QStringLiteral("scanButton"));
    compress_ = new QPushButton(tr("Compress…"), this);
    compress_->setObjectName(QStringLiteral("compressButton"));
    compress_->setToolTip(tr("Write checked smaller copies of the big photos and videos in these "
                             "folders; the originals go to the Trash"));
    auto* bottom = new QHBoxLayout;
    bottom->setContentsMargins(32, 8, 32, 20);
    bottom->addWidget(notice_, 1);
    bottom->addStretch();
    bottom->addWidget(summary_);
    bottom->addSpacing(12);
    bottom->addWidget(compress_);
    bottom->addSpacing(8);
    bottom->addWidget(scan_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(scroll, 1);
    layout->addLayout(bottom);

    connect(scan_, &QPushButton::clicked, this, [this] {
        showNotice({});
        if (!model_.startScan() && model_.settings().sources.empty()) {
            showNotice(QLatin1String(texts::kNoSources));
        }
    });
    connect(compress_, &QPushButton::clicked, this, [this] {
        showNotice({});
        if (model_.settings().sources.empty()) {
            showNotice(QLatin1String(texts::kNoSources));
            return;
        }
        Q_EMIT compressRequested();
    });
    connect(&model_, &PhotoCleanupModel::settingsChanged, this, &HomeScreen::showSettings);
    connect(&model_, &PhotoCleanupModel::scanCancelled, this,
            [this] { showNotice(QLatin1String(texts::kScanCancelled)); });
    connect(&model_, &PhotoCleanupModel::scanFailed, this, &HomeScreen::showNotice);
    connect(&model_, &PhotoCleanupModel::catalogChanged, this, [this](Scope scope) {
        showCatalog(scope);
        showSettings();
    });
    showSettings();
}

QWidget* HomeScreen::whereCard() {
    QFrame* card = parts::card(this);
    auto* layout = static_cast<QVBoxLayout*>(card->layout());
    layout->addWidget(parts::label(tr("Where to look"), "section", card));

    scopes_ = new QButtonGroup(card);
    // Folders, then every kind of catalog in its order, three to a row: a
    // row of them all would widen the window.
    constexpr int kScopesInARow = 3;
    auto* scopeGrid = new QGridLayout;
    int index = 0;
    for (auto scope : EnumCases<Scope>::kAll) {
        QString title =
            scope.catalog ? qtText(CatalogKindTexts::of(*scope.catalog).name) : tr("Folders");
        auto* button = new QRadioButton(title, card);
        scopes_->addButton(button, scope.id());
        scopeGrid->addWidget(button, index / kScopesInARow, index % kScopesInARow);
        ++index;
    }
    scopeGrid->setColumnStretch(kScopesInARow, 1);
    layout->addLayout(scopeGrid);

    sources_ =
        new FolderList(tr("Choose a Folder to Scan"), QLatin1String(texts::kSourcesHint), card);
    sources_->setObjectName(QStringLiteral("sources"));
    scopePages_ = new QStackedWidget(card);
    scopePages_->addWidget(sources_);
    for (auto application : EnumCases<CatalogApplication>::kAll) {
        scopePages_->addWidget(catalogPage(Scope::of(application)));
    }
    layout->addWidget(scopePages_);

    connect(sources_, &FolderList::foldersChanged, this,
            [this](const std::vector<std::string>& folders) { model_.setSources(folders); });
    connect(scopes_, &QButtonGroup::idClicked, this, [this](int id) {
        auto scope = Scope::fromID(id);
        model_.setScope(scope);
        // The first time, look where the application keeps its catalogs.
        if (scope != Scope::folders && model_.catalog(scope).empty()) {
            model_.findCatalog(scope, std::nullopt);
        }
    });
    return card;
}

QWidget* HomeScreen::catalogPage(Scope scope) {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 4, 0, 0);
    CatalogPage& shown = catalogPages_[scope];
    shown.path = parts::label({}, nullptr, page);
    shown.path->setWordWrap(true);
    shown.notice = parts::notice({}, page);
    shown.notice->hide();
    shown.choose = new QPushButton(tr("Choose Folder…"), page);
    const auto& kind = CatalogKindTexts::of(*scope.catalog);
    shown.choose->setToolTip(qtText(kind.chooseTip));
    layout->addWidget(shown.path);
    layout->addWidget(shown.notice);
    layout->addWidget(shown.choose, 0, Qt::AlignLeft);
    layout->addWidget(parts::label(qtText(kind.reading), "muted", page));
    layout->addStretch();
    connect(shown.choose, &QPushButton::clicked, this,
            [this, scope] { chooseCatalogFolder(scope); });
    return page;
}

void HomeScreen::chooseCatalogFolder(Scope scope) {
    const std::string& chosen = model_.catalog(scope);
    QString start = chosen.empty() ? qtText(PhotoCleanupModel::defaultCatalogFolder(scope))
                                   : QFileInfo(qtText(chosen)).absolutePath();
    QString folder = QFileDialog::getExistingDirectory(
        this,
        tr("Choose the Folder of the %1 Catalog")
            .arg(qtText(CatalogKindTexts::of(*scope.catalog).name)),
        start);
    if (!folder.isEmpty()) {
        model_.findCatalog(scope, pathBytes(folder));
    }
}

void HomeScreen::showCatalog(Scope scope) {
    auto found = catalogPages_.find(scope);
    if (found == catalogPages_.end()) {
        return;
    }
    const std::string& catalog = model_.catalog(scope);
    found->second.path->setText(catalog.empty() ? tr("No catalog chosen yet.")
                                                : tr("Catalog: %1").arg(qtText(catalog)));
    QString notice = qtText(model_.catalogNotice(scope));
    parts::noticeLabel(found->second.notice)->setText(notice);
    found->second.notice->setVisible(!notice.isEmpty());
}

QString HomeScreen::catalogText(Scope scope) const {
    return catalogPages_.at(scope).path->text();
}

QString HomeScreen::catalogNoticeText(Scope scope) const {
    const CatalogPage& page = catalogPages_.at(scope);
    return page.notice->isHidden() ? QString() : parts::noticeLabel(page.notice)->text();
}

QPushButton* HomeScreen::chooseCatalogButton(Scope scope) const {
    return catalogPages_.at(scope).choose;
}

QWidget* HomeScreen::protectedCard() {
    QFrame* card = parts::card(this);
    auto* layout = static_cast<QVBoxLayout*>(card->layout());
    layout->addWidget(parts::label(tr("Always keep copies here"), "section", card));
    protected_ = new FolderList(tr("Choose a Folder Whose Copies Are Always Kept"),
                                QLatin1String(texts::kProtectedHint), card);
    protected_->setObjectName(QStringLiteral("protected"));
    layout->addWidget(protected_);
    connect(
        protected_, &FolderList::foldersChanged, this,
        [this](const std::vector<std::string>& folders) { model_.setProtectedFolders(folders); });
    return card;
}

QWidget* HomeScreen::whatCard() {
    QFrame* card = parts::card(this);
    auto* layout = static_cast<QVBoxLayout*>(card->layout());
    layout->addWidget(parts::label(tr("What to look for"), "section", card));

    modes_ = new QButtonGroup(card);
    presets_ = new QButtonGroup(card);
    auto addMode = [&](Mode mode, const QString& title, const char* explanation) {
        auto* button = new QRadioButton(title, card);
        modes_->addButton(button, static_cast<int>(mode));
        layout->addWidget(button);
        layout->addWidget(explanationLabel(QLatin1String(explanation), card, kExplanationIndent));
    };
    addMode(Mode::identical, tr("Identical copies"), texts::kIdenticalExplanation);
    addMode(Mode::similar, tr("Similar versions"), texts::kSimilarExplanation);
    for (SimilarityPreset preset : EnumCases<SimilarityPreset>::kAll) {
        auto* button = new QRadioButton(qtText(displayName(preset)), card);
        button->setObjectName(qtText(rawValue(preset)));
        presets_->addButton(button, static_cast<int>(preset));
        auto* row = new QHBoxLayout;
        row->setContentsMargins(kExplanationIndent, 0, 0, 0);
        row->addWidget(button);
        layout->addLayout(row);
        QLabel* explanation =
            explanationLabel(qtText(brevant::explanation(preset)), card, 2 * kExplanationIndent);
        presetExplanations_[preset] = explanation;
        layout->addWidget(explanation);
    }
    addMode(Mode::series, tr("Series"), texts::kSeriesExplanation);
    addMode(Mode::livePhotos, tr("Live Photos into stills"), texts::kLivePhotosExplanation);

    connect(modes_, &QButtonGroup::idClicked, this,
            [this](int id) { model_.setMode(static_cast<Mode>(id)); });
    connect(presets_, &QButtonGroup::idClicked, this,
            [this](int id) { model_.setPreset(static_cast<SimilarityPreset>(id)); });
    return card;
}

void HomeScreen::showSettings() {
    const CleanupSettings& settings = model_.settings();
    sources_->setFolders(settings.sources);
    protected_->setFolders(settings.protectedFolders);
    {
        QSignalBlocker blockScopes(scopes_);
        QSignalBlocker blockModes(modes_);
        QSignalBlocker blockPresets(presets_);
        scopeButton(settings.scope)->setChecked(true);
        modeButton(settings.mode)->setChecked(true);
        presetButton(settings.preset)->setChecked(true);
    }
    scopePages_->setCurrentIndex(settings.scope.id());
    bool similar = settings.mode == Mode::similar;
    for (auto* button : presets_->buttons()) {
        button->setEnabled(similar);
    }
    for (const auto& [preset, explanation] : presetExplanations_) {
        explanation->setEnabled(similar);
    }
    for (auto application : EnumCases<CatalogApplication>::kAll) {
        showCatalog(Scope::of(application));
    }
    scan_->setEnabled(model_.canScan());
    compress_->setEnabled(model_.canScan() && settings.scope == Scope::folders);
    summary_->setText(summaryText());
}

QString HomeScreen::summaryText() const {
    const CleanupSettings& settings = model_.settings();
    if (!model_.canScan()) {
        return {};
    }
    QString where =
        settings.scope == Scope::folders
            ? countText(static_cast<std::int64_t>(settings.sources.size()), "folder", "folders")
            : QFileInfo(qtText(model_.catalog(settings.scope))).fileName();
    return tr("Looks for %1 in %2.").arg(modeWords(settings.mode, settings.preset), where);
}

QRadioButton* HomeScreen::modeButton(Mode mode) const {
    return static_cast<QRadioButton*>(modes_->button(static_cast<int>(mode)));
}

QRadioButton* HomeScreen::presetButton(SimilarityPreset preset) const {
    return static_cast<QRadioButton*>(presets_->button(static_cast<int>(preset)));
}

QRadioButton* HomeScreen::scopeButton(Scope scope) const {
    return static_cast<QRadioButton*>(scopes_->button(scope.id()));
}

QString HomeScreen::noticeText() const {
    return notice_->isHidden() ? QString() : parts::noticeLabel(notice_)->text();
}

void HomeScreen::showNotice(const QString& text) {
    parts::noticeLabel(notice_)->setText(text);
    notice_->setVisible(!text.isEmpty());
}

} // namespace brevant::gui
