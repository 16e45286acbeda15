// brevant_gui_tests [TestClass] [Qt Test options...]: runs one test class,
// or every class when none is named.
#include "tests/gui/GuiTest.hpp"

#include <QApplication>
#include <QStringList>
#include <QTest>

#include <cstdio>

namespace brevant::gui::testing {

std::map<std::string, TestFactory>& testClasses() {
    static std::map<std::string, TestFactory> classes;
    return classes;
}

TestRegistration::TestRegistration(const char* name, TestFactory factory) {
    testClasses().emplace(name, std::move(factory));
}

} // namespace brevant::gui::testing

int main(int argc, char** argv) {
    using brevant::gui::testing::testClasses;
    QApplication application(argc, argv);
    // Settings written by a test go to its own files, never the user's.
    QApplication::setOrganizationName(QStringLiteral("BrevantTests"));
    QStringList arguments = QApplication::arguments();
    QString chosen;
    if (arguments.size() > 1 && !arguments[1].startsWith(QLatin1Char('-'))) {
        chosen = arguments.takeAt(1);
    }
    int failures = 0;
    bool found = false;
    for (const auto& [name, make] : testClasses()) {
        if (!chosen.isEmpty() && chosen != QString::fromStdString(name)) {
            continue;
        }
        found = true;
        auto test = make();
        failures += QTest::qExec(test.get(), arguments);
    }
    if (!found) {
        std::fprintf(stderr, "no test class %s\n", qPrintable(chosen));
        return 2;
    }
    return failures == 0 ? 0 : 1;
}
