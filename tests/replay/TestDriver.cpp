#include "TestDriver.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "platform/KVBaseDriver.h"
#include "platform/Services.h"
#include "platform/Utilities.h"
#include "platform/rhapsody/RhapsodyClient.h"

namespace korvel::replay {

namespace {

class TestDriver;
TestDriver* g_running = nullptr;

class TestDriver final : public KVBaseDriver, public RhapsodyCallbackBase, private ITimerManagerCallback {
public:
    explicit TestDriver(IInstanceManager& instances) : KVBaseDriver(instances, 3, 0) {
        g_running = this;
        RegisterServiceCommands();
        RegisterMediaCommands();
        RegisterUICmd("INFO", [](const ICmdMessage&) { return KVXML::CreateXmlNode("info", "a b"); });
    }
    ~TestDriver() override {
        VmRemove(1);
        g_running = nullptr;
    }

    std::int32_t Initialize(std::uint32_t id, KVXML::INode&, KVXML::INode* persist) override {
        VmAdd(1, "STATE", kVariableTypeXml, "", 1, 0, "");
        ChangeMyVariable(1, persist ? persist->ToText() : "");
        if (auto* factory = kv::GetService<KVRhapsodyClient::IRhapsodyClientFactory>(GetInstanceManager()))
            m_client = factory->CreateClient({}, GetTimerManager(), this);
        if (!StringX::Create(GetInstanceManager()))
            return -2;
        return id == 100002 ? 0 : -1;
    }
    std::int32_t BoundCall(std::uint32_t id, BindingType, const std::string&, const IBindMessage& message,
                           ICmdReturn* ret) override {
        Note("bound call " + std::to_string(id) + " " + message.GetName() + " [" + message.GetData() + "] [" +
             message.GetParam("k") + "]");
        if (message.GetMessageType() == "PROTOCOL_COMMAND")
            ExecuteCommand(*CreateCommandMessageFromXml(*message.GetXml()), ret, id);
        return 0;
    }
    void OnBindingChanged(std::uint32_t id, const std::string&, bool bound) override {
        Note("binding " + std::to_string(id) + (bound ? " bound" : " unbound"));
        DmInvalidateState();
    }
    void OnAVSelected(const AVParams& params, const AV_Class&, const AV_Class& input,
                      const AVLocationInfo& location, const AVDriverLocationInfo*,
                      AVReturn& result) override {
        Note("selected " + std::to_string(params.roomId) + " by " + location.endpointAddress + " binding " +
             std::to_string(input.bindingId) + " media " + std::to_string(location.mediaIds.size()));
        result.handled = params.queueId != 0;
        result.queueId = params.queueId;
    }
    void OnAVAddLocationInfo(const AVParams& params, const AV_Class&, const AV_Class&,
                             AVLocationInfo& location, AVDriverLocationInfo**) override {
        if (!params.mediaKind.empty())
            location.location += ", then that of " + std::to_string(params.roomId) + " " + params.mediaKind +
                                 " " + std::to_string(location.mediaIds.front());
    }
    void OnAVDeselected(const AVParams& params, const AV_Class&, const AV_Class&) override {
        Note("deselected " + std::to_string(params.roomId));
    }
    void OnAVRoomOff(std::uint32_t) override { throw std::runtime_error("room off"); }
    bool IsAVOutputToInputValid(const AVParams&, const AV_Class& output, const AV_Class& input) override {
        return output.classType == 6 && input.classType == 15;
    }
    kv::auto_com<KVXML::INode> GetPersistState(std::uint32_t) override {
        return KVXML::CreateXmlNode("state", "7");
    }
    bool TestCondition(const ICondMessage& condition, std::uint32_t*) override {
        return condition.GetName() == "IsOne" && condition.GetParam("A") == "1";
    }
    void OnTimerExpired(std::uint32_t id, std::int32_t) override {
        Note("timer " + std::to_string(id) + " at " + std::to_string(kv::Time()));
    }
    void RC_ErrorHandler(RC_Error code) override { Note("error " + std::to_string(code)); }
    void RC_Completed(std::vector<DataPlaylistLite>& lists) override {
        Note("lists " + std::to_string(lists.size()));
    }
    void RC_Completed(unsigned int total, std::vector<DataTrackInfo>&) override {
        Note("tracks " + std::to_string(total));
    }
    void RC_Completed(std::vector<DataTrackFull>& tracks) override {
        Note("track " + (tracks.empty() ? "none" : tracks.front().name + " by " + tracks.front().artist));
    }

private:
    void Note(const std::string& text) { LogMessage(6, text); }

    void RegisterServiceCommands() {
        RegisterCmd("TIMER", [this](const ICmdMessage& message, ICmdReturn*) {
            AddTimer(message.GetNumber("MS"), message.GetNumber("FLAGS"));
        });
        RegisterCmd("KILL", [this](const ICmdMessage& message, ICmdReturn*) {
            std::uint32_t id = message.GetNumber("ID");
            KillTimer(id);
        });
        RegisterCmd("MANAGED", [this](const ICmdMessage& message, ICmdReturn*) {
            const auto id =
                GetTimerManager().StartTimer(message.GetNumber("MS"), message.GetNumber("COUNT"), this);
            if (id == 0)
                LogDebugMessage("timer", " none");
        });
        RegisterCmd("FORGET",
                    [this](const ICmdMessage&, ICmdReturn*) { GetTimerManager().RemoveCallback(this); });
        RegisterCmd("SEND", [this](const ICmdMessage& message, ICmdReturn*) {
            const auto line = GetHelper().CreateBindMessage(1, "SEND", message.GetParam("LINE"));
            for (std::uint32_t left = std::max(message.GetNumber("TIMES"), 1u); line && left > 0; --left)
                kv::GetService<IBindMessageSender>(GetInstanceManager())
                    ->SendBindMessage(100002, 3000, *line);
        });
        RegisterCmd("ASK", [this](const ICmdMessage& message, ICmdReturn* ret) {
            const auto question = CreateCommandMessageFromName(message.GetParam("NAME"));
            if (!question)
                return setReturnValue(ret, "no message");
            question->AddParam("queueid", "INT", "10000");
            auto* messaging = kv::GetService<IDeviceMessaging>(GetInstanceManager());
            std::string reply;
            messaging->SendMessage(7, *question, &reply);
            setReturnValue(ret, messaging->GetDeviceName(7) + ": " + reply);
            SendCommand(7, *question, ret);
        });
        RegisterCmd("ANALOG", [this](const ICmdMessage&, ICmdReturn* ret) {
            auto* first = kv::GetDeviceService<IAnalogSource>(GetHelper(), 7);
            auto* second = kv::GetDeviceService<IAnalogSource>(GetHelper(), 8);
            if (!first || !second)
                return setReturnValue(ret, "no analog source");
            first->TakeSourceDevice(5);
            for (const std::uint32_t id : first->GetDevicesInAnalogSource())
                second->SelectDevice(id);
        });
        RegisterCmd("WORLD", [this](const ICmdMessage& message, ICmdReturn* ret) {
            std::ostringstream text;
            text << KernelX::GetSystemType() << ' ' << NetworkInterfaces::isLocalIPv4("127.0.0.1")
                 << NetworkInterfaces::isLocalIPv4(message.GetParam("ADDRESS")) << ' ' << kv::Random();
            if (auto* storage = kv::GetDeviceService<IMp3Storage>(GetHelper(), 7))
                text << ' ' << storage->GetMp3Devices().size();
            setReturnValue(ret, text.str());
            LogDebugMessage("ret = ", message.GetParam("POINTER"));
            kv::AssertWrite("a path/file", 12, kv::StackTrace());
        });
    }

    void RegisterMediaCommands() {
        RegisterCmd("SAVE", [this](const ICmdMessage& message, ICmdReturn* ret) {
            IMediaManager& media = *GetMediaManager();
            const std::uint32_t id = media.CreatePlaylist(GetDeviceId(), message.GetParam("NAME"),
                                                          {{1, "", 1050, 0}, {2, "Tra.1", 0, 0}});
            setReturnValue(ret, id == 0 ? "refused" : "saved");
            std::uint32_t copy = 0;
            media.AddMedia(GetDeviceId(), "<a></a>", "", "", 1, copy);
            media.AddSongToPlaylist(5, 1050, 0);
            media.UpdatePlaylist(5, {});
            media.DeletePlaylist(5);
        });
        RegisterCmd("WHERE", [this](const ICmdMessage& message, ICmdReturn* ret) {
            std::string location;
            const auto result = GetMediaManager()->GetLocation(message.GetNumber("ID"), "SONG", location);
            setReturnValue(ret, result < 0 ? "nowhere" : location);
        });
    }

    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> m_client;
};

} // namespace

IDriver* CreateTestDriver(IInstanceManager& instances) {
    return g_running ? g_running : new TestDriver(instances);
}
IDriver* CreateNoDriver(IInstanceManager&) {
    return nullptr;
}
IDriver* CreateBrokenDriver(IInstanceManager&) {
    throw std::runtime_error("out of order");
}

} // namespace korvel::replay
