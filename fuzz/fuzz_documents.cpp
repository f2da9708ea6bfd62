// Documents from outside: the media of commands, the persisted element, and the reader and printer of trees.
#include <cstdlib>
#include <iostream>

#include "FuzzCore.h"

namespace {

// What was read and printed once reads and prints as itself from then on.
void CheckPrinter(const kv::auto_com<KVXML::IDocument>& document) {
    const auto reprint = [](const std::string& text) {
        const auto again = KVXML::CreateXmlDocument(text);
        if (!again) {
            std::cerr << "cannot be read back: " << text << std::endl;
            std::abort();
        }
        return again->GetRoot()->ToText();
    };
    const std::string once = reprint(document->GetRoot()->ToText());
    if (reprint(once) != once) {
        std::cerr << "reads back as another: " << once << std::endl;
        std::abort();
    }
}

void RunCommands(fuzz::FuzzCore& core, const std::string& media) {
    core.Bound(3000, "SERVER_ONLINE", "127.0.0.1");
    core.Command("ADD_SONG_LIST", {{"ROOM_ID", "INT", "7"}, {"MEDIA", "STRING", media}});
    core.Select(7, 10000, "QUEUE");
    core.Bound(3000, "DATA_RECEIVED", "1 addstr stream=1\r\n");
    core.Command("EDIT_QUEUE", {{"ROOM_ID", "INT", "7"}, {"MEDIA", "STRING", media}});
    core.Command("ADD_ALBUM_LIST", {{"ROOM_ID", "INT", "8"}, {"MEDIA", "STRING", media}});
    core.Command("SHUFFLE", {{"ROOM_ID", "INT", "7"}, {"SHUFFLE", "INT", "1"}});
    core.Command("ADD_SONG_LIST",
                 {{"ROOM_ID", "INT", "7"}, {"MEDIA", "STRING", media}, {"PLAY_NEXT", "INT", "1"}});
    core.Command("EDIT_QUEUE", {{"ROOM_ID", "INT", "7"}, {"MEDIA", "STRING", media}});
    core.Command("SKIP_FWD", {{"ROOM_ID", "INT", "7"}});
    core.Command("GET_QUEUE_STATUSV2", {});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const auto document = KVXML::CreateXmlDocument(text);
    if (document) {
        CheckPrinter(document);
        kv::CmdMessageFromXml(*document->GetRoot());
    }
    FuzzedDataProvider noData(nullptr, 0);
    fuzz::FuzzCore core(noData, {});
    const auto root = document ? document->GetRoot() : nullptr;
    if (!core.Start(root.get()))
        return 0;
    RunCommands(core, text);
    const auto persisted = core.Driver()->GetPersistState(0);
    return 0;
}
