// A server that may open no more.
#include "Bed.h"

namespace korvel::tests {
namespace {

class HostileDescriptors : public Bed {
protected:
    // Starts a server of its own under these limits of the shell. False when it does not come up.
    bool StartUnder(const std::string& limits) {
        const std::string line = limits + " && exec \"$0\" --port 0";
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
        return m_driver->NextEvent() == "* addmed EOM=" + number;
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

TEST_F(HostileDescriptors, TheServerTakesWhatTheSystemGives) {
    ASSERT_TRUE(StartUnder("ulimit -S -n 256"));
    for (int count = 0; count < 64; ++count)
        ASSERT_NE(m_driver->AddStream(), 0U);
    EXPECT_TRUE(Plays(64));
}

} // namespace
} // namespace korvel::tests
