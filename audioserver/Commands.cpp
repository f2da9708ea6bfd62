// What each request does. Every request gets exactly one answer.
#include <stdexcept>

#include "audioserver/Descriptors.h"
#include "audioserver/LineFormat.h"
#include "audioserver/MediaReference.h"
#include "audioserver/Session.h"
#include "common/Log.h"

namespace korvel::audioserver {

void Session::Dispatch(const Request& request) {
    switch (request.command) {
        case Command::kPing:
            Send(OkLine(request.sequence, CommandWord(request.command)));
            break;
        case Command::kReset:
            Send(Reset(request));
            break;
        case Command::kAddStream:
        case Command::kAddAnnouncement:
            Send(CreateStream(request));
            break;
        case Command::kRemoveStream:
            Send(RemoveStream(request));
            break;
        default:
            Send(WithStream(request));
            break;
    }
}

std::string Session::Reset(const Request& request) {
    RemoveAllStreams();
    return OkLine(request.sequence, CommandWord(request.command));
}

std::string Session::CreateStream(const Request& request) {
    const std::string_view word = CommandWord(request.command);
    if (m_streams.size() >= kMaxStreamsPerConnection) {
        common::ProgramLog().WriteFor(m_lines->GetPeer(), common::LogLevel::Warning,
                                      m_lines->GetPeer() + " has too many streams");
        return AnnouncementEvent(word) + NoLine(request.sequence, word);
    }
    if (!HasDescriptors(kDescriptorsPerStream)) {
        common::ProgramLog().WriteFor(m_lines->GetPeer(), common::LogLevel::Warning,
                                      m_lines->GetPeer() + " gets no stream: too many files are open");
        return AnnouncementEvent(word) + NoLine(request.sequence, word);
    }
    const StreamNumber number = m_context.numbers.Take();
    try {
        // The session outlives its streams, and a stream calls only from the loop.
        m_streams[number] =
            Stream::Create(m_lines->GetExecutor(), number, m_context.settings, m_context.catalogue,
                           [this](std::string_view line) { Send(line); });
    } catch (const std::runtime_error& error) {
        common::ProgramLog().Warning("no stream: " + std::string(error.what()));
        m_streams.erase(number);
        m_context.numbers.Release(number);
        return AnnouncementEvent(word) + NoLine(request.sequence, word);
    }
    common::ProgramLog().Info("stream " + std::to_string(number) + ": created for " + m_lines->GetPeer());
    return AnnouncementEvent(word, number) + CreatedLine(request.sequence, word, number);
}

std::string Session::RemoveStream(const Request& request) {
    const std::string_view word = CommandWord(request.command);
    if (m_streams.erase(request.stream) == 0)
        return NoLine(request.sequence, word, request.stream);
    m_context.numbers.Release(request.stream);
    common::ProgramLog().Info("stream " + std::to_string(request.stream) + ": removed");
    return OkLine(request.sequence, word, request.stream);
}

std::string Session::WithStream(const Request& request) {
    const std::string_view word = CommandWord(request.command);
    const auto stream = m_streams.find(request.stream);
    if (stream == m_streams.end())
        return NoLine(request.sequence, word, request.stream);
    try {
        return Apply(request, *stream->second) ? OkLine(request.sequence, word, request.stream)
                                               : NoLine(request.sequence, word, request.stream);
    } catch (const std::runtime_error& error) {
        const std::string name = "stream " + std::to_string(request.stream);
        common::ProgramLog().WriteFor(name, common::LogLevel::Warning, name + ": " + error.what());
        return NoLine(request.sequence, word, request.stream);
    }
}

bool Session::Apply(const Request& request, Stream& stream) {
    const std::string name = "stream " + std::to_string(request.stream);
    const auto log = [&](const std::string& what) {
        common::ProgramLog().WriteFor(name, common::LogLevel::Info, name + ": " + what);
    };
    const std::string client = request.client.ip + " port " + std::to_string(request.client.port);
    switch (request.command) {
        case Command::kAddClient:
            log("adds client " + client);
            return stream.AddClient(request.client);
        case Command::kRemoveClient:
            log("removes client " + client);
            stream.RemoveClient(request.client);
            return true;
        case Command::kAddMedia:
            log("media " + OneLine(request.media));
            stream.AddMedia(ParseMediaReference(request.media));
            return true;
        case Command::kSetState:
            stream.SetState(request.state);
            return true;
        case Command::kRemoveMedia:
        case Command::kEndOfStream:
            stream.Unload();
            return true;
        default:
            return false;
    }
}

void Session::RemoveAllStreams() {
    for (const auto& [number, stream] : m_streams)
        m_context.numbers.Release(number);
    m_streams.clear();
}

} // namespace korvel::audioserver
