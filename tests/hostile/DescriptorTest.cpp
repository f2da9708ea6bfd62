// A server that may open no more.
#include "Bed.h"
#include "Station.h"

namespace korvel::tests {
namespace {

class HostileDescriptors : public Bed {
protected:
    // Starts a server of its own under these limits of the shell. False when it does not come up.
    bool StartUnder(const std::string& limits) {
        const std::string line = limits + " && exec \"$0\" --port 0 --first-stream 1";
        m_limited = std::make_unique<Process>(
            "/bin/sh", std::vector<std::string>{"-c", line, KORVEL_AUDIOSERVER}, PathOf("limited.log"));
        const auto port = PortOf(m_limited->ReadLine().value_or(""));
        if (port != 0)
            m_driver = std::make_unique<LineClient>(port);
        return m_driver != nullptr;
    }
    bool Plays(std::uint32_t stream) {
        const std::string number = std::to_string(stream);
        m_driver->Ask("addmed " + number + " " + FileMedia(ToneFile("a.wav", {{500, 0.1}})));
        return EndOf(number) == "* addmed EOM=" + number;
    }
    // How the media of a stream, or of any, ends.
    std::string EndOf(const std::string& number = "") {
        std::string event = m_driver->NextEvent();
        while (!event.empty() && !event.starts_with("* addmed EOM=" + number) &&
               !event.starts_with("* addmed BAD=" + number))
            event = m_driver->NextEvent();
        return event;
    }

    std::unique_ptr<Process> m_limited;
    std::unique_ptr<LineClient> m_driver;
};

TEST_F(HostileDescriptors, StreamsAndMediaAreRefusedBeforeTheyRunOut) {
    ASSERT_TRUE(StartUnder("ulimit -n 320"));
    std::uint32_t last = 0;
    for (std::uint32_t stream = m_driver->AddStream(); stream != 0; stream = m_driver->AddStream())
        last = stream;
    ASSERT_GT(last, 6U);
    EXPECT_LT(last, 64U);
    EXPECT_EQ(m_driver->Ask("addann"), "NO addann");
    m_driver->Ask("addmed 1 " + FileMedia(ToneFile("b.wav", {{500, 0.1}})));
    EXPECT_EQ(m_driver->NextEvent(), "* SYS addann=0");
    EXPECT_EQ(m_driver->NextEvent(), "* addmed BAD=1 too many files are open");
    for (std::uint32_t stream = last; stream > last - 6; --stream)
        EXPECT_EQ(m_driver->Ask("remstr " + std::to_string(stream)), "OK remstr " + std::to_string(stream));
    EXPECT_TRUE(Plays(1));
}

// Nothing of a burst is open yet when the last of it is asked for.
TEST_F(HostileDescriptors, WhatIsAboutToOpenCounts) {
    constexpr unsigned kStreams = 10;
    constexpr unsigned kMedia = 60;
    const Station silent([](const Visit& visit) {
        while (visit.Dawdle()) {
        }
    });
    ASSERT_TRUE(StartUnder("ulimit -n 512"));
    for (unsigned count = 0; count < kStreams; ++count)
        ASSERT_NE(m_driver->AddStream(), 0U);
    std::string lines;
    for (unsigned count = 0; count < kMedia; ++count)
        lines += "1 addmed " + std::to_string(count % kStreams + 1) + " \"file:/stream-" + silent.Url() +
                 "/\"\r\n";
    m_driver->SendRaw(lines);
    EXPECT_TRUE(EndOf().ends_with(" too many files are open"));
    EXPECT_EQ(m_driver->Ask("reset"), "OK reset");
    const std::uint32_t stream = m_driver->AddStream();
    EXPECT_TRUE(WaitUntil([&] { return Plays(stream); })) << "what has ended counts no more";
}

TEST_F(HostileDescriptors, TheServerTakesWhatTheSystemGives) {
    ASSERT_TRUE(StartUnder("ulimit -S -n 256"));
    for (int count = 0; count < 64; ++count)
        ASSERT_NE(m_driver->AddStream(), 0U);
    EXPECT_TRUE(Plays(64));
}

} // namespace
} // namespace korvel::tests
