// Whole sessions: any sequence of entries, with services that fail, answer at once or call back.
#include "Entries.h"
#include "FuzzCore.h"

namespace {

constexpr int kMaxEntries = 200;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    fuzz::Manner manner;
    manner.callsBack = data.ConsumeBool();
    manner.throws = data.ConsumeBool();
    manner.roomsAnswerAtOnce = data.ConsumeBool();
    manner.serverAnswersAtOnce = data.ConsumeBool();
    manner.fails = data.ConsumeBool();
    fuzz::FuzzCore core(data, manner);
    if (!core.Start(nullptr))
        return 0;
    // Most of the driver is only there once the server of its own controller is.
    if (data.ConsumeIntegralInRange<int>(0, 7) != 7)
        core.Bound(3000, "SERVER_ONLINE", "127.0.0.1");
    for (int left = kMaxEntries; left > 0 && data.remaining_bytes() > 0; --left)
        fuzz::RunEntry(core, false);
    return 0;
}
