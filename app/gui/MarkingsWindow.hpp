#pragma once

#include "app/gui/CatalogMarkings.hpp"
#include "app/gui/Worker.hpp"

#include <QDialog>

#include <map>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace brevant::gui {

// Every marking of a Lightroom Classic catalog and every tagging of a
// Capture One catalog, newest first, each with its catalog, date, count and
// backup, and the way to undo it. Undo runs on a worker; its outcome is
// shown beside the marking it concerns.
class MarkingsWindow : public QDialog {
    Q_OBJECT

public:
    explicit MarkingsWindow(const std::string& dataFolder, QWidget* parent = nullptr);
    MarkingsWindow(const MarkingsWindow&) = delete;
    MarkingsWindow& operator=(const MarkingsWindow&) = delete;
    MarkingsWindow(MarkingsWindow&&) = delete;
    MarkingsWindow& operator=(MarkingsWindow&&) = delete;
    // Waits for an undo under way.
    ~MarkingsWindow() override;

    // Reads the records again.
    void reload();

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }

    [[nodiscard]] const CatalogMarking& marking(int row) const { return rows_.at(row).marking; }

    // The row's lines as shown: heading, date and count, catalog, backup,
    // and until it is undone how to finish in the catalog's application.
    [[nodiscard]] QStringList lines(int row) const;
    // What undo does; "" once the marking is undone.
    [[nodiscard]] QString noteText(int row) const;
    // What the last undo of the row answered ("" before any).
    [[nodiscard]] QString statusText(int row) const;
    [[nodiscard]] QPushButton* undoButton(int row) const;
    [[nodiscard]] QPushButton* backupButton(int row) const;
    // Shown when there are no records.
    [[nodiscard]] QString emptyText() const;

    // Opens the folder holding the row's backup in the file manager.
    void showBackup(int row) const;
    void undo(int row);

Q_SIGNALS:
    // An undo ended, refused or done; the list has been read again.
    void undoFinished();

private:
    struct Row {
        CatalogMarking marking;
        QWidget* card = nullptr;
        std::vector<QLabel*> lines;
        QLabel* note = nullptr;
        QLabel* status = nullptr;
        QPushButton* undo = nullptr;
        QPushButton* backup = nullptr;
    };

    void addRow(CatalogMarking marking);
    void finishUndo(const Uuid& id, const std::optional<std::string>& refusal);

    CatalogMarkings markings_;
    QVBoxLayout* list_;
    QLabel* empty_;
    std::vector<Row> rows_;
    // Kept across a reload, so an undo's outcome stays beside its marking.
    std::map<Uuid, QString> statuses_;
    bool undoing_ = false;
    // Last: an undo under way finishes before anything else goes.
    Worker worker_;
};

} // namespace brevant::gui
