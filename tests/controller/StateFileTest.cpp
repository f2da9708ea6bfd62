#include <gtest/gtest.h>

#include <filesystem>

#include "TestHouse.h"
#include "persistence/StateFile.h"

namespace korvel::controller {
namespace {

class StateFileTest : public testing::Test {
protected:
    StateFile MakeFile() const { return StateFile(folder.File("state.xml"), log); }

    ScratchFolder folder;
    common::Log log{common::LogLevel::Error};
};

TEST_F(StateFileTest, WithoutAFileThereIsNothing) {
    EXPECT_FALSE(MakeFile().Load());
}

TEST_F(StateFileTest, GivesBackWhatWasSaved) {
    const auto element = KVXML::CreateXmlNode("settings");
    element->SetAttribute("a", "1 < 2");
    MakeFile().Save(*element);
    const auto loaded = MakeFile().Load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->ToText(), element->ToText());
    EXPECT_FALSE(std::filesystem::exists(folder.File("state.xml.tmp")));
}

TEST_F(StateFileTest, ACorruptFileIsSetAside) {
    folder.Write("state.xml", "<settings><half");
    EXPECT_FALSE(MakeFile().Load());
    EXPECT_FALSE(std::filesystem::exists(folder.File("state.xml")));
    EXPECT_EQ(ReadFile(folder.File("state.xml.corrupt")), "<settings><half");
}

TEST_F(StateFileTest, AnEmptyOrHugeFileIsSetAside) {
    folder.Write("state.xml", "");
    EXPECT_FALSE(MakeFile().Load());
    folder.Write("state.xml", std::string(StateFile::kMaxBytes + 1, ' '));
    EXPECT_FALSE(MakeFile().Load());
    EXPECT_TRUE(std::filesystem::exists(folder.File("state.xml.corrupt")));
}

TEST_F(StateFileTest, AFolderThatIsGoneIsNotFatal) {
    common::Log quiet(common::LogLevel::Error, std::fopen("/dev/null", "w"));
    StateFile file(folder.File("gone/state.xml"), quiet);
    file.Save(*KVXML::CreateXmlNode("settings"));
    EXPECT_FALSE(std::filesystem::exists(folder.File("gone")));
}

} // namespace
} // namespace korvel::controller
