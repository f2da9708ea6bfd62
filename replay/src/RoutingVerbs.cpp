#include "replay/Arguments.h"
#include "replay/Session.h"
#include "replay/Verbs.h"

namespace korvel::replay {

namespace {

// The two ends of a room's audio connection.
struct Connection {
    AVParams params;
    AV_Class output{.classType = kAvClassDigitalAudio, .bindingId = 0};
    AV_Class input{.classType = kAvClassRoomEndpoint, .bindingId = 0};
};

// What a room wants to hear, and where.
struct Wish {
    Wish(std::uint32_t room, const Fields& fields);

    Connection connection;
    AVLocationInfo location;
};

Wish::Wish(std::uint32_t room, const Fields& fields) {
    connection.params.roomId = room;
    connection.params.queueId = fields.Number("queue");
    connection.params.mediaKind = fields.Text("kind");
    connection.params.sourceDeviceId = fields.Number("source");
    connection.input.bindingId = fields.Number("binding");

    location.endpointAddress = fields.Text("ip");
    location.endpointPort = fields.Number("port");
    location.endpointChannel = fields.Number("channel");
    location.inputName = fields.Text("input");
    location.mediaIds = fields.NumberList("media");
    location.targetDeviceId = fields.Number("target");
    location.locationKind = fields.Text("location-kind");
    location.location = fields.Text("location");
}

void Select(Session& session, Arguments& arguments) {
    const std::uint32_t room = arguments.Number("ROOM");
    const Wish wish(room, Fields(arguments, {"queue", "kind", "source", "binding", "ip", "port", "channel",
                                             "input", "media", "target", "location-kind"}));
    IDriver& driver = session.GetDriver();
    session.Enter([&] {
        AVReturn result;
        driver.OnAVSelected(wish.connection.params, wish.connection.output, wish.connection.input,
                            wish.location, nullptr, result);
        if (result.handled) {
            session.GetWorld().recorder.Output(OutputLine("selected")
                                                   .Pair("queue", std::to_string(result.queueId))
                                                   .Pair("media", std::to_string(result.mediaId))
                                                   .Pair("kind", result.mediaKind));
        }
    });
}

void Location(Session& session, Arguments& arguments) {
    const std::uint32_t room = arguments.Number("ROOM");
    Wish wish(room, Fields(arguments, {"queue", "kind", "source", "binding", "ip", "port", "channel", "input",
                                       "media", "target", "location-kind", "location"}));
    IDriver& driver = session.GetDriver();
    session.Enter([&] {
        AVDriverLocationInfo* addition = nullptr;
        driver.OnAVAddLocationInfo(wish.connection.params, wish.connection.output, wish.connection.input,
                                   wish.location, &addition);
        session.GetWorld().recorder.Output(OutputLine("location").Text(wish.location.location));
    });
}

void Deselect(Session& session, Arguments& arguments) {
    Connection connection;
    connection.params.roomId = arguments.Number("ROOM");
    arguments.ExpectEnd();
    IDriver& driver = session.GetDriver();
    session.Enter([&] { driver.OnAVDeselected(connection.params, connection.output, connection.input); });
}

void Off(Session& session, Arguments& arguments) {
    const std::uint32_t room = arguments.Number("ROOM");
    arguments.ExpectEnd();
    IDriver& driver = session.GetDriver();
    session.Enter([&] { driver.OnAVRoomOff(room); });
}

void Valid(Session& session, Arguments& arguments) {
    Connection connection;
    connection.output.classType = arguments.Number("A");
    connection.input.classType = arguments.Number("B");
    arguments.ExpectEnd();
    IDriver& driver = session.GetDriver();
    session.Enter([&] {
        const bool valid =
            driver.IsAVOutputToInputValid(connection.params, connection.output, connection.input);
        session.GetWorld().recorder.Output(OutputLine("result").Flag(valid));
    });
}

constexpr Verb kRoutingVerbs[] = {
    {"select",
     "ROOM [queue= kind= source= binding= ip= port= channel= input= media=1,2 target= location-kind=]",
     "a room selects the driver as its source", Select},
    {"location", "ROOM [the keys of select, location=]",
     "the driver is asked to complete a selection's location", Location},
    {"deselect", "ROOM", "a room lets go of the driver", Deselect},
    {"off", "ROOM", "a room is switched off", Off},
    {"valid", "A B", "may an output of class type A feed an input of class type B?", Valid},
};

} // namespace

std::span<const Verb> GetRoutingVerbs() {
    return kRoutingVerbs;
}

} // namespace korvel::replay
