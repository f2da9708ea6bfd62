#include "DriverHouse.h"

#include "driver/Ids.h"
#include "driver/rooms/RoomRouter.h"
#include "platform/CmdMessage.h"
#include "platform/Text.h"
#include "replay/Plugin.h"
#include "replay/Words.h"

namespace korvel::controller {

namespace {

CreationFunc TheDriver() {
    static const replay::Plugin plugin(KORVEL_DRIVER);
    return plugin.GetCreation();
}

std::vector<HouseRoom> Rooms() {
    std::vector<HouseRoom> rooms;
    for (RoomId id = 1; id <= DriverHouse::kRooms; ++id)
        rooms.push_back({id, "Room " + std::to_string(id), {}, {}});
    return rooms;
}

// The value of the word "key:TYPE=value".
std::string Parameter(std::string_view words, std::string_view key) {
    while (!replay::TrimStart(words).empty()) {
        const replay::Word word = replay::TakeWord(words);
        if (word.equals != std::string::npos && word.text.starts_with(key) && word.text[key.size()] == ':')
            return word.text.substr(word.equals + 1);
    }
    return "";
}

} // namespace

DriverHouse::DriverHouse()
    : m_house(Rooms(), {}),
      m_reader({m_house, [this](std::uint32_t queue) { return Info(queue); },
                [this](RoomId room) {
                    const auto input = m_inputs.find(room);
                    return input == m_inputs.end() ? std::nullopt : std::optional(input->second);
                },
                [this] { return now; }}),
      m_session(TheDriver()) {
    for (std::uint32_t song = 1; song <= kSongs; ++song) {
        const std::string number = std::to_string(song);
        Do("song " + number + " location=/music/" + number + ".flac title=Song" + number +
           " artist=Ann genre=Jazz");
    }
    Do("album 11 songs=1,2,3 title=Blue");
    Do("album 12 songs= input=turntable title=Turntable");
    Do("playlist 21 Evening songs=3,4,5");
    Do("station 31 location=http://radio/31 name=Radio");
    Do("start");
    Do("online 3000 127.0.0.1");
}

DriverHouse::~DriverHouse() = default;

void DriverHouse::Do(const std::string& line) {
    Enter(line);
    while (!m_waiting.empty()) {
        const std::string next = m_waiting.front();
        m_waiting.pop_front();
        Enter(next);
    }
}

void DriverHouse::Command(const std::string& name, const Parameters& parameters) {
    const auto command = kv::CreateCmdMessage(name);
    std::string line = "command " + name;
    for (const auto& [key, value] : parameters) {
        command->AddParam(key, "STRING", value);
        line += ' ' + key + '=' + replay::FormatValue(value);
    }
    m_reader.OnCommand(*command);
    m_return.clear();
    Do(line);
    const std::uint32_t queue = QueueIdOf(m_return);
    if (IsMediaCommand(name) && queue != 0)
        Select(command->GetNumber("ROOM_ID"), queue, m_input);
}

void DriverHouse::Say(const std::string& line) {
    if (line.find(" NO addmed") != std::string::npos || line.find("addmed BAD") != std::string::npos)
        m_reader.OnRefused("it is broken");
    Do("data 3000 " + replay::FormatValue(line + "\r\n"));
}

void DriverHouse::SelectInput(RoomId room, const std::string& input) {
    m_input = input;
    Command("ADD_ALBUM_MP3", {{"ROOM_ID", std::to_string(room)}, {"MEDIA_ID", "12"}});
    m_input.clear();
}

void DriverHouse::Select(RoomId room, std::uint32_t queueId, const std::string& input) {
    if (input.empty())
        m_inputs.erase(room);
    else
        m_inputs[room] = input;
    const std::string number = std::to_string(room);
    std::string line = "select " + number + " queue=" + std::to_string(queueId) + " kind=QUEUE ip=10.0.0." +
                       number + " port=6200 channel=1 source=100002";
    if (!input.empty())
        line += " input=" + input;
    Do(line);
}

void DriverHouse::Enter(const std::string& line) {
    m_session.Execute(line);
    if (line.starts_with("deselect ") || line.starts_with("off "))
        m_inputs.erase(kv::ToULong(line.substr(line.find(' ') + 1)));
    for (const std::string& output : m_session.GetWorld().recorder.TakeLines())
        OnOutput(output);
    if (line.starts_with("offline "))
        m_reader.OnServerLost();
    m_reader.Read();
}

void DriverHouse::OnOutput(std::string_view line) {
    std::string_view rest = line;
    const std::string mark = replay::TakeWord(rest).text;
    const std::string_view words = replay::TrimStart(rest);
    const std::string name = replay::TakeWord(rest).text;
    rest = replay::TrimStart(rest);
    if (mark != "<")
        return;
    if (name == "fault")
        m_faults.emplace_back(words);
    else if (name == "return")
        m_return = replay::ParseText(rest);
    else if (name == "message")
        OnMessage(rest);
    else if (name == "send")
        Answer(rest);
    else if (name == "room-service")
        m_reader.OnEnded(kv::ToULong(rest.substr(rest.find(' ') + 1)) - 20);
    if (name != "set")
        return;
    const std::uint32_t variable = kv::ToULong(replay::TakeWord(rest).text);
    const std::string text = replay::ParseText(replay::TrimStart(rest));
    if (variable == 1009)
        m_reader.OnRoomMap(m_roomMap = text);
    else if (variable == 1007)
        m_reader.OnList(text);
    else if (variable == 1003)
        m_reader.OnRoomSettings(text);
}

void DriverHouse::OnMessage(std::string_view words) {
    const std::string room = replay::TakeWord(words).text;
    const std::string name = replay::TakeWord(words).text;
    if (name == "DESELECT_AUDIO_PATH")
        m_waiting.push_back("deselect " + room);
    else if (name == "SELECT_AUDIO_DEVICE")
        m_waiting.push_back("select " + room + " queue=" + Parameter(words, "queueid") +
                            " kind=QUEUE ip=10.0.0." + room + " port=6200 channel=1 source=100002");
}

void DriverHouse::Answer(std::string_view words) {
    replay::TakeWord(words); // the binding
    std::string line = replay::TakeWord(words).text;
    line.erase(line.find('\r'));
    const std::size_t blank = line.find(' ');
    const std::string number = line.substr(0, blank);
    const std::string what = line.substr(blank + 1);
    std::string answer = number + " OK " + what;
    if (what == "addstr")
        answer = number + " addstr stream=" + std::to_string(++m_streams);
    m_waiting.push_back("data 3000 " + replay::FormatValue(answer + "\r\n"));
}

std::vector<QueueStatus> DriverHouse::Statuses() {
    std::vector<QueueStatus> statuses;
    for (const std::string_view piece : PiecesOfRoomMap(m_roomMap))
        if (auto status = ReadStatus(piece); status && ReadList(*Info(status->queueId)))
            statuses.push_back(*std::move(status));
    return statuses;
}

std::vector<MediaRef> DriverHouse::ListOf(std::uint32_t queueId) {
    const auto info = Info(queueId);
    auto list = info ? ReadList(*info) : std::nullopt;
    return list ? std::move(list->media) : std::vector<MediaRef>();
}

kv::auto_com<KVXML::INode> DriverHouse::Info(std::uint32_t queueId) {
    const auto request = kv::CreateCmdMessage("GET_QUEUE_INFO");
    request->AddParam("QUEUE_ID", "INT", std::to_string(queueId));
    return m_session.GetDriver().UIRequest(*request);
}

} // namespace korvel::controller
