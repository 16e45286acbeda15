#include "engine/platform/DataFolder.hpp"

#include "engine/platform/ProcessInfo.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace brevant::platform {
namespace {

// Sets or clears an environment variable for the life of the object.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value)
        : name_(name) {
        if (const char* previous = std::getenv(name)) {
            previous_ = previous;
        }
        if (value != nullptr) {
            ::setenv(name, value, 1);
        } else {
            ::unsetenv(name);
        }
    }

    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ScopedVariable(ScopedVariable&&) = delete;
    ScopedVariable& operator=(ScopedVariable&&) = delete;

    ~ScopedVariable() {
        if (previous_) {
            ::setenv(name_, previous_->c_str(), 1);
        } else {
            ::unsetenv(name_);
        }
    }

private:
    const char* name_;
    std::optional<std::string> previous_;
};

DataFolder::Environment homeOnly() {
    return {std::nullopt, std::nullopt, "/home/anna", "/work"};
}

TEST(DataFolder, FollowsTheOverrideThenXdgThenTheHomeFolder) {
    auto environment = homeOnly();
    EXPECT_EQ(DataFolder::locate(environment).path, "/home/anna/.local/share/Brevant");

    environment.xdgDataHome = "/data/anna/";
    EXPECT_EQ(DataFolder::locate(environment).path, "/data/anna/Brevant");
    // The XDG rules ignore a relative or empty value.
    environment.xdgDataHome = "data";
    EXPECT_EQ(DataFolder::locate(environment).path, "/home/anna/.local/share/Brevant");
    environment.xdgDataHome = "";
    EXPECT_EQ(DataFolder::locate(environment).path, "/home/anna/.local/share/Brevant");

    environment.xdgDataHome = "/data/anna";
    environment.dataDir = "/tmp/brevant-test/";
    EXPECT_EQ(DataFolder::locate(environment).path, "/tmp/brevant-test");
    environment.dataDir = "state";
    EXPECT_EQ(DataFolder::locate(environment).path, "/work/state");
    environment.dataDir = "";
    EXPECT_EQ(DataFolder::locate(environment).path, "/data/anna/Brevant");
}

TEST(DataFolder, NamesTheFilesInside) {
    DataFolder folder{"/home/anna/.local/share/Brevant"};
    EXPECT_EQ(folder.featureCache(), "/home/anna/.local/share/Brevant/features.plist");
    EXPECT_EQ(folder.lockStore(), "/home/anna/.local/share/Brevant/keep-locks.json");
    EXPECT_EQ(folder.cleanups(), "/home/anna/.local/share/Brevant/Cleanups");
    EXPECT_EQ(folder.markings(), "/home/anna/.local/share/Brevant/Markings");
    EXPECT_EQ(DataFolder{"/"}.lockStore(), "/keep-locks.json");
}

TEST(DataFolder, ReadsTheProcessEnvironmentEachTime) {
    {
        ScopedVariable data("BREVANT_DATA_DIR", nullptr);
        ScopedVariable xdg("XDG_DATA_HOME", nullptr);
        EXPECT_EQ(DataFolder::current().path, homeFolder() + "/.local/share/Brevant");
    }
    {
        ScopedVariable data("BREVANT_DATA_DIR", nullptr);
        ScopedVariable xdg("XDG_DATA_HOME", "/var/tmp/xdg");
        EXPECT_EQ(DataFolder::current().lockStore(), "/var/tmp/xdg/Brevant/keep-locks.json");
    }
    ScopedVariable data("BREVANT_DATA_DIR", "/var/tmp/brevant-data");
    EXPECT_EQ(DataFolder::current().featureCache(), "/var/tmp/brevant-data/features.plist");
    EXPECT_EQ(DataFolder::processEnvironment().dataDir, "/var/tmp/brevant-data");
}

} // namespace
} // namespace brevant::platform
