// How many sources may hang, and how many files may be open.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include "Wait.h"
#include "audioserver/Descriptors.h"
#include "audioserver/MediaSource.h"

namespace korvel::audioserver {
namespace {

using std::chrono::milliseconds;

class SourceLimits : public testing::Test {
protected:
    void SetUp() override { gst_init(nullptr, nullptr); }

    // Makes a source and drops it; why it could not be made, "" when it could.
    template <class Open>
    std::string Try(Open open, const char* what) {
        std::string error;
        open(what, MediaSource::Owner{m_loop.get_executor(), milliseconds(15000), [](const MediaEvent&) {}},
             error);
        Run();
        return error;
    }
    // Until all sources have ended or are abandoned.
    void Run() {
        m_loop.restart();
        m_loop.run();
    }
    // One that does not end in time, or is given all the time that it takes.
    void LetOneHang(SourceThread::Kind kind, milliseconds patience = milliseconds(1)) {
        SourceThread thread(m_loop.get_executor(), patience, kind);
        thread.Do([released = m_released] { released.wait(); });
    }

    boost::asio::io_context m_loop;
    std::promise<void> m_release;
    std::shared_future<void> m_released = m_release.get_future().share();
};

TEST_F(SourceLimits, SoManyMayBeUnderWayToTheirEnd) {
    constexpr auto kKind = SourceThread::Kind::kFile;
    for (unsigned count = 0; count < SourceThread::kMaxEnding; ++count) {
        EXPECT_TRUE(SourceThread::HasRoom(kKind)) << count;
        LetOneHang(kKind, std::chrono::hours(1));
    }
    EXPECT_FALSE(SourceThread::HasRoom(kKind));
    EXPECT_TRUE(SourceThread::HasRoom(SourceThread::Kind::kWeb));
    m_release.set_value();
    Run();
    EXPECT_TRUE(SourceThread::HasRoom(kKind));
}

TEST_F(SourceLimits, NothingIsOpenedWhileTooManyOfItsKindHang) {
    struct Way {
        SourceThread::Kind kind;
        std::function<std::string()> open;
    };
    const std::vector<Way> ways = {
        {SourceThread::Kind::kFile, [this] { return Try(MediaSource::OpenFile, "/nowhere.wav"); }},
        {SourceThread::Kind::kWeb, [this] { return Try(MediaSource::OpenWeb, "http://127.0.0.1:1/"); }},
        {SourceThread::Kind::kInput, [this] { return Try(MediaSource::OpenInput, "audiotestsrc"); }}};
    for (auto way = ways.begin(); way != ways.end(); ++way) {
        for (unsigned count = 1; count < SourceThread::kMaxAbandoned; ++count)
            LetOneHang(way->kind);
        Run();
        EXPECT_EQ(way->open(), "");
        LetOneHang(way->kind);
        Run();
        EXPECT_EQ(way->open(), "too many sources hang");
        for (auto other = way + 1; other != ways.end(); ++other)
            EXPECT_EQ(other->open(), "");
    }
    m_release.set_value();
    for (const Way& way : ways) {
        EXPECT_TRUE(tests::WaitUntil([&] { return SourceThread::HasRoom(way.kind); }));
        EXPECT_EQ(way.open(), "");
    }
}

// Leaves the process its own limits.
class DescriptorLimits : public testing::Test {
protected:
    DescriptorLimits() { ::getrlimit(RLIMIT_NOFILE, &m_before); }
    ~DescriptorLimits() override {
        ::setrlimit(RLIMIT_NOFILE, &m_before);
        for (const int descriptor : m_open)
            ::close(descriptor);
    }

    static void SetSoft(rlim_t most) {
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = most;
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    bool Open(std::size_t count) {
        for (; count > 0; --count) {
            const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
            if (descriptor < 0)
                return false;
            m_open.push_back(descriptor);
        }
        return true;
    }

    rlimit m_before{};
    std::vector<int> m_open;
};

TEST_F(DescriptorLimits, AreRaisedToWhatTheSystemGivesOrWhatIsEnough) {
    SetSoft(std::min<rlim_t>(m_before.rlim_max, 256));
    RaiseDescriptorLimit();
    rlimit raised{};
    ::getrlimit(RLIMIT_NOFILE, &raised);
    EXPECT_EQ(raised.rlim_cur, std::min<rlim_t>(m_before.rlim_max, 131072));
    EXPECT_EQ(raised.rlim_max, m_before.rlim_max);
}

TEST_F(DescriptorLimits, ThatAreHigherAlreadyStay) {
    EXPECT_EQ(RaisedLimit({1024, 4096}).rlim_cur, 4096U);
    EXPECT_EQ(RaisedLimit({1024, RLIM_INFINITY}).rlim_cur, 131072U);
    EXPECT_EQ(RaisedLimit({200000, RLIM_INFINITY}).rlim_cur, 200000U);
}

TEST_F(DescriptorLimits, TheReserveStaysFree) {
    SetSoft(std::min<rlim_t>(m_before.rlim_max, 256));
    ASSERT_TRUE(HasDescriptors(1));
    while (HasDescriptors(1))
        ASSERT_TRUE(Open(1));
    EXPECT_TRUE(HasDescriptors(0));
    EXPECT_TRUE(Open(kDescriptorReserve));
    EXPECT_FALSE(HasDescriptors(0));
}

} // namespace
} // namespace korvel::audioserver
