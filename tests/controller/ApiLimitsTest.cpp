// How much a request may hold, and a file of the page.
#include <gtest/gtest.h>

#include <filesystem>

#include "TestHouse.h"
#include "front/http/RequestReader.h"
#include "front/http/StaticFiles.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class ApiLimitsTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(loop.RunUntil([&] { return house.GetCore().GetBindings().WhyNotReady().empty(); }));
    }
    static std::string ErrorOf(const RawReply& reply) { return reply.Json().value("error", "none"); }

    ScratchFolder state;
    TestLoop loop;
    ScriptedServer server{loop};
    TestHouse house{loop, TestPlugin("WORKING"), {server.GetPort()}, state};
};

TEST_F(ApiLimitsTest, ACommandHasAHundredParameters) {
    json parameters = {{"TEXT", "x"}};
    while (parameters.size() < 100)
        parameters[std::to_string(parameters.size())] = "";
    EXPECT_EQ(house.Command("ECHO", parameters).status, 200);
    parameters["one more"] = "";
    const RawReply reply = house.Command("ECHO", parameters);
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(ErrorOf(reply), "\"parameters\" must be an object with at most 100 members");
}

TEST_F(ApiLimitsTest, AParametersNameHasAHundredBytes) {
    EXPECT_EQ(house.Command("ECHO", {{"TEXT", "x"}, {std::string(100, 'N'), ""}}).status, 200);
    const RawReply reply = house.Command("ECHO", {{"TEXT", "x"}, {std::string(101, 'N'), ""}});
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(ErrorOf(reply), "a parameter's name must have 1 to 100 characters");
}

TEST_F(ApiLimitsTest, ATitleHasAHundredBytes) {
    const auto statusOf = [&](const std::string& title) {
        return house.Post("/api/library/save-playlist", json{{"title", title}, {"songs", {77}}}.dump())
            .status;
    };
    EXPECT_EQ(statusOf(std::string(100, 'a')), 404) << "there is no such song";
    EXPECT_EQ(statusOf(std::string(101, 'a')), 400);
}

TEST_F(ApiLimitsTest, NumbersFitThirtyOneBits) {
    const auto statusOf = [&](const std::string& queue) {
        return house.Post("/api/rooms/1/select", R"({"queue":)" + queue + "}").status;
    };
    EXPECT_EQ(statusOf("2147483647"), 404) << "there is none of that id";
    for (const char* number : {"2147483648", "18446744073709551616", "-1", "1.5"})
        EXPECT_EQ(statusOf(number), 400) << number;
    EXPECT_EQ(house.Get("/api/library/songs?offset=2147483647").status, 200);
    EXPECT_EQ(house.Get("/api/library/songs?offset=2147483648").status, 400);
}

TEST_F(ApiLimitsTest, AHeadHasSixteenKibibytes) {
    const std::string start = "GET /api/status HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nX: ";
    const std::string end = "\r\n\r\n";
    const std::string most(RequestReader::kMaxHeader - start.size() - end.size(), 'x');
    EXPECT_EQ(house.Exchange(start + most + end).status, 200);
    EXPECT_EQ(house.Exchange(start + most + "x" + end).status, 431);
    std::string fields;
    while (fields.size() < RequestReader::kMaxHeader)
        fields += "A: b\r\n";
    EXPECT_EQ(house.Exchange(start + "x\r\n" + fields + "\r\n").status, 431) << "however short each is";
}

TEST(PageLimits, AFileHasSixteenMebibytes) {
    const ScratchFolder folder;
    const std::string file = folder.Write("large.png", "");
    std::filesystem::resize_file(file, 16u << 20);
    const HttpReply reply = ServeFile(folder.Path(), {{"large.png"}, {}});
    EXPECT_EQ(reply.status, 200u);
    EXPECT_EQ(reply.body.size(), 16u << 20);
    std::filesystem::resize_file(file, (16u << 20) + 1);
    EXPECT_EQ(ServeFile(folder.Path(), {{"large.png"}, {}}).status, 404u);
}

} // namespace
} // namespace korvel::controller
