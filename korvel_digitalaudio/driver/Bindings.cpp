#include <algorithm>

#include "basics/Flags.h"
#include "basics/Ids.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/Text.h"

namespace {

constexpr BindingType kAudioBinding = 6;

} // namespace

void korvel_digitalaudio::AddServerBinding(std::uint32_t id) {
    AddDynamicBinding(id, kAudioBinding, false, "Digital Audio", "DIGITAL_AUDIO_SERVER", false, true);
}

void korvel_digitalaudio::AddMediaBinding(std::uint32_t id) {
    AddDynamicBinding(id, kAudioBinding, false, "Audio Media Storage", "AUDIO_MEDIA_STORAGE", false, true);
}

// Other ids than those of the family come from a damaged element: an id below it would leave no spare binding
// for ever, one above it would take the bindings of others.
void korvel_digitalaudio::RestoreDynamicBindings() {
    AddDynamicBinding(bindings::kClient, kAudioBinding, true, "Digital Audio", "DIGITAL_AUDIO_CLIENT", false,
                      true);
    m_lastServerBinding = std::clamp(m_lastServerBinding, bindings::kFirstServer, bindings::kLastServer);
    for (std::uint32_t id = bindings::kFirstServer + 1; id <= m_lastServerBinding; ++id)
        AddServerBinding(id);
    m_lastMediaBinding = std::clamp(m_lastMediaBinding, bindings::kFirstStorage, bindings::kLastStorage);
    for (std::uint32_t id = bindings::kFirstStorage + 1; id <= m_lastMediaBinding; ++id)
        AddMediaBinding(id);
}

// The families only grow, up to their last ids, so that there is always one spare binding of each.
void korvel_digitalaudio::ExtendBindings(std::uint32_t boundId) {
    if (boundId == m_lastServerBinding && boundId < bindings::kLastServer)
        AddServerBinding(++m_lastServerBinding);
    else if (boundId == m_lastMediaBinding && boundId < bindings::kLastStorage)
        AddMediaBinding(++m_lastMediaBinding);
    else
        return;
    DmInvalidateState();
}

void korvel_digitalaudio::HandleBoundCall(std::uint32_t id, const IBindMessage& message, ICmdReturn* ret) {
    if (message.GetName() == "DATA_RECEIVED")
        HandleData(id, message.GetData());
    else if (message.GetName() == "SERVER_ONLINE")
        HandleServerOnline(id, message);
    else if (message.GetName() == "SERVER_OFFLINE")
        EndServer(id); // the active binding stays as it was: the server of this controller is expected back
    if (message.GetMessageType() == "PROTOCOL_COMMAND")
        RunProtocolCommand(id, message, ret);
}

void korvel_digitalaudio::HandleData(std::uint32_t id, const std::string& line) {
    const ASPacket packet(line);
    AudioServer* server = GetServer(id);
    if (!server)
        return;
    bool changed = false;
    server->OnDataIn(packet, changed);
    if (changed)
        UpdateQueueStatusVariable();
}

void korvel_digitalaudio::HandleServerOnline(std::uint32_t id, const IBindMessage& message) {
    const std::string& address = message.GetData();
    AudioServer_Create(id, flags::IsWord(message.GetParam("ALLOW_MULT_INPUT"), kv::TRUE_STRING));
    if (!address.empty() && NetworkInterfaces::isLocalIPv4(address))
        m_activeServerBinding = id;
}

void korvel_digitalaudio::RunProtocolCommand(std::uint32_t id, const IBindMessage& message, ICmdReturn* ret) {
    const KVXML::INode* xml = message.GetXml();
    const auto command = xml ? CreateCommandMessageFromXml(*xml) : nullptr;
    if (command)
        ExecuteCommand(*command, ret, id);
}
