// Documents from outside: the media of commands, the persisted element, and the reader and printer of trees.
#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "TestCore.h"
#include "platform/CmdMessage.h"
#include "platform/Xml.h"
#include "replay/Words.h"

namespace {

// What was read and printed once reads and prints as itself from then on.
void CheckPrinter(const kv::auto_com<KVXML::IDocument>& document) {
    const auto reprint = [](const std::string& text) {
        const auto again = KVXML::CreateXmlDocument(text);
        if (!again) {
            std::cerr << "broken rule: cannot be read back: " << text << std::endl;
            std::abort();
        }
        return again->GetRoot()->ToText();
    };
    const std::string once = reprint(document->GetRoot()->ToText());
    if (reprint(once) != once) {
        std::cerr << "broken rule: reads back as another: " << once << std::endl;
        std::abort();
    }
}

void RunCommands(TestCore& core, const std::string& document) {
    const std::string media = " MEDIA=" + korvel::replay::FormatValue(document);
    for (const std::string& line :
         {std::string("online 3000 127.0.0.1"), "command ADD_SONG_LIST ROOM_ID=7" + media,
          std::string("select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200"),
          std::string(R"(data 3000 "1 addstr stream=1\r\n")"), "command EDIT_QUEUE ROOM_ID=7" + media,
          "command ADD_ALBUM_LIST ROOM_ID=8" + media, std::string("command SHUFFLE ROOM_ID=7 SHUFFLE=1"),
          "command ADD_SONG_LIST ROOM_ID=7 PLAY_NEXT=1" + media, "command EDIT_QUEUE ROOM_ID=7" + media,
          std::string("command SKIP_FWD ROOM_ID=7"), std::string("command GET_QUEUE_STATUSV2"),
          std::string("persist")})
        core.Session().Execute(line);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const auto document = KVXML::CreateXmlDocument(text);
    if (document) {
        CheckPrinter(document);
        kv::CmdMessageFromXml(*document->GetRoot());
    }
    TestCore core;
    for (const char* song :
         {"song 1 location=/media/a.flac", "song 2 location=/media/b.flac", "album 4 songs=1,2"})
        core.Session().Execute(song);
    const auto root = document ? document->GetRoot() : nullptr;
    core.Session().Start(root.get());
    RunCommands(core, text);
    return 0;
}
