#include "replay/MessagingServices.h"

#include "replay/Words.h"

namespace korvel::replay {

std::string DeviceMessagingService::GetDeviceName(std::uint32_t deviceId) {
    const auto name = m_world.names.find(deviceId);
    return name == m_world.names.end() ? "" : name->second;
}

void DeviceMessagingService::SendMessage(std::uint32_t deviceId, const ICmdMessage& message,
                                         std::string* reply) {
    OutputLine line("message");
    line.Number(deviceId).Value(message.GetName());
    for (std::size_t i = 0; i < message.GetParamCount(); ++i) {
        const CmdParam& param = message.GetParamAt(i);
        line.Pair(param.name + ":" + param.type, param.value);
    }
    m_world.recorder.Output(line);

    if (reply) {
        const auto text = m_world.replies.find({deviceId, message.GetName()});
        *reply = text == m_world.replies.end() ? "" : text->second;
    }
    m_world.live.OnMessage(deviceId, message);
}

void UINotifierService::SendToUIs(std::uint32_t, const KVXML::INode& data) {
    m_world.recorder.Output(OutputLine("ui").Text(data.ToText()));
}

void BindMessageService::SendBindMessage(std::uint32_t, std::uint32_t bindingId,
                                         const IOutboundBindMessage& message) {
    if (message.GetName() != "SEND") {
        m_world.recorder.Fault("a message named " + FormatValue(message.GetName()) + " over binding " +
                               std::to_string(bindingId));
        return;
    }
    m_world.recorder.Output(OutputLine("send").Number(bindingId).Value(message.GetData()));
    m_world.live.OnLine(bindingId, message.GetData());
}

void VariableService::SetVariable(std::uint32_t, std::uint32_t, std::uint32_t id, const std::string& text,
                                  bool) {
    m_world.recorder.Output(OutputLine("set").Number(id).Text(text));
}

void RoomService::QueueEnded(std::uint32_t code, std::uint32_t roomCode) {
    m_world.recorder.Output(OutputLine("room-service").Number(code).Number(roomCode));
}

void AnnouncementService::AnnouncementStreamReady() {
    m_world.recorder.Output(OutputLine("announcement").Value("ready"));
}

void AnnouncementService::AnnouncementComplete() {
    m_world.recorder.Output(OutputLine("announcement").Value("complete"));
}

} // namespace korvel::replay
