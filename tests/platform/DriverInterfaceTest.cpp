// Plug-ins are built apart from the core: both find an operation by its place in the table.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/IDriver.h"

namespace {

// The place of a virtual operation, as a pointer to it holds it on Linux: in bytes, on some machines plus
// one.
template <class Member>
std::size_t Slot(Member member) {
    std::size_t place = 0;
    std::memcpy(&place, &member, sizeof(place));
    return place / sizeof(void*);
}

TEST(DriverInterface, KeepsTheOrderOfItsOperations) {
    EXPECT_EQ(Slot(&IDriver::BoundCall), 0u);
    EXPECT_EQ(Slot(&IDriver::OnBindingChanged), 1u);
    // Two places for the destructor.
    EXPECT_EQ(Slot(&IDriver::Initialize), 4u);
    EXPECT_EQ(Slot(&IDriver::RemovedFromProject), 5u);
    EXPECT_EQ(Slot(&IDriver::OnAVRoomOff), 6u);
    EXPECT_EQ(Slot(&IDriver::GetPersistState), 7u);
    EXPECT_EQ(Slot(&IDriver::ExecuteCommand), 8u);
    EXPECT_EQ(Slot(&IDriver::TestCondition), 9u);
    EXPECT_EQ(Slot(&IDriver::UIRequest), 10u);
    EXPECT_EQ(Slot(&IDriver::OnAVSelected), 11u);
    EXPECT_EQ(Slot(&IDriver::OnAVDeselected), 12u);
    EXPECT_EQ(Slot(&IDriver::OnAVAddLocationInfo), 13u);
    EXPECT_EQ(Slot(&IDriver::IsAVOutputToInputValid), 14u);
    EXPECT_EQ(Slot(&IDriver::GetDeviceCommon), 15u);
    EXPECT_EQ(Slot(&IDriver::GetDeviceIP), 16u);
    EXPECT_EQ(Slot(&IDriver::GetEventLabel), 17u);
    EXPECT_EQ(Slot(&IDriver::OnConnectionStatusChanged), 18u);
    using Bytes = std::vector<std::uint8_t>;
    EXPECT_EQ(Slot<void (IDriver::*)(std::uint32_t, const Bytes&)>(&IDriver::OnDataIn), 19u);
    EXPECT_EQ(Slot<void (IDriver::*)(std::uint32_t, const KVXML::INode&)>(&IDriver::OnDataIn), 20u);
    EXPECT_EQ(Slot(&IDriver::OnPoll), 21u);
    EXPECT_EQ(Slot(&IDriver::OnEventFired), 22u);
    EXPECT_EQ(Slot(&IDriver::OnTimerExpired), 23u);
}

} // namespace
