#include "common/src/LogSink.h"

#include <chrono>
#include <utility>

#include "common/Log.h"

namespace korvel::common {
namespace {

// Also when the clock was put back.
bool IsOver(spdlog::log_clock::time_point second, spdlog::log_clock::time_point now) {
    return now < second || now - second >= std::chrono::seconds(1);
}

} // namespace

LogSink::~LogSink() {
    TellLeftOut();
}

void LogSink::TellLeftOut() {
    const std::lock_guard lock(mutex_);
    for (auto& [key, source] : m_sources)
        Summarize(source, source.second);
    m_leftOut = false;
    flush_();
}

void LogSink::sink_it_(const spdlog::details::log_msg& message) {
    if (m_leftOut) {
        m_leftOut = false;
        for (auto& [key, source] : m_sources) {
            if (IsOver(source.second, message.time))
                Summarize(source, message.time);
            m_leftOut = m_leftOut || source.leftOut > 0;
        }
    }
    if (message.level == spdlog::level::debug || Admit(message))
        Print(message);
}

LogSink::Source& LogSink::SourceOf(const spdlog::details::log_msg& message) {
    const spdlog::source_loc& from = message.source;
    std::tuple key(from.filename, from.line, std::string(from.funcname));
    const auto known = m_sources.find(key);
    if (known != m_sources.end())
        return known->second;
    if (std::string& name = std::get<2>(key); !name.empty()) {
        // Whose second is over, and who has nothing to be told, begins anew in any case.
        if (m_named == kMaxLogSources)
            m_named -= std::erase_if(m_sources, [&](const auto& entry) {
                return !std::get<2>(entry.first).empty() && entry.second.leftOut == 0 &&
                       IsOver(entry.second.second, message.time);
            });
        if (m_named == kMaxLogSources)
            name.clear();
        else
            ++m_named;
    }
    return m_sources[std::move(key)];
}

bool LogSink::Admit(const spdlog::details::log_msg& message) {
    Source& source = SourceOf(message);
    if (source.lines == 0 || IsOver(source.second, message.time)) {
        source.second = message.time;
        source.lines = 0;
    }
    if (++source.lines <= kMaxLogLinesPerSecond)
        return true;
    ++source.leftOut;
    source.level = message.level;
    source.text.assign(message.payload.data(), message.payload.size());
    m_leftOut = true;
    return false;
}

void LogSink::Summarize(Source& source, Time now) {
    if (source.leftOut == 0)
        return;
    const std::string text =
        "left out " + std::to_string(source.leftOut) + " lines, the last: " + source.text;
    source.leftOut = 0;
    source.text.clear();
    Print({now, {}, {}, source.level, text});
}

void LogSink::Print(const spdlog::details::log_msg& message) {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    // One call a line, so that lines of several programs on one file do not mix.
    std::fwrite(line.data(), 1, line.size(), m_file);
}

void LogSink::flush_() {
    std::fflush(m_file);
}

} // namespace korvel::common
