#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/IDriver.h"

namespace korvel::controller {

// A driver that writes down what it is told about bindings and selections, has the state that it is given,
// and does nothing else.
class RecordingDriver final : public IDriver {
public:
    std::vector<std::string> calls;
    std::string state; // "" for none
    std::function<void(const std::string&)> onCall;

    std::int32_t Initialize(std::uint32_t, KVXML::INode&, KVXML::INode*) override { return 0; }
    void RemovedFromProject() override {}
    std::int32_t BoundCall(std::uint32_t id, BindingType, const std::string&, const IBindMessage& message,
                           ICmdReturn*) override {
        Record(message.GetName() + " " + std::to_string(id) + " " + message.GetData());
        return 0;
    }
    void OnBindingChanged(std::uint32_t id, const std::string&, bool bound) override {
        Record((bound ? "bound " : "unbound ") + std::to_string(id));
    }
    void OnAVRoomOff(std::uint32_t) override {}
    void OnAVSelected(const AVParams& params, const AV_Class&, const AV_Class&, const AVLocationInfo&,
                      const AVDriverLocationInfo*, AVReturn&) override {
        Record(params.mediaKind + " " + std::to_string(params.roomId));
    }
    void OnAVDeselected(const AVParams&, const AV_Class&, const AV_Class&) override {}
    void OnAVAddLocationInfo(const AVParams&, const AV_Class&, const AV_Class&, AVLocationInfo&,
                             AVDriverLocationInfo**) override {}
    bool IsAVOutputToInputValid(const AVParams&, const AV_Class&, const AV_Class&) override { return false; }
    kv::auto_com<KVXML::INode> GetPersistState(std::uint32_t) override {
        return state.empty() ? nullptr : KVXML::CreateXmlNode("state", state);
    }
    std::int32_t ExecuteCommand(const ICmdMessage& message, ICmdReturn*, std::uint32_t) override {
        Record(message.GetName());
        return 0;
    }
    bool TestCondition(const ICondMessage&, std::uint32_t*) override { return false; }
    kv::auto_com<KVXML::INode> UIRequest(const ICmdMessage&) override { return nullptr; }
    KVXML::INode* GetDeviceCommon() override { return nullptr; }
    KVXML::INode* GetDeviceIP() override { return nullptr; }
    std::string GetEventLabel(std::uint32_t) override { return ""; }
    void OnConnectionStatusChanged(std::uint32_t, bool) override {}
    void OnDataIn(std::uint32_t, const std::vector<std::uint8_t>&) override {}
    void OnDataIn(std::uint32_t, const KVXML::INode&) override {}
    void OnPoll() override {}
    void OnEventFired(std::uint32_t, std::uint32_t) override {}
    void OnTimerExpired(std::uint32_t, std::int32_t) override {}

    std::size_t Count(const std::string& call) const {
        std::size_t count = 0;
        for (const std::string& each : calls)
            count += each == call ? 1 : 0;
        return count;
    }

private:
    void Record(const std::string& call) {
        calls.push_back(call);
        if (onCall)
            onCall(call);
    }
};

} // namespace korvel::controller
