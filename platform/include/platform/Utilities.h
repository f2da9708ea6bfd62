// Small utility objects that a driver takes from the core once, at start.
#pragma once

#include <string>

#include "platform/AutoCom.h"
#include "platform/CmdMessage.h"
#include "platform/InstanceManager.h"

class IStringX : public kv::IRefCounted {
public:
    static constexpr const char* kInterfaceId = "StringX";

    // The text with every control character as a blank, so that it fits one log line.
    virtual std::string OneLine(const std::string& text) const = 0;
};

class IKVMessage : public kv::IRefCounted {
public:
    static constexpr const char* kInterfaceId = "KVMessage";

    // A message's name and parameters as text: NAME KEY=VALUE ...
    virtual std::string Describe(const ICmdMessage& message) const = 0;
};

// The standard objects, for cores to register.
kv::auto_com<IStringX> CreateStandardStringX();
kv::auto_com<IKVMessage> CreateStandardKVMessage();

class StringX {
public:
    // The core's object with a reference of its own; null when the core has none.
    static kv::auto_com<IStringX> Create(IInstanceManager& instances);
};

class KVMessage {
public:
    static kv::auto_com<IKVMessage> Create(IInstanceManager& instances);
};
