// brevant-desktop: the window. Started from `brevant` with no arguments when
// a display is there, from the desktop's application menu, or directly.
#include "app/cli/CommandLineReport.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/Skins.hpp"
#include "engine/platform/DataFolder.hpp"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <cstdio>
#include <string>
#include <vector>

namespace {

std::string downloadFolder() {
    QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    return QFile::encodeName(downloads).toStdString();
}

bool asks(const std::vector<std::string>& arguments, const char* option) {
    return arguments.size() > 1 && arguments[1] == option;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv, argv + argc);
    // The report runs without any window, as from `brevant`.
    if (auto status = brevant::cli::CommandLineReport::runIfAsked(arguments)) {
        return *status;
    }
    if (asks(arguments, "--version")) {
        std::printf("brevant-desktop %s\n", BREVANT_VERSION);
        return 0;
    }
    if (asks(arguments, "--help")) {
        std::printf("usage: brevant-desktop [FOLDER...]\n"
                    "Opens the Brevant window; folders given are added to the folders to "
                    "scan.\n"
                    "       brevant-desktop --similar|--series [PRESET] FOLDER...\n"
                    "Prints a report without opening a window, as `brevant` does.\n");
        return 0;
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Brevant"));
    QApplication::setOrganizationName(QStringLiteral("Brevant"));
    QApplication::setApplicationVersion(QStringLiteral(BREVANT_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(BREVANT_APP_ID));

    brevant::gui::Skins skins;
    QSettings store;
    brevant::gui::PhotoCleanupModel model(store, brevant::platform::DataFolder::current().path,
                                          downloadFolder());
    skins.apply(QString::fromStdString(model.settings().skin));
    for (const QString& argument : QApplication::arguments().mid(1)) {
        if (QFileInfo(argument).isDir()) {
            model.addSource(QFile::encodeName(QDir(argument).absolutePath()).toStdString());
        }
    }

    brevant::gui::MainWindow window(model, skins, store);
    window.show();
    // Cleanups a crash left unfinished are worked out now, and their reports
    // shown, before anything else can run.
    window.recoverInterruptedCleanups();
    return QApplication::exec();
}
