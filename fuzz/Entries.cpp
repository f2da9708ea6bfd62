#include "Entries.h"

#include <array>
#include <iterator>

namespace fuzz {

namespace {

constexpr std::size_t kMaxText = 64;
constexpr std::size_t kMaxParams = 6;

// Texts that mean something to the driver, as values of parameters and fields.
const char* const kTexts[] = {
    "",
    "0",
    "1",
    "7",
    "8",
    "7,8,9",
    "10000",
    "10001",
    "-1",
    "4294967295",
    "4095",
    "268435440",
    "true",
    "<MEDIA><MEDIA_ID>1</MEDIA_ID><MEDIA_ID>2</MEDIA_ID><MEDIA_ID>3</MEDIA_ID></MEDIA>",
    "<MEDIA><SONG SOURCE=\"1\" ID=\"5\"/><SONG SOURCE=\"2\" ID=\"Tra.1\"/></MEDIA>",
    "<MEDIA><SONG SOURCE=\"3\" ID=\"ps.1\"/></MEDIA>",
    "<MEDIA><SONG SOURCE=\"5\" ID=\"mp.1\"/><SONG SOURCE=\"4\" ID=\"x\"/></MEDIA>",
    "<albums><id>1</id><id>4</id></albums>",
    "Blue",
    "http://radio/1"};

const char* const kParams[] = {
    "ROOM_ID",   "MEDIA_ID", "MEDIA",   "QUEUE_ID",    "JOIN_ID",    "ROOM_ID_LIST", "PLAY_NOW",
    "PLAY_NEXT", "CLEAR",    "SOURCE",  "MEDIA_INDEX", "SHUFFLE",    "REPEAT",       "NAME",
    "DEVICE_ID", "ARTIST",   "GENRE",   "QUEUE_INFO",  "FLAG_VALUE", "PLAY_PREF",    "DELAY_VALUE",
    "deviceid",  "roomId",   "queueId", "merge",       "force",      "title",        "artist"};

const char* const kKinds[] = {"QUEUE",         "SONG",
                              "SONGS",         "ALBUM",
                              "PLAYLIST",      "BROADCAST_AUDIO",
                              "ANNOUNCEMENT",  "ANNOUNCEMENT_COMPLETE",
                              "DIGITAL_MEDIA", ""};

const char* const kLines[] = {"1 OK addmed 1\r\n",
                              "1 NO addmed 1\r\n",
                              "1 BAD addmed 1\r\n",
                              "e addmed EOM=1 done\r\n",
                              "e addmed NO=1 no file\r\n",
                              "e addmed BAD=1 broken\r\n",
                              "1 addstr stream=1\r\n",
                              "2 addstr stream=2\r\n",
                              "3 addann stream=9\r\n",
                              "e sys STREAM=1 streamInfo:Song\r\n",
                              "e sys STREAM=1 streamStatus:30\r\n",
                              "e sys STREAM=1 streamCaps:NO-PAUSE\r\n",
                              "e sys STREAM=9 ERROR:x\r\n",
                              "e addmed EOM=9 done\r\n",
                              "1 OK addcli 1\r\n",
                              "1 OK\r\n",
                              "\r\n"};

class Chooser {
public:
    explicit Chooser(FuzzCore& core) : m_data(core.Data()) {}

    std::string Text() {
        if (m_data.ConsumeIntegralInRange<std::uint8_t>(0, 7) == 7)
            return m_data.ConsumeRandomLengthString(kMaxText);
        return m_data.PickValueInArray(kTexts);
    }
    // Few values of each kind of number, so that entries meet.
    std::uint32_t Room() { return Among({7, 8, 9, 0, 4294967295u}); }
    std::uint32_t Queue() { return Among({0, 10000, 10001, 10002, 10003, 10004, 1}); }
    std::uint32_t Binding() { return Among({3000, 3001, 3002, 3500, 3501, 3502, 4000, 0}); }
    std::uint32_t Media() { return Among({1, 2, 3, 4, 5, 0, 999}); }
    bool Flag() { return m_data.ConsumeBool(); }
    std::size_t Count(std::size_t most) { return m_data.ConsumeIntegralInRange<std::size_t>(0, most); }
    template <std::size_t N>
    std::string Of(const char* const (&texts)[N]) {
        return m_data.PickValueInArray(texts);
    }

private:
    std::uint32_t Among(std::initializer_list<std::uint32_t> values) {
        return *std::next(values.begin(), static_cast<std::ptrdiff_t>(Count(values.size() - 1)));
    }

    FuzzedDataProvider& m_data;
};

kv::auto_com<ICmdMessage> AnyCommand(FuzzCore& core) {
    Chooser choose(core);
    const auto& names = core.CommandNames();
    const std::size_t index = choose.Count(names.size());
    auto message = kv::CreateCmdMessage(index < names.size() ? names[index] : choose.Text());
    const bool forARoom = choose.Count(7) != 0;
    if (forARoom)
        message->AddParam("ROOM_ID", "INT", std::to_string(choose.Room()));
    for (std::size_t left = choose.Count(kMaxParams); left > 0; --left)
        message->AddParam(choose.Of(kParams), "STRING", choose.Text());
    return message;
}

void Execute(FuzzCore& core) {
    CR_String ret;
    const auto message = AnyCommand(core);
    core.Driver()->ExecuteCommand(*message, core.Data().ConsumeBool() ? &ret : nullptr, 0);
}

void Request(FuzzCore& core) {
    core.Driver()->UIRequest(*AnyCommand(core));
}

void Condition(FuzzCore& core) {
    Chooser choose(core);
    auto message = kv::CreateCmdMessage(choose.Flag()   ? "InSession"
                                        : choose.Flag() ? "NotInSession"
                                                        : "Other");
    message->AddParam("ROOM_ID", "INT", choose.Text());
    std::uint32_t value = 0;
    core.Driver()->TestCondition(kv::CondMessage(message), &value);
}

void Line(FuzzCore& core) {
    Chooser choose(core);
    const std::uint32_t binding = choose.Binding();
    core.Bound(binding, "DATA_RECEIVED", choose.Count(7) == 7 ? choose.Text() : choose.Of(kLines));
}

void ServerOnline(FuzzCore& core) {
    Chooser choose(core);
    auto message = kv::CreateCmdMessage("SERVER_ONLINE");
    message->AddParam("ALLOW_MULT_INPUT", "BOOLEAN", choose.Flag() ? "true" : "false");
    const std::string address = choose.Count(3) == 3 ? "10.0.0.99" : "127.0.0.1";
    core.Driver()->BoundCall(choose.Binding(), 6, "", kv::BindMessage("EVENT", message, address), nullptr);
}

void ServerOffline(FuzzCore& core) {
    core.Bound(Chooser(core).Binding(), "SERVER_OFFLINE", "");
}

void Protocol(FuzzCore& core) {
    Chooser choose(core);
    auto element = choose.Count(7) == 7 ? nullptr : kv::CmdMessageToXml(*AnyCommand(core));
    CR_String ret;
    core.Driver()->BoundCall(
        choose.Binding(), 6, choose.Text(),
        kv::BindMessage("PROTOCOL_COMMAND", kv::CreateCmdMessage(choose.Text()), choose.Text(), element),
        choose.Flag() ? &ret : nullptr);
}

void Binding(FuzzCore& core) {
    Chooser choose(core);
    core.Driver()->OnBindingChanged(choose.Binding(), choose.Text(), choose.Flag());
}

AVParams AnyParams(Chooser& choose) {
    return {choose.Room(), choose.Queue(), choose.Of(kKinds), choose.Room()};
}

AVLocationInfo AnyLocation(Chooser& choose) {
    AVLocationInfo location;
    location.endpointAddress =
        choose.Count(7) == 7 ? choose.Text() : "10.0.0." + std::to_string(choose.Count(2));
    location.endpointPort = choose.Count(7) == 7 ? 0 : 6200;
    location.endpointChannel = choose.Flag() ? 1 : 0;
    if (choose.Count(3) == 3)
        location.inputName = choose.Flag() ? "line1" : choose.Text();
    for (std::size_t left = choose.Count(3); left > 0; --left)
        location.mediaIds.push_back(choose.Media());
    location.targetDeviceId = choose.Room();
    if (choose.Count(7) == 7)
        location.locationKind = "GENERIC_MEDIA";
    return location;
}

void SelectRoom(FuzzCore& core) {
    Chooser choose(core);
    const AVParams params = AnyParams(choose);
    const AVLocationInfo location = AnyLocation(choose);
    AVReturn result;
    core.Driver()->OnAVSelected(params, {kAvClassDigitalAudio, 0}, {kAvClassRoomEndpoint, choose.Binding()},
                                location, nullptr, result);
}

void LeaveRoom(FuzzCore& core) {
    Chooser choose(core);
    if (choose.Flag())
        core.Deselect(choose.Room());
    else
        core.Driver()->OnAVRoomOff(choose.Room());
}

void Location(FuzzCore& core) {
    Chooser choose(core);
    const AVParams params = AnyParams(choose);
    AVLocationInfo location = AnyLocation(choose);
    core.Driver()->OnAVAddLocationInfo(params, {}, {}, location, nullptr);
    core.Driver()->IsAVOutputToInputValid(params, {choose.Room(), 0}, {kAvClassRoomEndpoint, 0});
}

void Timer(FuzzCore& core) {
    core.ExpireTimer(Chooser(core).Count(15));
}

void Rhapsody(FuzzCore& core) {
    Chooser choose(core);
    IRhapsodyCallback* callback = core.Rhapsody();
    if (!callback)
        return;
    std::vector<DataPlaylistLite> playlists(choose.Count(2), {choose.Text(), choose.Text()});
    std::vector<DataTrackInfo> tracks(choose.Count(3), {choose.Text()});
    std::vector<DataTrackFull> full(choose.Count(2),
                                    {choose.Text(), choose.Text(), "album", "artist", "name", "img"});
    switch (choose.Count(4)) {
        case 0:
            callback->RC_ErrorHandler(static_cast<RC_Error>(choose.Count(30)));
            break;
        case 1:
            callback->RC_Completed(playlists);
            break;
        case 2:
            callback->RC_Completed(static_cast<unsigned int>(tracks.size()), tracks);
            break;
        case 3:
            callback->RC_Completed(full);
            break;
        default:
            callback->RC_ConnectionChanged(choose.Flag());
    }
}

void Announce(FuzzCore& core) {
    Chooser choose(core);
    IDigitalAudio* announcements = core.Announcements();
    if (!announcements)
        return;
    switch (choose.Count(2)) {
        case 0:
            announcements->CreateAnnouncementStream();
            break;
        case 1:
            announcements->PlayAnnouncement(choose.Text());
            break;
        default:
            announcements->RemoveAnnouncementStream();
    }
}

void Persist(FuzzCore& core) {
    core.Driver()->GetPersistState(0);
}

void Others(FuzzCore& core) {
    IDriver& driver = *core.Driver();
    Chooser choose(core);
    core.PassTime(static_cast<std::uint32_t>(choose.Count(70000)));
    driver.OnDataIn(choose.Binding(), std::vector<std::uint8_t>{1, 2});
    driver.OnDataIn(choose.Binding(), *KVXML::CreateXmlNode("packet"));
    driver.OnConnectionStatusChanged(choose.Binding(), choose.Flag());
    driver.OnPoll();
    driver.OnEventFired(choose.Room(), 1);
    driver.GetEventLabel(1);
    driver.GetDeviceCommon();
    driver.GetDeviceIP();
}

using Entry = void (*)(FuzzCore&);
// Commands and lines come most often in life, and here.
constexpr std::array<Entry, 22> kEntries = {
    Execute,  Execute,    Execute,    Execute,   Execute,      Line,          Line,  Line,
    Line,     SelectRoom, SelectRoom, LeaveRoom, ServerOnline, ServerOffline, Timer, Rhapsody,
    Announce, Request,    Protocol,   Binding,   Persist,      Others};
constexpr std::array<Entry, 2> kRareEntries = {Condition, Location};

} // namespace

void RunEntry(FuzzCore& core, bool inTimers) {
    if (!core.Driver())
        return;
    const std::size_t index = Chooser(core).Count(kEntries.size() + kRareEntries.size() - 1);
    const Entry entry = index < kEntries.size() ? kEntries[index] : kRareEntries[index - kEntries.size()];
    if (inTimers && (entry == Timer || entry == Rhapsody))
        return;
    entry(core);
}

} // namespace fuzz
