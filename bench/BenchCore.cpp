#include "BenchCore.h"

#include <stdexcept>

#include "basics/Ids.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

namespace bench {

namespace {
constexpr std::uint32_t kServerBinding = 3000;
constexpr BindingType kAudioBinding = 6;
} // namespace

BenchCore::BenchCore()
    : m_stringX(CreateStandardStringX()),
      m_message(CreateStandardKVMessage()),
      m_record(KVXML::CreateXmlNode("song")) {
    m_instances = {
        {IDriverHost::kInterfaceId, static_cast<IDriverHost*>(this)},
        {IMediaManager::kInterfaceId, static_cast<IMediaManager*>(this)},
        {ITimerManager::kInterfaceId, static_cast<ITimerManager*>(this)},
        {IDeviceMessaging::kInterfaceId, static_cast<IDeviceMessaging*>(this)},
        {IBindMessageSender::kInterfaceId, static_cast<IBindMessageSender*>(this)},
        {IVariableService::kInterfaceId, static_cast<IVariableService*>(this)},
        {IRoomService::kInterfaceId, static_cast<IRoomService*>(this)},
        {kv::ISystem::kInterfaceId, static_cast<kv::ISystem*>(this)},
        {IStringX::kInterfaceId, m_stringX.get()},
        {IKVMessage::kInterfaceId, m_message.get()},
    };
    XmlHelper::toXml("Blue in Green", *m_record, "name");
    XmlHelper::toXml("An album", *m_record, "album_title");
    XmlHelper::toXml("An artist", *m_record, "artist");
    XmlHelper::toXml("http://127.0.0.1/cover/1.jpg", *m_record, "img");

    m_driver.reset(korvel_digitalaudio::Create(*this));
    if (!m_driver || m_driver->Initialize(kDriverDeviceId, *KVXML::CreateXmlNode("config"), nullptr) != 0)
        throw std::runtime_error("no driver");
    m_driver->BoundCall(kServerBinding, kAudioBinding, "",
                        kv::BindMessage("EVENT", kv::CreateCmdMessage("SERVER_ONLINE"), "127.0.0.1"),
                        nullptr);
    AnswerLines();
}

BenchCore::~BenchCore() = default;

void BenchCore::Receive(const std::string& line) {
    m_driver->BoundCall(kServerBinding, kAudioBinding, "",
                        kv::BindMessage("EVENT", kv::CreateCmdMessage("DATA_RECEIVED"), line), nullptr);
}

void BenchCore::AnswerLines() {
    while (!m_lines.empty()) {
        const std::string line = std::move(m_lines.front());
        m_lines.pop_front();
        const std::size_t blank = line.find(' ');
        const std::string number = line.substr(0, blank);
        const std::string command = line.substr(blank + 1);
        if (command.starts_with("addstr"))
            Receive(number + " addstr stream=" + std::to_string(++m_lastStream) + "\r\n");
        else
            Receive(number + " OK " + command);
    }
}

bool BenchCore::GetInstance(const std::string& id, void** instance) {
    const auto found = m_instances.find(id);
    *instance = found == m_instances.end() ? nullptr : found->second;
    return found != m_instances.end();
}

void BenchCore::ChangeVariable(std::uint32_t, const std::string& text) {
    if (m_documents)
        m_documents->push_back(text);
}

kv::auto_com<ICmdMessage> BenchCore::CreateMessage(const std::string& name) {
    return kv::CreateCmdMessage(name);
}

kv::auto_com<IOutboundBindMessage> BenchCore::CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                                const std::string& data) {
    return kv::CreateOutboundBindMessage(kind, name, data);
}

std::uint32_t BenchCore::GetDeviceId() {
    return kDriverDeviceId;
}

std::int32_t BenchCore::GetLocation(std::uint32_t, const std::string&, std::string& location) {
    location = "/media/music/song.flac";
    return 0;
}

void BenchCore::SendBindMessage(std::uint32_t, std::uint32_t, const IOutboundBindMessage& message) {
    m_lines.push_back(message.GetData());
}

void BenchCore::MonotonicTime(timespec& now) {
    now = {static_cast<time_t>(m_now / 1000), static_cast<long>(m_now % 1000) * 1000000};
}

// Any sequence will do, as long as it is the same in every run.
std::int32_t BenchCore::Random() {
    m_random = m_random * 1103515245u + 12345u;
    return static_cast<std::int32_t>(m_random >> 1);
}

} // namespace bench
