#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/IDriverHost.h"
#include "platform/MediaManager.h"
#include "platform/Services.h"
#include "platform/System.h"
#include "platform/TimerManager.h"
#include "platform/Utilities.h"
#include "platform/rhapsody/RhapsodyClient.h"

namespace {

template <class... Interfaces>
std::multiset<std::string> IdentifiersOf() {
    return {Interfaces::kInterfaceId...};
}

std::multiset<std::string> AllIdentifiers() {
    return IdentifiersOf<IDigitalAudio, IDriverHost, IMediaManager, IDeviceMessaging, IUINotifier,
                         IBindMessageSender, IVariableService, IRoomService, IAnnouncementNotifier,
                         IMp3Storage, IAnalogSource, kv::ISystem, ITimerManager, IStringX, IKVMessage,
                         KVRhapsodyClient::IRhapsodyClientFactory>();
}

std::string Lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::size_t CountDefinitions(const std::filesystem::path& folder) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);)
            count += line.find("kInterfaceId =") != std::string::npos;
    }
    return count;
}

TEST(Identifiers, NoneIsUsedTwice) {
    std::set<std::string> seen;
    for (const std::string& identifier : AllIdentifiers()) {
        EXPECT_NE(identifier, "");
        EXPECT_TRUE(seen.insert(Lower(identifier)).second) << identifier << " is used twice";
    }
}

// A new interface belongs in the list above.
TEST(Identifiers, AllAreCompared) {
    const std::filesystem::path root = KORVEL_SOURCE_DIR;
    EXPECT_EQ(AllIdentifiers().size(), CountDefinitions(root / "platform/include") +
                                           CountDefinitions(root / "korvel_digitalaudio/include"));
}

} // namespace
