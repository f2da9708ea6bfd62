#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Peer.h"
#include "common/Acceptor.h"

namespace korvel::common {
namespace {

class AcceptorTest : public testing::Test {
protected:
    // What a connection is at the acceptor's side.
    struct Guest {
        tcp::socket socket;
        Acceptor::Place place;
    };

    void Listen(Acceptor::Limits limits) {
        acceptor.emplace(
            loop.loop.get_executor(), "0.0.0.0", std::uint16_t{0}, limits,
            [this](tcp::socket socket, Acceptor::Place place) {
                guests.push_back(std::make_shared<Guest>(Guest{std::move(socket), std::move(place)}));
                if (std::exchange(fails, false))
                    throw std::runtime_error("no memory for one more");
            },
            log);
    }

    // Connects and waits until the acceptor has decided.
    std::shared_ptr<Peer> Connect(const std::string& from = "127.0.0.1") {
        const auto before = guests.size();
        auto peer = Peer::Connect(loop, {asio::ip::address_v4::loopback(), acceptor->GetPort()}, from);
        EXPECT_TRUE(loop.RunUntil([&] { return guests.size() > before || peer->ended; }));
        return peer;
    }

    void SetIdle(std::size_t index) {
        guests[index]->place.SetIdle([this, index] {
            left.push_back(index);
            guests[index].reset();
        });
    }

    bool Ends(const std::shared_ptr<Peer>& peer) {
        return loop.RunUntil([&] { return peer->ended; });
    }

    Loop loop;
    const Log log{LogLevel::Error};
    std::optional<Acceptor> acceptor;
    std::vector<std::shared_ptr<Guest>> guests; // by the order in which they were let in; null once gone
    std::vector<std::size_t> left;              // who gave way
    bool fails = false;                         // with the next one
};

TEST_F(AcceptorTest, LetsInSoManyAndNoMore) {
    Listen({2, 2});
    const auto a = Connect();
    const auto b = Connect();
    EXPECT_TRUE(Connect()->ended);
    EXPECT_FALSE(a->ended || b->ended);
    EXPECT_EQ(guests.size(), 2u);
}

TEST_F(AcceptorTest, AfterAFailureTheNextComesInAllTheSame) {
    Listen({9, 9});
    fails = true;
    EXPECT_THROW(Connect(), std::runtime_error);
    EXPECT_FALSE(Connect()->ended);
}

TEST_F(AcceptorTest, APlaceThatEndsMakesRoom) {
    Listen({1, 1});
    Connect();
    guests[0].reset();
    EXPECT_FALSE(Connect()->ended);
    EXPECT_TRUE(Connect()->ended);
}

TEST_F(AcceptorTest, TheOneThatHasBeenIdleForLongestGivesWay) {
    Listen({3, 3});
    const std::vector<std::shared_ptr<Peer>> peers{Connect(), Connect(), Connect()};
    SetIdle(1);
    SetIdle(0);
    SetIdle(2);
    SetIdle(1); // it did something
    EXPECT_FALSE(Connect()->ended);
    EXPECT_EQ(left, std::vector<std::size_t>{0});
    EXPECT_TRUE(Ends(peers[0]));
    Connect();
    Connect();
    EXPECT_EQ(left, (std::vector<std::size_t>{0, 2, 1}));
    EXPECT_TRUE(Connect()->ended) << "those that came are busy";
}

TEST_F(AcceptorTest, ABusyOneGivesWayToNobody) {
    Listen({1, 1});
    const auto busy = Connect();
    SetIdle(0);
    guests[0]->place.SetBusy();
    EXPECT_TRUE(Connect()->ended);
    EXPECT_FALSE(busy->ended);
    EXPECT_TRUE(left.empty());
}

TEST_F(AcceptorTest, AnAddressHasItsShare) {
    Listen({3, 2});
    Connect("127.0.0.2");
    Connect("127.0.0.2");
    EXPECT_TRUE(Connect("127.0.0.2")->ended) << "though there is room";
    EXPECT_FALSE(Connect("127.0.0.3")->ended);
}

TEST_F(AcceptorTest, WhoHasItsShareTakesNoPlaceOfOthers) {
    Listen({3, 2});
    Connect("127.0.0.3");
    SetIdle(0);
    Connect("127.0.0.2");
    Connect("127.0.0.2");
    EXPECT_TRUE(Connect("127.0.0.2")->ended);
    SetIdle(2);
    EXPECT_FALSE(Connect("127.0.0.2")->ended);
    EXPECT_EQ(left, std::vector<std::size_t>{2});
}

TEST_F(AcceptorTest, OneThatIsSlowToLeaveIsNotCounted) {
    Listen({1, 1});
    Connect();
    guests[0]->place.SetIdle([this] { left.push_back(0); });
    EXPECT_FALSE(Connect()->ended);
    guests[0]->place.SetIdle([this] { left.push_back(0); }); // too late
    EXPECT_TRUE(Connect()->ended);
    EXPECT_EQ(left, std::vector<std::size_t>{0});
    guests[0].reset();
    EXPECT_TRUE(Connect()->ended) << "its place was given away already";
}

TEST_F(AcceptorTest, APlaceMayMoveAndOutliveTheAcceptor) {
    Listen({1, 1});
    Connect();
    {
        const Acceptor::Place moved = std::move(guests[0]->place);
        EXPECT_TRUE(Connect()->ended);
    }
    EXPECT_FALSE(Connect()->ended);
    acceptor.reset();
    guests.back()->place.SetIdle([] {});
    guests.back()->place.SetBusy();
    guests.clear();
}

TEST_F(AcceptorTest, WithoutDescriptorsItTriesAgain) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    const Log warnings(LogLevel::Warning, file.get());
    bool came = false;
    Acceptor listening(
        loop.loop.get_executor(), "127.0.0.1", 0, {9, 9},
        [&](const tcp::socket&, const Acceptor::Place&) { came = true; }, warnings);
    tcp::socket socket(loop.loop);
    socket.connect({asio::ip::address_v4::loopback(), listening.GetPort()});
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_TRUE(loop.RunUntil([&] { return std::ftell(file.get()) > 0; }));
    EXPECT_FALSE(came);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_TRUE(loop.RunUntil([&] { return came; }));
}

TEST_F(AcceptorTest, OnceStoppedItLetsNobodyIn) {
    Listen({9, 9});
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), acceptor->GetPort());
    EXPECT_EQ(acceptor->GetEndpoint(), "0.0.0.0:" + std::to_string(endpoint.port()));
    acceptor->Stop();
    tcp::socket socket(loop.loop);
    EXPECT_THROW(socket.connect(endpoint), boost::system::system_error);
}

TEST_F(AcceptorTest, WhatCannotBeListenedOnIsOneLine) {
    Listen({9, 9});
    const auto refusal = [this](const std::string& address, std::uint16_t port) -> std::string {
        try {
            const Acceptor second(loop.loop.get_executor(), address, port, {1, 1}, {}, log);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    };
    const std::string taken = "127.0.0.1:" + std::to_string(acceptor->GetPort());
    EXPECT_EQ(refusal("127.0.0.1", acceptor->GetPort()),
              "cannot listen on " + taken + ": Address already in use");
    EXPECT_EQ(refusal("here", 0), "not an address: here");
}

} // namespace
} // namespace korvel::common
