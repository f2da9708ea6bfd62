// What the log has of what an audio server says.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <memory>

#include "RecordingDriver.h"
#include "TestHouse.h"
#include "driver/services/RealSystem.h"
#include "driver/services/ServerBindings.h"

namespace korvel::controller {
namespace {

using std::chrono::milliseconds;

TEST(LinkLimits, OfALineThatIsTooLongTheLogHasItsBeginning) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    const common::Log log(common::LogLevel::Warning, file.get());
    TestLoop loop;
    RealSystem system(log);
    EventBus events;
    RecordingDriver driver;
    DriverPort port(log);
    port.Attach(driver);
    ScriptedServer server(loop);
    ServerBindings bindings({loop.loop, port, system, events, log}, {{"127.0.0.1", server.GetPort()}},
                            common::BackOff(milliseconds(1), milliseconds(2)));
    bindings.Start();
    server.Send(std::string(kServerLines.line + 1, 'x') + "\r\n1 OK reset\r\n");
    ASSERT_TRUE(loop.RunUntil([&] { return driver.Count("DATA_RECEIVED 3000 1 OK reset\r\n") > 0; }));
    std::rewind(file.get());
    std::string text(1000, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    EXPECT_TRUE(text.ends_with(" that is too long: " + std::string(200, 'x') + "\n")) << text;
}

} // namespace
} // namespace korvel::controller
