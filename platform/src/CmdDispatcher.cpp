#include "platform/CmdDispatcher.h"

#include <utility>

void CmdDispatcher::RegisterCmd(const std::string& name, Handler handler) {
    m_handlers[name] = std::move(handler);
}

bool CmdDispatcher::Dispatch(const ICmdMessage& message, ICmdReturn* ret) const {
    const auto found = m_handlers.find(message.GetName());
    if (found == m_handlers.end())
        return false;
    found->second(message, ret);
    return true;
}

void UICmdDispatcher::RegisterUICmd(const std::string& name, Handler handler) {
    m_handlers[name] = std::move(handler);
}

kv::auto_com<KVXML::INode> UICmdDispatcher::Dispatch(const ICmdMessage& message) const {
    const auto found = m_handlers.find(message.GetName());
    return found == m_handlers.end() ? nullptr : found->second(message);
}
