#include "platform/EntryGuard.h"

#include <string>

#include "platform/System.h"

namespace kv {

void RecordEntryFailure(const char* entry, const char* what) noexcept {
    try {
        LogXMessage(3, std::string("Exception in ") + entry + ": " + what);
    } catch (...) {
        // Out of memory, or a log that fails: there is nobody left to tell.
    }
}

} // namespace kv
