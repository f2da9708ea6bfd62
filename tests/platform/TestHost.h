#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "platform/IDriverHost.h"

// A host that notes every call as one line.
class TestHost final : public IDriverHost, public IDriverHelperV2 {
public:
    void VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type, const std::string& value,
               std::int32_t a, std::int32_t b, const std::string& extra) override {
        Note("VmAdd", id, name, type, value, a, b, extra);
    }
    void VmRemove(std::uint32_t id) override { Note("VmRemove", id); }
    void ChangeVariable(std::uint32_t id, const std::string& text) override {
        Note("ChangeVariable", id, text);
    }
    void FireEvent(std::uint32_t id) override { Note("FireEvent", id); }
    std::uint32_t AddTimer(std::uint32_t milliseconds, std::uint32_t flags) override {
        Note("AddTimer", milliseconds, flags);
        return ++m_lastTimer;
    }
    void KillTimer(std::uint32_t id) override { Note("KillTimer", id); }
    void AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                           const std::string& bindingClass, bool flag2, bool flag3) override {
        Note("AddDynamicBinding", id, type, flag1, name, bindingClass, flag2, flag3);
    }
    void InvalidateState() override { Note("InvalidateState"); }
    std::int32_t SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) override {
        Note("SendCommand", deviceId, message.GetName());
        if (ret)
            ret->SetValue("answer");
        return sendResult;
    }
    void SendDataToUI(const KVXML::INode& data) override { Note("SendDataToUI", data.ToText()); }
    void SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) override {
        Note("SendDataToDevice", deviceId, data.ToText());
    }
    void Log(int level, const std::string& text) override { Note("Log", level, text); }
    void LogDebug(const std::string& text) override { Note("LogDebug", text); }
    void CommandRegistered(const std::string& name) override { Note("CommandRegistered", name); }
    void UIRequestRegistered(const std::string& name) override { Note("UIRequestRegistered", name); }
    IMediaManager* GetMediaManager() override { return nullptr; }
    ITimerManager& GetTimerManager() override { throw std::logic_error("no timers here"); }
    IDriverHelperV2& GetHelper() override { return *this; }
    std::string GetBrandingText() override { return branding; }

    kv::auto_com<ICmdMessage> CreateMessage(const std::string& name) override {
        return canMakeMessages ? kv::CreateCmdMessage(name) : nullptr;
    }
    kv::auto_com<IOutboundBindMessage> CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data) override {
        return kv::CreateOutboundBindMessage(kind, name, data);
    }
    std::uint32_t GetDeviceId() override { return 100002; }
    void* GetDeviceInterface(std::uint32_t, const std::string&) override { return nullptr; }

    std::vector<std::string> calls;
    std::int32_t sendResult = 0;
    bool canMakeMessages = true;
    std::string branding;

private:
    static std::string Text(const std::string& value) { return value; }
    template <class Number>
    static std::string Text(Number value) {
        return std::to_string(value);
    }
    template <class... Values>
    void Note(const std::string& name, const Values&... values) {
        std::string line = name;
        (line.append(" ").append(Text(values)), ...);
        calls.push_back(line);
    }

    std::uint32_t m_lastTimer = 0;
};
