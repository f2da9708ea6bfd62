#include "audioserver/LineFormat.h"

#include "common/Text.h"

namespace korvel::audioserver {
namespace {

std::string Reply(std::uint32_t sequence, std::string_view result, std::string_view command,
                  std::optional<StreamNumber> stream) {
    std::string line = std::to_string(sequence);
    line.append(" ").append(result).append(" ").append(command);
    if (stream)
        line.append(" ").append(std::to_string(*stream));
    return line.append(kLineEnd);
}

// "* <command> <result>=<S>" without the line's end.
std::string EventStart(std::string_view command, std::string_view result, StreamNumber stream) {
    std::string line(kEventMark);
    line.append(" ").append(command).append(" ").append(result).append("=").append(std::to_string(stream));
    return line;
}

} // namespace

std::string OkLine(std::uint32_t sequence, std::string_view command, std::optional<StreamNumber> stream) {
    return Reply(sequence, kOk, command, stream);
}

std::string NoLine(std::uint32_t sequence, std::string_view command, std::optional<StreamNumber> stream) {
    return Reply(sequence, kNo, command, stream);
}

std::string CreatedLine(std::uint32_t sequence, std::string_view command, StreamNumber stream) {
    std::string line = std::to_string(sequence);
    line.append(" ")
        .append(command)
        .append(" ")
        .append(kStreamKey)
        .append("=")
        .append(std::to_string(stream));
    return line.append(kLineEnd);
}

std::string AnnouncementEvent(std::string_view command, StreamNumber stream) {
    return command == kAnnouncement ? EventStart(kSystem, kAnnouncement, stream).append(kLineEnd)
                                    : std::string();
}

std::string EndOfMediaLine(StreamNumber stream) {
    return EventStart("addmed", kEndOfMedia, stream).append(kLineEnd);
}

std::string BadMediaLine(StreamNumber stream, std::string_view reason) {
    std::string text = OneLine(reason);
    if (text.size() < kMinEventTextBytes)
        text = "media failed";
    return EventStart("addmed", kBadMedia, stream).append(" ").append(text).append(kLineEnd);
}

std::string ReportLine(StreamNumber stream, std::string_view prefix, std::string_view text) {
    return EventStart(kSystem, kSystemStream, stream)
        .append(" ")
        .append(prefix)
        .append(OneLine(text))
        .append(kLineEnd);
}

std::string OneLine(std::string_view text) {
    return common::OneLine(text, kMaxEventTextBytes);
}

} // namespace korvel::audioserver
