#include <string>

#include "replay/Arguments.h"
#include "replay/Session.h"
#include "replay/Verbs.h"
#include "replay/Words.h"

namespace korvel::replay {

namespace {

// The type of the bindings to audio servers.
constexpr BindingType kAudioBindingType = 6;
constexpr const char* kProtocolCommand = "PROTOCOL_COMMAND";
// What the transcript is as a sender of commands: no device.
constexpr std::uint32_t kNoSource = 0;

// Takes an answer down at the time it is given.
class PrintedReturn final : public ICmdReturn {
public:
    explicit PrintedReturn(Recorder& recorder) : m_recorder(recorder) {}
    void SetValue(const std::string& text) override { m_recorder.Output(OutputLine("return").Text(text)); }

private:
    Recorder& m_recorder;
};

// A message with the rest of the line as its parameters.
kv::auto_com<ICmdMessage> TakeMessage(const std::string& name, Arguments& arguments) {
    auto message = kv::CreateCmdMessage(name);
    for (const auto& [key, value] : arguments.Pairs())
        message->AddParam(key, "STRING", value);
    return message;
}

kv::auto_com<ICmdMessage> TakeMessage(Arguments& arguments) {
    const std::string name = arguments.Value("NAME");
    return TakeMessage(name, arguments);
}

void CallBound(Session& session, std::uint32_t binding, const kv::BindMessage& message, ICmdReturn* ret) {
    IDriver& driver = session.GetDriver();
    session.Enter([&] { driver.BoundCall(binding, kAudioBindingType, "", message, ret); });
}

void PutResult(Session& session, bool result) {
    session.GetWorld().recorder.Output(OutputLine("result").Flag(result));
}

void Start(Session& session, Arguments& arguments) {
    if (arguments.AtEnd())
        return session.Start(nullptr);
    const auto document = KVXML::CreateXmlDocument(arguments.Text());
    if (!document)
        throw FormatError("the persisted element is not well-formed XML");
    session.Start(document->GetRoot().get());
}

void Create(Session& session, Arguments& arguments) {
    arguments.ExpectEnd();
    session.CreateAgain();
}

void Stop(Session& session, Arguments& arguments) {
    arguments.ExpectEnd();
    session.Stop();
}

void Persist(Session& session, Arguments& arguments) {
    arguments.ExpectEnd();
    IDriver& driver = session.GetDriver();
    session.Enter([&] {
        const auto element = driver.GetPersistState(0);
        session.GetWorld().recorder.Output(OutputLine("persist").Text(element ? element->ToText() : ""));
    });
}

void ChangeBinding(Session& session, Arguments& arguments, bool bound) {
    const std::uint32_t id = arguments.Number("ID");
    arguments.ExpectEnd();
    IDriver& driver = session.GetDriver();
    session.Enter([&] { driver.OnBindingChanged(id, "", bound); });
}

void Bound(Session& session, Arguments& arguments) {
    ChangeBinding(session, arguments, true);
}
void Unbound(Session& session, Arguments& arguments) {
    ChangeBinding(session, arguments, false);
}

void Online(Session& session, Arguments& arguments) {
    const std::uint32_t binding = arguments.Number("BINDING");
    const std::string address = arguments.Value("ADDRESS");
    CallBound(session, binding, kv::BindMessage("", TakeMessage("SERVER_ONLINE", arguments), address),
              nullptr);
}

void Offline(Session& session, Arguments& arguments) {
    const std::uint32_t binding = arguments.Number("BINDING");
    arguments.ExpectEnd();
    CallBound(session, binding, kv::BindMessage("", kv::CreateCmdMessage("SERVER_OFFLINE"), ""), nullptr);
}

void Data(Session& session, Arguments& arguments) {
    const std::uint32_t binding = arguments.Number("BINDING");
    const std::string text = arguments.Value("TEXT");
    arguments.ExpectEnd();
    CallBound(session, binding, kv::BindMessage("", kv::CreateCmdMessage("DATA_RECEIVED"), text), nullptr);
}

void Protocol(Session& session, Arguments& arguments) {
    const std::uint32_t binding = arguments.Number("BINDING");
    const auto command = kv::CmdMessageToXml(*TakeMessage(arguments));
    PrintedReturn ret(session.GetWorld().recorder);
    CallBound(session, binding,
              kv::BindMessage(kProtocolCommand, kv::CreateCmdMessage("COMMAND"), "", command), &ret);
}

void Command(Session& session, Arguments& arguments) {
    const auto message = TakeMessage(arguments);
    IDriver& driver = session.GetDriver();
    PrintedReturn ret(session.GetWorld().recorder);
    session.Enter([&] { driver.ExecuteCommand(*message, &ret, kNoSource); });
}

void Request(Session& session, Arguments& arguments) {
    const auto message = TakeMessage(arguments);
    IDriver& driver = session.GetDriver();
    session.Enter([&] {
        const auto node = driver.UIRequest(*message);
        session.GetWorld().recorder.Output(OutputLine("reply").Text(node ? node->ToText() : "none"));
    });
}

void Test(Session& session, Arguments& arguments) {
    const kv::CondMessage condition(TakeMessage(arguments));
    IDriver& driver = session.GetDriver();
    session.Enter([&] {
        std::uint32_t value = 0;
        PutResult(session, driver.TestCondition(condition, &value));
    });
}

constexpr Verb kEntryVerbs[] = {
    {"start", "[XML]", "creates and initializes the driver; XML is its persisted element", Start},
    {"create", "", "calls the creation function again", Create},
    {"stop", "", "destroys the driver", Stop},
    {"persist", "", "asks for the element to persist", Persist},
    {"bound", "ID", "a binding has become bound", Bound},
    {"unbound", "ID", "a binding is bound no longer", Unbound},
    {"online", "BINDING ADDRESS [key=value...]", "an audio server has come online", Online},
    {"offline", "BINDING", "an audio server has gone", Offline},
    {"data", "BINDING TEXT", "a line from an audio server", Data},
    {"protocol", "BINDING NAME [key=value...]", "a command that comes over a binding", Protocol},
    {"command", "NAME [key=value...]", "a command", Command},
    {"request", "NAME [key=value...]", "a request of a user interface", Request},
    {"test", "NAME [key=value...]", "a condition", Test},
};

} // namespace

std::span<const Verb> GetEntryVerbs() {
    return kEntryVerbs;
}

} // namespace korvel::replay
