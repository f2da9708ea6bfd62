// Lets the house follow the driver that runs.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "driver/DriverPort.h"
#include "driver/reading/HouseReader.h"
#include "driver/rooms/RoomTable.h"

namespace korvel::controller {

// Hears what goes into the driver and what comes out, and has it read after each call. Driver thread.
class HouseFollower final : public DriverPort::Listener {
public:
    struct Parts {
        House& house;
        DriverPort& driver;
        const RoomTable& rooms;
        // The name of the line input that has this device; none for any other device.
        std::function<std::optional<std::string>(std::uint32_t deviceId)> input;
    };

    explicit HouseFollower(const Parts& parts);
    ~HouseFollower();
    HouseFollower(const HouseFollower&) = delete;
    HouseFollower& operator=(const HouseFollower&) = delete;

    const HouseReader& GetReader() const { return m_reader; }

    // Inside a call of the driver: a variable has another text, and a room is told something.
    void OnVariable(std::uint32_t id, const std::string& text);
    void OnMessage(const Room& room, const ICmdMessage& message);
    // A line of an audio server, before the driver has it; and that one is lost, after the driver has heard.
    void OnServerLine(const std::string& line);
    void OnServerLost();

private:
    void OnCommand(const ICmdMessage& command) override { m_reader.OnCommand(command); }
    void AfterEntry() override { m_reader.Read(); }

    kv::auto_com<KVXML::INode> ListOf(std::uint32_t queueId) const;
    std::optional<std::string> InputIn(RoomId room) const;

    Parts m_parts;
    HouseReader m_reader;
};

} // namespace korvel::controller
