// Where the lines of a log go: counted by the place and the source that they come from, and written to a file.
#pragma once

#include <spdlog/sinks/base_sink.h>

#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

namespace korvel::common {

// Goes by the times that the lines carry.
class LogSink final : public spdlog::sinks::base_sink<std::mutex> {
public:
    explicit LogSink(std::FILE* file) : m_file(file) {}
    ~LogSink() override;

    // What was left out of all seconds up to now is told.
    void TellLeftOut();

protected:
    void sink_it_(const spdlog::details::log_msg& message) override;
    void flush_() override;

private:
    using Time = spdlog::log_clock::time_point;
    struct Source {
        Time second;        // its beginning
        unsigned lines = 0; // in it
        unsigned leftOut = 0;
        spdlog::level::level_enum level = spdlog::level::off; // of the last one that was left out
        std::string text;                                     // of the same
    };

    Source& SourceOf(const spdlog::details::log_msg& message);
    bool Admit(const spdlog::details::log_msg& message);
    void Summarize(Source& source, Time now);
    void Print(const spdlog::details::log_msg& message);

    std::FILE* m_file;
    // By file, line and name: as many as the program has places that log, and kMaxLogSources that have a name.
    std::map<std::tuple<const char*, int, std::string>, Source> m_sources;
    std::size_t m_named = 0; // of them
    bool m_leftOut = false;  // something that no line tells of yet
};

} // namespace korvel::common
