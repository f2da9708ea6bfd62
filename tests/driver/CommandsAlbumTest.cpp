// Albums as only an odd media database gives them.
#include <gtest/gtest.h>

#include "HookedServices.h"
#include "Outputs.h"
#include "platform/XmlHelper.h"

namespace {

// Album 8: song 3, one song without a text as its id, one without an id, then song 2.
class OddAlbums final : public HookedMedia {
public:
    using HookedMedia::HookedMedia;
    kv::auto_com<KVXML::INode> GetAlbumInfo(std::uint32_t albumId) override {
        if (albumId != 8)
            return nullptr;
        auto album = KVXML::CreateXmlNode("album");
        XmlHelper::toXml("3", *XmlHelper::AddChild(*album, "song"), "id");
        XmlHelper::toXml("", *XmlHelper::AddChild(*album, "song"), "id");
        XmlHelper::AddChild(*album, "song");
        XmlHelper::toXml("2", *XmlHelper::AddChild(*album, "song"), "id");
        return album;
    }
};

TEST(CommandsAlbum, SongsWithoutAnIdAreLeftOut) {
    TestCore core;
    auto& inner = *kv::GetService<IDriverHost>(core.Instances());
    OddAlbums media(core, *inner.GetMediaManager());
    HookedHost host(core, inner, media, inner.GetTimerManager(), inner.GetHelper());
    core.Instances().Offer<IDriverHost>(host);
    core.Run({"start", "online 3000 127.0.0.1"});

    const auto out = core.Run("command ADD_ALBUM_MP3 ROOM_ID=7 MEDIA_ID=8 PLAY_NEXT=1");
    EXPECT_TRUE(
        Has(out, outputs::Set(variables::kQueueInfoV2,
                              "<info><id>10000</id><name>7</name><songs><song id=\"3\" source=\"1\"></song>"
                              "<song id=\"2\" source=\"1\"></song></songs></info>")));
    EXPECT_TRUE(Has(out, outputs::Set(variables::kQueueStatusV2,
                                      "<queues><queue><id>10000</id><name></name><state>Stop</state>"
                                      "<song id=\"0\" source=\"0\"></song><next id=\"3\" source=\"1\"></next>"
                                      "<index>4095</index><rooms><id>7</id></rooms></queue></queues>")));
    core.Run("stop");
    core.Instances().Offer<IDriverHost>(inner);
}

} // namespace
