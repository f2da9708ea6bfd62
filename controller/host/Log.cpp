#include "host/Log.h"

#include <ctime>

namespace korvel::controller {
namespace {

const char* NameOf(LogLevel level) {
    switch (level) {
        case LogLevel::Error:
            return "error";
        case LogLevel::Warning:
            return "warning";
        case LogLevel::Info:
            return "info";
        case LogLevel::Debug:
            return "debug";
    }
    return "";
}

} // namespace

void Log::Write(LogLevel level, std::string_view text) const {
    if (level > m_most)
        return;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    char stamp[40];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    std::string line(text.substr(0, kMaxLogLine));
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < 32 || c == 127)
            c = ' ';
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    // One call a line, so that lines of several threads do not mix.
    std::fprintf(m_sink, "%s.%03ld %-7s %s\n", stamp, now.tv_nsec / 1000000, NameOf(level), line.c_str());
    std::fflush(m_sink);
}

} // namespace korvel::controller
