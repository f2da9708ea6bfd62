// Entries of the driver as only a core can see them: results, arguments, calls back at once.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "Sessions.h"
#include "TestCore.h"
#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/KVBaseDriver.h"
#include "platform/Services.h"

namespace {

using Lines = std::vector<std::string>;

std::int32_t Execute(TestCore& core, const std::string& name) {
    return core.Driver().ExecuteCommand(*kv::CreateCmdMessage(name), nullptr, 0);
}

TEST(Entries, ACommandBeforeAnyServerIsIgnoredAndSucceeds) {
    TestCore core;
    core.Run("start");
    EXPECT_EQ(Execute(core, "GET_SETTINGS"), 0);
    EXPECT_EQ(Execute(core, "NO_SUCH_COMMAND"), 0);
    EXPECT_EQ(core.TakeLines(), Lines{});
}

TEST(Entries, AnUnknownCommandIsTheDispatchersBusiness) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1"});
    EXPECT_EQ(Execute(core, "GET_SETTINGS"), 0);
    EXPECT_LT(Execute(core, "NO_SUCH_COMMAND"), 0);
}

TEST(Entries, StartTellsTheCoreExactlyWhatItWants) {
    TestCore core;
    Lines calls;
    core.SetHook([&](const ServiceCall& call) {
        if (call.name == "AddTimer" || call.name == "VmAdd")
            calls.push_back(call.ToText());
    });
    core.Run("start");
    EXPECT_EQ(calls, (Lines{"AddTimer 10000 17", "VmAdd 1002 ROOM_HISTORY 13  0 0 ",
                            "VmAdd 1003 ROOM_QUEUE_SETTINGS 13  0 0 ", "VmAdd 1004 QUEUE_STATUS 13  1 1 ",
                            "VmAdd 1005 QUEUE_INFO 13  1 1 ", "VmAdd 1006 QUEUE_STATUS_V2 13  1 1 ",
                            "VmAdd 1007 QUEUE_INFO_V2 13  1 1 ", "VmAdd 1008 PLAY_PREFERENCE 2 0 0 1 ",
                            "VmAdd 1009 ROOM_MAP_INFO 13  1 0 "}));
}

TEST(Entries, AClearTimerIsStartedWithItsFlag) {
    TestCore core;
    core.Run({"engine 3000", "song 1 location=/media/a.flac", "start", "online 3000 127.0.0.1",
              "command ADD_SONG ROOM_ID=7 MEDIA_ID=1",
              "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200"});
    Lines calls;
    core.SetHook([&](const ServiceCall& call) {
        if (call.name == "AddTimer")
            calls.push_back(call.ToText());
    });
    core.Run("data 3000 \"* addmed EOM=1\\r\\n\"");
    EXPECT_EQ(calls, Lines{"AddTimer 300000 1"});
}

TEST(Entries, AFailedStartMakesNothing) {
    TestCore core;
    core.Run({"without KVMessage", "start"});
    const auto config = KVXML::CreateXmlNode("config");
    EXPECT_EQ(core.Driver().Initialize(1, *config, nullptr), -2);
}

void FailToShowSettings(const ServiceCall& call) {
    if (call.name == "SendDataToUI")
        throw std::runtime_error("no user interface");
}

TEST(Entries, ACommandThatFailsIsLoggedAsItCame) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1"});
    core.SetHook(FailToShowSettings);
    EXPECT_EQ(core.Run("command GET_SETTINGS ROOM=\"a\\nb\""),
              (Lines{"< log 3 Command failed: GET_SETTINGS ROOM=a b",
                     "< log 3 Exception in ExecuteCommand: no user interface"}));
}

TEST(Entries, ACommandOfADriverThatDidNotStartFailsQuietly) {
    for (const char* missing : {"without StringX", "without KVMessage"}) {
        TestCore core;
        core.Run({missing, "start", "online 3000 127.0.0.1"});
        core.SetHook(FailToShowSettings);
        EXPECT_EQ(core.Run("command GET_SETTINGS"),
                  Lines{"< log 3 Exception in ExecuteCommand: no user interface"})
            << missing;
    }
}

TEST(Entries, TheRegisteredDriverIsHandedOut) {
    TestCore core;
    core.Run("start");
    auto* announcements = kv::GetService<IDigitalAudio>(core.Instances());
    EXPECT_NE(announcements, nullptr);
    core.Run("stop");
    EXPECT_EQ(kv::GetService<IDigitalAudio>(core.Instances()), nullptr);
}

TEST(Entries, ANullRegistrationYieldsNoDriver) {
    TestCore core;
    core.Instances().RegisterInstance(IDigitalAudio::kInterfaceId, nullptr);
    EXPECT_TRUE(Has(core.Run("start"), "< fault no driver was created"));
    core.Instances().RevokeInstance(IDigitalAudio::kInterfaceId);
}

std::int32_t Bound(TestCore& core, std::uint32_t binding, const std::string& type, const std::string& name,
                   const std::string& data, kv::auto_com<KVXML::INode> xml) {
    return core.Driver().BoundCall(binding, 6, "",
                                   kv::BindMessage(type, kv::CreateCmdMessage(name), data, xml), nullptr);
}

TEST(Entries, ABoundMessageMayCarryDataAndACommand) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1"});
    const auto command = kv::CmdMessageToXml(*kv::CreateCmdMessage("GET_SETTINGS"));
    EXPECT_EQ(Bound(core, 3000, "PROTOCOL_COMMAND", "DATA_RECEIVED", "* SYS STREAM=1 ERROR:x\r\n", command),
              0);
    const auto lines = core.TakeLines();
    EXPECT_TRUE(Has(lines, "< ui <DA_ERROR Error=\"Stream Error: x\"></DA_ERROR>"));
    EXPECT_TRUE(HasStart(lines, "< ui <DigitalAudioSettings>"));
}

TEST(Entries, ABoundMessageWithoutAProperCommandDoesNothing) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1"});
    EXPECT_EQ(Bound(core, 3000, "PROTOCOL_COMMAND", "x", "", nullptr), 0);
    EXPECT_EQ(Bound(core, 3000, "PROTOCOL_COMMAND", "x", "", KVXML::CreateXmlNode("weather")), 0);
    const auto command = kv::CmdMessageToXml(*kv::CreateCmdMessage("GET_SETTINGS"));
    EXPECT_EQ(Bound(core, 3000, "OTHER", "x", "", command), 0);
    EXPECT_EQ(Bound(core, 3000, "", "SERVER_SLEEPY", "127.0.0.1", nullptr), 0);
    EXPECT_EQ(core.TakeLines(), Lines{});
}

std::string Location(TestCore& core, const std::string& kind, std::vector<std::uint32_t> mediaIds) {
    AVParams params;
    params.mediaKind = kind;
    AVLocationInfo location;
    location.mediaIds = std::move(mediaIds);
    location.location = "unchanged";
    core.Driver().OnAVAddLocationInfo(params, {}, {}, location, nullptr);
    return location.location;
}

TEST(Entries, TheLocationOfAMediaIsFilledInForTheKindsThatHaveOne) {
    TestCore core;
    core.Run({"song 1 location=/media/a.flac", "station 1 location=http://r/1", "album 1 songs=1", "start"});
    for (const char* kind : {"SONG", "ALBUM", "ALBUM_MP3", "ALBUM_CD"})
        EXPECT_EQ(Location(core, kind, {1, 2}), "/media/a.flac") << kind;
    EXPECT_EQ(Location(core, "BROADCAST_AUDIO", {1}), "http://r/1");
    for (const char* kind : {"SONGS", "PLAYLIST", "QUEUE", "DIGITAL_MEDIA", ""})
        EXPECT_EQ(Location(core, kind, {1}), "unchanged") << kind;
    EXPECT_EQ(Location(core, "SONG", {}), "unchanged");
    EXPECT_EQ(Location(core, "SONG", {99}), "unchanged");
}

// A room that can take its audio from the analog output of another device.
class Analog final : public IAnalogSource {
public:
    void TakeSourceDevice(std::uint32_t deviceId) override {
        calls.push_back("take " + std::to_string(deviceId));
    }
    std::vector<std::uint32_t> GetDevicesInAnalogSource() override {
        calls.push_back("devices");
        return {801, 802, 100002, 803};
    }
    void SelectDevice(std::uint32_t deviceId) override {
        calls.push_back("select " + std::to_string(deviceId));
    }
    Lines calls;
};

TEST(AnalogSource, TheFirstRoomOfAnInputBringsTheDevicesOnTheWay) {
    TestCore core;
    Analog first, second;
    core.OfferToDevice<IAnalogSource>(7, first);
    core.OfferToDevice<IAnalogSource>(8, second);
    core.Run({"engine 3000", "start", "online 3000 127.0.0.1",
              "select 7 queue=1 kind=QUEUE input=line source=600 ip=10.0.0.7 port=6200"});
    EXPECT_EQ(first.calls, Lines{"devices"});
    // The second room listens to the input's device, and the selection goes on to the devices before this
    // one.
    core.Run("select 8 queue=10000 kind=QUEUE source=700 ip=10.0.0.8 port=6200");
    EXPECT_EQ(second.calls, (Lines{"take 600", "select 801", "select 802"}));
}

TEST(AnalogSource, ARoomThatSelectsTheSameDeviceIsNotTold) {
    TestCore core;
    Analog room;
    core.OfferToDevice<IAnalogSource>(8, room);
    core.Run({"engine 3000", "start", "online 3000 127.0.0.1",
              "select 7 queue=1 kind=QUEUE input=line source=600 ip=10.0.0.7 port=6200",
              "select 8 queue=10000 kind=QUEUE source=600 ip=10.0.0.8 port=6200"});
    EXPECT_EQ(room.calls, Lines{});
}

TEST(AnalogSource, AQueueWithoutAnInputOrAStreamLeavesTheSourceAlone) {
    TestCore core;
    Analog room;
    core.OfferToDevice<IAnalogSource>(8, room);
    core.Run({"song 1 location=/media/a.flac", "start", "online 3000 127.0.0.1",
              "select 7 queue=1 kind=QUEUE input=line source=600 ip=10.0.0.7 port=6200",
              "select 8 queue=10000 kind=QUEUE source=700 ip=10.0.0.8 port=6200"});
    EXPECT_EQ(room.calls, Lines{});
    core.Run({"command ADD_SONG ROOM_ID=9 MEDIA_ID=1", "data 3000 \"0 addstr stream=1\\r\\n\"",
              "data 3000 \"0 addstr stream=2\\r\\n\"",
              "select 8 queue=10001 kind=QUEUE source=700 ip=10.0.0.8 port=6201"});
    EXPECT_EQ(room.calls, Lines{});
}

TEST(AnalogSource, AQueueJoinedOnAnotherServerTakesTheDeviceOfTheSelection) {
    TestCore core;
    Analog room;
    core.OfferToDevice<IAnalogSource>(10, room);
    core.Run({"engine 3000", "engine 3001", "start", "online 3000 127.0.0.1", "online 3001 10.0.0.9",
              "select 7 queue=1 kind=QUEUE binding=3001 input=line source=600 ip=10.0.0.7 port=6200",
              "select 9 queue=10000 kind=QUEUE source=700 ip=10.0.0.7 port=6200",
              "select 10 queue=10000 kind=QUEUE source=800 ip=10.0.0.7 port=6200"});
    EXPECT_EQ(room.calls, Lines{"take 700"});
}

// An audio server that answers every line before the call that hands it over returns.
void AnswerAtOnce(TestCore& core) {
    auto streams = std::make_shared<int>(0);
    core.SetHook([&core, streams](const ServiceCall& call) {
        if (call.name != "SendBindMessage")
            return;
        const std::string& line = call.arguments.back();
        const std::string command = line.substr(line.find(' ') + 1, 6);
        const bool creates = command == "addstr" || command == "addann";
        core.Session().Execute("data " + call.arguments[1] + " \"0 " +
                               (creates ? command + " stream=" + std::to_string(++*streams)
                                        : "OK " + command + " " + std::to_string(*streams)) +
                               "\\r\\n\"");
    });
}

TEST(CallsBack, AnAudioServerMayAnswerInsideTheCall) {
    TestCore core;
    AnswerAtOnce(core);
    const auto lines = core.Run({"song 1 location=/media/a.flac", "start", "online 3000 127.0.0.1",
                                 "command ADD_SONG ROOM_ID=7 MEDIA_ID=1",
                                 "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200",
                                 "command SKIP_FWD ROOM_ID=7", "deselect 7"});
    EXPECT_EQ(Only(lines, "< fault"), Lines{});
    EXPECT_EQ(Only(lines, "< assert"), Lines{});
    EXPECT_TRUE(HasStart(lines, "< send 3000 \"2 addcli 1 10.0.0.7 6200"));
    EXPECT_EQ(Only(lines, "< send").back(), R"(< send 3000 "6 remstr 1\r\n")");
}

TEST(CallsBack, ARoomMayLetGoInsideTheCall) {
    TestCore core;
    core.Run({"engine 3000", "song 1 location=/media/a.flac", "start", "online 3000 127.0.0.1",
              "command ADD_SONG ROOM_ID=7 MEDIA_ID=1",
              "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200",
              "select 8 queue=10000 kind=QUEUE ip=10.0.0.8 port=6200",
              "select 9 queue=10000 kind=QUEUE ip=10.0.0.9 port=6200"});
    core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendCommand" && call.arguments.back() == "DESELECT_AUDIO_PATH")
            core.Session().Execute("deselect " + call.arguments.front());
    });
    const auto lines = core.Run("command REMOVE_QUEUE ROOM_ID=8");
    EXPECT_EQ(Only(lines, "< message"),
              (Lines{"< message 7 DESELECT_AUDIO_PATH", "< message 8 DESELECT_AUDIO_PATH",
                     "< message 9 DESELECT_AUDIO_PATH"}));
    EXPECT_EQ(core.Run("command GET_QUEUE_STATUS"), Lines{"< return <queues></queues>"});
}

TEST(CallsBack, AServerMayGoOfflineInsideTheCall) {
    TestCore core;
    core.Run({"engine 3000", "song 1 location=/media/a.flac", "start", "online 3000 127.0.0.1",
              "command ADD_SONG ROOM_ID=7 MEDIA_ID=1"});
    core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendBindMessage")
            core.Session().Execute("offline 3000");
    });
    const auto lines = core.Run("select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 target=7");
    core.ClearHook();
    EXPECT_EQ(Only(lines, "< fault"), Lines{});
    EXPECT_TRUE(HasStart(lines, "< message 7 MEDIA_SELECTED"));
    EXPECT_EQ(core.Run("command GET_QUEUE_STATUS"), Lines{"< return <queues></queues>"});
    // Whatever the lost queue still had to do ends with the driver.
    EXPECT_EQ(Only(core.Run("stop"), "< fault"), Lines{});
}

// The plug-in itself, loaded and unloaded.
class PlugIn : public testing::Test {
protected:
    void LoadRunAndUnload() {
        void* library = dlopen(KORVEL_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        auto get = reinterpret_cast<GetCreationFuncType>(dlsym(library, kGetCreationFuncName));
        ASSERT_NE(get, nullptr);
        Lines lines;
        {
            TestCore core(get());
            for (const std::string& line : LongSession()) {
                const auto some = core.Run(line);
                lines.insert(lines.end(), some.begin(), some.end());
            }
            // Nothing calls back into the library that goes now.
            EXPECT_EQ(core.Run("advance 1000000"), Lines{});
        }
        EXPECT_EQ(Only(lines, "< fault"), Lines{});
        EXPECT_TRUE(Has(lines, "< initialized 0"));
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(KORVEL_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still there";
    }
};

TEST_F(PlugIn, ShowsItsNamedConstantsAndNothingMore) {
    void* library = dlopen(KORVEL_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto member = [&](const std::string& name, const std::string& tags = "") {
        const std::string symbol =
            "_ZN19korvel_digitalaudio" + std::to_string(name.size()) + name + tags + "E";
        return dlsym(library, symbol.c_str());
    };
    const auto tag = [&](const std::string& name) {
        const void* text = member(name, "B5cxx11");
        return text ? *static_cast<const std::string*>(text) : "not shown";
    };
    EXPECT_EQ(tag("s_DigitalAudioPersistTag"), "korvel_digital_audio");
    EXPECT_EQ(tag("s_DA_LastServerIDTag"), "lastserverid");
    EXPECT_EQ(tag("s_DA_LastMediaIDTag"), "lastmediaid");
    EXPECT_EQ(tag("s_DA_PlayPreferenceTag"), "PlayPreference");
    EXPECT_EQ(tag("s_DigitalAudioSettingsTag"), "DigitalAudioSettings");
    EXPECT_EQ(tag("s_DAClearPlaylistTag"), "ClearPlayList");
    EXPECT_EQ(tag("s_DAClearPlaylistDelayTag"), "ClearPlayListDelay");
    ASSERT_NE(member("s_DefClearPlaylistFlag"), nullptr);
    EXPECT_TRUE(*static_cast<const bool*>(member("s_DefClearPlaylistFlag")));
    ASSERT_NE(member("s_DefClearPlaylistDelayMinutes"), nullptr);
    EXPECT_EQ(*static_cast<const std::uint16_t*>(member("s_DefClearPlaylistDelayMinutes")), 5);
    ASSERT_NE(member("s_DefPlayPreference"), nullptr);
    EXPECT_EQ(*static_cast<const std::int32_t*>(member("s_DefPlayPreference")), 0);
    EXPECT_EQ(member("s_commands"), nullptr);
    EXPECT_EQ(dlsym(library, "_ZTV19korvel_digitalaudio"), nullptr);
    EXPECT_EQ(dlclose(library), 0);
}

TEST_F(PlugIn, CanBeLoadedAndUnloadedTwice) {
    LoadRunAndUnload();
    LoadRunAndUnload();
}

} // namespace
