// Tables that lead from a command's name to its handler.
#pragma once

#include <boost/function.hpp>
#include <cstdint>
#include <map>
#include <string>

#include "platform/CmdMessage.h"

class CmdDispatcher {
public:
    using Handler = boost::function<void(const ICmdMessage&, ICmdReturn*)>;

    // A second registration of a name replaces the first.
    void RegisterCmd(const std::string& name, Handler handler);
    // Runs the handler of the message's name. False when there is none.
    bool Dispatch(const ICmdMessage& message, ICmdReturn* ret) const;

private:
    std::map<std::string, Handler> m_handlers;
};

// Requests of user interfaces: handlers that answer with an element.
class UICmdDispatcher {
public:
    using Handler = boost::function<kv::auto_com<KVXML::INode>(const ICmdMessage&)>;

    void RegisterUICmd(const std::string& name, Handler handler);
    // The handler's element; null when there is no handler or it has no answer.
    kv::auto_com<KVXML::INode> Dispatch(const ICmdMessage& message) const;

private:
    std::map<std::string, Handler> m_handlers;
};
