#include <gtest/gtest.h>

#include "TestHost.h"
#include "TestSystem.h"
#include "platform/KVBaseDriver.h"

namespace {

using Lines = std::vector<std::string>;

// Shows what a driver has at hand.
class TestDriver final : public KVBaseDriver {
public:
    explicit TestDriver(IInstanceManager& instances) : KVBaseDriver(instances, 3, 0) {}

    using KVBaseDriver::AddDynamicBinding;
    using KVBaseDriver::AddTimer;
    using KVBaseDriver::ChangeMyVariable;
    using KVBaseDriver::ConSendDataToUI;
    using KVBaseDriver::CreateCommandMessageFromName;
    using KVBaseDriver::CreateCommandMessageFromXml;
    using KVBaseDriver::DmInvalidateState;
    using KVBaseDriver::FireEvent;
    using KVBaseDriver::GetBrandingText;
    using KVBaseDriver::GetDeviceId;
    using KVBaseDriver::GetInstanceManager;
    using KVBaseDriver::GetMediaManager;
    using KVBaseDriver::KillTimer;
    using KVBaseDriver::LogDebugMessage;
    using KVBaseDriver::LogMessage;
    using KVBaseDriver::RegisterCmd;
    using KVBaseDriver::RegisterUICmd;
    using KVBaseDriver::SendCommand;
    using KVBaseDriver::SendDataToDevice;
    using KVBaseDriver::setReturnValue;
    using KVBaseDriver::VmAdd;
    using KVBaseDriver::VmRemove;
};

class BaseDriver : public testing::Test {
protected:
    BaseDriver() {
        instances.RegisterInstance(kv::ISystem::kInterfaceId, static_cast<kv::ISystem*>(&system));
        instances.RegisterInstance(IDriverHost::kInterfaceId, static_cast<IDriverHost*>(&host));
    }

    TestSystem system;
    TestHost host;
    TestInstances instances;
};

TEST_F(BaseDriver, NeedsAHostAndASystem) {
    instances.RevokeInstance(IDriverHost::kInterfaceId);
    try {
        TestDriver driver(instances);
        FAIL() << "made without a host";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the core offers no service DriverHost");
    }
    instances.RevokeInstance(kv::ISystem::kInterfaceId);
    EXPECT_THROW(TestDriver{instances}, std::runtime_error);
}

TEST_F(BaseDriver, InstallsTheSystemWhileItLives) {
    kv::InstallSystem(nullptr);
    system.time = 77;
    {
        TestDriver driver(instances);
        EXPECT_EQ(kv::Time(), 77u);
        EXPECT_EQ(&driver.GetInstanceManager(), &instances);
    }
    EXPECT_EQ(kv::Time(), 0u);
}

TEST_F(BaseDriver, TurnsItsMembersIntoCallsOfTheHost) {
    TestDriver driver(instances);
    driver.VmAdd(1002, "HISTORY", 13, "", 1, 0, "x");
    driver.ChangeMyVariable(1002, "<a></a>");
    driver.VmRemove(1002);
    driver.FireEvent(4);
    driver.AddDynamicBinding(3001, 6, false, "Name", "CLASS", true, false);
    driver.DmInvalidateState();
    driver.ConSendDataToUI(*KVXML::CreateXmlNode("ui"));
    driver.SendDataToDevice(9, *KVXML::CreateXmlNode("data"));
    driver.LogMessage(6, "note");
    driver.LogDebugMessage("one", std::string(" two"), " three");
    EXPECT_EQ(
        host.calls,
        (Lines{"VmAdd 1002 HISTORY 13  1 0 x", "ChangeVariable 1002 <a></a>", "VmRemove 1002", "FireEvent 4",
               "AddDynamicBinding 3001 6 0 Name CLASS 1 0", "InvalidateState", "SendDataToUI <ui></ui>",
               "SendDataToDevice 9 <data></data>", "Log 6 note", "LogDebug one two three"}));
}

TEST_F(BaseDriver, AKilledTimerHasNoId) {
    TestDriver driver(instances);
    std::uint32_t timer = driver.AddTimer(10000, kTimerFlagPeriodic | 1);
    EXPECT_NE(timer, 0u);
    driver.KillTimer(timer);
    EXPECT_EQ(timer, 0u);
    EXPECT_EQ(host.calls, (Lines{"AddTimer 10000 17", "KillTimer 1"}));
}

TEST_F(BaseDriver, SendsCommandsAndReturnsTheirResult) {
    TestDriver driver(instances);
    host.sendResult = -5;
    CR_String ret;
    EXPECT_EQ(driver.SendCommand(9, *kv::CreateCmdMessage("GET_MOUNT_PATH"), &ret), -5);
    EXPECT_EQ(host.calls, Lines{"SendCommand 9 GET_MOUNT_PATH"});
    EXPECT_EQ(ret.GetText(), "answer");
}

TEST_F(BaseDriver, MakesMessages) {
    TestDriver driver(instances);
    EXPECT_EQ(driver.CreateCommandMessageFromName("PLAY")->GetName(), "PLAY");
    EXPECT_EQ(driver.GetDeviceId(), 100002u);
    const auto element = kv::CmdMessageToXml(*kv::CreateCmdMessage("STOP"));
    EXPECT_EQ(driver.CreateCommandMessageFromXml(*element)->GetName(), "STOP");
    EXPECT_FALSE(driver.CreateCommandMessageFromXml(*KVXML::CreateXmlNode("other")));
    host.canMakeMessages = false;
    EXPECT_FALSE(driver.CreateCommandMessageFromName("PLAY"));
}

TEST_F(BaseDriver, SetsAReturnWhenThereIsOne) {
    CR_String ret;
    TestDriver::setReturnValue(&ret, "text");
    TestDriver::setReturnValue(nullptr, "text");
    EXPECT_EQ(ret.GetText(), "text");
}

TEST_F(BaseDriver, RunsRegisteredCommandsAndTellsTheCore) {
    TestDriver driver(instances);
    driver.RegisterCmd("PLAY", [](const ICmdMessage&, ICmdReturn* ret) { ret->SetValue("played"); });
    CR_String ret;
    EXPECT_EQ(driver.ExecuteCommand(*kv::CreateCmdMessage("PLAY"), &ret, 0), 0);
    EXPECT_EQ(ret.GetText(), "played");
    EXPECT_EQ(driver.ExecuteCommand(*kv::CreateCmdMessage("DANCE"), &ret, 0), -1);
    EXPECT_EQ(host.calls, Lines{"CommandRegistered PLAY"});
}

TEST_F(BaseDriver, ServesRegisteredRequestsAndTellsTheCore) {
    TestDriver driver(instances);
    driver.RegisterUICmd("INFO", [](const ICmdMessage&) { return KVXML::CreateXmlNode("info"); });
    EXPECT_EQ(driver.UIRequest(*kv::CreateCmdMessage("INFO"))->ToText(), "<info></info>");
    EXPECT_FALSE(driver.UIRequest(*kv::CreateCmdMessage("OTHER")));
    EXPECT_EQ(host.calls, Lines{"UIRequestRegistered INFO"});
}

TEST_F(BaseDriver, HasADefaultForEveryEntry) {
    TestDriver driver(instances);
    IDriver& entries = driver;
    const auto element = KVXML::CreateXmlNode("config");
    const auto message = kv::CreateCmdMessage("ANY");
    AVLocationInfo location;
    AVReturn result;
    EXPECT_EQ(entries.Initialize(1, *element, nullptr), 0);
    entries.RemovedFromProject();
    EXPECT_EQ(entries.BoundCall(1, 6, "", kv::BindMessage("", message, ""), nullptr), 0);
    entries.OnBindingChanged(1, "", true);
    entries.OnAVRoomOff(1);
    entries.OnAVSelected({}, {}, {}, location, nullptr, result);
    entries.OnAVDeselected({}, {}, {});
    entries.OnAVAddLocationInfo({}, {}, {}, location, nullptr);
    EXPECT_FALSE(entries.IsAVOutputToInputValid({}, {}, {}));
    EXPECT_FALSE(entries.GetPersistState(0));
    EXPECT_FALSE(entries.TestCondition(kv::CondMessage(message), nullptr));
    EXPECT_EQ(entries.GetDeviceCommon(), nullptr);
    EXPECT_EQ(entries.GetDeviceIP(), nullptr);
    EXPECT_EQ(entries.GetEventLabel(1), "");
    entries.OnConnectionStatusChanged(1, true);
    entries.OnDataIn(1, std::vector<std::uint8_t>{});
    entries.OnDataIn(1, *element);
    entries.OnPoll();
    entries.OnEventFired(1, 2);
    entries.OnTimerExpired(1, 0);
    EXPECT_FALSE(result.handled);
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(BaseDriver, TellsWhatTheCoreTells) {
    TestDriver driver(instances);
    host.branding = "Partner";
    EXPECT_EQ(driver.GetBrandingText(), "Partner");
    EXPECT_EQ(driver.GetMediaManager(), nullptr);
}

} // namespace
