// How long a link waits for its connection.
#include <gtest/gtest.h>

#include "Loop.h"
#include "common/OutgoingLink.h"

namespace korvel::common {
namespace {

using namespace std::chrono_literals;

class Listener final : public OutgoingLink::Listener {
public:
    void OnConnected(OutgoingLink&, const std::string&) override { heard = "connected"; }
    void OnLine(OutgoingLink&, const Line&) override { heard = "a line"; }
    void OnLost(OutgoingLink&, bool, const std::string& why) override { heard = why; }

    std::string heard;
};

TEST(ConnectTime, AServerThatDoesNotTakeTheConnectionIsGivenUp) {
    Loop loop;
    tcp::acceptor deaf(loop.loop);
    deaf.open(tcp::v4());
    deaf.bind({asio::ip::address_v4::loopback(), 0});
    deaf.listen(0);
    // The one that waits to be accepted leaves no room: to the next one the system says nothing.
    tcp::socket first(loop.loop);
    first.connect(deaf.local_endpoint());
    const Log log(LogLevel::Error);
    Listener listener;
    const auto link = std::make_shared<OutgoingLink>(
        loop.loop.get_executor(),
        OutgoingLink::Settings{
            {"127.0.0.1", deaf.local_endpoint().port()}, "server", {10, 100, 1h}, 50ms, {}},
        listener, log);
    link->Start();
    EXPECT_TRUE(loop.RunUntil([&] { return !listener.heard.empty(); }));
    EXPECT_EQ(listener.heard, "no connection in time");
    link->Stop();
}

} // namespace
} // namespace korvel::common
