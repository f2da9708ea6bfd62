// What stands between a driver and the core at every entry: no exception crosses it.
#pragma once

#include <exception>
#include <utility>

namespace kv {

// Logs that `entry` ended with an exception. Never throws.
void RecordEntryFailure(const char* entry, const char* what) noexcept;

// Runs `body` and returns its result. When it throws, the failure is recorded under the entry's name and
// `neutral` is returned: the state stays as it was at the throw and the rest of the entry is dropped.
template <class Result, class Body>
Result GuardEntry(const char* entry, Result neutral, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& error) {
        RecordEntryFailure(entry, error.what());
    } catch (...) {
        RecordEntryFailure(entry, "unknown exception");
    }
    return neutral;
}

template <class Body>
void GuardEntry(const char* entry, Body&& body) noexcept {
    GuardEntry(entry, false, [&] {
        std::forward<Body>(body)();
        return true;
    });
}

} // namespace kv
