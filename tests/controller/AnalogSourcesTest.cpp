// What the driver is told about a room's source, and what it tells.
#include <gtest/gtest.h>

#include "driver/Ids.h"
#include "driver/services/DriverHelper.h"

namespace korvel::controller {
namespace {

class AnalogSourcesTest : public testing::Test {
protected:
    IAnalogSource* SourceOf(std::uint32_t room) { return kv::GetDeviceService<IAnalogSource>(helper, room); }

    common::Log log{common::LogLevel::Error};
    RoomTable rooms{{{1, "Hall", "10.0.0.1", 6200, 1}, {2, "Bath", "10.0.0.2", 6200, 1}}};
    AnalogSources sources{rooms, log};
    DriverHelper helper{sources, {110001}};
};

TEST_F(AnalogSourcesTest, EachRoomIsASourceOfItsOwn) {
    ASSERT_NE(SourceOf(1), nullptr);
    EXPECT_NE(SourceOf(1), SourceOf(2));
    EXPECT_EQ(SourceOf(3), nullptr);
    EXPECT_EQ(helper.GetDeviceInterface(1, "{unknown}"), nullptr);
}

TEST_F(AnalogSourcesTest, ARoomTakesASource) {
    SourceOf(2)->TakeSourceDevice(kFirstInputDevice);
    EXPECT_EQ(rooms.Find(2)->sourceDeviceId, kFirstInputDevice);
    EXPECT_EQ(rooms.Find(1)->sourceDeviceId, 0u);
    SourceOf(2)->SelectDevice(kDriverDeviceId);
    EXPECT_EQ(rooms.Find(2)->sourceDeviceId, kFirstInputDevice);
}

TEST_F(AnalogSourcesTest, OnlyTheDriverIsBetweenARoomAndItsSource) {
    EXPECT_TRUE(SourceOf(1)->GetDevicesInAnalogSource().empty());
    SourceOf(1)->TakeSourceDevice(kFirstInputDevice);
    EXPECT_EQ(SourceOf(1)->GetDevicesInAnalogSource(), std::vector{kDriverDeviceId});
}

TEST_F(AnalogSourcesTest, ARoomStillKnowsItsStorage) {
    auto* storage = kv::GetDeviceService<IMp3Storage>(helper, 1);
    ASSERT_NE(storage, nullptr);
    EXPECT_EQ(storage->GetMp3Devices(), std::vector{std::uint32_t{110001}});
}

} // namespace
} // namespace korvel::controller
