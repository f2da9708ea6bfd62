// The user's settings: set by command, shown to user interfaces, persisted.
#include "basics/Asserts.h"
#include "basics/Flags.h"
#include "basics/Variables.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/Text.h"
#include "platform/XmlHelper.h"

using KVXML::INode;
using NodePtr = kv::auto_com<INode>;

void korvel_digitalaudio::OnGetSettings(const ICmdMessage&, ICmdReturn*) {
    SendSettingsToUI();
}

void korvel_digitalaudio::OnSetPlaylistClearFlag(const ICmdMessage& message, ICmdReturn*) {
    SetPlaylistClearFlag(flags::IsWord(message.GetParam("FLAG_VALUE"), kv::TRUE_STRING));
    SendSettingsToServers();
}

void korvel_digitalaudio::OnSetPlaylistClearDelay(const ICmdMessage& message, ICmdReturn*) {
    SetPlaylistDelayValue(static_cast<std::uint16_t>(message.GetNumber("DELAY_VALUE")));
}

void korvel_digitalaudio::OnSetPlayPreference(const ICmdMessage& message, ICmdReturn*) {
    const std::int32_t preference = kv::ToLong(message.GetParam("PLAY_PREF"));
    UpdatePlayPreferenceVariable(static_cast<DigitalAudioPlayPref>(preference));
}

void korvel_digitalaudio::SetPlaylistClearFlag(bool clear) {
    m_clearPlaylist = clear;
    SendSettingsToUI();
}

void korvel_digitalaudio::SetPlaylistDelayValue(std::uint16_t minutes) {
    m_clearDelayMinutes = minutes;
    SendSettingsToUI();
}

// The variable tells user interfaces; they need no settings document for this one.
void korvel_digitalaudio::UpdatePlayPreferenceVariable(DigitalAudioPlayPref preference) {
    m_playPreference = preference;
    ChangeMyVariable(variables::kPlayPreference, std::to_string(preference));
}

void korvel_digitalaudio::SendSettingsToServers() {
    ForEachServer([&](AudioServer& server) { server.SetClearPlaylistSettings(m_clearPlaylist); });
}

void korvel_digitalaudio::SendSettingsToUI() {
    const NodePtr settings = KVXML::CreateXmlNode(s_DigitalAudioSettingsTag);
    if (!settings) {
        kv::AssertWrite(asserts::kDriverPath, asserts::kSettingsElement, kv::StackTrace());
        return;
    }
    SettingsToXml(*settings);
    ConSendDataToUI(*settings);
}

void korvel_digitalaudio::SettingsToXml(INode& parent) const {
    XmlHelper::toXml(m_clearPlaylist, parent, s_DAClearPlaylistTag);
    XmlHelper::toXml(std::uint32_t{m_clearDelayMinutes}, parent, s_DAClearPlaylistDelayTag);
    XmlHelper::toXml(std::to_string(m_playPreference), parent, s_DA_PlayPreferenceTag);
}

NodePtr korvel_digitalaudio::PersistedState() {
    NodePtr root = KVXML::CreateXmlNode(s_DigitalAudioPersistTag);
    XmlHelper::toXml(m_lastServerBinding, *root, s_DA_LastServerIDTag);
    XmlHelper::toXml(m_lastMediaBinding, *root, s_DA_LastMediaIDTag);
    SettingsToXml(*root);
    UpdateRoomsQueueSettingsVariable(root.get());
    return root;
}

void korvel_digitalaudio::RestoreSettings(const INode& persist) {
    XmlHelper::fromXml(persist, s_DA_LastServerIDTag, m_lastServerBinding);
    XmlHelper::fromXml(persist, s_DA_LastMediaIDTag, m_lastMediaBinding);
    RestoreDynamicBindings();

    // Whatever is not a plain "false" leaves clearing on.
    std::string clear;
    XmlHelper::fromXml(persist, s_DAClearPlaylistTag, clear);
    m_clearPlaylist = !flags::IsWord(clear, kv::FALSE_STRING);
    std::uint32_t value = 0;
    if (XmlHelper::fromXml(persist, s_DA_PlayPreferenceTag, value))
        UpdatePlayPreferenceVariable(static_cast<DigitalAudioPlayPref>(value));
    if (XmlHelper::fromXml(persist, s_DAClearPlaylistDelayTag, value))
        m_clearDelayMinutes = static_cast<std::uint16_t>(value);
}
