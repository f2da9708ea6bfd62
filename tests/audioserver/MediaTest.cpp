// Where media come from.
#include <algorithm>
#include <set>

#include "Bed.h"
#include "HeldPort.h"
#include "WebServer.h"

namespace korvel::tests {
namespace {

using Media = Bed;

// Events up to the end or failure of the media.
std::vector<std::string> EventsToEnd(LineClient& driver) {
    std::vector<std::string> events;
    do {
        events.push_back(driver.NextEvent());
    } while (!events.back().empty() && !events.back().starts_with("* addmed"));
    return events;
}

bool Contains(const std::vector<std::string>& events, const std::string& event) {
    return std::find(events.begin(), events.end(), event) != events.end();
}

TEST_F(Media, PathsAreTakenAsTheyAre) {
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    for (const std::string name : {"two words.wav", "say \"no\".wav", "100%20#?&.wav",
                                   "\xc3\xa4\xe2\x99\xaa.wav", "raw\xe4.wav", "a'b$c`d.wav"}) {
        driver->Ask("addmed " + stream + " " + FileMedia(ToneFile(name, {{500, 0.05}})));
        EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream) << name;
    }
}

TEST_F(Media, OtherRatesAndOneChannelAreConverted) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    driver->Ask("addcli " + stream + " " + room->Client());
    WriteFile(PathOf("a.wav"), WavOf({{500, 0.5}}, 44100, 1));
    driver->Ask("addmed " + stream + " " + FileMedia(PathOf("a.wav")));
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_NEAR(room->Heard().Seconds(500), 0.5, 0.1);
}

TEST_F(Media, AWebFileCanBePaused) {
    const WebServer web(WavOf({{500, 0.4}}), true);
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    driver->Ask("addmed " + stream + " \"file:/stream-" + web.Url() + "a.wav\"");
    const auto events = EventsToEnd(*driver);
    EXPECT_EQ(events.front(), "* SYS STREAM=" + stream + " streamStatus:connecting");
    EXPECT_TRUE(Contains(events, "* SYS STREAM=" + stream + " streamStatus:playing"));
    EXPECT_FALSE(Contains(events, "* SYS STREAM=" + stream + " streamCaps:NO-PAUSE"));
    EXPECT_EQ(events.back(), "* addmed EOM=" + stream);
}

TEST_F(Media, ABroadcastCannotBePausedAndIsConnectedToAgain) {
    const WebServer web(WavOf({{500, 0.25}}), false);
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    const std::string report = "* SYS STREAM=" + stream + " ";
    driver->Ask("addcli " + stream + " " + room->Client());
    driver->Ask("addmed " + stream + " \"file:/stream-" + web.Url() + "live\"");
    EXPECT_EQ(driver->NextEvent(), report + "streamStatus:connecting");
    // Its length, or the lack of it, is found beside the playing.
    std::set<std::string> next = {driver->NextEvent(), driver->NextEvent()};
    EXPECT_EQ(next, (std::set<std::string>{report + "streamCaps:NO-PAUSE", report + "streamStatus:playing"}));
    EXPECT_EQ(driver->NextEvent(), report + "streamStatus:reconnecting in 1 s");
    EXPECT_TRUE(WaitUntil([&] { return room->Heard().Seconds(500) > 0.15; }));
    EXPECT_EQ(driver->NextEvent(), report + "streamStatus:connecting");
    EXPECT_EQ(driver->NextEvent(), report + "streamStatus:playing");
}

TEST_F(Media, AWebServerThatIsNotThereIsBad) {
    const HeldPort port;
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    driver->Ask("addmed " + stream + " \"file:/stream-http://127.0.0.1:" + std::to_string(port.Number()) +
                "/live\"");
    EXPECT_TRUE(EventsToEnd(*driver).back().starts_with("* addmed BAD=" + stream + " "));
}

TEST_F(Media, AConfiguredInputPlaysUntilItIsReplaced) {
    m_serverOptions = {"--input", "line in=audiotestsrc is-live=true freq=1000", "--input",
                       "broken=nosuchelement"};
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    driver->Ask("addcli " + stream + " " + room->Client());
    EXPECT_EQ(driver->Ask("addmed " + stream + " line in"), "OK addmed " + stream);
    EXPECT_EQ(driver->NextEvent(), "* SYS STREAM=" + stream + " streamCaps:NO-PAUSE");
    EXPECT_TRUE(room->Hears(1000, 0.3));
    driver->Ask("addmed " + stream + " broken");
    EXPECT_TRUE(driver->NextEvent().starts_with("* addmed BAD=" + stream + " "));
}

} // namespace
} // namespace korvel::tests
