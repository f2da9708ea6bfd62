// What a program says of its work: one short line for each thing worth knowing.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>

namespace spdlog {
class logger;
}

namespace korvel::common {

class LogSink;

enum class LogLevel { Error, Warning, Info, Debug };

// Bytes of a line's text; a longer one is cut.
inline constexpr std::size_t kMaxLogLine = 2000;
// Lines that one place in the program writes in a second; further ones are counted.
inline constexpr unsigned kMaxLogLinesPerSecond = 10;
// Sources that have their own count at one time; what more there are share that of their place.
inline constexpr std::size_t kMaxLogSources = 64;

// A place in the program that logs. Only as a default argument.
struct LogPlace {
    const char* file;
    int line;

    static constexpr LogPlace Here(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        return {file, line};
    }
};

// Lines of time, level and text. Whatever a peer does, a place in the program writes at most
// kMaxLogLinesPerSecond of them in a second; the others come as one line that says how many there were, with the
// first line of any place after that second, or at the log's end. Debug lines, which are asked for, all come. Any
// thread may write.
class Log {
public:
    // Writes lines up to and including `most` to `sink`, which stays open as long as the log lives.
    explicit Log(LogLevel most, std::FILE* sink = stderr);
    ~Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    // Control characters come out as blanks; blanks at the ends are left out.
    void Write(LogLevel level, std::string_view text, LogPlace place = LogPlace::Here()) const;

    // The same for a place that passes on what others say: each `source`, a few words that name who speaks, has
    // its own kMaxLogLinesPerSecond there, so that one that goes on and on hides no other.
    void WriteFor(std::string_view source, LogLevel level, std::string_view text,
                  LogPlace place = LogPlace::Here()) const;

    // Writes now what else comes with the log's end: how many lines were left out.
    void TellLeftOut() const;

    void Error(std::string_view text, LogPlace place = LogPlace::Here()) const {
        Write(LogLevel::Error, text, place);
    }
    void Warning(std::string_view text, LogPlace place = LogPlace::Here()) const {
        Write(LogLevel::Warning, text, place);
    }
    void Info(std::string_view text, LogPlace place = LogPlace::Here()) const {
        Write(LogLevel::Info, text, place);
    }
    void Debug(std::string_view text, LogPlace place = LogPlace::Here()) const {
        Write(LogLevel::Debug, text, place);
    }

private:
    const std::shared_ptr<LogSink> m_sink;
    const std::unique_ptr<spdlog::logger> m_logger;
};

// The log of a program that has no settings for it: up to LogLevel::Info, on stderr. There from the first call on,
// also for a thread that is still under way when main() has returned.
const Log& ProgramLog();

} // namespace korvel::common
