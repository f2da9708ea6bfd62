// Whole sessions: any sequence of lines, with services that fail or call back at any of their calls.
#include "SessionRun.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::SessionRun run;
    for (const fuzz::Step& step : fuzz::ParseSession({reinterpret_cast<const char*>(bytes), size}))
        run.Play(step);
    run.End();
    return 0;
}
