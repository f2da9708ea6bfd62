#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "TestHouse.h"

namespace korvel::controller {

// The program, running with a configuration in a scratch folder. It is killed at the latest with this object.
class ControllerProcess {
public:
    ControllerProcess(const ScratchFolder& folder, const std::string& config,
                      const std::vector<std::string>& options = {});
    ~ControllerProcess();
    ControllerProcess(const ControllerProcess&) = delete;
    ControllerProcess& operator=(const ControllerProcess&) = delete;

    void Signal(int signal) const;
    // From now on none of its files grows beyond so many bytes, as if the disk were full.
    void LimitFiles(rlim_t bytes) const;
    // Waits for the end: the exit status, or -1 when a signal ended it.
    int Wait();
    // What it has written to stderr so far.
    std::string Errors() const { return ReadFile(m_errors); }
    // The same of stdout.
    std::string Output() const { return ReadFile(m_output); }
    // Where it says that it serves the interface; "" before.
    std::string Url() const;

private:
    std::string m_errors;
    std::string m_output;
    pid_t m_process = 0;
};

} // namespace korvel::controller
