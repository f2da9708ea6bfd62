// Playlists as only an odd media database gives them.
#include <gtest/gtest.h>

#include "HookedServices.h"
#include "Outputs.h"
#include "platform/XmlHelper.h"

namespace {

// Lists two playlists "One" of which the first has no number, and playlist 5 "Two", whose songs are 3, one
// without an id and one whose id is no number. `newId` is what a new record is numbered.
class OddPlaylists final : public HookedMedia {
public:
    using HookedMedia::HookedMedia;
    kv::auto_com<KVXML::INode> GetMediaList(std::uint32_t deviceId, const std::string& category,
                                            const std::string& filter1, const std::string& filter2,
                                            std::int32_t first, std::int32_t count) override {
        asked.push_back(std::to_string(deviceId) + " " + category + " \"" + filter1 + "\" \"" + filter2 +
                        "\" " + std::to_string(first) + " " + std::to_string(count));
        auto list = KVXML::CreateXmlNode("list");
        for (const char* id : {"none", "7"}) {
            auto record = XmlHelper::AddChild(*list, "album");
            XmlHelper::toXml("One", *record, "title");
            XmlHelper::toXml(id, *record, "id");
        }
        return list;
    }
    kv::auto_com<KVXML::INode> GetMediaRecord(std::uint32_t mediaId, const std::string& category) override {
        if (category != "PLAYLIST")
            return HookedMedia::GetMediaRecord(mediaId, category);
        auto record = KVXML::CreateXmlNode("album");
        auto songs = XmlHelper::AddChild(*record, "songs");
        XmlHelper::toXml("3", *XmlHelper::AddChild(*songs, "song"), "id");
        XmlHelper::AddChild(*songs, "song");
        XmlHelper::toXml("x", *XmlHelper::AddChild(*songs, "song"), "id");
        return record;
    }
    std::int32_t AddMedia(std::uint32_t, const std::string&, const std::string&, const std::string&,
                          std::int32_t, std::uint32_t& id) override {
        id = newId;
        return 0;
    }
    std::int32_t AddSongToPlaylist(std::uint32_t playlistId, std::uint32_t songId,
                                   std::uint32_t position) override {
        asked.push_back(std::to_string(playlistId) + " " + std::to_string(songId) + " " +
                        std::to_string(position));
        return 0;
    }
    std::int32_t UpdatePlaylist(std::uint32_t playlistId, const std::vector<MediaItem>&) override {
        asked.push_back("update " + std::to_string(playlistId));
        return 0;
    }

    std::uint32_t newId = 0;
    std::vector<std::string> asked;
};

class CommandsPlaylist : public ::testing::Test {
protected:
    CommandsPlaylist() {
        core.Instances().Offer<IDriverHost>(host);
        core.Run({"start", "online 3000 127.0.0.1"});
    }
    ~CommandsPlaylist() override {
        core.Run("stop");
        core.Instances().Offer<IDriverHost>(inner);
    }

    TestCore core;
    IDriverHost& inner = *kv::GetService<IDriverHost>(core.Instances());
    OddPlaylists media{core, *inner.GetMediaManager()};
    HookedHost host{core, inner, media, inner.GetTimerManager(), inner.GetHelper()};
};

using Asked = std::vector<std::string>;

TEST_F(CommandsPlaylist, TheNameIsLookedForAmongAllPlaylistsThatHaveANumber) {
    core.Run({"command ADD_SONG ROOM_ID=7 MEDIA_ID=1", "command SAVE_PLAYLIST ROOM_ID=7 NAME=One"});
    EXPECT_EQ(media.asked, (Asked{"100002 PLAYLIST \"\" \"\" -1 -1", "update 7"}));
}

TEST_F(CommandsPlaylist, SongsWithoutAnIdKeepTheirPlaceInARenamedOne) {
    media.newId = 9;
    core.Run("command RENAME_PLAYLIST MEDIA_ID=5 NAME=Three");
    EXPECT_EQ(media.asked, (Asked{"9 3 0", "9 0 1", "9 0 2"}));
}

TEST_F(CommandsPlaylist, ANewRecordWithoutAnIdTakesNoSongs) {
    core.Run("command RENAME_PLAYLIST MEDIA_ID=5 NAME=Three");
    EXPECT_EQ(media.asked, Asked{});
}

class NoMediaHost final : public HookedHost {
public:
    using HookedHost::HookedHost;
    IMediaManager* GetMediaManager() override { return nullptr; }
};

TEST(CommandsPlaylistWithoutADatabase, LoadingStillShowsTheHistory) {
    TestCore core;
    auto& inner = *kv::GetService<IDriverHost>(core.Instances());
    NoMediaHost none{core, inner, *inner.GetMediaManager(), inner.GetTimerManager(), inner.GetHelper()};
    core.Instances().Offer<IDriverHost>(none);
    core.Run({"start", "online 3000 127.0.0.1"});
    const auto lines = core.Run("command ADD_PLAYLIST ROOM_ID=7 MEDIA_ID=5");
    EXPECT_TRUE(Has(lines, outputs::Set(variables::kRoomHistory, "<histories></histories>")));
    EXPECT_TRUE(Has(lines, "< return <queueid>10000</queueid>"));
    EXPECT_EQ(core.Run("command GET_ROOM_HISTORY ROOM_ID=7"),
              Asked{R"(< return <history>\n <room>7</room>\n</history>\n)"});
    core.Run("stop");
    core.Instances().Offer<IDriverHost>(inner);
}

} // namespace
