// The rooms that a queue plays into.
#include "QueueFixture.h"

namespace {

using Rooms = std::vector<std::uint32_t>;

class QueueRooms : public QueueFixture {
protected:
    QueueRooms() { GiveStream(); }
};

TEST_F(QueueRooms, RoomWithoutAnEndpointIsNotTold) {
    queue->AddRoomClient(7);
    EXPECT_TRUE(queue->ContainsRoom(7));
    EXPECT_FALSE(queue->ContainsRoom(8));
    EXPECT_EQ(queue->GetRoomCount(), 1u);
    EXPECT_EQ(queue->GetRoomClient(7)->GetIpAddress(), "");
    EXPECT_EQ(queue->GetRoomClient(8), nullptr);
    queue->AddRoomClientsToStream();
    queue->RemoveRoomClient(7);
    EXPECT_EQ(Out(), Lines{});
    EXPECT_EQ(queue->GetRoomCount(), 0u);
}

TEST_F(QueueRooms, EmptyAddressIsNotToldEither) {
    queue->AddRoomClient(7, "", 6200, 1);
    EXPECT_TRUE(queue->ContainsRoom(7));
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueueRooms, AddingAPresentRoomKeepsItsClient) {
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    const RoomClient* client = queue->GetRoomClient(7);
    Out();
    queue->AddRoomClient(7);
    EXPECT_EQ(queue->GetRoomClient(7), client);
    EXPECT_EQ(client->GetIpAddress(), "10.0.0.7");
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueueRooms, NewEndpointTakesThePlaceOfTheOldOne) {
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    EXPECT_EQ(Out(), Lines{"send addcli 1 10.0.0.7 6200"});
    queue->AddRoomClient(7, "10.0.0.77", 6201, 2);
    EXPECT_EQ(Out(), Lines{"send addcli 1 10.0.0.77 6201"});
    EXPECT_EQ(queue->GetRoomCount(), 1u);
    EXPECT_EQ(queue->GetRoomClient(7)->GetIpPort(), 6201u);
    EXPECT_EQ(queue->GetRoomClient(7)->GetChannel(), 2u);
    // Also the same one again.
    queue->AddRoomClient(7, "10.0.0.77", 6201, 2);
    EXPECT_EQ(Out(), Lines{"send addcli 1 10.0.0.77 6201"});
}

TEST_F(QueueRooms, RemovedRoomIsToldByItsEndpoint) {
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    Out();
    queue->RemoveRoomClient(8);
    EXPECT_EQ(Out(), Lines{});
    queue->RemoveRoomClient(7);
    EXPECT_EQ(Out(), Lines{"send remcli 1 10.0.0.7 6200"});
    EXPECT_FALSE(queue->ContainsRoom(7));
}

TEST_F(QueueRooms, SharedEndpointIsRemovedWithItsLastRoom) {
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    queue->AddRoomClient(8, "10.0.0.7", 6200, 2); // the channel makes no difference
    Out();
    queue->RemoveRoomClient(7);
    EXPECT_EQ(Out(), Lines{});
    queue->RemoveRoomClient(8);
    EXPECT_EQ(Out(), Lines{"send remcli 1 10.0.0.7 6200"});
}

TEST_F(QueueRooms, EndpointIsSharedByAddressAndPort) {
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    EXPECT_FALSE(queue->IsSameClientInQueue(7));
    EXPECT_FALSE(queue->IsSameClientInQueue(8));
    queue->AddRoomClient(8, "10.0.0.7", 6201, 1);
    EXPECT_FALSE(queue->IsSameClientInQueue(7));
    queue->AddRoomClient(8, "10.0.0.70", 6200, 1);
    EXPECT_FALSE(queue->IsSameClientInQueue(7));
    queue->AddRoomClient(8, "10.0.0.7", 6200, 2);
    EXPECT_TRUE(queue->IsSameClientInQueue(7));
    EXPECT_TRUE(queue->IsSameClientInQueue(8));
}

TEST_F(QueueRooms, EndpointIsInUseWhenAllOfItIsTheSame) {
    EXPECT_FALSE(queue->IsClientInUse("", RoomClient::kUnknownChannel, 0));
    queue->AddRoomClient(6);
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    EXPECT_TRUE(queue->IsClientInUse("10.0.0.7", 1, 6200)); // channel before port
    EXPECT_FALSE(queue->IsClientInUse("10.0.0.7", 6200, 1));
    EXPECT_FALSE(queue->IsClientInUse("10.0.0.7", 2, 6200));
    EXPECT_FALSE(queue->IsClientInUse("10.0.0.7", 1, 6201));
    EXPECT_FALSE(queue->IsClientInUse("10.0.0.8", 1, 6200));
    EXPECT_FALSE(queue->IsClientInUse("10.0.0.70", 1, 6200));
    EXPECT_TRUE(queue->IsClientInUse("", RoomClient::kUnknownChannel, 0));
}

TEST_F(QueueRooms, AllEndpointsAreToldAgainInOrder) {
    queue->AddRoomClient(12, "10.0.0.12", 6200, 1);
    queue->AddRoomClient(9);
    queue->AddRoomClient(7, "10.0.0.7", 6201, 1);
    EXPECT_EQ(queue->GetRoomIds(), (Rooms{7, 9, 12}));
    Out();
    queue->AddRoomClientsToStream();
    EXPECT_EQ(Out(), (Lines{"send addcli 1 10.0.0.7 6201", "send addcli 1 10.0.0.12 6200"}));
}

TEST_F(QueueRooms, OwnershipPassesToTheSmallestRoomLeft) {
    for (const std::uint32_t room : {kOwner, 12u, 7u})
        queue->AddRoomClient(room);
    queue->RemoveRoomClient(99);
    EXPECT_EQ(queue->GetOwner(), kOwner);
    queue->AddRoomClient(9);
    queue->RemoveRoomClient(9);
    EXPECT_EQ(queue->GetOwner(), kOwner);
    queue->RemoveRoomClient(kOwner);
    EXPECT_EQ(queue->GetOwner(), 7u);
    queue->RemoveRoomClient(12);
    EXPECT_EQ(queue->GetOwner(), 7u);
    queue->RemoveRoomClient(7);
    EXPECT_EQ(queue->GetOwner(), 7u);
}

// The core may look at the queue while the line goes out.
TEST_F(QueueRooms, RoomLeavesWhenItsEndpointIsRemoved) {
    queue->AddRoomClient(kOwner, "10.0.0.34", 6200, 1);
    queue->AddRoomClient(40, "10.0.0.40", 6200, 1);
    int lines = 0;
    onCall = [&](const ServiceCall& call) {
        if (call.name != "SendBindMessage")
            return;
        ++lines;
        EXPECT_EQ(queue->GetRoomIds(), (Rooms{kOwner, 40}));
        EXPECT_EQ(queue->GetOwner(), kOwner);
    };
    queue->RemoveRoomClient(kOwner);
    EXPECT_EQ(lines, 1);
    EXPECT_EQ(queue->GetRoomIds(), Rooms{40});
    EXPECT_EQ(queue->GetOwner(), 40u);
}

TEST_F(QueueRooms, DevicesOnTheWayAreKept) {
    EXPECT_EQ(queue->GetDevicesInAnalogSource(), Rooms{});
    queue->SetDevicesInAnalogSource({3, 1});
    EXPECT_EQ(queue->GetDevicesInAnalogSource(), (Rooms{3, 1}));
}

// A room may be taken out while another one is being told.
TEST_F(QueueRooms, RoomsMayLeaveWhileTheyAreTold) {
    for (const std::uint32_t room : {7u, 8u, 9u})
        queue->AddRoomClient(room);
    onCall = [this](const ServiceCall& call) {
        if (call.name == "SendMessage" && call.arguments.front() == "7") {
            queue->RemoveRoomClient(7);
            queue->RemoveRoomClient(8);
        }
        if (call.name == "QueueEnded")
            queue->RemoveRoomClient(9);
    };
    queue->UpdateRoomMediaVariable(AudioMedia(), nullptr, false);
    const Lines told = Out("message");
    ASSERT_EQ(told.size(), 2u);
    EXPECT_TRUE(told[0].starts_with("message 7 "));
    EXPECT_TRUE(told[1].starts_with("message 9 "));
    queue->EndOfQueue();
    EXPECT_EQ(queue->GetRoomCount(), 0u);
}

} // namespace
