// Service identifiers and queue ids.
#include <gtest/gtest.h>

#include <set>

#include "driver/QueueIds.h"
#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/IDriverHost.h"
#include "platform/MediaManager.h"
#include "platform/Services.h"
#include "platform/System.h"
#include "platform/TimerManager.h"
#include "platform/Utilities.h"
#include "platform/rhapsody/RhapsodyClient.h"

namespace {

TEST(Identifiers, NoneIsUsedTwice) {
    const std::vector<std::string> all = {
        IDigitalAudio::kInterfaceId,
        IDriverHost::kInterfaceId,
        IMediaManager::kInterfaceId,
        IDeviceMessaging::kInterfaceId,
        IUINotifier::kInterfaceId,
        IBindMessageSender::kInterfaceId,
        IVariableService::kInterfaceId,
        IRoomService::kInterfaceId,
        IAnnouncementNotifier::kInterfaceId,
        IMp3Storage::kInterfaceId,
        IAnalogSource::kInterfaceId,
        kv::ISystem::kInterfaceId,
        ITimerManager::kInterfaceId,
        IStringX::kInterfaceId,
        IKVMessage::kInterfaceId,
        KVRhapsodyClient::IRhapsodyClientFactory::kInterfaceId,
    };
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), all.size());
}

TEST(QueueIds, WrapWithoutEverFallingBelowTheFirst) {
    EXPECT_EQ(NextQueueId(10000), 10001u);
    EXPECT_EQ(NextQueueId(4294967294u), 4294967295u);
    EXPECT_EQ(NextQueueId(4294967295u), 10000u);
    EXPECT_EQ(NextQueueId(0), 10000u);
    EXPECT_EQ(NextQueueId(9998), 10000u);
    EXPECT_EQ(NextQueueId(9999), 10000u);
}

} // namespace
