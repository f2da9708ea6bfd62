#include "RandomWishes.h"

#include <algorithm>
#include <array>

namespace korvel::controller {

namespace {

std::string ItemOf(const MediaRef& media) {
    if (media.kind == MediaKind::Track)
        return "<SONG SOURCE=\"2\" ID=\"" + media.id + "\"/>";
    return "<MEDIA_ID>" + media.id + "</MEDIA_ID>";
}

} // namespace

std::string RandomWishes::Wish() {
    static constexpr std::array kWishes = {
        &RandomWishes::Add,       &RandomWishes::Add,       &RandomWishes::AddMany, &RandomWishes::AddMany,
        &RandomWishes::AddAlone,  &RandomWishes::Edit,      &RandomWishes::Edit,    &RandomWishes::Edit,
        &RandomWishes::Transport, &RandomWishes::Transport, &RandomWishes::Rooms,   &RandomWishes::Hear,
        &RandomWishes::Hear,      &RandomWishes::Time};
    return (this->*kWishes[Below(kWishes.size())])();
}

std::string RandomWishes::Command(const std::string& name, Parameters parameters) {
    std::string said = name;
    for (const auto& [key, value] : parameters)
        said += ' ' + key + '=' + value;
    m_house.Command(name, parameters);
    return said;
}

void RandomWishes::AddFlags(Parameters& parameters) {
    for (const char* flag : {"PLAY_NOW", "PLAY_NEXT", "CLEAR"})
        if (Below(4) == 0)
            parameters.emplace_back(flag, Flag());
}

std::string RandomWishes::Add() {
    Parameters parameters{{"ROOM_ID", Room()}, {"MEDIA_ID", Song()}};
    if (Below(6) == 0) {
        parameters[1].second = "track" + Song();
        parameters.emplace_back("SOURCE", "2");
    } else if (Below(12) == 0) {
        parameters.emplace_back("SOURCE", std::to_string(Below(8)));
    }
    AddFlags(parameters);
    return Command("ADD_SONG", parameters);
}

std::string RandomWishes::AddAlone() {
    switch (Below(4)) {
        case 0:
            return Command("ADD_SONG", {{"ROOM_ID", Room()}, {"MEDIA_ID", "channel"}, {"SOURCE", "3"}});
        case 1:
            return Command("ADD_IR_STREAM", {{"ROOM_ID", Room()}, {"MEDIA_ID", "31"}});
        case 2:
            return Command("ADD_IR_STREAM", {{"ROOM_ID", Room()}, {"MEDIA", "station" + Song()}});
        default: {
            const RoomId room = static_cast<RoomId>(1 + Below(DriverHouse::kRooms));
            m_house.SelectInput(room, "turntable");
            return "input in " + std::to_string(room);
        }
    }
}

std::string RandomWishes::AddMany() {
    Parameters parameters{{"ROOM_ID", Room()}};
    switch (Below(5)) {
        case 0:
            parameters.emplace_back("MEDIA_ID", "11");
            return Command("ADD_ALBUM_MP3", parameters);
        case 1:
            parameters.emplace_back("MEDIA_ID", "21");
            AddFlags(parameters);
            return Command("ADD_PLAYLIST", parameters);
        case 2:
            parameters.emplace_back("ARTIST", "Ann");
            return Command("QUEUE_ALL", parameters);
        default:
            parameters.emplace_back("MEDIA", List(5));
            AddFlags(parameters);
            return Command("ADD_SONG_LIST", parameters);
    }
}

std::string RandomWishes::List(std::size_t most) {
    std::string list = "<MEDIA>";
    for (std::size_t count = Below(most + 1); count > 0; --count) {
        const bool track = Below(6) == 0;
        list += ItemOf({track ? MediaKind::Track : MediaKind::Song, track ? "track" + Song() : Song()});
    }
    return list + "</MEDIA>";
}

// Mostly what the queue holds, in another order, with something gone or twice.
std::string RandomWishes::Edit() {
    const std::string room = Room();
    if (Below(3) == 0)
        return Command("REMOVE_SONG", {{"ROOM_ID", room}, {"MEDIA_ID", Song()}});
    if (Below(4) == 0)
        return Command("EDIT_QUEUE", {{"ROOM_ID", room}, {"MEDIA", List(4)}});
    const Session* const session = m_house.GetHouse().SessionOf(static_cast<RoomId>(std::stoul(room)));
    std::vector<MediaRef> media =
        session ? m_house.ListOf(m_house.GetReader().QueueOf(session->id)) : std::vector<MediaRef>();
    for (std::size_t swaps = Below(3); swaps > 0 && !media.empty(); --swaps)
        std::swap(media[Below(media.size())], media[Below(media.size())]);
    if (!media.empty() && Below(3) == 0)
        media.erase(media.begin() + static_cast<std::ptrdiff_t>(Below(media.size())));
    if (!media.empty() && Below(4) == 0)
        media.push_back(media[Below(media.size())]);
    std::string list = "<MEDIA>";
    for (const MediaRef& one : media)
        list += ItemOf(one);
    return Command("EDIT_QUEUE", {{"ROOM_ID", room}, {"MEDIA", list + "</MEDIA>"}});
}

std::string RandomWishes::Transport() {
    static constexpr std::array kCommands = {"PLAY",     "PLAY",     "PAUSE",  "STOP",   "SKIP_FWD",
                                             "SKIP_FWD", "SKIP_REV", "REPEAT", "SHUFFLE"};
    const std::string command = kCommands[Below(kCommands.size())];
    Parameters parameters{{"ROOM_ID", Room()}};
    if ((command == "REPEAT" || command == "SHUFFLE") && Below(2) == 0)
        parameters.emplace_back(command, Flag());
    if (Below(8) == 0) {
        parameters.emplace_back("MEDIA_ID", Song());
        if (Below(2) == 0)
            parameters.emplace_back("MEDIA_INDEX", std::to_string(Below(6)));
        return Command("GO_TO_SONG", parameters);
    }
    return Command(command, parameters);
}

std::string RandomWishes::Rooms() {
    switch (Below(6)) {
        case 0:
            return Command("JOIN", {{"ROOM_ID", Room()}, {"JOIN_ID", Room()}});
        case 1:
        case 2:
            return Command("ADD_ROOMS_TO_SESSION",
                           {{"ROOM_ID", Room()}, {"ROOM_ID_LIST", Room() + "," + Room()}});
        case 3:
            return Command("REMOVE_ROOMS_FROM_SESSION", {{"ROOM_ID", Room()}, {"ROOM_ID_LIST", Room()}});
        case 4:
            return Command("REMOVE", {{"ROOM_ID", Room()}});
        default: {
            const std::string line = (Below(2) == 0 ? "deselect " : "off ") + Room();
            m_house.Do(line);
            return line;
        }
    }
}

// What the audio server says of one of the streams that it made last.
std::string RandomWishes::Hear() {
    const std::size_t made = m_house.CountStreams();
    const std::string stream = std::to_string(made - Below(std::min<std::size_t>(made, 5) + 1));
    static constexpr std::array kLines = {
        "* addmed EOM=", "* addmed EOM=", "* addmed BAD=", "9 NO addmed ", "* SYS STREAM=", "* SYS STREAM="};
    const std::size_t which = Below(kLines.size());
    std::string line = kLines[which] + stream;
    if (which == 2)
        line += " no such file";
    else if (which == 4)
        line += " streamInfo:Ann - Blue";
    else if (which == 5)
        line += " streamCaps:NO-PAUSE";
    m_house.Say(line);
    return line;
}

std::string RandomWishes::Time() {
    if (Below(8) == 0) {
        m_house.Do("offline 3000");
        m_house.Do("online 3000 127.0.0.1");
        return "the audio server was away";
    }
    const std::size_t milliseconds = Below(10) == 0 ? 400000 : Below(8000);
    m_house.now += Milliseconds(milliseconds);
    m_house.Do("advance " + std::to_string(milliseconds));
    return "time passed";
}

} // namespace korvel::controller
