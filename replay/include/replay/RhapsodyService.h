#pragma once

#include <memory>

#include "platform/rhapsody/RhapsodyClient.h"
#include "replay/World.h"

namespace korvel::replay {

// Makes clients that take their calls down. Answers come from the transcript.
class RhapsodyService final : public KVRhapsodyClient::IRhapsodyClientFactory {
public:
    explicit RhapsodyService(World& world) : m_world(world) {}

    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> CreateClient(
        KVRhapsodyClient::RhapsodyBranding branding, ITimerManager& timers,
        IRhapsodyCallback* callback) override;

    // Who gets the answers: the callback of the latest call or, before any, the one that the client was made
    // with. Null without a client.
    IRhapsodyCallback* GetCallback() const { return m_callback; }

private:
    class Client;

    World& m_world;
    IRhapsodyCallback* m_callback = nullptr;
};

} // namespace korvel::replay
