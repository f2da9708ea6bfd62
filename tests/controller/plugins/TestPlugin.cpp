// One plug-in for each way to fail while loading, and one with a small driver that shows what a core does for
// it.
#include <stdexcept>
#include <string>

#include "platform/KVBaseDriver.h"
#include "platform/TimerManager.h"

namespace {

// ECHO answers with the parameter TEXT and shows it as variable 1; PERSIST keeps it over restarts; SELECT
// makes room 1 select the driver, with no queue; with "refused" kept the driver does not start; DATA sends
// TEXT to the device DEVICE; THROW lets an exception out.
class TestDriver final : public KVBaseDriver {
public:
    explicit TestDriver(IInstanceManager& instances) : KVBaseDriver(instances, 3, 0) {
        RegisterCmd("ECHO", [this](const ICmdMessage& message, ICmdReturn* ret) {
            ChangeMyVariable(1, message.GetParam("TEXT"));
            setReturnValue(ret, message.GetParam("TEXT"));
        });
        RegisterCmd("PERSIST",
                    [this](const ICmdMessage& message, ICmdReturn*) { m_kept = message.GetParam("TEXT"); });
        RegisterCmd("SELECT", [this](const ICmdMessage&, ICmdReturn*) {
            const auto select = CreateCommandMessageFromName("SELECT_AUDIO_DEVICE");
            select->AddParam("deviceid", "INT", std::to_string(GetDeviceId()));
            SendCommand(1, *select, nullptr);
        });
        RegisterCmd("DATA", [this](const ICmdMessage& message, ICmdReturn*) {
            SendDataToDevice(message.GetNumber("DEVICE"),
                             *KVXML::CreateXmlNode("data", message.GetParam("TEXT")));
        });
        RegisterCmd("THROW", [](const ICmdMessage&, ICmdReturn*) { throw std::runtime_error("thrown"); });
        RegisterUICmd("GET_QUEUE_INFO", [](const ICmdMessage&) { return KVXML::CreateXmlNode("info"); });
        RegisterUICmd("GET_KEPT",
                      [this](const ICmdMessage&) { return KVXML::CreateXmlNode("kept", m_kept); });
    }

    std::int32_t Initialize(std::uint32_t, KVXML::INode&, KVXML::INode* persist) override {
#ifdef KORVEL_TEST_INITIALIZE_FAILS
        return -2;
#endif
        VmAdd(1, "ECHOED", kVariableTypeXml, "", 0, 0, "");
        if (persist)
            m_kept = persist->GetText();
        return m_kept == "refused" ? -3 : 0;
    }

    kv::auto_com<KVXML::INode> GetPersistState(std::uint32_t) override {
        return KVXML::CreateXmlNode("test", m_kept);
    }

private:
    std::string m_kept;
};

[[maybe_unused]] IDriver* Create(IInstanceManager& instances) {
#if defined(KORVEL_TEST_NO_DRIVER)
    (void)instances;
    return nullptr;
#elif defined(KORVEL_TEST_CREATION_THROWS)
    (void)instances;
    throw std::runtime_error("out of luck");
#else
    return new TestDriver(instances);
#endif
}

} // namespace

#ifndef KORVEL_TEST_NO_ENTRY_POINT
extern "C" CreationFunc GetCreationFunc();

CreationFunc GetCreationFunc() {
#ifdef KORVEL_TEST_NO_CREATION_FUNCTION
    return nullptr;
#else
    return &Create;
#endif
}
#endif
