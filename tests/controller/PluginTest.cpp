#include <gtest/gtest.h>

#include "TestHouse.h"
#include "driver/Plugin.h"

namespace korvel::controller {
namespace {

std::string LoadError(const std::string& path) {
    Instances instances;
    try {
        const Plugin plugin(path, instances);
    } catch (const PluginError& error) {
        return error.what();
    }
    return "no error";
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Plugin, AMissingFileIsSaidToBeMissing) {
    EXPECT_EQ(LoadError("/nowhere/driver.so"), "the plug-in /nowhere/driver.so is not there");
}

TEST(Plugin, AFileThatIsNoLibrary) {
    const ScratchFolder folder;
    const std::string text = LoadError(folder.Write("driver.so", "not a library"));
    EXPECT_TRUE(Contains(text, "is not a library that can be loaded")) << text;
}

TEST(Plugin, ALibraryWithoutAnEntryPoint) {
    const std::string text = LoadError(TestPlugin("NO_ENTRY_POINT"));
    EXPECT_TRUE(Contains(text, "has no entry point GetCreationFunc")) << text;
}

TEST(Plugin, AnEntryPointWithoutACreationFunction) {
    const std::string text = LoadError(TestPlugin("NO_CREATION_FUNCTION"));
    EXPECT_TRUE(Contains(text, "offers no creation function")) << text;
}

TEST(Plugin, ACreationFunctionThatMakesNoDriver) {
    const std::string text = LoadError(TestPlugin("NO_DRIVER"));
    EXPECT_TRUE(Contains(text, "made no driver")) << text;
}

TEST(Plugin, ACreationFunctionThatThrows) {
    const std::string text = LoadError(TestPlugin("CREATION_THROWS"));
    EXPECT_TRUE(Contains(text, "failed to make its driver: out of luck")) << text;
}

TEST(Plugin, ACoreWithoutServicesIsNamedByTheDriver) {
    const std::string text = LoadError(TestPlugin("WORKING"));
    EXPECT_TRUE(Contains(text, "failed to make its driver: the core offers no service")) << text;
}

TEST(Plugin, ADriverThatCannotRun) {
    TestLoop loop;
    const ScratchFolder state;
    try {
        TestHouse house(loop, TestPlugin("INITIALIZE_FAILS"), {}, state);
        FAIL();
    } catch (const PluginError& error) {
        EXPECT_TRUE(Contains(error.what(), "its initialisation returned -2")) << error.what();
    }
}

TEST(Plugin, LoadsRunsAndUnloadsTwice) {
    const ScratchFolder state;
    for (int i = 0; i < 2; ++i) {
        TestLoop loop;
        TestHouse house(loop, TestPlugin("WORKING"), {}, state);
        house.Stop();
    }
}

} // namespace
} // namespace korvel::controller
