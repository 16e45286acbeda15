#include "tests/fixtures/TempTree.hpp"

#include "app/cli/Commands.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant::cli {
namespace {

using ::testing::ContainsRegex;

const std::string kPage = std::string(BREVANT_SOURCE_DIR) + "/packaging/brevant.1";

TEST(ManualPage, HasASectionForEveryCommand) {
    std::string page = testing::readFile(kPage);
    ASSERT_FALSE(page.empty());
    for (const auto& command : makeCommands()) {
        std::string name(command->name());
        EXPECT_THAT(page, ContainsRegex("\n\\.SS ([a-z]+, )*" + name + "[,\n]")) << name;
        EXPECT_THAT(page, ContainsRegex("\n\\.B brevant " + name + "\n")) << name;
    }
}

TEST(ManualPage, FormatsWithoutWarnings) {
    if (testing::runCommand("command -v groff >/dev/null") != 0) {
        GTEST_SKIP() << "groff is not installed";
    }
    testing::TempTree tree;
    std::string warnings = tree.path("warnings.txt");
    EXPECT_EQ(testing::runCommand("groff -man -ww -z '" + kPage + "' 2>'" + warnings + "'"), 0);
    EXPECT_EQ(testing::readFile(warnings), "");
}

} // namespace
} // namespace brevant::cli
