// The playlists that each room used last.
#include <gtest/gtest.h>

#include "status/RoomHistories.h"

namespace {

std::string Text(const RoomHistories& histories, std::uint32_t room) {
    const auto playlists = histories.HistoryToXml(room);
    return playlists ? playlists->ToText() : "none";
}

TEST(RoomHistories, KeepNineNewestFirst) {
    RoomHistories histories;
    for (std::uint32_t id = 1; id <= 10; ++id)
        histories.AddPlaylistToHistory(5, id, "n");
    const auto playlists = histories.HistoryToXml(5);
    ASSERT_EQ(playlists->GetChildCount(), 9u);
    EXPECT_EQ(playlists->GetChild(0).GetAttribute("id"), "10");
    EXPECT_EQ(playlists->GetChild(8).GetAttribute("id"), "2");
}

TEST(RoomHistories, APlaylistUsedAgainMovesToTheFrontUnderItsNewName) {
    RoomHistories histories;
    histories.AddPlaylistToHistory(5, 1, "a");
    histories.AddPlaylistToHistory(5, 2, "b");
    histories.AddPlaylistToHistory(5, 3, "c");
    histories.AddPlaylistToHistory(5, 3, "C");
    EXPECT_EQ(Text(histories, 5),
              "<playlists><playlist id=\"3\" name=\"C\"></playlist><playlist id=\"2\" name=\"b\"></playlist>"
              "<playlist id=\"1\" name=\"a\"></playlist></playlists>");
    histories.AddPlaylistToHistory(5, 1, "A");
    EXPECT_EQ(Text(histories, 5),
              "<playlists><playlist id=\"1\" name=\"A\"></playlist><playlist id=\"3\" name=\"C\"></playlist>"
              "<playlist id=\"2\" name=\"b\"></playlist></playlists>");
}

TEST(RoomHistories, UsingAKnownPlaylistDropsNone) {
    RoomHistories histories;
    for (std::uint32_t id = 1; id <= 9; ++id)
        histories.AddPlaylistToHistory(5, id, "n");
    histories.AddPlaylistToHistory(5, 1, "n");
    EXPECT_EQ(histories.HistoryToXml(5)->GetChildCount(), 9u);
    EXPECT_EQ(histories.HistoryToXml(5)->GetChild(8).GetAttribute("id"), "2");
}

TEST(RoomHistories, ARoomWithoutHistoryHasNoElement) {
    EXPECT_EQ(Text(RoomHistories(), 5), "none");
}

TEST(RoomHistories, AllRoomsAreListedInAscendingId) {
    RoomHistories histories;
    histories.AddPlaylistToHistory(9, 1, "a & b");
    histories.AddPlaylistToHistory(5, 4294967295u, "x");
    const auto parent = KVXML::CreateXmlNode("p");
    histories.HistoryToXml(*parent);
    EXPECT_EQ(
        parent->ToText(),
        "<p><history room=\"5\"><playlists><playlist id=\"4294967295\" name=\"x\"></playlist></playlists>"
        "</history><history room=\"9\"><playlists><playlist id=\"1\" name=\"a &amp; b\"></playlist>"
        "</playlists></history></p>");
}

} // namespace
