#include <gtest/gtest.h>

#include <filesystem>

#include "TestHouse.h"
#include "store/KeptAside.h"
#include "store/StateFile.h"

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;

class StateFileTest : public testing::Test {
protected:
    StateFile MakeFile() { return StateFile(folder.File("state.xml"), storage); }
    std::vector<std::string> KeptAside() const { return folder.Names("", "state.xml.damaged-"); }

    ScratchFolder folder;
    EventBus events;
    common::Log log{common::LogLevel::Error};
    StorageStatus storage{events, log};
};

TEST_F(StateFileTest, WithoutAFileThereIsNothing) {
    EXPECT_FALSE(MakeFile().Load());
    EXPECT_TRUE(storage.ToJson()["keptAside"].empty());
}

TEST_F(StateFileTest, GivesBackWhatWasSaved) {
    const auto element = KVXML::CreateXmlNode("settings");
    element->SetAttribute("a", "1 < 2");
    MakeFile().Save(element->ToText());
    const auto loaded = MakeFile().Load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->ToText(), element->ToText());
    EXPECT_FALSE(fs::exists(folder.File("state.xml.tmp")));
}

TEST_F(StateFileTest, ACorruptFileIsSetAside) {
    folder.Write("state.xml", "<settings><half");
    EXPECT_FALSE(MakeFile().Load());
    EXPECT_FALSE(fs::exists(folder.File("state.xml")));
    ASSERT_EQ(KeptAside().size(), 1u);
    EXPECT_EQ(ReadFile(folder.File(KeptAside()[0])), "<settings><half");
    const nlohmann::json told = storage.ToJson()["keptAside"];
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0]["file"], folder.File("state.xml"));
    EXPECT_EQ(told[0]["as"], folder.File(KeptAside()[0]));
    EXPECT_EQ(told[0]["reason"], "not a document");
}

TEST_F(StateFileTest, AnEmptyOrHugeFileOrAFolderIsSetAside) {
    folder.Write("state.xml", "");
    EXPECT_FALSE(MakeFile().Load());
    folder.Write("state.xml", std::string(StateFile::kMaxBytes + 1, ' '));
    EXPECT_FALSE(MakeFile().Load());
    fs::create_directories(folder.File("state.xml/folder"));
    EXPECT_FALSE(MakeFile().Load());
    EXPECT_EQ(KeptAside().size(), 3u);
}

TEST_F(StateFileTest, OfThoseSetAsideTheNewestAreKept) {
    for (int i = 0; i < 5; ++i) {
        folder.Write("state.xml", "damage " + std::to_string(i));
        MakeFile().Load();
    }
    ASSERT_EQ(KeptAside().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(ReadFile(folder.File(KeptAside()[i])), "damage " + std::to_string(i + 2));
}

TEST_F(StateFileTest, WhatStandsBesideAFileIsKeptWithIt) {
    constexpr const char* kCompanions[] = {"-wal"};
    const std::string path = folder.File("state.xml");
    folder.Write("state.xml.damaged-notes", "somebody's own");
    std::string last;
    for (std::size_t i = 0; i < kMaxKeptAside + 2; ++i) {
        folder.Write("state.xml", "a file");
        folder.Write("state.xml-wal", "beside it");
        last = KeepAside(path, "damaged", kCompanions);
        EXPECT_EQ(last, path + ".damaged-" + LastKeptAside(path, "damaged"));
    }
    EXPECT_TRUE(fs::exists(last + "-wal"));
    EXPECT_EQ(KeptAside().size(), 2 * kMaxKeptAside + 1);
}

TEST_F(StateFileTest, WhatCannotBeSavedLeavesTheFileAsItWas) {
    StateFile file = MakeFile();
    file.Save("<settings>1</settings>");
    // A disk that is full.
    fs::create_symlink("/dev/full", folder.File("state.xml.tmp"));
    try {
        file.Save("<settings>2</settings>");
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(std::string(error.what()), "write: No space left on device");
        EXPECT_EQ(error.code(), std::errc::no_space_on_device);
    }
    EXPECT_EQ(ReadFile(folder.File("state.xml")), "<settings>1</settings>");
    fs::remove(folder.File("state.xml.tmp"));
    file.Save("<settings>2</settings>");
    EXPECT_EQ(ReadFile(folder.File("state.xml")), "<settings>2</settings>");

    StateFile gone(folder.File("gone/state.xml"), storage);
    EXPECT_THROW(gone.Save("<settings></settings>"), std::system_error);
    EXPECT_FALSE(fs::exists(folder.File("gone")));
}

} // namespace
} // namespace korvel::controller
