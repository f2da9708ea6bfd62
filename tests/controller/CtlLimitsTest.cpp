// What korvelctl bears of a controller, and how much it says.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "TestHouse.h"
#include "ctl/Actions.h"
// The order matters: Asio.h comes first, through TestHouse.h.
#include <boost/asio/write.hpp>

namespace korvel::ctl {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;
using controller::ScratchFolder;
using controller::ScriptedServer;
using controller::TestHouse;
using controller::TestLoop;

// A controller that answers its first request with these bytes.
class Answering {
public:
    Answering(TestLoop& loop, std::string bytes)
        : m_bytes(std::move(bytes)),
          m_acceptor(loop.loop, {asio::ip::address_v4::loopback(), 0}),
          m_socket(loop.loop) {
        m_acceptor.async_accept(m_socket, [this](error_code) {
            m_socket.async_read_some(asio::buffer(m_request), [this](error_code, std::size_t) {
                asio::async_write(m_socket, asio::buffer(m_bytes), [](error_code, std::size_t) {});
            });
        });
    }
    std::string Url() const {
        return "http://127.0.0.1:" + std::to_string(m_acceptor.local_endpoint().port());
    }

private:
    const std::string m_bytes;
    asio::ip::tcp::acceptor m_acceptor;
    asio::ip::tcp::socket m_socket;
    std::array<char, 4096> m_request{};
};

// The answer, or the failure.
std::string Ask(TestLoop& loop, const std::string& url, std::chrono::milliseconds patience) {
    std::string result;
    EXPECT_TRUE(loop.RunBeside([&] {
        try {
            result = Client(url, patience).Get("/api/rooms").dump();
        } catch (const Failure& failure) {
            result = failure.what();
        }
    }));
    return result;
}

TEST(CtlLimits, AnAnswerHasSixtyFourMebibytes) {
    constexpr std::size_t kMost = 64u << 20;
    const auto head = [](std::size_t bytes) {
        return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bytes) + "\r\n\r\n";
    };
    TestLoop loop;
    const Answering longest(loop, head(kMost) + std::string(kMost - 2, ' ') + "[]");
    EXPECT_EQ(Ask(loop, longest.Url(), Client::kPatience), "[]");
    const Answering longer(loop, head(kMost + 1));
    const std::string failure = Ask(loop, longer.Url(), Client::kPatience);
    EXPECT_TRUE(failure.starts_with("no answer from the controller at ")) << failure;
}

TEST(CtlLimits, AControllerThatIsSilentIsOneClearLine) {
    TestLoop loop;
    const Answering silent(loop, "");
    const std::string failure = Ask(loop, silent.Url(), std::chrono::milliseconds(50));
    EXPECT_TRUE(failure.starts_with("no answer from the controller at ")) << failure;
}

TEST(CtlLimits, TenSongsAreSuggestedAtMost) {
    const ScratchFolder state;
    TestLoop loop;
    ScriptedServer server(loop);
    TestHouse house(loop, controller::TestPlugin("WORKING"), {server.GetPort()}, state);
    for (int number = 0; number < 12; ++number) {
        media::SongRecord song;
        song.title = "Waltz " + std::to_string(number);
        song.location = "/music/" + song.title;
        house.GetCore().GetLibrary().Database().PutSong(song);
    }
    std::string text;
    EXPECT_TRUE(loop.RunBeside([&] {
        Client client("http://127.0.0.1:" + std::to_string(house.GetPort()));
        std::ostringstream out;
        try {
            Actions(client, out).Play("1", {"waltz"}, false);
        } catch (const Failure& failure) {
            text = failure.what();
        }
    }));
    EXPECT_EQ(std::ranges::count(text, '\n'), 10) << text;
}

} // namespace
} // namespace korvel::ctl
