// A program under test.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "Wait.h"

namespace korvel::tests {

// Started by the constructor; killed by the destructor if it still runs.
class Process {
public:
    // `errorPath`: file that takes what the program writes to stderr.
    Process(const std::string& program, const std::vector<std::string>& arguments, std::string errorPath);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The next line of stdout without its end; empty optional at the end or when none comes.
    std::optional<std::string> ReadLine();

    // Everything on stderr so far.
    std::string Errors() const;

    void Signal(int number) const;

    // Whether it has this file open at the moment.
    bool HasOpen(const std::string& path) const;

    // How many threads it has; 0 when it has ended.
    unsigned Threads() const;

    // How many of them are scheduled before ordinary work.
    unsigned RealTimeThreads() const;

    // The exit code; 128 + signal when it was killed; empty when it does not end within the patience.
    std::optional<int> WaitForExit(std::chrono::milliseconds patience = kPatience);

private:
    pid_t m_pid = -1;
    int m_output = -1;
    std::string m_pending;
    std::string m_errorPath;
    std::optional<int> m_exit;
};

} // namespace korvel::tests
