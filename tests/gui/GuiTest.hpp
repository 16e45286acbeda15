#pragma once

#include <QObject>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace brevant::gui::testing {

using TestFactory = std::function<std::unique_ptr<QObject>()>;

// The test classes of the program by name; each file registers its own.
std::map<std::string, TestFactory>& testClasses();

struct TestRegistration {
    TestRegistration(const char* name, TestFactory factory);
};

} // namespace brevant::gui::testing

#define BREVANT_GUI_TEST(Class)                                                                    \
    static const ::brevant::gui::testing::TestRegistration registration##Class(                    \
        #Class, [] { return std::unique_ptr<QObject>(new Class); })
