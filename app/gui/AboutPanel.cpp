#include "AboutPanel.hpp"

#include "app/gui/ScreenParts.hpp"
#include "app/gui/WindowTexts.hpp"

#include <QDialogButtonBox>
#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

constexpr int kIconSize = 96;

} // namespace

AboutPanel::AboutPanel(QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(tr("About Brevant"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 16);
    layout->setSpacing(10);

    auto* icon = new QLabel(this);
    icon->setPixmap(QIcon(QStringLiteral(":/brevant.svg")).pixmap(kIconSize, kIconSize));
    icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(icon);

    QLabel* name = parts::label(QStringLiteral("Brevant"), "title", this);
    name->setAlignment(Qt::AlignCenter);
    layout->addWidget(name);
    QLabel* version =
        parts::label(tr("Version %1").arg(QStringLiteral(BREVANT_VERSION)), "muted", this);
    version->setAlignment(Qt::AlignCenter);
    layout->addWidget(version);
    layout->addSpacing(6);

    const char* paragraphs[] = {texts::kAboutSummary, texts::kPrivacy, texts::kUpdates};
    for (const char* paragraph : paragraphs) {
        QLabel* label = parts::label(QLatin1String(paragraph), nullptr, this);
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label);
    }
    QLabel* licence =
        parts::label(tr("Free software under the licence %1.").arg(QStringLiteral(BREVANT_LICENSE)),
                     "muted", this);
    licence->setAlignment(Qt::AlignCenter);
    layout->addWidget(licence);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addSpacing(8);
    layout->addWidget(buttons);
    setMinimumWidth(440);
    setMaximumWidth(520);
}

QString AboutPanel::text() const {
    QStringList lines;
    const auto labels = findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        if (!label->text().isEmpty()) {
            lines.push_back(label->text());
        }
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace brevant::gui
