#include "replay/RhapsodyService.h"

namespace korvel::replay {

class RhapsodyService::Client final : public KVRhapsodyClient::RhapsodyClient {
public:
    Client(RhapsodyService& service, IRhapsodyCallback* callback) : m_service(service) {
        m_service.m_callback = callback;
    }
    ~Client() override { m_service.m_callback = nullptr; }

    void Connect(const std::string& address) override { Output(Line("Connect").Value(address)); }
    void DisableOfflineMode() override { Output(Line("DisableOfflineMode")); }
    void GetMemberPlaylists(IRhapsodyCallback* callback) override {
        Output(Line("GetMemberPlaylists"));
        m_service.m_callback = callback;
    }
    void GetTracksForPlaylist(const std::string& playlistId, unsigned int offset, unsigned int count,
                              unsigned int flags, IRhapsodyCallback* callback) override {
        Output(Line("GetTracksForPlaylist").Value(playlistId).Number(offset).Number(count).Number(flags));
        m_service.m_callback = callback;
    }
    void GetCurrentSongInfo(const std::string& id, std::int32_t stream,
                            IRhapsodyCallback* callback) override {
        Output(Line("GetCurrentSongInfo").Value(id).Number(stream));
        m_service.m_callback = callback;
    }

private:
    static OutputLine Line(const char* operation) { return OutputLine("rhapsody").Value(operation); }
    void Output(const OutputLine& line) { m_service.m_world.recorder.Output(line); }

    RhapsodyService& m_service;
};

std::unique_ptr<KVRhapsodyClient::RhapsodyClient> RhapsodyService::CreateClient(
    KVRhapsodyClient::RhapsodyBranding, ITimerManager&, IRhapsodyCallback* callback) {
    if (m_world.Fails(kFailCreateClient))
        return nullptr;
    return std::make_unique<Client>(*this, callback);
}

} // namespace korvel::replay
