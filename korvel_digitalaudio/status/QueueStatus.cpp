// The status of all queues, as variables and on request.
#include "basics/Variables.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

using NodePtr = kv::auto_com<KVXML::INode>;

void korvel_digitalaudio::AppendOfEachServer(KVXML::INode& root,
                                             void (AudioServer::*elements)(KVXML::INode&) const) {
    ForEachServer([&](const AudioServer& server) { (server.*elements)(root); });
}

NodePtr korvel_digitalaudio::GetQueueStatusVariable() {
    NodePtr root = KVXML::CreateXmlNode("queues");
    AppendOfEachServer(*root, &AudioServer::GetStatusVariable);
    return root;
}

NodePtr korvel_digitalaudio::GetQueueStatusVariable132() {
    NodePtr root = KVXML::CreateXmlNode("queues");
    AppendOfEachServer(*root, &AudioServer::GetStatusVariable132);
    return root;
}

void korvel_digitalaudio::PublishAssembly(std::uint32_t variable, const char* name, Assembly& kept,
                                          const std::function<void(KVXML::INode&)>& fill) {
    // Taken out while it is in use: what is asked for on the way may come back here.
    Assembly root = std::exchange(kept, nullptr);
    if (!root)
        root = KVXML::CreateAssembly(name);
    root->Restart();
    fill(*root);
    ChangeMyVariable(variable, root->ToText());
    kept = root;
}

void korvel_digitalaudio::UpdateQueueStatusVariable() {
    PublishAssembly(variables::kQueueStatusV2, "queues", m_shownStatus, [this](KVXML::INode& root) {
        AppendOfEachServer(root, &AudioServer::GetStatusVariable);
    });
    PublishAssembly(variables::kQueueStatus, "queues", m_shownStatus132, [this](KVXML::INode& root) {
        AppendOfEachServer(root, &AudioServer::GetStatusVariable132);
    });
    UpdateRoomMapInfoVar();
}

void korvel_digitalaudio::OnGetQueueStatus(const ICmdMessage&, ICmdReturn* ret) {
    setReturnValue(ret, GetQueueStatusVariable132()->ToText());
}

void korvel_digitalaudio::OnGetQueueStatusV2(const ICmdMessage&, ICmdReturn* ret) {
    setReturnValue(ret, GetQueueStatusVariable()->ToText());
}

NodePtr korvel_digitalaudio::OnGetQueueInfo(const ICmdMessage& message) {
    const AudioQueue* queue = AudioQueue_Get(message.GetNumber("ROOM_ID"), message.GetNumber("QUEUE_ID"));
    return queue ? queue->GetInfoVariable() : KVXML::CreateXmlNode("info");
}

void korvel_digitalaudio::OnRequestCurrentMediaInfo(const ICmdMessage& message, ICmdReturn*) {
    if (AudioQueue* queue = AudioServer_GetQueueFromRoom(message.GetNumber("ROOM_ID")))
        queue->UpdateRoomMediaVariable(queue->GetCurrentMedia(), nullptr, false);
}
