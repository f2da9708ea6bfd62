#include <algorithm>
#include <iterator>

#include "replay/Arguments.h"
#include "replay/Session.h"
#include "replay/Verbs.h"
#include "replay/Words.h"

namespace korvel::replay {

namespace {

std::uint32_t TakeMediaId(Arguments& arguments) {
    const std::uint32_t id = arguments.Number("ID");
    if (id == 0 || id > media::kMaxId)
        throw FormatError("ID is 1 to " + std::to_string(media::kMaxId));
    return id;
}

void Clock(Session& session, Arguments& arguments) {
    const std::uint32_t seconds = arguments.Number("SECONDS");
    arguments.ExpectEnd();
    session.GetWorld().clock.SetWallStart(seconds);
}

void Random(Session& session, Arguments& arguments) {
    std::vector<std::int32_t> numbers;
    do {
        numbers.push_back(arguments.SignedNumber("N"));
        if (numbers.back() < 0)
            throw FormatError("N is 0 to 2147483647");
    } while (!arguments.AtEnd());
    session.GetWorld().random.SetNext(numbers);
}

void SystemType(Session& session, Arguments& arguments) {
    const std::uint32_t type = arguments.Number("N");
    arguments.ExpectEnd();
    session.GetWorld().systemType = type;
}

void Local(Session& session, Arguments& arguments) {
    const std::string address = arguments.Value("ADDRESS");
    arguments.ExpectEnd();
    session.GetWorld().localAddresses.insert(address);
}

void Name(Session& session, Arguments& arguments) {
    const std::uint32_t device = arguments.Number("DEVICE");
    const std::string text = arguments.Value("TEXT");
    arguments.ExpectEnd();
    session.GetWorld().names[device] = text;
}

void Song(Session& session, Arguments& arguments) {
    media::SongRecord song;
    song.id = TakeMediaId(arguments);
    const Fields fields(arguments, {"location", "device", "title", "artist", "album", "img", "genre"});
    song.location = fields.Text("location");
    song.deviceId = fields.Number("device");
    song.title = fields.Text("title");
    song.artist = fields.Text("artist");
    song.album = fields.Text("album");
    song.image = fields.Text("img");
    song.genre = fields.Text("genre");
    session.GetWorld().media.PutSong(song);
}

void Station(Session& session, Arguments& arguments) {
    media::StationRecord station;
    station.id = TakeMediaId(arguments);
    const Fields fields(arguments, {"location", "name", "genre", "img"});
    station.location = fields.Text("location");
    station.name = fields.Text("name");
    station.genre = fields.Text("genre");
    station.image = fields.Text("img");
    session.GetWorld().media.PutStation(station);
}

void Album(Session& session, Arguments& arguments) {
    media::AlbumRecord album;
    album.id = TakeMediaId(arguments);
    const Fields fields(arguments, {"songs", "input", "title"});
    album.songs = fields.NumberList("songs");
    album.inputName = fields.Text("input");
    album.title = fields.Text("title");
    session.GetWorld().media.PutAlbum(album);
}

void Playlist(Session& session, Arguments& arguments) {
    constexpr std::int32_t kTypeSong = 1;
    const std::uint32_t id = TakeMediaId(arguments);
    const std::string title = arguments.Value("TITLE");
    const Fields fields(arguments, {"songs"});
    std::vector<MediaItem> songs;
    for (const std::uint32_t song : fields.NumberList("songs"))
        songs.push_back({.type = kTypeSong, .externalId = "", .mediaId = song, .extra = 0});
    session.GetWorld().media.PutPlaylist(id, kDriverDeviceId, title, songs);
}

void Mp3Devices(Session& session, Arguments& arguments) {
    const std::uint32_t device = arguments.Number("DEVICE");
    const std::string list = arguments.Value("LIST");
    arguments.ExpectEnd();
    auto& mp3Devices = session.GetWorld().mp3Devices;
    if (list == "none")
        mp3Devices.erase(device);
    else
        mp3Devices[device] = ParseNumberList(list, "LIST");
}

void Analog(Session& session, Arguments& arguments) {
    const std::uint32_t room = arguments.Number("ROOM");
    const std::string list = arguments.Value("LIST");
    arguments.ExpectEnd();
    session.GetWorld().analogSources[room] = ParseNumberList(list, "LIST");
}

void Reply(Session& session, Arguments& arguments) {
    const std::uint32_t device = arguments.Number("DEVICE");
    const std::string name = arguments.Value("NAME");
    session.GetWorld().replies[{device, name}] = arguments.Text();
}

void Without(Session& session, Arguments& arguments) {
    struct Service {
        std::string_view name;
        const char* id;
        bool isKept; // by servers and queues from their beginning on
    };
    static constexpr Service kServices[] = {
        {"RhapsodyClient", KVRhapsodyClient::IRhapsodyClientFactory::kInterfaceId, false},
        {"StringX", IStringX::kInterfaceId, false},
        {"KVMessage", IKVMessage::kInterfaceId, false},
        {"AnnouncementNotifier", IAnnouncementNotifier::kInterfaceId, false},
        {"TimerManager", ITimerManager::kInterfaceId, true},
        {"RoomService", IRoomService::kInterfaceId, true},
        {"BindMessageSender", IBindMessageSender::kInterfaceId, true},
    };
    const std::string name = arguments.Value("NAME");
    arguments.ExpectEnd();
    const auto* service = std::find_if(std::begin(kServices), std::end(kServices),
                                       [&](const Service& entry) { return entry.name == name; });
    if (service == std::end(kServices))
        throw FormatError("no service that can be missing is named " + FormatValue(name));
    if (service->isKept && session.HasDriver())
        throw FormatError(name + " is missing from the start or not at all");
    session.GetInstances().RevokeInstance(service->id);
}

void Fail(Session& session, Arguments& arguments) {
    static constexpr std::string_view kOperations[] = {
        kFailCreatePlaylist, kFailAddMedia,          kFailAddSongToPlaylist, kFailSongLocation,
        kFailCreateMessage,  kFailCreateBindMessage, kFailStartTimer,        kFailCreateClient};
    const std::string name = arguments.Value("NAME");
    arguments.ExpectEnd();
    if (std::find(std::begin(kOperations), std::end(kOperations), name) == std::end(kOperations))
        throw FormatError("no operation that can fail is named " + FormatValue(name));
    session.GetWorld().failing.insert(name);
}

void Room(Session& session, Arguments& arguments) {
    const std::uint32_t room = arguments.Number("ROOM");
    const Fields fields(arguments, {"ip", "port", "channel"});
    session.GetWorld().live.AddRoom(room,
                                    {fields.Text("ip"), fields.Number("port"), fields.Number("channel")});
}

void Engine(Session& session, Arguments& arguments) {
    const std::uint32_t binding = arguments.Number("BINDING");
    arguments.ExpectEnd();
    session.GetWorld().live.AddEngine(binding);
}

void Inside(Session& session, Arguments& arguments) {
    static constexpr std::string_view kOutside[] = {"start", "create", "stop", "advance"};
    const std::string output = arguments.Value("OUTPUT");
    const std::string input = arguments.Rest();
    Arguments words(input);
    const std::string verb = words.Value("INPUT");
    if (!FindVerb(verb) || std::find(std::begin(kOutside), std::end(kOutside), verb) != std::end(kOutside))
        throw FormatError("nothing inside a call is named " + FormatValue(verb));
    session.GetWorld().insideCalls.push_back({output, input});
}

constexpr Verb kWorldVerbs[] = {
    {"clock", "SECONDS", "the wall clock at the start of the run", Clock},
    {"random", "N...", "the next random numbers", Random},
    {"system-type", "N", "the model code of the controller", SystemType},
    {"local", "ADDRESS", "one more IPv4 address of this controller", Local},
    {"name", "DEVICE TEXT", "the name of a room or device", Name},
    {"song", "ID [location= device= title= artist= album= img= genre=]", "a song of the database", Song},
    {"station", "ID [location= name= genre= img=]", "a broadcast record of the database", Station},
    {"album", "ID [songs=1,2 input= title=]", "an album of the database", Album},
    {"playlist", "ID TITLE [songs=1,2]", "a saved playlist of this driver", Playlist},
    {"mp3devices", "DEVICE LIST", "the storage devices that DEVICE lists; none: it has no storage interface",
     Mp3Devices},
    {"analog", "ROOM LIST",
     "the devices between ROOM and its source, which ROOM can take from an analog output", Analog},
    {"reply", "DEVICE NAME TEXT", "what DEVICE answers to the message NAME", Reply},
    {"without", "NAME",
     "a service that is not there: RhapsodyClient, StringX, KVMessage, AnnouncementNotifier; before the "
     "start, also TimerManager, RoomService or BindMessageSender",
     Without},
    {"fail", "NAME",
     "what fails from now on: CreatePlaylist, AddMedia, AddSongToPlaylist, SongLocation, CreateMessage, "
     "CreateBindMessage, StartTimer or CreateClient",
     Fail},
    {"room", "ROOM [ip= port= channel=]", "a live room, which selects and deselects when it is told to",
     Room},
    {"engine", "BINDING", "a live audio server, which answers every line", Engine},
    {"inside", "OUTPUT INPUT...",
     "the next output that starts with OUTPUT makes the core call INPUT before it returns", Inside},
};

} // namespace

std::span<const Verb> GetWorldVerbs() {
    return kWorldVerbs;
}

} // namespace korvel::replay
