// What the server waits for and does not come.
#include <cstdlib>
#include <filesystem>

#include "StationBed.h"

namespace korvel::tests {
namespace {

// Nothing of it is cut short by a busy machine.
constexpr const char* kPatient = "60000";

class HostileHindrance : public StationBed {
protected:
    void SetUp() override {
        m_serverProgram = KORVEL_HINDERED_AUDIOSERVER;
        ::setenv("KORVEL_HINDRANCES", PathOf("").c_str(), 1);
    }
    void TearDown() override { ::unsetenv("KORVEL_HINDRANCES"); }

    // What: see HinderedServer.cpp.
    void Hinder(const std::string& what) { WriteFile(PathOf(what), ""); }
    void Clear(const std::string& what) { std::filesystem::remove(PathOf(what)); }
    std::string LongFile() { return FileMedia(ToneFile("long.wav", {{500, 10}})); }
    std::size_t TimesLogged(const std::string& text) {
        const std::string log = Server().Errors();
        std::size_t times = 0;
        for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1))
            ++times;
        return times;
    }

    const Station m_radio{[](const Visit& visit) {
        visit.Send(Head("audio/x-wav", kRadio) + WavOf({{500, 0.25}}));
    }};
};

TEST_F(HostileHindrance, AnErrorOfTheProgramEndsNoMusic) {
    m_serverOptions = {"--first-retry", "3000"};
    Listen();
    Play(m_radio.Url() + "/");
    EventsUntil(Status("reconnecting in 3 s"));
    Hinder("internal");
    EXPECT_TRUE(IsLogged("internal error: an error of this program"));
    Clear("internal");
    EXPECT_TRUE(StillPlays());
}

TEST_F(HostileHindrance, AConnectionWhoseRequestMeetsAnErrorOfTheProgramEnds) {
    Listen();
    const auto other = Connect();
    EXPECT_EQ(other->Ask("reset"), "OK reset");
    Hinder("internal");
    m_driver->SendRaw("1 addmed " + m_stream + " " + LongFile() + "\r\n");
    EXPECT_TRUE(m_driver->IsClosedByServer());
    Clear("internal");
    EXPECT_EQ(other->Ask("reset"), "OK reset");
    Listen();
    EXPECT_TRUE(StillPlays());
}

} // namespace
} // namespace korvel::tests
