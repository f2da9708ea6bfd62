#include "common/Log.h"

#include <spdlog/logger.h>

#include "common/Text.h"
#include "common/src/LogSink.h"

namespace korvel::common {
namespace {

spdlog::level::level_enum LevelOf(LogLevel level) {
    switch (level) {
        case LogLevel::Error:
            return spdlog::level::err;
        case LogLevel::Warning:
            return spdlog::level::warn;
        case LogLevel::Info:
            return spdlog::level::info;
        case LogLevel::Debug:
            return spdlog::level::debug;
    }
    return spdlog::level::off;
}

} // namespace

Log::Log(LogLevel most, std::FILE* sink)
    : m_sink(std::make_shared<LogSink>(sink)), m_logger(std::make_unique<spdlog::logger>("", m_sink)) {
    m_logger->set_level(LevelOf(most));
    m_logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %-7l %v");
    m_logger->flush_on(spdlog::level::trace);
}

Log::~Log() = default;

void Log::Write(LogLevel level, std::string_view text, LogPlace place) const {
    WriteFor({}, level, text, place);
}

void Log::WriteFor(std::string_view source, LogLevel level, std::string_view text, LogPlace place) const {
    if (!m_logger->should_log(LevelOf(level)))
        return;
    const std::string line = OneLine(text, kMaxLogLine);
    const std::string name = OneLine(source, kMaxLogLine);
    // The sink takes the function's name for the source's.
    m_logger->log(spdlog::source_loc(place.file, place.line, name.c_str()), LevelOf(level),
                  spdlog::string_view_t(line));
}

void Log::TellLeftOut() const {
    m_sink->TellLeftOut();
}

const Log& ProgramLog() {
    // Never destroyed: who knows who still logs when the statics go.
    static const Log& log = *new Log(LogLevel::Info);
    static const struct End {
        ~End() { log.TellLeftOut(); }
    } end;
    return log;
}

} // namespace korvel::common
