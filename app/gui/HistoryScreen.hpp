#pragma once

#include <QStringList>
#include <QWidget>

#include <string>

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace brevant {
struct CompressionReport;
} // namespace brevant

namespace brevant::gui {

class CleanupController;
class CompressionController;
class CleanupReportView;

// Every cleanup run on this computer, newest first, with its date, counts
// and the bytes still in the Trash; opening one shows its pictures with
// their outcomes and notes, and puts them back. Below, once it is given
// them, the compressions the same way.
class HistoryScreen : public QWidget {
    Q_OBJECT

public:
    explicit HistoryScreen(CleanupController& cleanups, QWidget* parent = nullptr);

    // Lists the compressions too, under the cleanups.
    void showCompressions(CompressionController& compressions);
    // Reads the journals again and shows the list.
    void reload();
    // Opens the compression in this row of its list.
    void openCompression(int row);

    [[nodiscard]] QTreeWidget* compressionList() const { return compressionList_; }

    [[nodiscard]] QString compressionReportText() const;

    [[nodiscard]] QPushButton* compressionPutBackButton() const { return compressionPutBack_; }

    // Opens the cleanup in this row of the list.
    void open(int row);

    [[nodiscard]] QTreeWidget* list() const { return list_; }

    [[nodiscard]] CleanupReportView* reportView() const { return report_; }

    [[nodiscard]] bool showsReport() const;

    [[nodiscard]] QString caption() const;
    // While reading, or when there is no cleanup yet, what the list says
    // instead; else "".
    [[nodiscard]] QString status() const;

    [[nodiscard]] QPushButton* closeButton() const { return close_; }

Q_SIGNALS:
    void finished();

private:
    void fill();
    void fillCompressions();
    void back();
    void showCompression(const CompressionReport& report, const QStringList& putBackLines);

    CleanupController& cleanups_;
    QStackedWidget* pages_;
    QWidget* listPage_;
    QLabel* caption_;
    QLabel* empty_;
    QTreeWidget* list_;
    QPushButton* openButton_;
    CleanupReportView* report_;
    QPushButton* close_;
    CompressionController* compressions_ = nullptr;
    QLabel* compressionTitle_ = nullptr;
    QTreeWidget* compressionList_ = nullptr;
    QWidget* compressionPage_ = nullptr;
    QPlainTextEdit* compressionReport_ = nullptr;
    QPushButton* compressionPutBack_ = nullptr;
    std::string compressionJournal_;
};

} // namespace brevant::gui
