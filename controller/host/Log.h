// The controller's log: one short line for each thing worth knowing, on stderr.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "config/Config.h"

namespace korvel::controller {

inline constexpr std::size_t kMaxLogLine = 2000;

class Log {
public:
    // Writes lines up to and including `most` to `sink`, which stays open as long as the log lives.
    explicit Log(LogLevel most, std::FILE* sink = stderr) : m_most(most), m_sink(sink) {}

    // Control characters come out as blanks and a long text is cut. May be called from any thread.
    void Write(LogLevel level, std::string_view text) const;

    void Error(std::string_view text) const { Write(LogLevel::Error, text); }
    void Warning(std::string_view text) const { Write(LogLevel::Warning, text); }
    void Info(std::string_view text) const { Write(LogLevel::Info, text); }
    void Debug(std::string_view text) const { Write(LogLevel::Debug, text); }

private:
    LogLevel m_most;
    std::FILE* m_sink;
};

} // namespace korvel::controller
