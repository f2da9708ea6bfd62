// What all programs do alike.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "Process.h"

namespace korvel::tests {
namespace {

class Programs : public testing::TestWithParam<const char*> {
protected:
    ~Programs() override { std::filesystem::remove(m_errors); }

    std::string Name() const { return std::filesystem::path(GetParam()).filename(); }
    Process Start(const std::vector<std::string>& options) const { return {GetParam(), options, m_errors}; }

private:
    // Of each test its own: they run beside each other.
    static std::string FileName() {
        std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        std::ranges::replace(name, '/', '-');
        return testing::TempDir() + "programs-" + name + "-errors";
    }

    const std::string m_errors = FileName();
};

TEST_P(Programs, SayWhichTheyAre) {
    Process program = Start({"--version"});
    EXPECT_TRUE(program.ReadLine().value_or("").starts_with(Name() + " "));
    EXPECT_EQ(program.WaitForExit(), 0);
    EXPECT_EQ(program.Errors(), "");
}

TEST_P(Programs, HaveHelp) {
    Process program = Start({"--help"});
    EXPECT_TRUE(program.ReadLine());
    EXPECT_EQ(program.WaitForExit(), 0);
    EXPECT_EQ(program.Errors(), "");
}

TEST_P(Programs, RefuseOptionsThatTheyDoNotHaveInOneLine) {
    Process program = Start({"--no-such-option"});
    EXPECT_EQ(program.WaitForExit(), 2);
    const std::string errors = program.Errors();
    EXPECT_TRUE(errors.starts_with(Name() + ": ")) << errors;
    EXPECT_EQ(std::ranges::count(errors, '\n'), 1) << errors;
}

std::string NameOf(const testing::TestParamInfo<const char*>& info) {
    std::string name = std::filesystem::path(info.param).filename();
    std::erase(name, '-');
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, Programs,
                         testing::Values(KORVEL_AUDIOSERVER, KORVEL_CATALOG, KORVEL_CONTROLLER, KORVEL_CTL,
                                         KORVEL_MEDIAREADER, KORVEL_REPLAY, KORVEL_ROOMPLAYER),
                         NameOf);

// A first difference often causes all that follow it.
TEST(ReplayProgram, ShowsTheFirstFiveDifferencesAndCountsTheOthers) {
    const std::string transcript = testing::TempDir() + "differences.txt";
    std::ofstream file(transcript);
    for (int count = 0; count < 7; ++count)
        file << "name 7 Kitchen\n< nothing of the kind\n";
    file.close();
    Process program(KORVEL_REPLAY, {"--check", transcript}, testing::TempDir() + "differences-errors");
    int shown = 0;
    std::string last;
    for (auto line = program.ReadLine(); line; line = program.ReadLine()) {
        last = *line;
        shown += line->find("missing: ") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(program.WaitForExit(), 1);
    EXPECT_EQ(shown, 5);
    EXPECT_EQ(last, transcript + ": 2 more inputs differ");
}

} // namespace
} // namespace korvel::tests
