#include "Vocabulary.h"

#include <algorithm>
#include <array>
#include <map>

#include "driver/korvel_digitalaudio.h"
#include "replay/Words.h"
#include "server/link/ASPacket.h"
#include "server/link/Protocol.h"

namespace fuzz {

namespace {

using korvel::replay::FormatValue;

const Pool kRooms{"7", "8", "9", "10", "0", "4294967295"};
const Pool kQueues{"10000", "10001", "10002", "10003", "0", "1", "4294967295"};
const Pool kMedia{"1", "2", "3", "4", "5", "0", "999", "Tra.1", "ps.1", "mp.1", "268435440"};
const Pool kMediaLists{"1", "1,2,3", "4", "5", "0", ""};
const Pool kDocuments{"<MEDIA><MEDIA_ID>1</MEDIA_ID><MEDIA_ID>2</MEDIA_ID><MEDIA_ID>3</MEDIA_ID></MEDIA>",
                      "<MEDIA><SONG SOURCE=\"1\" ID=\"2\"/><SONG SOURCE=\"2\" ID=\"Tra.1\"/></MEDIA>",
                      "<MEDIA><SONG SOURCE=\"3\" ID=\"ps.1\"/></MEDIA>",
                      "<MEDIA><SONG SOURCE=\"4\" ID=\"mp.1\"/><SONG SOURCE=\"1\" ID=\"3\"/></MEDIA>",
                      "<MEDIA><SONG SOURCE=\"5\" ID=\"5\"/></MEDIA>",
                      "<MEDIA></MEDIA>",
                      "<albums><id>4</id><id>6</id></albums>",
                      "http://radio/1",
                      "<broken"};
const Pool kFlags{"1", "0", "true", "FALSE", ""};
const Pool kNumbers{"0",    "1",     "2",         "3",          "5",          "60",
                    "4095", "65535", "268435440", "2147483648", "4294967295", "-1"};
const Pool kTexts{"Ann", "", "Ben", "Blue", "Saved", "a <&> \"b\""};
const Pool kDevices{"300", "500", "7", "8", "100002", "0"};

const std::map<std::string_view, Pool> kParameters{
    {"ROOM_ID", kRooms},
    {"roomId", kRooms},
    {"JOIN_ID", kRooms},
    {"ROOM_ID_LIST", {"7,8", "8,9", "9", "7,8,9,9", ""}},
    {"QUEUE_ID", kQueues},
    {"queueId", kQueues},
    {"MEDIA_ID", kMedia},
    {"MEDIA", kDocuments},
    {"SOURCE", {"1", "2", "3", "4", "5", "0", "6"}},
    {"MEDIA_INDEX", kNumbers},
    {"PLAY_NOW", kFlags},
    {"PLAY_NEXT", kFlags},
    {"CLEAR", kFlags},
    {"SHUFFLE", kFlags},
    {"REPEAT", kFlags},
    {"merge", kFlags},
    {"force", kFlags},
    {"FLAG_VALUE", kFlags},
    {"DELAY_VALUE", kNumbers},
    {"PLAY_PREF", kNumbers},
    {"DEVICE_ID", kDevices},
    {"deviceid", kDevices},
    {"QUEUE_INFO", kTexts},
    {"NAME", kTexts},
    {"ARTIST", kTexts},
    {"GENRE", kTexts},
    {"artist", kTexts},
    {"album", kTexts},
    {"title", kTexts},
    {"genre", kTexts},
    {"imageUrl", kTexts},
};

// Fields of lines, and what else the patterns below name.
const std::map<std::string_view, Pool> kFields{
    {"queue", kQueues},
    {"kind",
     {"QUEUE", "SONG", "SONGS", "ALBUM", "PLAYLIST", "BROADCAST_AUDIO", "ANNOUNCEMENT",
      "ANNOUNCEMENT_COMPLETE", "ALBUM_MP3", "DIGITAL_MEDIA", ""}},
    {"source", kDevices},
    {"binding", {"3000", "3001", "3002", "3500", "3501", "4000", "0"}},
    {"ip", {"10.0.0.7", "10.0.0.8", "10.0.0.9", "127.0.0.1", ""}},
    {"port", {"6200", "6202", "0"}},
    {"channel", {"1", "0"}},
    {"input", {"", "line-in", "line-2"}},
    {"media", kMediaLists},
    {"target", kRooms},
    {"location-kind", {"", "GENERIC_MEDIA", "INTERNET_MEDIA"}},
    {"location", {"/media/a.flac", "b.flac", "http://radio/1", ""}},
    {"device", kDevices},
    {"songs", kMediaLists},
    {"ALLOW_MULT_INPUT", kFlags},

    {"time", {"5000", "0", "1", "1000", "10000", "60000", "300000"}},
    {"message", {"PLAY", "PAUSE", "STOP", "SKIP_FWD", "SKIP_REV", "GET_MOUNT_PATH"}},
    {"reply", {"<r handled=\"true\"/>", "<r handled=\"0\"/>", "<path>/media</path>", "usb", "<broken", ""}},
    {"error", {"0", "4", "10", "13", "30", "-1"}},
    {"failure",
     {"CreatePlaylist", "AddMedia", "AddSongToPlaylist", "SongLocation", "CreateMessage", "CreateBindMessage",
      "StartTimer", "CreateClient"}},
    {"number", {"0", "1", "2", "3", "2147483647"}},
    {"record", {"1", "2", "3", "4", "5", "6"}},
    {"class", {"6", "15", "0"}},
    {"service", {"RhapsodyClient", "StringX", "KVMessage", "AnnouncementNotifier"}},
    {"output",
     {"send 3000", "set 1006", "set 1009", "ui", "event", "message 7 DESELECT_AUDIO_PATH",
      "message 8 SELECT_AUDIO_DEVICE"}},
};

constexpr std::array kEntryPatterns{
    "select {ROOM_ID} queue={queue} kind=QUEUE ip={ip} port=6200 channel=1 target={target}",
    "select {ROOM_ID} queue={queue} kind=QUEUE ip={ip} port=6200 channel={channel} source={source} "
    "target={target}",
    "select {ROOM_ID} queue={queue} kind={kind} media={media} ip={ip} port={port} channel=1 target={target}",
    "select {ROOM_ID} queue={queue} kind={kind} media={media} binding={binding} ip={ip} port=6200 "
    "input={input} "
    "source={source} target={target} location-kind={location-kind}",
    "select {ROOM_ID} kind=ANNOUNCEMENT ip={ip} port=6200",
    "location {ROOM_ID} kind={kind} media={media} binding={binding} input={input} source={source} "
    "target={target} location-kind={location-kind} location={location}",
    "valid {class} {class}",
    "deselect {ROOM_ID}",
    "off {ROOM_ID}",
    "online {binding} {ip} ALLOW_MULT_INPUT={ALLOW_MULT_INPUT}",
    "online 3000 127.0.0.1",
    "offline {binding}",
    "bound {binding}",
    "unbound {binding}",
    "advance {time}",
    "advance 5000",
    "test InSession ROOM_ID={ROOM_ID}",
    "test NotInSession ROOM_ID={ROOM_ID}",
    "announce create",
    "announce play {location}",
    "announce remove",
    "rhapsody playlists {MEDIA_ID} {title}",
    "rhapsody playlist-tracks Tra.1 {MEDIA_ID}",
    "rhapsody playlist-tracks",
    "rhapsody track id={MEDIA_ID} context={queue} album={album} artist={artist} name={title}",
    "rhapsody track",
    "rhapsody error {error}",
    "persist",
    "create",
    "protocol {binding} GET_SETTINGS",
};

constexpr std::array kWorldPatterns{
    "start",
    "stop",
    "song {record} location={location} device={device} title={title} artist={artist} genre={genre}",
    "album {record} songs={songs} input={input} title={title}",
    "station {record} location={location} name={title}",
    "playlist {record} {NAME} songs={songs}",
    "mp3devices {device} 300,500",
    "analog {ROOM_ID} 300,100002,500",
    "reply {device} {message} {reply}",
    "name {ROOM_ID} {title}",
    "engine {binding}",
    "room {ROOM_ID} ip={ip} port={port} channel={channel}",
    "fail {failure}",
    "random {number} {number} {number}",
    "clock {time}",
    "local {ip}",
    "system-type {number}",
    "without {service}",
    "inside {output} deselect {ROOM_ID}",
    "inside {output} offline {binding}",
    "inside {output} select {ROOM_ID} queue={queue} kind=QUEUE ip={ip} port=6200 target={target}",
    "inside {output} command STOP ROOM_ID={ROOM_ID}",
};

// The usual value half of the time.
const std::string& AnyOf(const Pool& pool, Dice& dice) {
    return dice.OneIn(2) ? pool.front() : dice.Of(pool);
}

std::string AnyValueOf(std::string_view name, Dice& dice) {
    return FormatValue(AnyOf(*PoolOf(name), dice));
}

std::string Fill(std::string_view pattern, Dice& dice) {
    std::string line;
    while (!pattern.empty()) {
        const std::size_t open = std::min(pattern.find('{'), pattern.size());
        line += pattern.substr(0, open);
        pattern.remove_prefix(open);
        if (pattern.empty())
            break;
        const std::size_t close = pattern.find('}');
        line += AnyValueOf(pattern.substr(1, close - 1), dice);
        pattern.remove_prefix(close + 1);
    }
    return line;
}

// Takes the names out of "ROOM_ID, [SOURCE=1]".
void TakeNames(const std::string& list, std::vector<std::string>& names) {
    std::vector<std::string> words;
    ASPacket::SplitPacket(list, ", ", words, 0);
    for (const std::string& word : words) {
        const std::size_t start = word.starts_with('[') ? 1 : 0;
        names.push_back(word.substr(start, word.find_first_of("=]") - start));
    }
}

std::string AnyCommand(Dice& dice) {
    const CommandWords& command = dice.Of(AllCommands());
    // Over a binding now and then, and as a request where it is none.
    std::string line = dice.OneIn(16) ? "protocol 3000" : dice.OneIn(16) ? "request" : command.verb;
    line += " " + command.name;
    for (const std::string& name : command.parameters) {
        const bool room = name == "ROOM_ID";
        if (!dice.OneIn(room ? 16 : 4))
            line += " " + name + "=" + AnyValueOf(name, dice);
    }
    return line;
}

std::string AnyServerLine(Dice& dice) {
    constexpr std::array kStreams{1u, 1u, 1u, 2u, 2u, 3u, 4u, 5u, 0u, 4095u};
    const auto lines = ServerLines(static_cast<std::uint32_t>(dice.Below(20)), dice.Of(kStreams));
    return "data " + AnyValueOf("binding", dice) + " " + FormatValue(dice.Of(lines));
}

} // namespace

const Pool* PoolOf(std::string_view name) {
    for (const auto* pools : {&kParameters, &kFields}) {
        const auto found = pools->find(name);
        if (found != pools->end())
            return &found->second;
    }
    return nullptr;
}

std::vector<std::string> ParameterNames() {
    std::vector<std::string> names;
    for (const auto& entry : kParameters)
        names.emplace_back(entry.first);
    return names;
}

const Pool* PoolWith(std::string_view value, Dice& dice) {
    std::vector<const Pool*> found;
    for (const auto* pools : {&kParameters, &kFields}) {
        for (const auto& [name, pool] : *pools) {
            if (std::find(pool.begin(), pool.end(), value) != pool.end())
                found.push_back(&pool);
        }
    }
    return found.empty() ? nullptr : dice.Of(found);
}

const std::vector<CommandWords>& AllCommands() {
    static const std::vector<CommandWords> commands = [] {
        std::vector<CommandWords> all;
        for (const auto& command : korvel_digitalaudio::Commands()) {
            auto& words = all.emplace_back(CommandWords{"command", command.name, {}});
            TakeNames(command.required, words.parameters);
            TakeNames(command.others, words.parameters);
        }
        for (const auto& request : korvel_digitalaudio::Requests()) {
            auto& words = all.emplace_back(CommandWords{"request", request.name, {}});
            TakeNames(request.others, words.parameters);
        }
        return all;
    }();
    return commands;
}

std::vector<std::string> ServerLines(std::uint32_t number, std::uint32_t stream) {
    using namespace protocol;
    const std::string n = std::to_string(number) + " ", s = std::to_string(stream);
    const std::string event = std::string(kEvent) + " ";
    std::vector<std::string> lines;
    for (const char* command : {kReset, kAddStream, kAddAnnouncement, kRemoveStream, kAddClient,
                                kRemoveClient, kAddMedia, kRemoveMedia, kSetState, kEndOfStream}) {
        lines.push_back(n + kOk + " " + command + " " + s);
        lines.push_back(n + kNo + " " + command + " " + s);
    }
    for (const char* command : {kAddStream, kAddAnnouncement})
        lines.push_back(n + command + " stream=" + s);
    lines.push_back(event + kSystem + " " + kAddAnnouncement + "=" + s);
    lines.push_back(event + kAddMedia + " " + kEndOfMedia + "=" + s);
    lines.push_back(event + kAddMedia + " " + kBad + "=" + s + " no such file");
    lines.push_back(event + kAddMedia + " " + kNo + "=" + s + " no such file");
    const std::string report = event + kSystem + " " + kStreamReport + "=" + s + " ";
    lines.push_back(report + kStreamInfo + "Ann - Blue");
    lines.push_back(report + kStreamStatus + "buffering");
    lines.push_back(report + kStreamCaps + kNoPause);
    lines.push_back(report + kStreamError + "disk");
    lines.push_back(report + "anything else");
    for (std::string& line : lines)
        line += kLineEnd;
    return lines;
}

std::string AnyEntry(Dice& dice) {
    switch (dice.Below(4)) {
        case 0:
            return AnyCommand(dice);
        case 1:
            return AnyServerLine(dice);
        default:
            return Fill(dice.Of(kEntryPatterns), dice);
    }
}

std::string AnyLine(Dice& dice) {
    return dice.OneIn(8) ? Fill(dice.Of(kWorldPatterns), dice) : AnyEntry(dice);
}

} // namespace fuzz
