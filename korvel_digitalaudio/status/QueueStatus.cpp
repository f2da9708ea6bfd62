// The status of all queues, as variables and on request.
#include "basics/Variables.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

using NodePtr = kv::auto_com<KVXML::INode>;

NodePtr korvel_digitalaudio::GetQueueStatusVariable() {
    NodePtr root = KVXML::CreateXmlNode("queues");
    ForEachServer([&](const AudioServer& server) { server.GetStatusVariable(*root); });
    return root;
}

NodePtr korvel_digitalaudio::GetQueueStatusVariable132() {
    NodePtr root = KVXML::CreateXmlNode("queues");
    ForEachServer([&](const AudioServer& server) { server.GetStatusVariable132(*root); });
    return root;
}

void korvel_digitalaudio::UpdateQueueStatusVariable() {
    ChangeMyVariable(variables::kQueueStatusV2, GetQueueStatusVariable()->ToText());
    ChangeMyVariable(variables::kQueueStatus, GetQueueStatusVariable132()->ToText());
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
