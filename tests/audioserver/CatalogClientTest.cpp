// What the audio server bears of a catalogue.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Peer.h"
#include "audioserver/CatalogClient.h"

namespace korvel::audioserver {
namespace {

using common::tcp;
using std::chrono::milliseconds;

// The catalogue is the test itself.
class CatalogClientTest : public testing::Test {
protected:
    CatalogClientTest() {
        m_acceptor.async_accept([this](common::error_code error, tcp::socket socket) {
            if (error)
                return;
            m_peer = std::make_shared<common::Peer>(std::move(socket));
            m_peer->Read();
        });
    }
    ~CatalogClientTest() override { m_client->Close(); }

    void Make(milliseconds patience) {
        m_client = std::make_shared<CatalogClient>(
            m_loop.loop.get_executor(), common::HostPort{"127.0.0.1", m_acceptor.local_endpoint().port()},
            patience);
    }
    void Ask() {
        m_answered = false;
        m_client->Resolve(1, "a", {}, [this](const auto& place, const std::string& error) {
            m_answered = true;
            m_place = place;
            m_error = error;
        });
    }
    // Answers the last request with this rest of an object; whether that was heard.
    bool Answer(const std::string& rest) {
        if (!m_loop.RunUntil([this] { return m_peer && m_peer->received.ends_with('\n'); }))
            return false;
        const auto request = nlohmann::json::parse(std::exchange(m_peer->received, ""));
        m_peer->Send("{\"id\":" + request.at("id").dump() + rest + "}\n");
        return IsAnswered();
    }
    bool IsAnswered() {
        return m_loop.RunUntil([this] { return m_answered; });
    }

    common::Loop m_loop;
    tcp::acceptor m_acceptor{m_loop.loop, {common::asio::ip::address_v4::loopback(), 0}};
    std::shared_ptr<common::Peer> m_peer;
    std::shared_ptr<CatalogClient> m_client;
    bool m_answered = false;
    std::optional<CatalogClient::Place> m_place;
    std::string m_error;
};

TEST_F(CatalogClientTest, AnOffsetIsADayAtMost) {
    Make(CatalogClient::kPatience);
    for (const char* offset : {"86400000", "86400001", "18446744073709551615"}) {
        Ask();
        ASSERT_TRUE(Answer(R"(,"media":"/a.wav","offset":)" + std::string(offset)));
        ASSERT_TRUE(m_place) << m_error;
        EXPECT_EQ(m_place->offsetMilliseconds, 86400000U) << offset;
    }
}

TEST_F(CatalogClientTest, ASilentCatalogueIsGivenUp) {
    Make(milliseconds(100));
    Ask();
    ASSERT_TRUE(IsAnswered());
    EXPECT_FALSE(m_place);
    EXPECT_TRUE(m_error.starts_with("the catalogue")) << m_error;
}

TEST_F(CatalogClientTest, AnAnswerThatIsTooLongFailsTheRequestAndTheNextIsRead) {
    Make(CatalogClient::kPatience);
    Ask();
    const std::string rest = R"(,"media":"/a.wav","offset":0,"more":")";
    ASSERT_TRUE(Answer(rest + std::string(kMaxLineBytes, 'x') + "\""));
    EXPECT_EQ(m_error, "the catalogue's answer is too long");
    Ask();
    ASSERT_TRUE(Answer(rest + std::string(kMaxLineBytes - 100, 'x') + "\""));
    EXPECT_TRUE(m_place) << m_error;
}

} // namespace
} // namespace korvel::audioserver
