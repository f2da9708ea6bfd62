#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace korvel::media {

// A running program that is spoken to over its standard input and output, which are one socket. It gets no
// other file of this process.
class ReaderProcess {
public:
    // Programs that cannot be ended, because they wait for a disk that does not answer, are left to
    // themselves; with as many of them no further one is started.
    static constexpr std::size_t kMaxAbandoned = 8;

    ReaderProcess() = default;
    ~ReaderProcess() { End(); }
    ReaderProcess(const ReaderProcess&) = delete;
    ReaderProcess& operator=(const ReaderProcess&) = delete;

    // Throws std::runtime_error with one line that names the program.
    void Start(const std::string& program);
    bool IsRunning() const { return m_process > 0; }
    int GetSocket() const { return m_socket; }
    // Kills it and waits for its end, but no longer than kEndPatience. What it died of, for a person: "was
    // killed by SIGSEGV".
    std::string End();

private:
    static constexpr std::chrono::milliseconds kEndPatience{2000};

    void ReapAbandoned();

    pid_t m_process = 0;
    int m_socket = -1;
    std::vector<pid_t> m_abandoned;
};

} // namespace korvel::media
