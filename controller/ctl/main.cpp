#include <CLI/CLI.hpp>
#include <functional>
#include <iostream>

#include "common/Program.h"
#include "ctl/Actions.h"

namespace {

using namespace korvel::ctl;

struct Words {
    std::string url = "http://127.0.0.1:8080";
    std::string room;
    std::string name;
    std::vector<std::string> list;
    bool add = false;
};

// Runs the action that the subcommand stands for.
using Action = std::function<void(Actions&)>;

CLI::App* AddAction(CLI::App& app, Action& chosen, const std::string& name, const std::string& help,
                    Action action) {
    CLI::App* command = app.add_subcommand(name, help);
    command->callback([&chosen, action = std::move(action)] { chosen = action; });
    return command;
}

void AddRoomAction(CLI::App& app, Action& chosen, Words& words, const std::string& name,
                   const std::string& help, const char* driverCommand) {
    AddAction(app, chosen, name, help,
              [&words, driverCommand](Actions& actions) { actions.Transport(driverCommand, words.room); })
        ->add_option("room", words.room, "id or name")
        ->required();
}

void AddChoice(CLI::App& app, Action& chosen, Words& words, const std::string& name, const std::string& help,
               void (Actions::*play)(const std::string&, const std::string&)) {
    CLI::App* command = AddAction(app, chosen, name, help, [&words, play](Actions& actions) {
        (actions.*play)(words.room, words.name);
    });
    command->add_option("room", words.room, "id or name")->required();
    command->add_option(name, words.name, "id or name")->required();
}

void AddActions(CLI::App& app, Action& chosen, Words& words) {
    AddAction(app, chosen, "rooms", "the rooms and what they hear",
              [](Actions& actions) { actions.Rooms(); });
    AddAction(app, chosen, "status", "audio servers and the scan",
              [](Actions& actions) { actions.Status(); });
    AddAction(app, chosen, "search", "songs, albums and artists",
              [&words](Actions& actions) { actions.Search(words.name); })
        ->add_option("text", words.name, "words to look for")
        ->required();
    CLI::App* play = AddAction(app, chosen, "play", "play songs in a room", [&words](Actions& actions) {
        actions.Play(words.room, words.list, words.add);
    });
    play->add_option("room", words.room, "id or name")->required();
    play->add_option("song", words.list, "ids or titles")->required();
    play->add_flag("--add", words.add, "put them at the end of the room's queue instead of replacing it");
    AddChoice(app, chosen, words, "radio", "play a station in a room", &Actions::PlayStation);
    AddChoice(app, chosen, words, "input", "play a line input in a room", &Actions::PlayInput);
    AddChoice(app, chosen, words, "playlist", "play a saved playlist in a room", &Actions::PlayPlaylist);
    AddRoomAction(app, chosen, words, "pause", "pause a room's queue", "PAUSE");
    AddRoomAction(app, chosen, words, "resume", "go on after a pause or stop", "PLAY");
    AddRoomAction(app, chosen, words, "stop", "stop a room's queue", "STOP");
    AddRoomAction(app, chosen, words, "skip", "the next song", "SKIP_FWD");
    AddRoomAction(app, chosen, words, "back", "the song before", "SKIP_REV");
    AddRoomAction(app, chosen, words, "leave", "take a room out of what it hears", "REMOVE");
    CLI::App* join = AddAction(app, chosen, "join", "let other rooms hear what a room hears",
                               [&words](Actions& actions) { actions.Join(words.room, words.list); });
    join->add_option("room", words.room, "id or name")->required();
    join->add_option("other", words.list, "ids or names of the rooms that join it")->required();
    CLI::App* announce = AddAction(app, chosen, "announce",
                                   "play a file once, over whatever the rooms hear, and wait for its end",
                                   [&words](Actions& actions) { actions.Announce(words.name, words.list); });
    announce->add_option("file", words.name, "of this machine")->required();
    announce->add_option("room", words.list, "ids or names")->required();
    CLI::App* command = AddAction(app, chosen, "command", "any command of the driver",
                                  [&words](Actions& actions) { actions.Command(words.name, words.list); });
    command->add_option("name", words.name, "such as SHUFFLE")->required();
    command->add_option("parameter", words.list, "KEY=VALUE");
    CLI::App* request = AddAction(app, chosen, "request", "any request of the driver",
                                  [&words](Actions& actions) { actions.Request(words.name, words.list); });
    request->add_option("name", words.name, "such as GET_QUEUE_INFO")->required();
    request->add_option("parameter", words.list, "KEY=VALUE");
    AddAction(app, chosen, "watch", "everything that happens, one line each",
              [](Actions& actions) { actions.Watch(); });
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Speaks to the controller of a house's music.", "korvelctl");
    Words words;
    Action chosen;
    app.add_option("--url", words.url, "the controller's address")->capture_default_str();
    app.require_subcommand(1);
    AddActions(app, chosen, words);
    return korvel::common::RunProgram(app, argc, argv, [&] {
        Client client(words.url);
        Actions actions(client, std::cout);
        chosen(actions);
        return korvel::common::kExitDone;
    });
}
